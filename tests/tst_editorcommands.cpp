#include "editorfixture.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStackedWidget>

using namespace Fixture;

// The tree's context menu with its structural edits, and the project and file
// commands of the "Datei" menu.
class TstEditorCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void contextMenuEntries_data();
    void contextMenuEntries();
    void contextMenuNeedsNode();
    void addLanguage_data();
    void addLanguage();
    void addLanguageRefusesExistingKey();
    void addSection_data();
    void addSection();
    void inputRefusedChangesNothing_data();
    void inputRefusedChangesNothing();
    void deleteSection_data();
    void deleteSection();
    void deleteLanguage_data();
    void deleteLanguage();
    void deleteDocument_data();
    void deleteDocument();
    void structuralEditKeepsTakenOverEditsOnly();

    void newProject_data();
    void newProject();
    void newProjectCancelled_data();
    void newProjectCancelled();
    void openProjectAsksInHomeFolder();
    void newFile_data();
    void newFile();
    void newFileReplacesChosenFile();
    void newFileNeedsProject();
    void reloadFollowsDisk();
    void registerPath();

private:
    static QStringList usualTree(const QStringList &aLanguages = {});
};

// The nodes of the usual project, with other lines for sub/a.zyhelp when given.
QStringList TstEditorCommands::usualTree(const QStringList &aLanguages)
{
    QStringList lines{"b.zyhelp [200|b.zyhelp]", "  de [300|b.zyhelp|de]",
                      "sub [100]", "  a.zyhelp [200|sub/a.zyhelp]"};
    if (!aLanguages.isEmpty())
        return lines + aLanguages;
    return lines + QStringList{"    de [300|sub/a.zyhelp|de]",
                               "      Eins [400|sub/a.zyhelp|de|0]",
                               "      Zwei [400|sub/a.zyhelp|de|1]",
                               "      Drei [400|sub/a.zyhelp|de|2]",
                               "    en [300|sub/a.zyhelp|en]",
                               "      One [400|sub/a.zyhelp|en|0]"};
}

static QByteArray projectFile(const QString &name, const QStringList &files)
{
    QByteArray bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyproject name=\""
                       + name.toUtf8() + '"';
    if (files.isEmpty())
        return bytes + "/>\n";
    bytes += ">\n";
    for (const QString &file : files)
        bytes += "    <file>" + file.toUtf8() + "</file>\n";
    return bytes + "</zyproject>\n";
}

static const QByteArray newDocument = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                      "<zyhelp version=\"1.0\" author=\"Ich\">\n"
                                      "    <lang name=\"de\">\n"
                                      "        <description>Neue Beschreibung</description>\n"
                                      "    </lang>\n"
                                      "</zyhelp>\n";

static QString currentPage(QMainWindow &window)
{
    auto *stack = window.findChild<QStackedWidget *>(QStringLiteral("editorStack"));
    return stack->currentWidget()->objectName();
}

void TstEditorCommands::initTestCase()
{
    // The toolkit's own file dialog, whatever the platform offers.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void TstEditorCommands::init()
{
    QFile::remove(pathListFile());
    failOnProgramWarnings();
}

void TstEditorCommands::cleanup()
{
    QFile::remove(pathListFile());
}

// ---- Context menu -------------------------------------------------------------------

void TstEditorCommands::contextMenuEntries_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<QStringList>("entries");

    QTest::newRow("document")
        << QStringList{"sub", "a.zyhelp"}
        << QStringList{"Sprache hinzufügen...", "-", "Aus Projekt entfernen (Löschen)"};
    QTest::newRow("language") << QStringList{"sub", "a.zyhelp", "en"}
                              << QStringList{"Sektion hinzufügen...", "-", "Sprache löschen"};
    QTest::newRow("section") << QStringList{"sub", "a.zyhelp", "de", "Zwei"}
                             << QStringList{"Sektion löschen"};
    QTest::newRow("folder") << QStringList{"sub"} << QStringList();
}

