#include "editorfixture.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QTabWidget>

using namespace Fixture;

// The project tree, the editing pages, taking edits over and saving.
class TstEditor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void treeShowsProject_data();
    void treeShowsProject();
    void treeNodesHaveIconsAndAreExpanded();
    void treeSkipsVanishedDocuments();
    void folderItemIsFoundOrMade_data();
    void folderItemIsFoundOrMade();

    void clickShowsPage_data();
    void clickShowsPage();
    void clickTakesPreviousEditsOver();
    void saveWritesCurrentDocumentOnly();
    void saveFailureKeepsEdits_data();
    void saveFailureKeepsEdits();
    void saveOnFolderFails();
    void saveAfterRebuildDoesNothing();
    void clickingSameNodeRestoresPage();
    void renamedSectionShowsAtOnce();
    void linksAreEditedOnThePage();
    void linkButtonsNeedFileNode();
    void vanishedDocumentIsWrittenAgain();
    void nodeOfMissingPartKeepsPage_data();
    void nodeOfMissingPartKeepsPage();

private:
    template<typename T>
    static T *widget(QMainWindow &window, const char *name)
    {
        return window.findChild<T *>(QLatin1String(name));
    }
    static QStringList links(QMainWindow &window);
};

static QByteArray help(const char *body)
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<zyhelp version=\"1\" author=\"x\">")
           + body + QByteArrayLiteral("</zyhelp>\n");
}

QStringList TstEditor::links(QMainWindow &window)
{
    auto *list = widget<QListWidget>(window, "listLinks");
    QStringList rows;
    for (int row = 0; row < list->count(); ++row)
        rows.append(list->item(row)->text());
    return rows;
}

void TstEditor::initTestCase()
{
    // The toolkit's own file dialog, whatever the platform offers.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void TstEditor::init()
{
    QFile::remove(pathListFile());
    failOnProgramWarnings();
}

void TstEditor::cleanup()
{
    QFile::remove(pathListFile());
}

// ---- The project tree -----------------------------------------------------------

void TstEditor::treeShowsProject_data()
{
    QTest::addColumn<Documents>("documents");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("warnings"); // %1 stands for the root folder

    const QByteArray german = help("<lang name=\"de\"><description>d</description></lang>");
    const QByteArray empty = help("");

    QTest::newRow("folders nest, files follow their folders")
        << Documents{{"a/b/x.zyhelp", german}, {"a/y.zyhelp", empty}, {"c.zyhelp", empty}}
        << QStringList{"a [100]",
                       "  b [100]",
                       "    x.zyhelp [200|a/b/x.zyhelp]",
                       "      de [300|a/b/x.zyhelp|de]",
                       "  y.zyhelp [200|a/y.zyhelp]",
                       "c.zyhelp [200|c.zyhelp]"}
        << QStringList();
    QTest::newRow("deep path")
        << Documents{{"a/b/c/d.zyhelp", empty}}
        << QStringList{"a [100]", "  b [100]", "    c [100]", "      d.zyhelp [200|a/b/c/d.zyhelp]"}
        << QStringList();
    QTest::newRow("folders differ in capitals")
        << Documents{{"docs/p.zyhelp", empty}, {"Docs/q.zyhelp", empty}}
        << QStringList{"Docs [100]", "  q.zyhelp [200|Docs/q.zyhelp]",
                       "docs [100]", "  p.zyhelp [200|docs/p.zyhelp]"}
        << QStringList();
    QTest::newRow("backslash is part of the name")
        << Documents{{"a\\b.zyhelp", empty}}
        << QStringList{"a\\b.zyhelp [200|a\\b.zyhelp]"}
        << QStringList();
    QTest::newRow("languages by key, sections in order")
        << Documents{{"x.zyhelp", help("<lang name=\"en\"><description/>"
                                       "<section name=\"Zwei\"/><section name=\"Eins\"/>"
                                       "<section name=\"\"/></lang>"
                                       "<lang name=\"de\"><description/></lang>"
                                       "<lang name=\"EN\"><description/></lang>")}}
        << QStringList{"x.zyhelp [200|x.zyhelp]",
                       "  EN [300|x.zyhelp|EN]",
                       "  de [300|x.zyhelp|de]",
                       "  en [300|x.zyhelp|en]",
                       "    Zwei [400|x.zyhelp|en|0]",
                       "    Eins [400|x.zyhelp|en|1]",
                       "     [400|x.zyhelp|en|2]"}
        << QStringList();
    QTest::newRow("document without languages")
        << Documents{{"x.zyhelp", empty}}
        << QStringList{"x.zyhelp [200|x.zyhelp]"}
        << QStringList();
    QTest::newRow("faulty document keeps what was complete")
        << Documents{{"x.zyhelp", "<zyhelp><lang name=\"de\"><description>d</description></lang>"
                                  "<lang name=\"en\"><description>e</description></zyhelp>"},
                     {"y.zyhelp", german}}
        << QStringList{"x.zyhelp [200|x.zyhelp]", "  de [300|x.zyhelp|de]",
                       "y.zyhelp [200|y.zyhelp]", "  de [300|y.zyhelp|de]"}
        << QStringList{"XML Parsing Fehler in \"%1/x.zyhelp\" : \"Opening and ending tag mismatch.\""};
    QTest::newRow("empty file")
        << Documents{{"x.zyhelp", ""}}
        << QStringList{"x.zyhelp [200|x.zyhelp]"}
        << QStringList{"XML Parsing Fehler in \"%1/x.zyhelp\" : \"Premature end of document.\""};
}

void TstEditor::treeShowsProject()
{
    QFETCH(Documents, documents);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, warnings);

    Project project;
    QVERIFY(project.addDocuments(documents));
    for (const QString &warning : std::as_const(warnings))
        QTest::ignoreMessage(QtWarningMsg, warning.arg(project.root()).toUtf8().constData());

    MainWindow window;
    QVERIFY(openProject(window, project));
    QCOMPARE(dumpTree(tree(window), project.root()), expected);
}

