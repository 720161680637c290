#include "benchutil.h"

#include "catalogfile.h"
#include "documentcollector.h"
#include "exporter.h"
#include "helpdata.h"
#include "importer.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QThreadPool>

#include <cstdio>

using namespace ZyHelp;
using namespace ZyHelp::Translate;

namespace {

bool exportProject(const QString &root, const QString &file)
{
    DocumentCollector collector;
    collector.addPath(root);
    Catalog header;
    header.sourceLanguage = QStringLiteral("de");
    header.targetLanguage = QStringLiteral("en");
    QSaveFile out(file);
    return out.open(QIODevice::WriteOnly)
        && exportCatalog(collector.documents(), header, nullptr, CatalogFile::formatOf(file), &out)
               .isEmpty()
        && out.commit();
}

qsizetype importPo(const QString &root, const QString &file, qsizetype *written)
{
    DocumentCollector collector;
    collector.addPath(root);
    ImportResult result;
    QString error;
    if (!importFile(file, collector.documents(), false, &result, &error))
        return -1;
    *written = result.changes.size();
    return result.lost > 0 ? -1 : result.applied;
}

// The peak memory of zyhelptranslate ARGUMENTS in MiB, as GNU time reports it
// for a process of its own (this one's peak would count the benchmark's too).
double programPeakMiB(const QStringList &arguments)
{
    QProcess process;
    process.start(
        QStringLiteral("/usr/bin/time"),
        QStringList{QStringLiteral("-f"), QStringLiteral("%M"), QStringLiteral(ZY_TRANSLATE_BINARY)}
            + arguments);
    if (!process.waitForFinished(600000) || process.exitCode() != 0)
        return -1;
    const QList<QByteArray> lines = process.readAllStandardError().trimmed().split('\n');
    return lines.last().toDouble() / 1024.0;
}

void benchProjectOf(int count, int runs)
{
    QTemporaryDir dir;
    qint64 projectBytes = 0;
    const QString root = dir.filePath(QStringLiteral("projekt"));
    const QStringList paths = Bench::writeProject(root, count, &projectBytes);
    if (paths.isEmpty()) {
        std::printf("  could not write the project\n");
        return;
    }
    const QString po = dir.filePath(QStringLiteral("en.po"));
    const QString xliff = dir.filePath(QStringLiteral("en.xlf"));

    // The floor and the work take turns, so a busy spell weighs on both alike.
    double parseMs = 1e300, exportMs = 1e300, exportXliffMs = 1e300, importMs = 1e300;
    bool ok = true;
    qsizetype applied = 0, written = 0;
    for (int round = 0; round < runs; ++round) {
        parseMs = std::min(parseMs, Bench::bestOfMs(1, [&] {
                               HelpParser parser;
                               for (const QString &path : paths) {
                                   ParseStatus status;
                                   ok = !parser.parse(path, &status).languages.isEmpty() && ok;
                               }
                           }));
        QFile::remove(po);
        QFile::remove(xliff);
        exportMs =
            std::min(exportMs, Bench::bestOfMs(1, [&] { ok = exportProject(root, po) && ok; }));
        exportXliffMs = std::min(
            exportXliffMs, Bench::bestOfMs(1, [&] { ok = exportProject(root, xliff) && ok; }));
        importMs =
            std::min(importMs, Bench::bestOfMs(1, [&] { applied = importPo(root, po, &written); }));
    }
    // Every unit of the export matches its document: nothing is written.
    if (!ok || applied != qsizetype(count) * (1 + 2 * Bench::sectionCount) || written != 0)
        std::printf("  the work was not done: %lld units applied, %lld documents written\n",
                    qlonglong(applied), qlonglong(written));

    std::printf("  %d documents (%.1f MiB), %d threads, best of %d\n", count,
                projectBytes / 1048576.0, QThreadPool::globalInstance()->maxThreadCount(), runs);
    Bench::printFigure(QStringLiteral("HelpParser::parse, all documents, one thread"), parseMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("export de -> en, PO"), exportMs, QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("export PO / one-thread parse"), exportMs / parseMs, 1.0);
    Bench::printRatio(QStringLiteral("export XLIFF / one-thread parse"), exportXliffMs / parseMs,
                      1.0);
    Bench::printFigure(QStringLiteral("import of the unchanged PO"), importMs,
                       QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("import / one-thread parse"), importMs / parseMs, 1.0);
    const double projectMiB = projectBytes / 1048576.0;
    const QStringList exportArguments{QStringLiteral("export"),
                                      QStringLiteral("--source"),
                                      QStringLiteral("de"),
                                      QStringLiteral("--target"),
                                      QStringLiteral("en"),
                                      QStringLiteral("-o"),
                                      po,
                                      root};
    QFile::remove(po);
    const double exportPeak = programPeakMiB(exportArguments);
    // With the file of that export there: merged with it, which is held whole.
    const double mergePeak = programPeakMiB(exportArguments);
    const double importPeak = programPeakMiB({QStringLiteral("import"), po, root});
    Bench::printRatio(QStringLiteral("zyhelptranslate export: peak memory / project size"),
                      exportPeak / projectMiB, 1.5);
    Bench::printRatio(QStringLiteral("zyhelptranslate export, merged: peak memory / project"),
                      mergePeak / projectMiB, 1.5);
    Bench::printRatio(QStringLiteral("zyhelptranslate import: peak memory / project size"),
                      importPeak / projectMiB, 1.5);
}

} // namespace

void benchTranslate()
{
    benchProjectOf(2000, 5);
    benchProjectOf(10000, 3);
}