// One right click opens one menu, owned by the window, where the click was.
void TstEditorCommands::contextMenuEntries()
{
    QFETCH(QStringList, path);
    QFETCH(QStringList, entries);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *item = node(window, path);
    QVERIFY(item);
    const QPoint pos = tree(window)->visualItemRect(item).center();
    QCOMPARE(tree(window)->itemAt(pos + QPoint(30, 0)), item);
    // A node without entries (a folder) opens no menu at all: Qt 6.4 would show an
    // invisible empty popup that holds the input, newer versions show none.
    const bool menuExpected = !entries.isEmpty();
    QStringList seen;
    QWidget *menuParent = nullptr;
    QPoint menuPos;
    ModalDriver driver;
    if (menuExpected) {
        driver.onPopup([&](QWidget *menu) {
            menuParent = menu->parentWidget();
            menuPos = menu->pos();
            chooseMenuEntry(QString(), &seen)(menu);
        });
    }
    const QPoint clicked = rightClickAt(window, pos);
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(seen, entries);
    if (menuExpected) {
        QCOMPARE(menuParent, &window);
        // Where the click was, give or take the pixel the offscreen platform rounds.
        QVERIFY((menuPos - tree(window)->viewport()->mapToGlobal(clicked)).manhattanLength() <= 2);
    }

    QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
    QCOMPARE(node(window, path), item); // closed without a choice: no rebuild
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
}

void TstEditorCommands::contextMenuNeedsNode()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));

    {
        ModalDriver quiet; // no window may appear
        rightClickAt(window, QPoint(20, 20)); // no project: an empty tree
        QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
    }
    QVERIFY(openProject(window, project));
    QTreeWidget *treeWidget = tree(window);
    const QRect last = treeWidget->visualItemRect(node(window, {"sub", "a.zyhelp", "en", "One"}));
    QVERIFY(last.bottom() + 30 < treeWidget->viewport()->height());
    ModalDriver quiet;
    rightClickAt(window, QPoint(last.center().x(), last.bottom() + 20));
    QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
}

void TstEditorCommands::addLanguage_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("languages"); // of b.zyhelp, in tree order

    QTest::newRow("after de") << "fr" << QStringList{"de", "fr"};
    QTest::newRow("capitals first") << "EN" << QStringList{"EN", "de"};
    QTest::newRow("blanks kept") << " x " << QStringList{" x ", "de"};
}

void TstEditorCommands::addLanguage()
{
    QFETCH(QString, key);
    QFETCH(QStringList, languages);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    InputSeen input;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sprache hinzufügen...")));
    driver.onModal(enterText(key, &input));
    rightClick(window, node(window, {"b.zyhelp"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(input.className, QStringLiteral("QInputDialog"));
    QCOMPARE(input.title, QStringLiteral("Neu"));
    QCOMPARE(input.label, QStringLiteral("Sprache (de, en):"));
    QCOMPARE(input.preset, QString());
    QCOMPARE(input.inputMode, QInputDialog::TextInput);
    QCOMPARE(input.echoMode, QLineEdit::Normal);

    const QByteArray block = "    <lang name=\"" + key.toUtf8() + "\">\n"
                             "        <description>...</description>\n"
                             "    </lang>\n";
    QByteArray expected = documentB();
    if (languages.first() == key)
        expected.insert(expected.indexOf("    <lang"), block);
    else
        expected.insert(expected.indexOf("</zyhelp>"), block);
    QCOMPARE(readFile(project.path("b.zyhelp")), expected);
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: b.zyhelp"));

    QTreeWidgetItem *file = node(window, {"b.zyhelp"});
    QStringList shown;
    for (int i = 0; i < file->childCount(); ++i)
        shown.append(file->child(i)->text(0));
    QCOMPARE(shown, languages);
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
}

// A key the document already has is refused: its language keeps its description
// and sections, and nothing is written or rebuilt.
void TstEditorCommands::addLanguageRefusesExistingKey()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *file = node(window, {"sub", "a.zyhelp"});
    BoxSeen box;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sprache hinzufügen...")));
    driver.onModal(enterText(QStringLiteral("de")));
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    rightClick(window, file);
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Neu"));
    QCOMPARE(box.text, QStringLiteral("Die Sprache 'de' ist bereits vorhanden."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));

    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
    QCOMPARE(node(window, {"sub", "a.zyhelp"}), file);
    QVERIFY(statusMessage(window).isEmpty());

    // Saved later, the document still holds the whole language.
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
}

void TstEditorCommands::addSection_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("after"); // the line the new section follows

    QTest::newRow("third section") << "de" << "Vier" << QByteArray("Zeile zwei</section>\n");
    QTest::newRow("name used already") << "de" << "Eins" << QByteArray("Zeile zwei</section>\n");
    QTest::newRow("blanks kept") << "en" << "  " << QByteArray("Text one</section>\n");
}

void TstEditorCommands::addSection()
{
    QFETCH(QString, language);
    QFETCH(QString, name);
    QFETCH(QByteArray, after);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *lang = node(window, {"sub", "a.zyhelp", language});
    const int sections = lang->childCount();
    InputSeen input;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sektion hinzufügen...")));
    driver.onModal(enterText(name, &input));
    rightClick(window, lang);
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(input.title, QStringLiteral("Neu"));
    QCOMPARE(input.label, QStringLiteral("Sektion Name:"));
    QCOMPARE(input.preset, QString());
    QCOMPARE(input.echoMode, QLineEdit::Normal);

    QByteArray expected = documentA();
    expected.insert(expected.indexOf(after) + after.size(),
                    "        <section name=\"" + name.toUtf8() + "\">...</section>\n");
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), expected);
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));

    lang = node(window, {"sub", "a.zyhelp", language});
    QCOMPARE(lang->childCount(), sections + 1);
    QTreeWidgetItem *added = lang->child(sections);
    QCOMPARE(added->text(0), name);
    QCOMPARE(added->data(0, MainWindow::SectionIndexRole), QVariant(sections));
    click(window, added);
    QCOMPARE(window.findChild<QPlainTextEdit *>(QStringLiteral("editContent"))->toPlainText(),
             QStringLiteral("..."));
}