void TstEditor::treeNodesHaveIconsAndAreExpanded()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
    QVERIFY(openProject(window, project));
    QCOMPARE(window.windowTitle(), QStringLiteral("Editor - Handbuch"));

    QStyle *style = QApplication::style();
    const QImage folderIcon = style->standardIcon(QStyle::SP_DirIcon).pixmap(16).toImage();
    const QImage fileIcon = style->standardIcon(QStyle::SP_FileIcon).pixmap(16).toImage();
    QVERIFY(folderIcon != fileIcon);

    int nodes = 0;
    std::function<void(QTreeWidgetItem *)> check = [&](QTreeWidgetItem *item) {
        ++nodes;
        const QVariant kind = item->data(0, MainWindow::ItemTypeRole);
        QCOMPARE(kind.typeId(), int(QMetaType::Int));
        QCOMPARE(item->type(), int(QTreeWidgetItem::Type));
        if (item->childCount() > 0)
            QVERIFY2(item->isExpanded(), qPrintable(item->text(0)));
        switch (kind.toInt()) {
        case MainWindow::TypeFolder:
            QCOMPARE(item->icon(0).pixmap(16).toImage(), folderIcon);
            break;
        case MainWindow::TypeFile:
            QCOMPARE(item->icon(0).pixmap(16).toImage(), fileIcon);
            break;
        case MainWindow::TypeSection:
            QCOMPARE(item->data(0, MainWindow::SectionIndexRole).typeId(), int(QMetaType::Int));
            Q_FALLTHROUGH();
        default:
            QVERIFY(item->icon(0).isNull());
            break;
        }
        for (int i = 0; i < item->childCount(); ++i)
            check(item->child(i));
    };
    for (int i = 0; i < tree(window)->topLevelItemCount(); ++i)
        check(tree(window)->topLevelItem(i));
    QCOMPARE(nodes, 10);
    QVERIFY(tree(window)->selectedItems().isEmpty());
}

// A document that leaves the disk after the file list was made has no node at the
// next rebuild, and it is not read (no warning) although it is still listed.
void TstEditor::treeSkipsVanishedDocuments()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    QVERIFY(QDir(project.path("sub")).removeRecursively());

    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sektion hinzufügen...")));
    driver.onModal(enterText(QStringLiteral("Neu")));
    rightClick(window, node(window, {"b.zyhelp", "de"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));

    QCOMPARE(dumpTree(tree(window), project.root()),
             (QStringList{"b.zyhelp [200|b.zyhelp]", "  de [300|b.zyhelp|de]",
                          "    Neu [400|b.zyhelp|de|0]"}));
    QVERIFY(!QFile::exists(project.path("sub/a.zyhelp")));
}

