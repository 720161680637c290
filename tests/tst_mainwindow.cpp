#include "editorfixture.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpacerItem>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTranslator>

using namespace Fixture;

// The window as the form and the constructor build it: objects, layouts, texts,
// menu, slots, and the signals that reach the slots.
class TstMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void objectHasClassAndParent_data();
    void objectHasClassAndParent();
    void layoutHoldsItemsInOrder_data();
    void layoutHoldsItemsInOrder();
    void widgetsAreSetUp();
    void languagePageKeepsButtonAtBottom();
    void text_data();
    void text();
    void textsPassThroughTranslation();
    void menuHoldsActionsInOrder();
    void windowStartsEmpty();
    void metaObjectHasSlotsInOrder();
    void saveIsReachedOnce_data();
    void saveIsReachedOnce();
    void reloadIsReachedFromF5();
    void closingEndsEventLoop();
};

void TstMainWindow::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void TstMainWindow::init()
{
    QFile::remove(pathListFile());
    // Also catches a slot that connecting by name cannot connect.
    failOnProgramWarnings();
}

void TstMainWindow::cleanup()
{
    QFile::remove(pathListFile());
}

// The nearest ancestor that the form names; the toolkit's own helpers in between
// (the tab widget's page stack) are passed over.
static QString namedParent(const QObject *object)
{
    for (QObject *parent = object->parent(); parent; parent = parent->parent()) {
        if (!parent->objectName().isEmpty() && !parent->objectName().startsWith(QLatin1String("qt_")))
            return parent->objectName();
    }
    return QString();
}

void TstMainWindow::objectHasClassAndParent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("parent");

    const QList<std::array<const char *, 3>> objects = {
        {"actionNewProject", "QAction", "MainWindow"},
        {"actionOpenProject", "QAction", "MainWindow"},
        {"actionNewFile", "QAction", "MainWindow"},
        {"actionSave", "QAction", "MainWindow"},
        {"actionReload", "QAction", "MainWindow"},
        {"actionRegisterPath", "QAction", "MainWindow"},
        {"centralwidget", "QWidget", "MainWindow"},
        {"horizontalLayout", "QHBoxLayout", "centralwidget"},
        {"splitter", "QSplitter", "centralwidget"},
        {"projectTree", "QTreeWidget", "splitter"},
        {"editorStack", "QStackedWidget", "splitter"},
        {"pageEmpty", "QWidget", "editorStack"},
        {"vl0", "QVBoxLayout", "pageEmpty"},
        {"lblInfo", "QLabel", "pageEmpty"},
        {"pageFile", "QWidget", "editorStack"},
        {"vl_file", "QVBoxLayout", "pageFile"},
        {"tabWidgetFile", "QTabWidget", "pageFile"},
        {"tabMeta", "QWidget", "tabWidgetFile"},
        {"fl1", "QFormLayout", "tabMeta"},
        {"l1", "QLabel", "tabMeta"},
        {"editAuthor", "QLineEdit", "tabMeta"},
        {"l2", "QLabel", "tabMeta"},
        {"editVersion", "QLineEdit", "tabMeta"},
        {"tabLinks", "QWidget", "tabWidgetFile"},
        {"vl_links", "QVBoxLayout", "tabLinks"},
        {"listLinks", "QListWidget", "tabLinks"},
        {"hl_links", "QHBoxLayout", "vl_links"},
        {"editNewLink", "QLineEdit", "tabLinks"},
        {"btnAddLink", "QPushButton", "tabLinks"},
        {"btnRemoveLink", "QPushButton", "tabLinks"},
        {"btnSaveFile", "QPushButton", "pageFile"},
        {"pageLanguage", "QWidget", "editorStack"},
        {"vl_lang", "QVBoxLayout", "pageLanguage"},
        {"lblLangHeader", "QLabel", "pageLanguage"},
        {"fl_lang", "QFormLayout", "vl_lang"},
        {"lblDesc", "QLabel", "pageLanguage"},
        {"editLangDescription", "QLineEdit", "pageLanguage"},
        {"btnSaveLang", "QPushButton", "pageLanguage"},
        {"pageSection", "QWidget", "editorStack"},
        {"vl2", "QVBoxLayout", "pageSection"},
        {"lblSecName", "QLabel", "pageSection"},
        {"editSectionName", "QLineEdit", "pageSection"},
        {"l3", "QLabel", "pageSection"},
        {"editContent", "QPlainTextEdit", "pageSection"},
        {"btnSaveSection", "QPushButton", "pageSection"},
        {"menubar", "QMenuBar", "MainWindow"},
        {"menuDatei", "QMenu", "menubar"},
        {"statusbar", "QStatusBar", "MainWindow"},
    };
    for (const auto &object : objects)
        QTest::newRow(object[0]) << object[0] << object[1] << object[2];
}