void TstEditorCommands::inputRefusedChangesNothing_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("cancel");

    const QStringList file{"sub", "a.zyhelp"};
    const QStringList lang{"sub", "a.zyhelp", "de"};
    QTest::newRow("language cancelled") << file << "Sprache hinzufügen..." << true;
    QTest::newRow("language empty") << file << "Sprache hinzufügen..." << false;
    QTest::newRow("section cancelled") << lang << "Sektion hinzufügen..." << true;
    QTest::newRow("section empty") << lang << "Sektion hinzufügen..." << false;
}

// Nothing is written, no message shown, and the tree is not rebuilt: the current
// node stays, so a later save still writes the page.
void TstEditorCommands::inputRefusedChangesNothing()
{
    QFETCH(QStringList, path);
    QFETCH(QString, entry);
    QFETCH(bool, cancel);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    QTreeWidgetItem *item = node(window, path);
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"))->setText(QStringLiteral("Neu"));
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(entry));
    driver.onModal(cancel ? cancelInput() : enterText(QString()));
    rightClick(window, item);
    QVERIFY2(driver.clean(), qPrintable(driver.report()));

    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QVERIFY(statusMessage(window).isEmpty());
    QCOMPARE(node(window, path), item);
    action(window, "actionSave")->trigger();
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), replaced(documentA(), ">Hallo<", ">Neu<"));
}

void TstEditorCommands::deleteSection_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    QTest::newRow("yes") << QMessageBox::Yes;
    QTest::newRow("no") << QMessageBox::No;
}