void TstEditor::folderItemIsFoundOrMade_data()
{
    QTest::addColumn<QStringList>("nodes"); // "text:kind" of the nodes already there
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("found"); // index of the node returned, -1 for a new one

    QTest::newRow("no nodes") << QStringList() << "a" << -1;
    QTest::newRow("folder found") << QStringList{"x:100", "a:100"} << "a" << 1;
    QTest::newRow("first of two folders") << QStringList{"a:100", "a:100"} << "a" << 0;
    QTest::newRow("file of that name passed over") << QStringList{"a:200"} << "a" << -1;
    QTest::newRow("language of that name passed over") << QStringList{"a:300"} << "a" << -1;
    QTest::newRow("section of that name passed over") << QStringList{"a:400"} << "a" << -1;
    QTest::newRow("file before the folder") << QStringList{"a:200", "a:100"} << "a" << 1;
    QTest::newRow("other capitals") << QStringList{"A:100"} << "a" << -1;
    QTest::newRow("empty name") << QStringList{":100"} << "" << 0;
    QTest::newRow("empty name made") << QStringList{"a:100"} << "" << -1;
}

void TstEditor::folderItemIsFoundOrMade()
{
    QFETCH(QStringList, nodes);
    QFETCH(QString, name);
    QFETCH(int, found);

    const QImage folderIcon =
        QApplication::style()->standardIcon(QStyle::SP_DirIcon).pixmap(16).toImage();

    // The same search at the top level and below a node.
    for (const bool underParent : {false, true}) {
        QTreeWidget treeWidget;
        QTreeWidgetItem *parent = underParent ? new QTreeWidgetItem(&treeWidget) : nullptr;
        const auto childAt = [&](int i) {
            return parent ? parent->child(i) : treeWidget.topLevelItem(i);
        };
        const auto childCount = [&] {
            return parent ? parent->childCount() : treeWidget.topLevelItemCount();
        };
        const int before = childCount();
        for (const QString &spec : std::as_const(nodes)) {
            auto *item = new QTreeWidgetItem;
            item->setText(0, spec.section(QLatin1Char(':'), 0, 0));
            item->setData(0, MainWindow::ItemTypeRole, spec.section(QLatin1Char(':'), 1).toInt());
            if (parent)
                parent->addChild(item);
            else
                treeWidget.addTopLevelItem(item);
        }

        QTreeWidgetItem *result = getFolderItem(&treeWidget, parent, name);
        QVERIFY(result);
        if (found >= 0) {
            QCOMPARE(result, childAt(before + found));
            QCOMPARE(childCount(), before + nodes.size());
        } else {
            QCOMPARE(childCount(), before + nodes.size() + 1);
            QCOMPARE(result, childAt(childCount() - 1));
            QCOMPARE(result->text(0), name);
            QCOMPARE(result->data(0, MainWindow::ItemTypeRole), QVariant(int(MainWindow::TypeFolder)));
            QVERIFY(!result->data(0, MainWindow::FilePathRole).isValid());
            QCOMPARE(result->icon(0).pixmap(16).toImage(), folderIcon);
        }
        // Asked again, the same node: a folder is never made twice.
        QCOMPARE(getFolderItem(&treeWidget, parent, name), result);
    }
}

// ---- Pages, taking edits over and saving --------------------------------------------

void TstEditor::clickShowsPage_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("fields"); // "widget=value"; rows of lists joined by ","

    QTest::newRow("file") << QStringList{"sub", "a.zyhelp"} << "pageFile"
                          << QStringList{"editAuthor=Anna", "editVersion=2.1", "listLinks=start,index"};
    QTest::newRow("file without links") << QStringList{"b.zyhelp"} << "pageFile"
                                        << QStringList{"editAuthor=Bert", "editVersion=1.0", "listLinks="};
    QTest::newRow("language") << QStringList{"sub", "a.zyhelp", "en"} << "pageLanguage"
                              << QStringList{"editLangDescription=Hello"};
    QTest::newRow("section") << QStringList{"sub", "a.zyhelp", "de", "Drei"} << "pageSection"
                             << QStringList{"editSectionName=Drei", "editContent=Text drei\nZeile zwei"};
    QTest::newRow("section of second language")
        << QStringList{"sub", "a.zyhelp", "en", "One"} << "pageSection"
        << QStringList{"editSectionName=One", "editContent=Text one"};
    QTest::newRow("folder") << QStringList{"sub"} << "pageEmpty" << QStringList();
}