void TstMainWindow::objectHasClassAndParent()
{
    QFETCH(QString, name);
    QFETCH(QString, className);
    QFETCH(QString, parent);

    MainWindow window;
    QCOMPARE(window.objectName(), QStringLiteral("MainWindow"));
    const QList<QObject *> found = window.findChildren<QObject *>(name);
    QCOMPARE(found.size(), 1);
    QCOMPARE(QString::fromLatin1(found.first()->metaObject()->className()), className);
    QCOMPARE(namedParent(found.first()), parent);

    // Nothing is fixed in size, disabled, hidden on purpose or read-only.
    if (auto *widget = qobject_cast<QWidget *>(found.first())) {
        QVERIFY(widget->isEnabled());
        QVERIFY(!widget->isHidden() || widget->parentWidget()->inherits("QStackedWidget")
                || name == QLatin1String("menuDatei"));
        QCOMPARE(widget->minimumSize(), QSize(0, 0));
        QCOMPARE(widget->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
        if (auto *line = qobject_cast<QLineEdit *>(widget))
            QVERIFY(!line->isReadOnly());
        if (auto *text = qobject_cast<QPlainTextEdit *>(widget))
            QVERIFY(!text->isReadOnly());
    }
}

// What a layout holds, in order: widgets and layouts by name, "spacer" for a spacer
// item, and for a form layout "label|field" per row.
static QStringList layoutItems(QLayout *layout)
{
    QStringList items;
    const auto describe = [](QLayoutItem *item) {
        if (!item)
            return QStringLiteral("none");
        if (item->widget())
            return item->widget()->objectName();
        if (item->layout())
            return QLatin1String("layout ") + item->layout()->objectName();
        if (item->spacerItem())
            return QStringLiteral("spacer");
        return QStringLiteral("?");
    };
    if (auto *form = qobject_cast<QFormLayout *>(layout)) {
        for (int row = 0; row < form->rowCount(); ++row)
            items.append(describe(form->itemAt(row, QFormLayout::LabelRole)) + QLatin1Char('|')
                         + describe(form->itemAt(row, QFormLayout::FieldRole)));
        return items;
    }
    for (int i = 0; i < layout->count(); ++i)
        items.append(describe(layout->itemAt(i)));
    return items;
}

void TstMainWindow::layoutHoldsItemsInOrder_data()
{
    QTest::addColumn<QString>("owner"); // the widget whose layout it is, or the parent layout
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QStringList>("items");

    QTest::newRow("horizontalLayout") << "centralwidget" << "horizontalLayout" << QStringList{"splitter"};
    QTest::newRow("vl0") << "pageEmpty" << "vl0" << QStringList{"lblInfo"};
    QTest::newRow("vl_file") << "pageFile" << "vl_file" << QStringList{"tabWidgetFile", "btnSaveFile"};
    QTest::newRow("fl1") << "tabMeta" << "fl1" << QStringList{"l1|editAuthor", "l2|editVersion"};
    QTest::newRow("vl_links") << "tabLinks" << "vl_links" << QStringList{"listLinks", "layout hl_links"};
    QTest::newRow("hl_links") << "vl_links" << "hl_links"
                              << QStringList{"editNewLink", "btnAddLink", "btnRemoveLink"};
    QTest::newRow("vl_lang") << "pageLanguage" << "vl_lang"
                             << QStringList{"lblLangHeader", "layout fl_lang", "spacer", "btnSaveLang"};
    QTest::newRow("fl_lang") << "vl_lang" << "fl_lang" << QStringList{"lblDesc|editLangDescription"};
    QTest::newRow("vl2") << "pageSection" << "vl2"
                         << QStringList{"lblSecName", "editSectionName", "l3", "editContent",
                                        "btnSaveSection"};
}

void TstMainWindow::layoutHoldsItemsInOrder()
{
    QFETCH(QString, owner);
    QFETCH(QString, layout);
    QFETCH(QStringList, items);

    MainWindow window;
    QObject *ownerObject = window.findChild<QObject *>(owner);
    QVERIFY(ownerObject);
    QLayout *found = nullptr;
    if (auto *widget = qobject_cast<QWidget *>(ownerObject)) {
        found = widget->layout();
    } else {
        auto *parentLayout = qobject_cast<QLayout *>(ownerObject);
        for (int i = 0; i < parentLayout->count() && !found; ++i) {
            QLayout *child = parentLayout->itemAt(i)->layout();
            if (child && child->objectName() == layout)
                found = child;
        }
    }
    QVERIFY(found);
    QCOMPARE(found->objectName(), layout);
    QCOMPARE(layoutItems(found), items);
}

void TstMainWindow::widgetsAreSetUp()
{
    MainWindow window;

    auto *splitter = window.findChild<QSplitter *>(QStringLiteral("splitter"));
    QCOMPARE(splitter->orientation(), Qt::Horizontal);
    QCOMPARE(splitter->count(), 2);
    QCOMPARE(splitter->widget(0)->objectName(), QStringLiteral("projectTree"));
    QCOMPARE(splitter->widget(1)->objectName(), QStringLiteral("editorStack"));

    QTreeWidget *treeWidget = tree(window);
    QCOMPARE(treeWidget->columnCount(), 1);
    QVERIFY(treeWidget->isHeaderHidden());
    QCOMPARE(treeWidget->headerItem()->text(0), QStringLiteral("Projekt"));
    QCOMPARE(treeWidget->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(!treeWidget->isSortingEnabled());

    auto *stack = window.findChild<QStackedWidget *>(QStringLiteral("editorStack"));
    QStringList pages;
    for (int i = 0; i < stack->count(); ++i)
        pages.append(stack->widget(i)->objectName());
    QCOMPARE(pages, (QStringList{"pageEmpty", "pageFile", "pageLanguage", "pageSection"}));
    QCOMPARE(stack->currentIndex(), 0);

    auto *tabs = window.findChild<QTabWidget *>(QStringLiteral("tabWidgetFile"));
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->widget(0)->objectName(), QStringLiteral("tabMeta"));
    QCOMPARE(tabs->widget(1)->objectName(), QStringLiteral("tabLinks"));
    QCOMPARE(tabs->tabText(0), QStringLiteral("Allgemein"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Verweise (Links)"));
    QCOMPARE(tabs->currentIndex(), 0);

    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("lblInfo"))->alignment(), Qt::AlignCenter);
    const QFont header = window.findChild<QLabel *>(QStringLiteral("lblLangHeader"))->font();
    QCOMPARE(header.weight(), QFont::Bold);
    QFont expected = QApplication::font();
    expected.setBold(true);
    QCOMPARE(header, expected);
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("lblDesc"))->font().weight(), QFont::Normal);

    auto *langLayout = window.findChild<QWidget *>(QStringLiteral("pageLanguage"))->layout();
    QSpacerItem *spacer = langLayout->itemAt(2)->spacerItem();
    QVERIFY(spacer);
    QCOMPARE(spacer->sizeHint(), QSize(0, 0));
    QCOMPARE(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
    QCOMPARE(spacer->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);

    QCOMPARE(window.findChild<QListWidget *>(QStringLiteral("listLinks"))->selectionMode(),
             QAbstractItemView::SingleSelection);
}

