#include "commandline.h"
#include "documentcollector.h"
#include "publisher.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace ZyHelp;
using namespace ZyHelp::Publish;
using namespace ZyHelp::CommandLine;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zyhelppublish"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZY_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Publishes help documents as a static HTML site per language (OUT/LANG/...) or as\n"
        "Qt Help files (OUT/NAME_LANG.qch). OUT is replaced only by a complete output.\n"
        "Exit status: 0 when published without errors, 1 with errors (a faulty document is\n"
        "published up to its fault), 2 for a usage error."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption formatOption(QStringLiteral("format"),
                                          QStringLiteral("Publish as html (default) or qthelp."),
                                          QStringLiteral("html|qthelp"), QStringLiteral("html"));
    const QCommandLineOption languagesOption(
        QStringLiteral("languages"),
        QStringLiteral("The languages to publish, e.g. de,en (default: every language any "
                       "document has). The first one is the site's entry."),
        QStringLiteral("keys"));
    const QCommandLineOption fallbackOption(
        QStringLiteral("fallback"),
        QStringLiteral("The language whose text a page shows where its own is missing "
                       "(default: the one most documents have)."),
        QStringLiteral("key"));
    const QCommandLineOption outOption(QStringList{QStringLiteral("o"), QStringLiteral("output")},
                                       QStringLiteral("The folder to publish into."),
                                       QStringLiteral("OUT"));
    const QCommandLineOption generatorOption(
        QStringLiteral("qhelpgenerator"),
        QStringLiteral("The qhelpgenerator program (default: the one of Qt's tools)."),
        QStringLiteral("PATH"));
    parser.addOptions({formatOption, languagesOption, fallbackOption, outOption, generatorOption});
    parser.addPositionalArgument(
        QStringLiteral("PATH"),
        QStringLiteral("A project file (.zyproject: the documents below its folder), a folder "
                       "(the documents below it) or a help document (.zyhelp)."),
        QStringLiteral("PATH..."));

    if (!parseArguments(&parser))
        return UsageError;

    PublishOptions options;
    const QString format = parser.value(formatOption);
    if (format != u"html" && format != u"qthelp")
        return usageError(QStringLiteral("--format must be html or qthelp, not '%1'").arg(format));
    options.format = format == u"html" ? PublishOptions::Html : PublishOptions::QtHelp;
    if (parser.isSet(languagesOption)) {
        options.languages = keyList(parser.value(languagesOption));
        if (options.languages.isEmpty())
            return usageError(QStringLiteral("--languages names no language"));
    }
    options.fallback = parser.value(fallbackOption).trimmed();
    options.out = parser.value(outOption);
    options.helpGenerator = parser.value(generatorOption);
    if (options.out.isEmpty())
        return usageError(QStringLiteral("no output folder given (-o OUT)"));
    DocumentCollector collector;
    if (!addPaths(parser.positionalArguments(), &collector))
        return UsageError;

    Publisher publisher(options, collector.projectName());
    const Publisher::Status status = publisher.publish(collector.documents());
    for (const Finding &finding : publisher.findings())
        write(stderr, (finding.toText() + u'\n').toUtf8());
    if (!publisher.errorString().isEmpty())
        write(stderr, QStringLiteral("zyhelppublish: %1\n").arg(publisher.errorString()).toUtf8());
    return status;
}