void TstEditor::clickShowsPage()
{
    QFETCH(QStringList, path);
    QFETCH(QString, page);
    QFETCH(QStringList, fields);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    // Another page first, so the click has to change it.
    click(window, node(window, {"b.zyhelp", "de"}));
    QCOMPARE(widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName(),
             QStringLiteral("pageLanguage"));
    widget<QTabWidget>(window, "tabWidgetFile")->setCurrentIndex(1);

    QTreeWidgetItem *item = node(window, path);
    QVERIFY(item);
    click(window, item);
    QCOMPARE(widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName(), page);
    for (const QString &field : std::as_const(fields)) {
        const QString name = field.section(QLatin1Char('='), 0, 0);
        const QString value = field.section(QLatin1Char('='), 1);
        QObject *object = window.findChild<QObject *>(name);
        if (auto *line = qobject_cast<QLineEdit *>(object))
            QCOMPARE(line->text(), value);
        else if (auto *text = qobject_cast<QPlainTextEdit *>(object))
            QCOMPARE(text->toPlainText(), value);
        else if (qobject_cast<QListWidget *>(object))
            QCOMPARE(links(window).join(QLatin1Char(',')), value);
        else
            QFAIL(qPrintable(name));
    }
    // The file page keeps the tab that was shown last.
    QCOMPARE(widget<QTabWidget>(window, "tabWidgetFile")->currentIndex(), 1);
    QVERIFY(statusMessage(window).isEmpty());
}

// Clicking another node takes the page over into the model first; a save then
// writes all that was taken over into the current node's document.
void TstEditor::clickTakesPreviousEditsOver()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    widget<QLineEdit>(window, "editLangDescription")->setText(QStringLiteral("Guten Tag"));
    click(window, node(window, {"sub", "a.zyhelp", "de", "Eins"}));
    QCOMPARE(widget<QLineEdit>(window, "editSectionName")->text(), QStringLiteral("Eins"));
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    QCOMPARE(widget<QLineEdit>(window, "editLangDescription")->text(), QStringLiteral("Guten Tag"));

    click(window, node(window, {"sub", "a.zyhelp", "de", "Zwei"}));
    widget<QLineEdit>(window, "editSectionName")->setText(QStringLiteral("Zwei <neu>"));
    widget<QPlainTextEdit>(window, "editContent")->setPlainText(QStringLiteral("  a & b\n"));
    click(window, node(window, {"sub", "a.zyhelp"}));
    QVERIFY(node(window, {"sub", "a.zyhelp", "de", "Zwei <neu>"}));

    widget<QLineEdit>(window, "editAuthor")->setText(QStringLiteral("Zoe"));
    widget<QLineEdit>(window, "editVersion")->setText(QString());
    click(window, node(window, {"sub", "a.zyhelp", "en", "One"}));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA()); // nothing written yet

    action(window, "actionSave")->trigger();
    QByteArray expected = replaced(documentA(), "version=\"2.1\" author=\"Anna\"",
                                   "version=\"\" author=\"Zoe\"");
    expected = replaced(expected, "<description>Hallo", "<description>Guten Tag");
    expected = replaced(expected, "<section name=\"Zwei\">Text zwei</section>",
                        "<section name=\"Zwei &lt;neu&gt;\">  a &amp; b\n</section>");
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), expected);
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));
}

// Save writes the current node's document; edits taken over into another one stay
// in memory until that one is saved. The status message goes away by itself.
void TstEditor::saveWritesCurrentDocumentOnly()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    widget<QLineEdit>(window, "editLangDescription")->setText(QStringLiteral("Neu"));
    click(window, node(window, {"b.zyhelp", "de"}));
    widget<QLineEdit>(window, "editLangDescription")->setText(QStringLiteral("Biene"));
    action(window, "actionSave")->trigger();

    QCOMPARE(readFile(project.path("b.zyhelp")), replaced(documentB(), ">Bee<", ">Biene<"));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: b.zyhelp"));

    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    QCOMPARE(widget<QLineEdit>(window, "editLangDescription")->text(), QStringLiteral("Neu"));
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), replaced(documentA(), ">Hallo<", ">Neu<"));
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));

    QTRY_VERIFY_WITH_TIMEOUT(statusMessage(window).isEmpty(), 10000);
}