// The expanding space above the button takes what the page has to spare.
void TstMainWindow::languagePageKeepsButtonAtBottom()
{
    MainWindow window;
    window.findChild<QStackedWidget *>(QStringLiteral("editorStack"))->setCurrentIndex(2);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *page = window.findChild<QWidget *>(QStringLiteral("pageLanguage"));
    auto *button = window.findChild<QPushButton *>(QStringLiteral("btnSaveLang"));
    auto *description = window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"));
    QVERIFY(page->height() > 300);
    const int bottomMargin = page->layout()->contentsMargins().bottom();
    QCOMPARE(button->geometry().bottom(), page->height() - bottomMargin - 1);
    QVERIFY(button->geometry().top() - description->geometry().bottom() > page->height() / 2);
}

// Object, and what of it carries the text: its text property, its title, a tab
// title (owner/page) or the tree's header.
static QString textOf(QMainWindow &window, const QString &object, const QString &kind)
{
    if (object == QLatin1String("MainWindow"))
        return window.windowTitle();
    if (kind == QLatin1String("tab")) {
        auto *tabs = window.findChild<QTabWidget *>(QStringLiteral("tabWidgetFile"));
        return tabs->tabText(tabs->indexOf(window.findChild<QWidget *>(object)));
    }
    if (kind == QLatin1String("header"))
        return tree(window)->headerItem()->text(0);
    QObject *found = window.findChild<QObject *>(object);
    return found ? found->property(kind.toLatin1().constData()).toString() : QStringLiteral("<missing>");
}

