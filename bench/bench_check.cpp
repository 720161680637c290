#include "benchutil.h"

#include "checker.h"
#include "documentcollector.h"
#include "helpdata.h"
#include "report.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThreadPool>

#include <algorithm>
#include <cstdio>

using namespace ZyHelp;

namespace {

const int folderCount = 20;
const int documentCount = folderCount * Bench::documentsPerFolder;
const int runs = 7;

// Every document is listed in the project file, so that a clean project checks clean.
bool makeProject(const QString &root, const QString &projectFile, QStringList *paths)
{
    *paths = Bench::writeProject(root, documentCount);
    if (paths->isEmpty())
        return false;
    QByteArray list = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyproject name=\"Bench\">\n";
    for (const QString &path : std::as_const(*paths))
        list += "    <file>" + QDir(root).relativeFilePath(path).toUtf8() + "</file>\n";
    list += "</zyproject>\n";
    QFile file(projectFile);
    return file.open(QIODevice::WriteOnly) && file.write(list) == list.size();
}

} // namespace

void benchCheck()
{
    QTemporaryDir dir;
    const QString projectFile = dir.filePath(QStringLiteral("Bench.zyproject"));
    QStringList paths;
    if (!dir.isValid() || !makeProject(dir.path(), projectFile, &paths)) {
        std::printf("  could not write the project\n");
        return;
    }

    // The floor and the check take turns, so a busy spell on a shared machine
    // weighs on both alike; each keeps its fastest round.
    HelpParser parser;
    qsizetype parsedWhole = 0;
    Check::CheckResult result;
    QString report;
    double parseMs = 1e300;
    double checkMs = 1e300;
    for (int round = 0; round < runs; ++round) {
        parseMs = std::min(parseMs, Bench::bestOfMs(1, [&] {
                               parsedWhole = 0;
                               for (const QString &path : std::as_const(paths)) {
                                   ParseStatus status;
                                   const HelpData data = parser.parse(path, &status);
                                   if (status.outcome == ParseStatus::Complete
                                       && !data.languages.isEmpty())
                                       ++parsedWhole;
                               }
                           }));
        // Everything zyhelpcheck does but printing: find, read, check, format.
        checkMs = std::min(checkMs, Bench::bestOfMs(1, [&] {
                               DocumentCollector collector;
                               collector.addPath(projectFile);
                               result = Check::Checker().check(collector.documents(),
                                                               collector.findings());
                               report = Check::textReport(result, false);
                           }));
    }

    // Both must have done the work they are timed for, and the generated
    // project must check clean.
    if (parsedWhole != documentCount || result.documentCount != documentCount
        || !result.findings.isEmpty()) {
        std::printf("  parsed %lld whole, checked %lld documents (expected %d), report:\n%s",
                    qlonglong(parsedWhole), qlonglong(result.documentCount), documentCount,
                    qPrintable(report.left(2000)));
    }

    std::printf("  %d documents in %d folders, %d threads, best of %d\n", documentCount,
                folderCount, QThreadPool::globalInstance()->maxThreadCount(), runs);
    Bench::printFigure(QStringLiteral("HelpParser::parse, all documents, one thread"), parseMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("check the project (find, read in parallel, check, report)"),
                       checkMs, QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("check / one-thread parse"), checkMs / parseMs, 0.7);
}
