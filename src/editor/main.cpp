#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdio>

namespace {

// The window is German whatever the locale, so Qt's own dialogs, buttons and
// command-line help are too. Without Qt's translations installed they stay English.
void installQtTranslations(QTranslator &translator)
{
    if (translator.load(QStringLiteral("qtbase_de"),
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);
}

// The project file named on the command line, if any. Answers --help, --version
// and usage errors itself, and exits then.
QString projectArgument(int argc, char **argv)
{
    // A core application, so that this works without a display.
    QCoreApplication app(argc, argv);
    QTranslator translator;
    installQtTranslations(translator);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Editor für mehrsprachige Hilfedokumente (ZY Help Editor)."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("projekt"),
                                 QStringLiteral("Projektdatei (.zyproject), die beim Start "
                                                "geöffnet wird."),
                                 QStringLiteral("[PROJEKT.zyproject]"));
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() > 1) { // in the form of the parser's own errors
        std::fprintf(stderr, "%s: Es kann nur eine Projektdatei angegeben werden.\n",
                     qPrintable(QCoreApplication::applicationName()));
        std::exit(1);
    }
    return arguments.value(0);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setApplicationVersion(QStringLiteral(ZY_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(ZY_APP_ID));
    const QString project = projectArgument(argc, argv);

    QApplication app(argc, argv);
    QTranslator translator;
    installQtTranslations(translator);

    MainWindow window;
    window.show();
    window.openProjectFile(project);
    return app.exec();
}