static const QList<std::array<const char *, 3>> texts = {
    {"MainWindow", "windowTitle", "ZY Help Editor"},
    {"actionNewProject", "text", "Neues Projekt..."},
    {"actionOpenProject", "text", "Projekt öffnen..."},
    {"actionNewFile", "text", "Neue Hilfe-Datei..."},
    {"actionSave", "text", "Speichern"},
    {"actionReload", "text", "Ansicht aktualisieren"},
    {"actionRegisterPath", "text", "Projektordner registrieren"},
    {"projectTree", "header", "Projekt"},
    {"lblInfo", "text", "Keine Datei ausgewählt."},
    {"l1", "text", "Autor:"},
    {"l2", "text", "Version:"},
    {"tabMeta", "tab", "Allgemein"},
    {"btnAddLink", "text", "Hinzufügen"},
    {"btnRemoveLink", "text", "Entfernen"},
    {"tabLinks", "tab", "Verweise (Links)"},
    {"btnSaveFile", "text", "Datei speichern"},
    {"lblLangHeader", "text", "Sprach-Metadaten"},
    {"lblDesc", "text", "Beschreibung (Description):"},
    {"btnSaveLang", "text", "Sprach-Beschreibung speichern"},
    {"lblSecName", "text", "Sektion Name:"},
    {"l3", "text", "Inhalt:"},
    {"btnSaveSection", "text", "Änderungen übernehmen"},
    {"menuDatei", "title", "Datei"},
};

void TstMainWindow::text_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("expected");
    for (const auto &row : texts)
        QTest::newRow(row[0]) << row[0] << row[1] << QString::fromUtf8(row[2]);
}

void TstMainWindow::text()
{
    QFETCH(QString, object);
    QFETCH(QString, kind);
    QFETCH(QString, expected);

    MainWindow window;
    QCOMPARE(textOf(window, object, kind), expected);
}

namespace {
// Marks every text that is asked for in the window's translation context.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *sourceText, const char *, int) const override
    {
        if (qstrcmp(context, "MainWindow") != 0)
            return QString();
        const QString source = QString::fromUtf8(sourceText);
        if (source == QLatin1String("Ctrl+S") || source == QLatin1String("F5"))
            return QString(); // key sequences must stay parseable
        return QLatin1Char('[') + source + QLatin1Char(']');
    }
    bool isEmpty() const override { return false; }
};
} // namespace

// Every text goes through the translation call with the context "MainWindow", so
// a translator could replace it.
void TstMainWindow::textsPassThroughTranslation()
{
    MarkingTranslator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    MainWindow window;
    QCoreApplication::removeTranslator(&translator);

    for (const auto &row : texts) {
        QCOMPARE(textOf(window, QLatin1String(row[0]), QLatin1String(row[1])),
                 QLatin1Char('[') + QString::fromUtf8(row[2]) + QLatin1Char(']'));
    }
    QCOMPARE(action(window, "actionSave")->shortcut(), QKeySequence(QStringLiteral("Ctrl+S")));
}