void TstEditorCommands::deleteSection()
{
    QFETCH(QMessageBox::StandardButton, answer);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    BoxSeen box;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sektion löschen")));
    driver.onModal(answerBox(answer, &box));
    rightClick(window, node(window, {"sub", "a.zyhelp", "de", "Eins"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Löschen"));
    QCOMPARE(box.text, QStringLiteral("Sektion löschen?"));
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);

    if (answer == QMessageBox::No) {
        QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
        QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
        return;
    }
    QCOMPARE(readFile(project.path("sub/a.zyhelp")),
             replaced(documentA(), "        <section name=\"Eins\">Text eins</section>\n", ""));
    QCOMPARE(dumpTree(tree(window), project.root()),
             usualTree({"    de [300|sub/a.zyhelp|de]",
                        "      Zwei [400|sub/a.zyhelp|de|0]",
                        "      Drei [400|sub/a.zyhelp|de|1]",
                        "    en [300|sub/a.zyhelp|en]",
                        "      One [400|sub/a.zyhelp|en|0]"}));
}

void TstEditorCommands::deleteLanguage_data()
{
    deleteSection_data();
}

void TstEditorCommands::deleteLanguage()
{
    QFETCH(QMessageBox::StandardButton, answer);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    BoxSeen box;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sprache löschen")));
    driver.onModal(answerBox(answer, &box));
    rightClick(window, node(window, {"sub", "a.zyhelp", "de"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Löschen"));
    QCOMPARE(box.text, QStringLiteral("Sprache 'de' löschen?"));
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);

    if (answer == QMessageBox::No) {
        QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
        QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
        return;
    }
    QByteArray expected = documentA();
    const qsizetype from = expected.indexOf("    <lang name=\"de\">");
    expected.remove(from, expected.indexOf("    <lang name=\"en\">") - from);
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), expected);
    QCOMPARE(dumpTree(tree(window), project.root()),
             usualTree({"    en [300|sub/a.zyhelp|en]", "      One [400|sub/a.zyhelp|en|0]"}));
}

void TstEditorCommands::deleteDocument_data()
{
    deleteSection_data();
}

void TstEditorCommands::deleteDocument()
{
    QFETCH(QMessageBox::StandardButton, answer);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    const QByteArray projectBefore = readFile(project.projectFile());
    click(window, node(window, {"b.zyhelp", "de"}));

    BoxSeen box;
    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Aus Projekt entfernen (Löschen)")));
    driver.onModal(answerBox(answer, &box));
    rightClick(window, node(window, {"sub", "a.zyhelp"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Löschen"));
    QCOMPARE(box.text,
             QStringLiteral("Datei wirklich löschen?\n(Sie wird von der Festplatte entfernt!)"));
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);

    if (answer == QMessageBox::No) {
        QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
        QCOMPARE(readFile(project.projectFile()), projectBefore);
        QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
        QCOMPARE(currentPage(window), QStringLiteral("pageLanguage"));
        return;
    }
    QVERIFY(!QFile::exists(project.path("sub/a.zyhelp")));
    QCOMPARE(readFile(project.projectFile()), projectFile("Handbuch", {"b.zyhelp"}));
    QCOMPARE(dumpTree(tree(window), project.root()),
             (QStringList{"b.zyhelp [200|b.zyhelp]", "  de [300|b.zyhelp|de]"}));
    QCOMPARE(currentPage(window), QStringLiteral("pageEmpty"));
    QCOMPARE(readFile(project.path("b.zyhelp")), documentB());

    // No node is current any more: saving does nothing.
    ModalDriver quiet;
    action(window, "actionSave")->trigger();
    QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
    QVERIFY(statusMessage(window).isEmpty());
}

// A structural edit writes what was taken over into its document before, loses
// what was only typed, and drops what was taken over into other documents.
void TstEditorCommands::structuralEditKeepsTakenOverEditsOnly()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    auto *description = window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"));

    click(window, node(window, {"b.zyhelp", "de"}));
    description->setText(QStringLiteral("Biene"));
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    description->setText(QStringLiteral("Erst"));
    click(window, node(window, {"sub", "a.zyhelp", "de", "Eins"}));
    window.findChild<QLineEdit *>(QStringLiteral("editSectionName"))->setText(QStringLiteral("Getippt"));

    ModalDriver driver;
    driver.onPopup(chooseMenuEntry(QStringLiteral("Sektion hinzufügen...")));
    driver.onModal(enterText(QStringLiteral("Neu")));
    rightClick(window, node(window, {"sub", "a.zyhelp", "en"}));
    QVERIFY2(driver.clean(), qPrintable(driver.report()));

    QByteArray expected = replaced(documentA(), ">Hallo<", ">Erst<");
    expected = replaced(expected, "Text one</section>\n",
                        "Text one</section>\n        <section name=\"Neu\">...</section>\n");
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), expected);
    QCOMPARE(readFile(project.path("b.zyhelp")), documentB());
    QVERIFY(node(window, {"sub", "a.zyhelp", "de", "Eins"}));
    click(window, node(window, {"b.zyhelp", "de"}));
    QCOMPARE(description->text(), QStringLiteral("Bee"));

    // After a rebuild nothing is current until a click: a save does nothing.
    action(window, "actionReload")->trigger();
    description->setText(QStringLiteral("Verloren"));
    window.statusBar()->clearMessage();
    QVERIFY(pressKey(window, Qt::Key_S, Qt::ControlModifier));
    QCOMPARE(readFile(project.path("b.zyhelp")), documentB());
    QVERIFY(statusMessage(window).isEmpty());
}

// ---- Project and file commands ---------------------------------------------------

void TstEditorCommands::newProject_data()
{
    QTest::addColumn<QString>("name"); // empty: the preset is accepted
    QTest::newRow("preset name") << QString();
    QTest::newRow("blank name") << " ";
}

void TstEditorCommands::newProject()
{
    QFETCH(QString, name);

    Project project(name.isEmpty() ? QStringLiteral("MeinProjekt") : name);
    QVERIFY(project.addUsualDocuments());
    project.expectRegistration();
    MainWindow window;
    QVERIFY(showWindow(window));

    FileDialogSeen folderDialog;
    InputSeen input;
    BoxSeen box;
    QString titleAtBox;
    ModalDriver driver;
    driver.onModal(choosePath(project.root(), &folderDialog));
    driver.onModal(name.isEmpty() ? acceptInput(&input) : enterText(name, &input));
    driver.onModal([&](QWidget *w) {
        titleAtBox = window.windowTitle();
        answerBox(QMessageBox::Ok, &box)(w);
    });
    action(window, "actionNewProject")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));

    QCOMPARE(folderDialog.className, QStringLiteral("QFileDialog"));
    QCOMPARE(folderDialog.title, QStringLiteral("Projektordner wählen"));
    QCOMPARE(folderDialog.fileMode, QFileDialog::Directory);
    QVERIFY(folderDialog.options.testFlag(QFileDialog::ShowDirsOnly));
    QCOMPARE(input.title, QStringLiteral("Neues Projekt"));
    QCOMPARE(input.label, QStringLiteral("Projektname:"));
    QCOMPARE(input.preset, QStringLiteral("MeinProjekt"));
    QCOMPARE(input.echoMode, QLineEdit::Normal);
    QCOMPARE(box.title, QStringLiteral("Info"));
    QCOMPARE(box.text, QStringLiteral("Projekt erstellt!"));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));

    // The tree was rebuilt before the box came up.
    QCOMPARE(titleAtBox, QStringLiteral("Editor - ") + project.name());
    QCOMPARE(dumpTree(tree(window), project.root()), usualTree());
    QCOMPARE(readFile(project.projectFile()),
             projectFile(project.name(), {"b.zyhelp", "sub/a.zyhelp"}));
    QCOMPARE(readFile(pathListFile()),
             (QDir::toNativeSeparators(project.root()) + QLatin1Char('\n')
              + QDir::toNativeSeparators(project.path("sub")) + QLatin1Char('\n')).toUtf8());
}