void TstEditor::saveFailureKeepsEdits_data()
{
    QTest::addColumn<bool>("fileBecomesFolder");
    QTest::newRow("folder of the document removed") << false;
    QTest::newRow("document replaced by a folder") << true;
}

void TstEditor::saveFailureKeepsEdits()
{
    QFETCH(bool, fileBecomesFolder);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    const QString filePath = project.path("sub/a.zyhelp");
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    widget<QLineEdit>(window, "editLangDescription")->setText(QStringLiteral("Neu"));
    if (fileBecomesFolder)
        QVERIFY(QFile::remove(filePath) && QDir().mkdir(filePath));
    else
        QVERIFY(QDir(project.path("sub")).removeRecursively());

    QTest::ignoreMessage(QtWarningMsg, QStringLiteral("Konnte Datei nicht zum Schreiben öffnen: \"%1\"")
                                           .arg(filePath).toUtf8().constData());
    ModalDriver driver;
    BoxSeen box;
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    action(window, "actionSave")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.className, QStringLiteral("QMessageBox"));
    QCOMPARE(box.title, QStringLiteral("Fehler"));
    QCOMPARE(box.text, QStringLiteral("Speichern fehlgeschlagen."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(statusMessage(window).isEmpty());

    // The model holds the edit: the page refilled from it shows it.
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    QCOMPARE(widget<QLineEdit>(window, "editLangDescription")->text(), QStringLiteral("Neu"));

    // A later save succeeds with it.
    if (fileBecomesFolder)
        QVERIFY(QDir().rmdir(filePath));
    else
        QVERIFY(QDir().mkdir(project.path("sub")));
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(filePath), replaced(documentA(), ">Hallo<", ">Neu<"));
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));
}

// A folder node belongs to no document: saving it fails on the empty path.
void TstEditor::saveOnFolderFails()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    click(window, node(window, {"sub"}));
    QCOMPARE(widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName(),
             QStringLiteral("pageEmpty"));
    QTest::ignoreMessage(QtWarningMsg, "Konnte Datei nicht zum Schreiben öffnen: \"\"");
    ModalDriver driver;
    BoxSeen box;
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    action(window, "actionSave")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Fehler"));
    QCOMPARE(box.text, QStringLiteral("Speichern fehlgeschlagen."));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
}

// A rebuild drops the current node: the old page stays, but saving does nothing.
void TstEditor::saveAfterRebuildDoesNothing()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    click(window, node(window, {"sub", "a.zyhelp", "de", "Eins"}));
    widget<QLineEdit>(window, "editSectionName")->setText(QStringLiteral("Vorher"));
    action(window, "actionReload")->trigger();

    auto *stack = widget<QStackedWidget>(window, "editorStack");
    QCOMPARE(stack->currentWidget()->objectName(), QStringLiteral("pageSection"));
    QCOMPARE(widget<QLineEdit>(window, "editSectionName")->text(), QStringLiteral("Vorher"));
    QVERIFY(node(window, {"sub", "a.zyhelp", "de", "Eins"})); // the edit never reached the model

    widget<QLineEdit>(window, "editSectionName")->setText(QStringLiteral("Nachher"));
    ModalDriver driver; // no window may appear
    action(window, "actionSave")->trigger();
    QVERIFY(pressKey(window, Qt::Key_S, Qt::ControlModifier));
    widget<QPushButton>(window, "btnSaveSection")->click();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QVERIFY(statusMessage(window).isEmpty());
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QVERIFY(node(window, {"sub", "a.zyhelp", "de", "Eins"}));
}