void TstMainWindow::menuHoldsActionsInOrder()
{
    MainWindow window;
    auto *menu = window.findChild<QMenu *>(QStringLiteral("menuDatei"));
    QCOMPARE(window.menuBar()->actions(), QList<QAction *>{menu->menuAction()});

    QStringList entries;
    for (QAction *entry : menu->actions())
        entries.append(entry->isSeparator() ? QStringLiteral("-") : entry->objectName());
    QCOMPARE(entries, (QStringList{"actionNewProject", "actionOpenProject", "-", "actionSave", "-",
                                   "actionNewFile", "actionReload", "-", "actionRegisterPath"}));

    for (QAction *entry : menu->actions()) {
        QVERIFY(entry->isEnabled());
        QVERIFY(entry->isVisible());
        const QString name = entry->objectName();
        const QString keys = name == QLatin1String("actionSave")     ? QStringLiteral("Ctrl+S")
                             : name == QLatin1String("actionReload") ? QStringLiteral("F5")
                                                                     : QString();
        QCOMPARE(entry->shortcut(), QKeySequence::fromString(keys, QKeySequence::NativeText));
        QCOMPARE(entry->shortcuts().size(), keys.isEmpty() ? 0 : 1);
    }
    QCOMPARE(action(window, "actionSave")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_S));
    QCOMPARE(action(window, "actionReload")->shortcut(), QKeySequence(Qt::Key_F5));
}

void TstMainWindow::windowStartsEmpty()
{
    MainWindow window;
    QCOMPARE(window.size(), QSize(1200, 800));
    QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
    QCOMPARE(window.centralWidget()->objectName(), QStringLiteral("centralwidget"));
    QCOMPARE(window.menuBar()->objectName(), QStringLiteral("menubar"));
    QCOMPARE(window.statusBar()->objectName(), QStringLiteral("statusbar"));
    QVERIFY(!window.isVisible()); // the constructor shows nothing, not even a message

    QVERIFY(showWindow(window));
    QCOMPARE(window.size(), QSize(1200, 800));
    QCOMPARE(tree(window)->topLevelItemCount(), 0);
    QVERIFY(window.findChild<QLabel *>(QStringLiteral("lblInfo"))->isVisible());
    QVERIFY(!window.findChild<QWidget *>(QStringLiteral("pageFile"))->isVisible());
    QVERIFY(window.statusBar()->currentMessage().isEmpty());
    QVERIFY(tree(window)->header()->isHidden());

    // Nothing to save and nothing to reload yet: both do nothing.
    ModalDriver quiet;
    QVERIFY(pressKey(window, Qt::Key_S, Qt::ControlModifier));
    QVERIFY(pressKey(window, Qt::Key_F5));
    QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
    QCOMPARE(window.windowTitle(), QStringLiteral("ZY Help Editor"));
}

void TstMainWindow::metaObjectHasSlotsInOrder()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.className(), "MainWindow");
    QCOMPARE(meta.superClass(), &QMainWindow::staticMetaObject);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QCOMPARE(meta.classInfoCount(), meta.classInfoOffset());
    QCOMPARE(meta.constructorCount(), 0);

    const QList<std::pair<QByteArray, QByteArrayList>> slotList = {
        {"on_projectTree_itemClicked(QTreeWidgetItem*,int)", {"item", "column"}},
        {"on_btnAddLink_clicked()", {}},
        {"on_btnRemoveLink_clicked()", {}},
        {"on_actionNewProject_triggered()", {}},
        {"on_actionOpenProject_triggered()", {}},
        {"on_actionNewFile_triggered()", {}},
        {"on_actionReload_triggered()", {}},
        {"on_actionRegisterPath_triggered()", {}},
        {"on_actionSave_triggered()", {}},
        {"on_projectTree_customContextMenuRequested(QPoint)", {"pos"}},
        {"addLanguage(QString)", {"filePath"}},
        {"addSection(QString,QString)", {"filePath", "langKey"}},
        {"deleteItem(QTreeWidgetItem*)", {"item"}},
    };
    QCOMPARE(meta.methodCount() - meta.methodOffset(), int(slotList.size()));
    for (int i = 0; i < slotList.size(); ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        QCOMPARE(method.methodSignature(), slotList.at(i).first);
        QCOMPARE(method.parameterNames(), slotList.at(i).second);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Private);
        QCOMPARE(method.returnType(), int(QMetaType::Void));
    }

    MainWindow window;
    QCOMPARE(window.metaObject(), &meta);
    QCOMPARE(window.qt_metacast("MainWindow"), static_cast<void *>(&window));
}

