#pragma once

#include "mainwindow.h"
#include "modaldriver.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMap>
#include <QSet>
#include <QStatusBar>
#include <QStyleHints>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

// Shared by the editor tests: projects on disk, opened through the window's menu
// as the user does it, and a readable picture of the project tree.
namespace Fixture {

using Documents = QMap<QString, QByteArray>; // relative path -> file content

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArrayLiteral("<unreadable>");
    return file.readAll();
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The global path list that every project creation and opening appends to; it
// lies beside the test executable, so each test removes it before and after.
inline QString pathListFile()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("Path"));
}

// The debug line that the registration of one folder writes.
inline void expectRegistered(const QString &folder)
{
    QTest::ignoreMessage(QtDebugMsg, QStringLiteral("Registriere Unterordner: \"%1\"")
                                         .arg(QDir::cleanPath(folder))
                                         .toUtf8()
                                         .constData());
}

// Folders whose paths differ only in capitals are registered once, under the
// spelling that the directory walk meets first.
inline void expectRegisteredOneOf(const QStringList &folders)
{
    QStringList alternatives;
    for (const QString &folder : folders)
        alternatives.append(QRegularExpression::escape(QDir::cleanPath(folder)));
    const QString pattern = QStringLiteral("^Registriere Unterordner: \"(%1)\"$")
                                .arg(alternatives.join(QLatin1Char('|')));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(pattern));
}

// The program's own warnings; a test that expects one says so with ignoreMessage.
inline void failOnProgramWarnings()
{
    QTest::failOnWarning(QRegularExpression(
        QStringLiteral("^(Kann XML-Datei|XML Parsing Fehler|Konnte Datei|QMetaObject::)")));
}

// The documents of the usual test project "Handbuch", as the writer writes them,
// so that a save that changes nothing gives the same bytes.
inline QByteArray documentA() // sub/a.zyhelp
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<zyhelp version=\"2.1\" author=\"Anna\">\n"
                             "    <lang name=\"de\">\n"
                             "        <description>Hallo</description>\n"
                             "        <section name=\"Eins\">Text eins</section>\n"
                             "        <section name=\"Zwei\">Text zwei</section>\n"
                             "        <section name=\"Drei\">Text drei\nZeile zwei</section>\n"
                             "    </lang>\n"
                             "    <lang name=\"en\">\n"
                             "        <description>Hello</description>\n"
                             "        <section name=\"One\">Text one</section>\n"
                             "    </lang>\n"
                             "    <link page=\"start\"/>\n"
                             "    <link page=\"index\"/>\n"
                             "</zyhelp>\n");
}

inline QByteArray documentB() // b.zyhelp
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<zyhelp version=\"1.0\" author=\"Bert\">\n"
                             "    <lang name=\"de\">\n"
                             "        <description>Bee</description>\n"
                             "    </lang>\n"
                             "</zyhelp>\n");
}

inline QByteArray replaced(QByteArray bytes, const char *before, const char *after)
{
    return bytes.replace(before, after);
}

// A project folder in a temporary directory: documents, a project file and the
// subfolders, so that the registration of all of them can be expected.
class Project
{
public:
    explicit Project(const QString &name = QStringLiteral("Handbuch"))
        : m_name(name)
    {
    }

    bool isValid() const { return m_dir.isValid(); }
    QString root() const { return m_dir.path(); }
    QString name() const { return m_name; }
    QString path(const QString &relative) const { return QDir(root()).filePath(relative); }
    QString projectFile() const { return path(m_name + QStringLiteral(".zyproject")); }

    bool addDocument(const QString &relative, const QByteArray &content)
    {
        return addFolder(QFileInfo(relative).path()) && writeFile(path(relative), content);
    }
    bool addDocuments(const Documents &documents)
    {
        for (auto it = documents.cbegin(); it != documents.cend(); ++it) {
            if (!addDocument(it.key(), it.value()))
                return false;
        }
        return true;
    }
    // A subfolder and its parents, relative to the root ("." is the root).
    bool addFolder(const QString &relative)
    {
        QString folder = QDir::cleanPath(relative);
        while (folder != QLatin1String(".") && !folder.isEmpty()) {
            m_folders.insert(folder);
            folder = QFileInfo(folder).path();
        }
        return QDir(root()).mkpath(relative);
    }
    // "Handbuch" with b.zyhelp and sub/a.zyhelp: the tree shows b.zyhelp, then the
    // folder sub with a.zyhelp (languages de with Eins, Zwei, Drei; en with One).
    bool addUsualDocuments()
    {
        return addDocument(QStringLiteral("sub/a.zyhelp"), documentA())
               && addDocument(QStringLiteral("b.zyhelp"), documentB());
    }
    bool writeProjectFile()
    {
        return writeFile(projectFile(), QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                       "<zyproject name=\"%1\"/>\n")
                                            .arg(m_name)
                                            .toUtf8());
    }

    // Registration of the root and every subfolder, as creating or opening logs it.
    void expectRegistration() const
    {
        expectRegistered(root());
        QMap<QString, QStringList> spellings;
        for (const QString &folder : m_folders)
            spellings[folder.toLower()].append(path(folder));
        for (const QStringList &folders : std::as_const(spellings))
            expectRegisteredOneOf(folders);
    }