// Clicking the current node again refills its page: what was typed is dropped.
void TstEditor::clickingSameNodeRestoresPage()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *section = node(window, {"sub", "a.zyhelp", "de", "Eins"});
    click(window, section);
    widget<QLineEdit>(window, "editSectionName")->setText(QStringLiteral("Anders"));
    widget<QPlainTextEdit>(window, "editContent")->setPlainText(QStringLiteral("anders"));
    click(window, section);
    QCOMPARE(widget<QLineEdit>(window, "editSectionName")->text(), QStringLiteral("Eins"));
    QCOMPARE(widget<QPlainTextEdit>(window, "editContent")->toPlainText(), QStringLiteral("Text eins"));
    QCOMPARE(section->text(0), QStringLiteral("Eins"));

    QTreeWidgetItem *file = node(window, {"sub", "a.zyhelp"});
    click(window, file);
    widget<QLineEdit>(window, "editAuthor")->setText(QStringLiteral("Anders"));
    widget<QListWidget>(window, "listLinks")->addItem(QStringLiteral("anders"));
    click(window, file);
    QCOMPARE(widget<QLineEdit>(window, "editAuthor")->text(), QStringLiteral("Anna"));
    QCOMPARE(links(window), (QStringList{"start", "index"}));

    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
}

// The tree shows a section's new name as soon as it is taken over, without a
// rebuild: the node stays the same.
void TstEditor::renamedSectionShowsAtOnce()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *section = node(window, {"sub", "a.zyhelp", "de", "Zwei"});
    click(window, section);
    widget<QLineEdit>(window, "editSectionName")->setText(QStringLiteral("Zwo"));
    QCOMPARE(section->text(0), QStringLiteral("Zwei"));
    widget<QPushButton>(window, "btnSaveSection")->click();
    QCOMPARE(node(window, {"sub", "a.zyhelp", "de", "Zwo"}), section);
    QCOMPARE(section->data(0, MainWindow::SectionIndexRole), QVariant(1));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")),
             replaced(documentA(), "name=\"Zwei\"", "name=\"Zwo\""));

    // The same when the take-over comes from clicking another node.
    widget<QLineEdit>(window, "editSectionName")->setText(QString());
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    QCOMPARE(section->text(0), QString());
}

void TstEditor::linksAreEditedOnThePage()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    click(window, node(window, {"sub", "a.zyhelp"}));
    auto *input = widget<QLineEdit>(window, "editNewLink");
    auto *add = widget<QPushButton>(window, "btnAddLink");
    auto *remove = widget<QPushButton>(window, "btnRemoveLink");

    input->setText(QStringLiteral("  weiter \t"));
    add->click();
    QCOMPARE(links(window), (QStringList{"start", "index", "weiter"}));
    QCOMPARE(input->text(), QString());

    input->setText(QStringLiteral("  \t "));
    add->click();
    QCOMPARE(links(window), (QStringList{"start", "index", "weiter"}));
    QCOMPARE(input->text(), QStringLiteral("  \t "));

    input->setText(QStringLiteral("start"));
    add->click();
    QCOMPARE(links(window), (QStringList{"start", "index", "weiter", "start"}));

    auto *list = widget<QListWidget>(window, "listLinks");
    list->setCurrentRow(0);
    remove->click();
    QCOMPARE(links(window), (QStringList{"index", "weiter", "start"}));
    list->clearSelection();
    remove->click();
    QCOMPARE(links(window), (QStringList{"index", "weiter", "start"}));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());

    // Another document's page and back: the rows were taken over into the model.
    click(window, node(window, {"b.zyhelp"}));
    QCOMPARE(links(window), QStringList());
    click(window, node(window, {"sub", "a.zyhelp"}));
    QCOMPARE(links(window), (QStringList{"index", "weiter", "start"}));

    widget<QPushButton>(window, "btnSaveFile")->click();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")),
             replaced(documentA(), "    <link page=\"start\"/>\n    <link page=\"index\"/>\n",
                      "    <link page=\"index\"/>\n    <link page=\"weiter\"/>\n"
                      "    <link page=\"start\"/>\n"));
}

// Adding a link needs a current file node; removing needs only a selected row.
void TstEditor::linkButtonsNeedFileNode()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    auto *input = widget<QLineEdit>(window, "editNewLink");
    auto *add = widget<QPushButton>(window, "btnAddLink");
    input->setText(QStringLiteral("neu"));
    add->click();
    QCOMPARE(links(window), QStringList());
    QCOMPARE(input->text(), QStringLiteral("neu"));

    click(window, node(window, {"sub", "a.zyhelp"}));
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    add->click();
    QCOMPARE(links(window), (QStringList{"start", "index"}));
    QCOMPARE(input->text(), QStringLiteral("neu"));

    widget<QListWidget>(window, "listLinks")->setCurrentRow(1);
    widget<QPushButton>(window, "btnRemoveLink")->click();
    QCOMPARE(links(window), QStringList{"start"});
    // The language page was current: the document keeps its links.
    click(window, node(window, {"sub", "a.zyhelp"}));
    QCOMPARE(links(window), (QStringList{"start", "index"}));
}