void TstEditorCommands::newProjectCancelled_data()
{
    QTest::addColumn<bool>("folderChosen");
    QTest::addColumn<bool>("nameCancelled");

    QTest::newRow("folder chooser cancelled") << false << false;
    QTest::newRow("name cancelled") << true << true;
    QTest::newRow("name cleared") << true << false;
}

void TstEditorCommands::newProjectCancelled()
{
    QFETCH(bool, folderChosen);
    QFETCH(bool, nameCancelled);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    ModalDriver driver;
    driver.onModal(choosePath(folderChosen ? project.root() : QString()));
    if (folderChosen)
        driver.onModal(nameCancelled ? cancelInput() : enterText(QString()));
    action(window, "actionNewProject")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));

    QCOMPARE(QDir(project.root()).entryList({"*.zyproject"}, QDir::Files), QStringList());
    QVERIFY(!QFile::exists(pathListFile()));
    QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
    QCOMPARE(tree(window)->topLevelItemCount(), 0);

    // Still no project open: the new-file command says so.
    BoxSeen box;
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    action(window, "actionNewFile")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.text, QStringLiteral("Bitte erst ein Projekt öffnen/erstellen."));
}

void TstEditorCommands::openProjectAsksInHomeFolder()
{
    Project first;
    QVERIFY(first.addUsualDocuments());
    MainWindow window;

    FileDialogSeen dialog;
    {
        ModalDriver driver;
        driver.onModal(choosePath(QString(), &dialog));
        action(window, "actionOpenProject")->trigger();
        QVERIFY2(driver.clean(), qPrintable(driver.report()));
    }
    QCOMPARE(dialog.className, QStringLiteral("QFileDialog"));
    QCOMPARE(dialog.title, QStringLiteral("Projekt öffnen"));
    QCOMPARE(QFileInfo(dialog.directory).canonicalFilePath(),
             QFileInfo(QDir::homePath()).canonicalFilePath());
    QCOMPARE(dialog.nameFilters, QStringList{"Projekte (*.zyproject)"});
    QCOMPARE(dialog.fileMode, QFileDialog::ExistingFile);
    QCOMPARE(dialog.acceptMode, QFileDialog::AcceptOpen);
    QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
    QVERIFY(!QFile::exists(pathListFile()));

    // Opening replaces whatever project was open.
    QVERIFY(openProject(window, first));
    Project second(QStringLiteral("Zweites"));
    QVERIFY(second.addDocument(QStringLiteral("z.zyhelp"), documentB()));
    QVERIFY(openProject(window, second));
    QCOMPARE(dumpTree(tree(window), second.root()),
             (QStringList{"z.zyhelp [200|z.zyhelp]", "  de [300|z.zyhelp|de]"}));
}

