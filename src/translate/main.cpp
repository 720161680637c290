#include "catalogfile.h"
#include "commandline.h"
#include "documentcollector.h"
#include "exporter.h"
#include "importer.h"
#include "savefile.h"
#include "statistics.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <optional>

#include <cstdio>

using namespace ZyHelp;
using namespace ZyHelp::Translate;
using namespace ZyHelp::CommandLine;

namespace {

// The documents of the PATHs, collected as zyhelpcheck collects them; every
// wrong PATH is named before the run ends.
bool collect(const QStringList &paths, QList<DocumentEntry> *documents)
{
    DocumentCollector collector;
    bool usable = addPaths(paths, &collector);
    *documents = collector.documents();
    // A unit's id begins with its document's relative path: two documents of
    // one run with the same one (a.zyhelp in two folders given) cannot be told apart.
    QHash<QString, QString> byId;
    for (const DocumentEntry &entry : std::as_const(*documents)) {
        const QString other = byId.value(entry.relativePath);
        if (!other.isEmpty()) {
            usageError(QStringLiteral("%1 and %2 would give the same unit ids ('%3#...'); "
                                      "give the folder or project that holds both")
                           .arg(other, entry.displayPath, entry.relativePath));
            usable = false;
        }
        byId.insert(entry.relativePath, entry.displayPath);
    }
    return usable;
}

int runExport(const QCommandLineParser &parser, const QStringList &paths)
{
    const QString source = parser.value(QStringLiteral("source"));
    const QString target = parser.value(QStringLiteral("target"));
    const QString output = parser.value(QStringLiteral("output"));
    if (source.isEmpty())
        return usageError(QStringLiteral("export needs --source"));
    if (target == source)
        return usageError(QStringLiteral("--target is the source language '%1'").arg(source));
    if (!output.isEmpty() && CatalogFile::formatOf(output) == CatalogFile::Unknown)
        return usageError(
            QStringLiteral("%1: the name must end in .po, .pot, .xlf or .xliff").arg(output));
    QList<DocumentEntry> documents;
    if (!collect(paths, &documents))
        return UsageError;

    Catalog header;
    header.sourceLanguage = source;
    header.targetLanguage = target;
    header.projectName = QFileInfo(paths.first()).completeBaseName();
    std::optional<EarlierTranslations> earlier;
    if (!output.isEmpty() && QFileInfo::exists(output)) {
        Catalog before;
        QString error;
        earlier.emplace();
        if (!earlier->read(output, &before, &error)) {
            write(stderr, (error + u'\n').toUtf8());
            return UsageError;
        }
        if (before.sourceLanguage != source || before.targetLanguage != target)
            return usageError(
                QStringLiteral("%1 translates '%2' to '%3', not '%4' to '%5'")
                    .arg(output, before.sourceLanguage, before.targetLanguage, source, target));
        header.translatorFields = before.translatorFields;
    }

    // Written atomically: the earlier file stays whole until the new one is.
    QSaveFile file(output);
    QFile standardOutput;
    QFileDevice *device = &file;
    if (output.isEmpty())
        device = &standardOutput;
    if (output.isEmpty() ? !standardOutput.open(stdout, QIODevice::WriteOnly)
                         : !file.open(QIODevice::WriteOnly)) {
        write(stderr,
              QStringLiteral("%1: error: cannot write: %2\n")
                  .arg(output.isEmpty() ? QStringLiteral("stdout") : output, device->errorString())
                  .toUtf8());
        return Failed;
    }
    const QStringList errors =
        exportCatalog(documents, header, earlier ? &*earlier : nullptr,
                      output.isEmpty() ? CatalogFile::Po : CatalogFile::formatOf(output), device);
    printLines(stderr, errors);
    QString error;
    if (output.isEmpty()) {
        standardOutput.flush(); // to stdout, whose faults finish() reports
    } else if (!commitSaveFile(&file, true, &error)) {
        write(stderr, QStringLiteral("%1: error: cannot write: %2\n").arg(output, error).toUtf8());
        return Failed;
    }
    return errors.isEmpty() ? Passed : Failed;
}

int runImport(const QCommandLineParser &parser, const QStringList &arguments)
{
    if (arguments.isEmpty())
        return usageError(QStringLiteral("import needs a translation FILE and a PATH"));
    const QString file = arguments.first();
    if (CatalogFile::formatOf(file) == CatalogFile::Unknown)
        return usageError(QStringLiteral("%1: the name must end in .po, .xlf or .xliff").arg(file));
    QList<DocumentEntry> documents;
    if (!collect(arguments.mid(1), &documents))
        return UsageError;
    ImportResult result;
    QString error;
    if (!importFile(file, documents, parser.isSet(QStringLiteral("dry-run")), &result, &error)) {
        write(stderr, (error + u'\n').toUtf8());
        return UsageError;
    }
    printLines(stderr, result.messages);
    printLines(stdout, result.changes);
    const qsizetype written = result.changes.size();
    write(stdout,
          QStringLiteral("%1 translations in place, %2 not applied, %3 %4 %5\n")
              .arg(result.applied)
              .arg(result.lost)
              .arg(written)
              .arg(written == 1 ? QStringLiteral("document") : QStringLiteral("documents"))
              .arg(parser.isSet(QStringLiteral("dry-run")) ? QStringLiteral("to write")
                                                           : QStringLiteral("written"))
              .toUtf8());
    return result.lost > 0 ? Failed : Passed;
}

int runStatus(const QCommandLineParser &parser, const QStringList &paths)
{
    const QString source = parser.value(QStringLiteral("source"));
    const QString format = parser.value(QStringLiteral("format"));
    if (source.isEmpty())
        return usageError(QStringLiteral("status needs --source"));
    if (format != u"text" && format != u"json")
        return usageError(QStringLiteral("--format must be text or json, not '%1'").arg(format));
    QList<DocumentEntry> documents;
    if (!collect(paths, &documents))
        return UsageError;
    const Statistics statistics = countUnits(documents, source);
    printLines(stderr, statistics.errors);
    write(stdout,
          format == u"json" ? jsonStatistics(statistics) : textStatistics(statistics).toUtf8());
    return statistics.errors.isEmpty() ? Passed : Failed;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zyhelptranslate"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZY_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Exchanges the texts of help documents with translators' tools.\n"
        "  export --source de [--target en] [-o FILE] PATH...  units to PO (.po, .pot) or\n"
        "      XLIFF 1.2 (.xlf, .xliff); an existing FILE is merged; without -o: PO on stdout\n"
        "  import [--dry-run] FILE PATH...  translations into the documents\n"
        "  status --source de [--format text|json] PATH...  what is translated\n"
        "Exit status: 0, 1 when a unit was not applied or a document not read or written,\n"
        "2 for a usage error or a FILE that is neither PO nor XLIFF."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {QStringLiteral("source"), QStringLiteral("The language translated from."),
         QStringLiteral("key")},
        {QStringLiteral("target"),
         QStringLiteral("The language translated into; without it, export writes a template."),
         QStringLiteral("key")},
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The file export writes (and merges with)."),
         QStringLiteral("FILE")},
        {QStringLiteral("dry-run"),
         QStringLiteral("Import: report what would change and write nothing.")},
        {QStringLiteral("format"), QStringLiteral("Status as text (default) or json."),
         QStringLiteral("text|json"), QStringLiteral("text")},
    });
    parser.addPositionalArgument(QStringLiteral("command"),
                                 QStringLiteral("export, import or status."));
    parser.addPositionalArgument(
        QStringLiteral("PATH"),
        QStringLiteral("A project file (.zyproject: the documents below its folder), a folder "
                       "(the documents below it) or a help document (.zyhelp)."),
        QStringLiteral("PATH..."));

    if (!parseArguments(&parser))
        return UsageError;

    const QStringList arguments = parser.positionalArguments();
    const QString command = arguments.value(0);
    if (command == u"export")
        return finish(runExport(parser, arguments.mid(1)));
    if (command == u"import")
        return finish(runImport(parser, arguments.mid(1)));
    if (command == u"status")
        return finish(runStatus(parser, arguments.mid(1)));
    return usageError(command.isEmpty()
                          ? QStringLiteral("no command given (see --help)")
                          : QStringLiteral("unknown command '%1' (see --help)").arg(command));
}