// A document deleted on disk after the reload is still in memory: its page fills,
// and saving writes it again.
void TstEditor::vanishedDocumentIsWrittenAgain()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    QVERIFY(pressKey(window, Qt::Key_F5));
    QVERIFY(QFile::remove(project.path("sub/a.zyhelp")));

    click(window, node(window, {"sub", "a.zyhelp", "en", "One"}));
    QCOMPARE(widget<QPlainTextEdit>(window, "editContent")->toPlainText(), QStringLiteral("Text one"));
    QVERIFY(pressKey(window, Qt::Key_S, Qt::ControlModifier));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));
}

void TstEditor::nodeOfMissingPartKeepsPage_data()
{
    QTest::addColumn<QStringList>("path");   // the node whose data is bent
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QStringList>("before"); // a node of the same kind, clicked first
    QTest::addColumn<QString>("field");      // a field of the page and what it keeps
    QTest::addColumn<QString>("kept");

    const QStringList drei{"sub", "a.zyhelp", "de", "Drei"};
    const QStringList eins{"sub", "a.zyhelp", "de", "Eins"};
    const int index = MainWindow::SectionIndexRole;
    QTest::newRow("section index past the end")
        << drei << index << QVariant(3) << eins << "editSectionName" << "Eins";
    QTest::newRow("negative section index")
        << drei << index << QVariant(-1) << eins << "editSectionName" << "Eins";
    QTest::newRow("section of a missing language")
        << drei << int(MainWindow::LangKeyRole) << QVariant("xx") << eins << "editSectionName"
        << "Eins";
    QTest::newRow("missing language")
        << QStringList{"sub", "a.zyhelp", "de"} << int(MainWindow::LangKeyRole) << QVariant("xx")
        << QStringList{"sub", "a.zyhelp", "en"} << "editLangDescription" << "Hello";
    QTest::newRow("document not loaded")
        << QStringList{"sub", "a.zyhelp"} << int(MainWindow::FilePathRole) << QVariant("/nicht/da.zyhelp")
        << QStringList{"b.zyhelp"} << "editAuthor" << "Bert";
}

// A node whose document, language or section cannot be found shows its page with
// the fields as they were; edits made there are taken over nowhere, and nothing is
// added to the model for the missing part.
void TstEditor::nodeOfMissingPartKeepsPage()
{
    QFETCH(QStringList, path);
    QFETCH(int, role);
    QFETCH(QVariant, value);
    QFETCH(QStringList, before);
    QFETCH(QString, field);
    QFETCH(QString, kept);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *bent = node(window, path);
    const QString text = bent->text(0);
    bent->setData(0, role, value);
    QCOMPARE(bent->data(0, role), value);
    const QString page =
        widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName(); // pageEmpty
    click(window, node(window, before));
    const QString expectedPage =
        widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName();
    QVERIFY(expectedPage != page);
    click(window, node(window, {"sub"}));
    click(window, bent);
    QCOMPARE(widget<QStackedWidget>(window, "editorStack")->currentWidget()->objectName(), expectedPage);
    auto *edit = window.findChild<QLineEdit *>(field);
    QCOMPARE(edit->text(), kept);

    edit->setText(QStringLiteral("Neu"));
    click(window, node(window, {"b.zyhelp", "de"})); // nothing to take over
    QCOMPARE(bent->text(0), text);
    click(window, node(window, before));
    QCOMPARE(edit->text(), kept);
    click(window, node(window, {"sub", "a.zyhelp", "en", "One"}));
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    click(window, node(window, {"b.zyhelp"}));
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("b.zyhelp")), documentB());
    QVERIFY(!QFile::exists(QStringLiteral("/nicht/da.zyhelp")));
}

QTEST_MAIN(TstEditor)
#include "tst_editor.moc"