void TstEditorCommands::newFile_data()
{
    QTest::addColumn<QString>("chosen"); // relative to the root; "OUT/" outside it
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QStringList>("lines"); // of the new document's nodes

    QTest::newRow("in the root folder")
        << "neu.zyhelp" << QStringList{"b.zyhelp", "neu.zyhelp", "sub/a.zyhelp"}
        << QStringList{"neu.zyhelp [200|neu.zyhelp]", "  de [300|neu.zyhelp|de]"};
    QTest::newRow("in a new subfolder")
        << "sub/tief/neu.zyhelp" << QStringList{"b.zyhelp", "sub/a.zyhelp", "sub/tief/neu.zyhelp"}
        << QStringList{"  tief [100]", "    neu.zyhelp [200|sub/tief/neu.zyhelp]",
                       "      de [300|sub/tief/neu.zyhelp|de]"};
    QTest::newRow("without the extension")
        << "neu" << QStringList{"b.zyhelp", "sub/a.zyhelp"} << QStringList();
    QTest::newRow("outside the root folder")
        << "OUT/neu.zyhelp" << QStringList{"b.zyhelp", "sub/a.zyhelp"} << QStringList();
}

void TstEditorCommands::newFile()
{
    QFETCH(QString, chosen);
    QFETCH(QStringList, listed);
    QFETCH(QStringList, lines);

    Project project;
    QVERIFY(project.addUsualDocuments());
    QTemporaryDir outside;
    if (chosen.contains(QLatin1String("/tief/")))
        QVERIFY(project.addFolder(QStringLiteral("sub/tief")));
    const QString path = chosen.startsWith(QLatin1String("OUT/"))
                             ? outside.filePath(chosen.mid(4))
                             : project.path(chosen);
    MainWindow window;
    QVERIFY(openProject(window, project));

    FileDialogSeen dialog;
    ModalDriver driver;
    driver.onModal(choosePath(path, &dialog));
    action(window, "actionNewFile")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(dialog.title, QStringLiteral("Neue Datei"));
    QCOMPARE(QFileInfo(dialog.directory).canonicalFilePath(),
             QFileInfo(project.root()).canonicalFilePath());
    QCOMPARE(dialog.nameFilters, QStringList{"Hilfe (*.zyhelp)"});
    QCOMPARE(dialog.acceptMode, QFileDialog::AcceptSave);
    QVERIFY(!dialog.options.testFlag(QFileDialog::DontConfirmOverwrite));

    QCOMPARE(readFile(path), newDocument);
    QCOMPARE(readFile(project.projectFile()), projectFile(project.name(), listed));
    QStringList expected = usualTree();
    if (chosen == QLatin1String("neu.zyhelp"))
        expected = expected.mid(0, 2) + lines + expected.mid(2);
    else
        expected += lines;
    QCOMPARE(dumpTree(tree(window), project.root()), expected);
}

