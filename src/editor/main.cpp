#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(ZY_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(ZY_APP_ID));

    // The window is German whatever the locale, so Qt's own dialogs and buttons
    // are too. Without Qt's translations installed they stay English.
    QTranslator qtTranslator;
    if (qtTranslator.load(QStringLiteral("qtbase_de"),
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(&qtTranslator);
    }

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
    if (arguments.size() > 1) {
        // Like the parser's own errors: name, message, then the usage line.
        std::fprintf(stderr, "%s: Es kann nur eine Projektdatei angegeben werden.\n%s\n",
                     qPrintable(QCoreApplication::applicationName()),
                     qPrintable(parser.helpText().section(QLatin1Char('\n'), 0, 0)));
        return 1;
    }

    MainWindow window;
    window.show();
    if (!arguments.isEmpty())
        window.openProjectFile(arguments.constFirst());
    return app.exec();
}