private:
    QTemporaryDir m_dir;
    QString m_name;
    QSet<QString> m_folders;
};

inline QAction *action(QMainWindow &window, const char *name)
{
    return window.findChild<QAction *>(QLatin1String(name));
}

inline QTreeWidget *tree(QMainWindow &window)
{
    return window.findChild<QTreeWidget *>(QStringLiteral("projectTree"));
}

// Opens the project through "Projekt öffnen..." and its file dialog.
inline bool openProject(QMainWindow &window, Project &project)
{
    if (!QFile::exists(project.projectFile()) && !project.writeProjectFile())
        return false;
    project.expectRegistration();
    ModalDriver driver;
    driver.onModal(choosePath(project.projectFile()));
    action(window, "actionOpenProject")->trigger();
    if (!driver.clean()) {
        qWarning("opening the project: %s", qPrintable(driver.report()));
        return false;
    }
    return window.windowTitle() == QLatin1String("Editor - ") + project.name();
}

// One line per node, indented by depth: the text, then the kind and the roles the
// node carries (the document path relative to root).
inline QStringList dumpTree(QTreeWidget *treeWidget, const QString &root)
{
    QStringList lines;
    std::function<void(QTreeWidgetItem *, int)> dump = [&](QTreeWidgetItem *item, int depth) {
        QStringList roles;
        for (int role = MainWindow::ItemTypeRole; role <= MainWindow::SectionIndexRole; ++role) {
            const QVariant value = item->data(0, role);
            if (!value.isValid())
                continue;
            QString text = value.toString();
            if (role == MainWindow::FilePathRole && text.startsWith(root + QLatin1Char('/')))
                text = text.mid(root.size() + 1);
            roles.append(text);
        }
        lines.append(QString(depth * 2, QLatin1Char(' ')) + item->text(0) + QLatin1String(" [")
                     + roles.join(QLatin1Char('|')) + QLatin1Char(']'));
        for (int i = 0; i < item->childCount(); ++i)
            dump(item->child(i), depth + 1);
    };
    for (int i = 0; i < treeWidget->topLevelItemCount(); ++i)
        dump(treeWidget->topLevelItem(i), 0);
    return lines;
}

// The node reached by the texts from the top level down, or null.
inline QTreeWidgetItem *node(QMainWindow &window, const QStringList &texts)
{
    QTreeWidget *treeWidget = tree(window);
    QTreeWidgetItem *found = nullptr;
    for (const QString &text : texts) {
        const int count = found ? found->childCount() : treeWidget->topLevelItemCount();
        QTreeWidgetItem *next = nullptr;
        for (int i = 0; i < count && !next; ++i) {
            QTreeWidgetItem *child = found ? found->child(i) : treeWidget->topLevelItem(i);
            if (child->text(0) == text)
                next = child;
        }
        if (!next)
            return nullptr;
        found = next;
    }
    return found;
}

inline void click(QMainWindow &window, QTreeWidgetItem *item)
{
    QTreeWidget *treeWidget = tree(window);
    treeWidget->scrollToItem(item);
    QTest::mouseClick(treeWidget->viewport(), Qt::LeftButton, {},
                      treeWidget->visualItemRect(item).center());
}

// A right click as the window system delivers it, so the tree gets a real
// context menu request. Newer Qt versions drop the request of a right click
// that lands exactly where the previous click did, even seconds apart (the
// pointer did not move), so every other click lands a little to the right;
// returns where it landed.
inline QPoint rightClickAt(QMainWindow &window, const QPoint &viewportPos)
{
    static int clicks = 0;
    const int shift = 4 * QGuiApplication::styleHints()->mouseDoubleClickDistance() + 4;
    const QPoint pos = viewportPos + QPoint(++clicks % 2 ? 0 : shift, 0);
    QTreeWidget *treeWidget = tree(window);
    QTest::mouseClick(window.windowHandle(), Qt::RightButton, {},
                      treeWidget->viewport()->mapTo(&window, pos));
    return pos;
}

inline void rightClick(QMainWindow &window, QTreeWidgetItem *item)
{
    QTreeWidget *treeWidget = tree(window);
    treeWidget->scrollToItem(item);
    rightClickAt(window, treeWidget->visualItemRect(item).center());
}

inline QString statusMessage(QMainWindow &window)
{
    return window.statusBar()->currentMessage();
}

// A key as the user presses it. Shortcuts reach only the active window; after a
// dialog has closed, the offscreen platform does not hand activation back by
// itself, so the window is activated as a click into it would do.
inline bool pressKey(QMainWindow &window, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
{
    if (QApplication::activeWindow() != &window)
        window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        return false;
    QTest::keyClick(&window, key, modifiers);
    return true;
}

// A shown, active window: shortcuts and right clicks need one.
inline bool showWindow(QMainWindow &window)
{
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

} // namespace Fixture