void TstMainWindow::saveIsReachedOnce_data()
{
    QTest::addColumn<QString>("trigger"); // a key, the action, or a button
    QTest::addColumn<QStringList>("nodePath"); // clicked first; its page holds the button

    const QStringList section{"sub", "a.zyhelp", "de", "Eins"};
    QTest::newRow("Ctrl+S") << "Ctrl+S" << section;
    QTest::newRow("menu entry") << "actionSave" << section;
    QTest::newRow("btnSaveFile") << "btnSaveFile" << QStringList{"sub", "a.zyhelp"};
    QTest::newRow("btnSaveLang") << "btnSaveLang" << QStringList{"sub", "a.zyhelp", "de"};
    QTest::newRow("btnSaveSection") << "btnSaveSection" << section;
}

// Each way to save runs the save slot exactly once: a folder node's save fails
// with exactly one message box, a document node's save writes the document.
void TstMainWindow::saveIsReachedOnce()
{
    QFETCH(QString, trigger);
    QFETCH(QStringList, nodePath);

    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));

    const auto fire = [&] {
        if (trigger == QLatin1String("Ctrl+S"))
            return pressKey(window, Qt::Key_S, Qt::ControlModifier);
        if (trigger == QLatin1String("actionSave")) {
            window.findChild<QMenu *>(QStringLiteral("menuDatei"))->actions().at(3)->trigger();
            return true;
        }
        auto *button = window.findChild<QPushButton *>(trigger);
        if (!button)
            return false;
        button->click();
        return true;
    };

    click(window, node(window, {"sub"}));
    QTest::ignoreMessage(QtWarningMsg, "Konnte Datei nicht zum Schreiben öffnen: \"\"");
    {
        ModalDriver driver;
        BoxSeen box;
        driver.onModal(answerBox(QMessageBox::Ok, &box));
        QVERIFY(fire());
        QVERIFY2(driver.clean(), qPrintable(driver.report()));
        QCOMPARE(box.text, QStringLiteral("Speichern fehlgeschlagen."));
    }

    click(window, node(window, nodePath));
    window.findChild<QLineEdit *>(QStringLiteral("editAuthor"))->setText(QStringLiteral("Zoe"));
    window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"))->setText(QStringLiteral("Neu"));
    window.findChild<QLineEdit *>(QStringLiteral("editSectionName"))->setText(QStringLiteral("Erstens"));
    QVERIFY(fire());
    QByteArray expected = documentA();
    if (nodePath.size() == 2)
        expected = replaced(expected, "author=\"Anna\"", "author=\"Zoe\"");
    else if (nodePath.size() == 3)
        expected = replaced(expected, ">Hallo<", ">Neu<");
    else
        expected = replaced(expected, "name=\"Eins\"", "name=\"Erstens\"");
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), expected);
    QCOMPARE(statusMessage(window), QStringLiteral("Gespeichert: a.zyhelp"));
}

void TstMainWindow::reloadIsReachedFromF5()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    QVERIFY(writeFile(project.path("c.zyhelp"), "<zyhelp/>"));

    QVERIFY(pressKey(window, Qt::Key_F5));
    QVERIFY(node(window, {"c.zyhelp"}));
    QCOMPARE(tree(window)->topLevelItemCount(), 3);
}

// Closing the window ends the event loop with 0, without a question and without
// writing what was edited.
void TstMainWindow::closingEndsEventLoop()
{
    Project project;
    QVERIFY(project.addUsualDocuments());
    MainWindow window;
    QVERIFY(showWindow(window));
    QVERIFY(openProject(window, project));
    click(window, node(window, {"sub", "a.zyhelp", "de"}));
    window.findChild<QLineEdit *>(QStringLiteral("editLangDescription"))->setText(QStringLiteral("Neu"));
    click(window, node(window, {"b.zyhelp", "de"}));

    ModalDriver quiet;
    QTimer::singleShot(0, &window, &QWidget::close);
    QTimer guard; // a window that does not close must not hang the test
    guard.setSingleShot(true);
    connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(99); });
    guard.start(10000);
    const int exitCode = QApplication::exec();
    guard.stop();
    QCOMPARE(exitCode, 0);
    QVERIFY2(quiet.clean(), qPrintable(quiet.report()));
    QVERIFY(!window.isVisible());
    QCOMPARE(readFile(project.path("sub/a.zyhelp")), documentA());
    QCOMPARE(readFile(project.path("b.zyhelp")), documentB());
}

QTEST_MAIN(TstMainWindow)
#include "tst_mainwindow.moc"