// The file dialog asks before it replaces a file; the document then is new.
void TstEditorCommands::newFileReplacesChosenFile()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(openProject(window, project));

    ModalDriver driver;
    driver.onModal(choosePath(project.path("sub/a.zyhelp")));
    driver.onModal(answerBox(QMessageBox::Yes));
    action(window, "actionNewFile")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), newDocument);
    QCOMPARE(dumpTree(tree(window), project.root()), usualTree({"    de [300|sub/a.zyhelp|de]"}));
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    QCOMPARE(window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"))->text(),
             QStringLiteral("Neue Beschreibung"));
}

void TstEditorCommands::newFileNeedsProject()
{
    MainWindow window;
    BoxSeen box;
    ModalDriver driver;
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    action(window, "actionNewFile")->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.className, QStringLiteral("QMessageBox"));
    QCOMPARE(box.title, QStringLiteral("Info"));
    QCOMPARE(box.text, QStringLiteral("Bitte erst ein Projekt öffnen/erstellen."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
}

// Reload shows the documents on disk now, sorted; the project file stays as it was.
void TstEditorCommands::reloadFollowsDisk()
{
    MainWindow window;
    QVERIFY(showWindow(window));
    {
        ModalDriver quiet; // without a project: nothing, not even a message
        QVERIFY(pressKey(window, Qt::Key_F5));
        QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
        QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
    }

    Project project;
    QVERIFY(project.addUsualDocuments());
    QVERIFY(openProject(window, project));
    const QByteArray projectBefore = readFile(project.projectFile());

    QVERIFY(QFile::remove(project.path("b.zyhelp")));
    QVERIFY(writeFile(project.path("A.zyhelp"), documentB()));
    QVERIFY(writeFile(project.path("sub/0.zyhelp"), "<zyhelp/>"));
    ModalDriver quiet;
    QVERIFY(pressKey(window, Qt::Key_F5));
    QVERIFY2(quiet.clean(), qPrintable(quiet.report()));

    QCOMPARE(dumpTree(tree(window), project.root()),
             (QStringList{"A.zyhelp [200|A.zyhelp]", "  de [300|A.zyhelp|de]",
                          "sub [100]", "  0.zyhelp [200|sub/0.zyhelp]",
                          "  a.zyhelp [200|sub/a.zyhelp]"}
              + usualTree().mid(4)));
    QCOMPARE(readFile(project.projectFile()), projectBefore);
}

void TstEditorCommands::registerPath()
{
    MainWindow window;
    QAction *registerAction = action(window, "actionRegisterPath");
    QVERIFY(registerAction);

    BoxSeen box;
    {
        ModalDriver driver;
        driver.onModal(answerBox(QMessageBox::Ok, &box));
        registerAction->trigger();
        QVERIFY2(driver.clean(), qPrintable(driver.report()));
    }
    QCOMPARE(box.title, QStringLiteral("Info"));
    QCOMPARE(box.text, QStringLiteral("Kein Projekt geöffnet."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(!QFile::exists(pathListFile()));

    Project project;
    QVERIFY(project.addUsualDocuments());
    QVERIFY(openProject(window, project));
    QVERIFY(QDir().mkdir(project.path("neu")));
    expectRegistered(project.path("neu"));
    ModalDriver driver;
    driver.onModal(answerBox(QMessageBox::Ok, &box));
    registerAction->trigger();
    QVERIFY2(driver.clean(), qPrintable(driver.report()));
    QCOMPARE(box.title, QStringLiteral("Info"));
    QCOMPARE(box.text, QStringLiteral("Pfad (inkl. Unterordner) wurde registriert."));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(readFile(pathListFile()),
             (QDir::toNativeSeparators(project.root()) + QLatin1Char('\n')
              + QDir::toNativeSeparators(project.path("sub")) + QLatin1Char('\n')
              + QDir::toNativeSeparators(project.path("neu")) + QLatin1Char('\n')).toUtf8());
}

QTEST_MAIN(TstEditorCommands)
#include "tst_editorcommands.moc"
