#include "checker.h"
#include "commandline.h"
#include "documentcollector.h"
#include "report.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace ZyHelp;
using namespace ZyHelp::Check;
using namespace ZyHelp::CommandLine;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zyhelpcheck"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZY_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Checks help documents (.zyhelp) for faulty XML, missing languages, differing section\n"
        "counts, unwritten texts and links that lead nowhere, and project files (.zyproject)\n"
        "for documents they do not list. Exit status: 0 without errors, 1 with errors\n"
        "(with --strict also with warnings), 2 for a usage error."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption formatOption(QStringLiteral("format"),
                                          QStringLiteral("Output as text (default) or json."),
                                          QStringLiteral("text|json"), QStringLiteral("text"));
    const QCommandLineOption quietOption(QStringLiteral("quiet"),
                                         QStringLiteral("Print only the summary."));
    const QCommandLineOption strictOption(
        QStringLiteral("strict"), QStringLiteral("Count warnings as errors for the exit status."));
    const QCommandLineOption languagesOption(
        QStringLiteral("languages"),
        QStringLiteral("The languages every document must have, e.g. de,en; only these "
                       "(default: every language any document of the check has)."),
        QStringLiteral("keys"));
    const QCommandLineOption referenceOption(
        QStringLiteral("reference"),
        QStringLiteral("The language whose number of sections the others must have "
                       "(default: the one most documents have; of equally common ones the "
                       "smallest key)."),
        QStringLiteral("key"));
    parser.addOptions({formatOption, quietOption, strictOption, languagesOption, referenceOption});
    parser.addPositionalArgument(
        QStringLiteral("PATH"),
        QStringLiteral("A project file (.zyproject: the documents below its folder), a folder "
                       "(the documents below it) or a help document (.zyhelp)."),
        QStringLiteral("PATH..."));

    if (!parseArguments(&parser))
        return UsageError;

    const QString format = parser.value(formatOption);
    if (format != u"text" && format != u"json")
        return usageError(QStringLiteral("--format must be text or json, not '%1'").arg(format));
    CheckOptions options;
    if (parser.isSet(languagesOption)) {
        options.languages = keyList(parser.value(languagesOption));
        if (options.languages.isEmpty())
            return usageError(QStringLiteral("--languages names no language"));
    }
    options.reference = parser.value(referenceOption).trimmed();
    DocumentCollector collector;
    if (!addPaths(parser.positionalArguments(), &collector))
        return UsageError;

    const CheckResult result = Checker(options).check(collector.documents(), collector.findings());
    const bool quiet = parser.isSet(quietOption);
    if (format == u"json")
        write(stdout, jsonReport(result, quiet));
    else
        write(stdout, textReport(result, quiet).toUtf8());

    const qsizetype failures = result.count(Finding::Error)
        + (parser.isSet(strictOption) ? result.count(Finding::Warning) : 0);
    return finish(failures > 0 ? Failed : Passed);
}
