#include "mainwindow.h"

#include <QTreeWidget>
#include <QtTest>

class TestStartup : public QObject // a path given at start: opened, or a box names it
{
    Q_OBJECT
private slots:
    void openProjectFile_data() // each row's name is a path below tests/startup
    {
        const QString box = "Info: Das Projekt kann nicht geöffnet werden:\n" + QFINDTESTDATA("startup") + '/';
        QTest::addColumn<QStringList>("outcome"); // boxes shown, tree nodes, window title
        QTest::newRow("Beispiel.zyproject") << QStringList{"a.zyhelp", "de", "Einleitung", "teil", "b.zyhelp", "en", "Editor - Beispiel"};
        QTest::newRow("teil") << QStringList{box + "teil\n\nDas ist ein Ordner, keine Projektdatei (*.zyproject).", "ZY Help Editor"};
        QTest::newRow("a.zyhelp") << QStringList{box + "a.zyhelp\n\nDas ist keine Projektdatei (*.zyproject).", "ZY Help Editor"};
        QTest::newRow("fehlt.zyproject") << QStringList{box + "fehlt.zyproject\n\nDie Datei gibt es nicht.", "ZY Help Editor"};
    }
    void openProjectFile()
    {
        MainWindow window;
        QStringList outcome;
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&] { // closes every modal at once: none can hang
            if (QWidget *modal = QApplication::activeModalWidget())
                outcome << modal->windowTitle() + ": " + modal->property("text").toString(), modal->close();
        });
        timer.start(10);
        const bool opened = window.openProjectFile(QFINDTESTDATA("startup") + '/' + QTest::currentDataTag());
        QCOMPARE(opened, outcome.isEmpty());
        for (QTreeWidgetItemIterator it(window.findChild<QTreeWidget *>()); *it; ++it)
            outcome << (*it)->text(0);
        QTEST(outcome << window.windowTitle(), "outcome");
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
