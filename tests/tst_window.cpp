#include "mainwindow.h"
#include "testutil.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <optional>

namespace {

// The roles of the tree's data, as other programs may read them.
enum Role { TypeRole = Qt::UserRole + 1, PathRole, KeyRole, IndexRole };

} // namespace

// The window on a project of data/a.zyhelp as sub/a.zyhelp and a document without languages,
// with a second document in its folder's parent Sub.
class TstWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        connect(&m_timer, &QTimer::timeout, this, &TstWindow::poll);
        m_timer.start(5);
    }
    void init()
    {
        QTest::failOnWarning(QRegularExpression("^(Kann|XML|Konnte)"));
        m_dir.emplace();
        m_root = QDir(m_dir->path()).canonicalPath();
        Test::writeFile(m_root + "/p.zyproject", "<zyproject name='Handbuch'/>");
        Test::writeFile(m_root + "/sub/a.zyhelp", Test::readFile(QFINDTESTDATA("data/a.zyhelp")));
        Test::writeFile(m_root + "/Sub/sub/sub.zyhelp", "<zyhelp><lang name=''/></zyhelp>");
        Test::writeFile(m_root + "/Sub/x.zyhelp", "<zyhelp/>");
        m_window = std::make_unique<MainWindow>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QCOMPARE(run("actionOpenProject", {m_root + "/p.zyproject"}),
                 QStringList("Projekt öffnen|" + QDir::homePath() + "|Projekte (*.zyproject)"));
        QVERIFY(Test::readFile(registryFile()).contains((m_root + "/Sub/sub\n").toUtf8()));
    }

    void treeShape()
    {
        QCOMPARE(dump().join(u'\n'), data("tree").trimmed());
        QString menu;
        for (QAction *action : m_window->findChild<QMenu *>("menuDatei")->actions())
            menu += action->text() + action->shortcut().toString() + u'\n';
        QCOMPARE(menu, data("menu"));
        Test::writeFile(m_root + "/Sub/y.zyhelp", "<zyhelp/>"); // beside x.zyhelp, not after a
        run("actionReload");
        QCOMPARE(dump().join(u'\n'), data("tree-reloaded").trimmed());
    }

    void pages()
    {
        click("sub/a.zyhelp");
        click("sub/a.zyhelp"); // the page is filled anew, not added to
        QCOMPARE(page() + text("editAuthor") + text("editVersion") + links(),
                 "pageFileAnna2.1start,index");
        edit("editAuthor", "Bob");
        for (const char *link : {"  neu ", "  "})
            edit("editNewLink", link), run("btnAddLink");
        QCOMPARE(text("editNewLink") + links(), "  start,index,neu");
        m_window->findChild<QListWidget *>("listLinks")->setCurrentRow(0);
        run("btnRemoveLink");
        click("sub/a.zyhelp/de"); // takes the file page over
        QCOMPARE(page() + text("editLangDescription"), "pageLanguageHallo");
        edit("editLangDescription", "Servus");
        click("sub/a.zyhelp/de/Eins");
        QCOMPARE(page() + text("editSectionName") + text("editContent"), "pageSectionEins1");
        edit("editSectionName", "Zwo");
        edit("editContent", " neu\n");
        QVERIFY(QFile::remove(m_root + "/sub/a.zyhelp") && QDir().mkdir(m_root + "/sub/a.zyhelp"));
        QCOMPARE(run("actionSave", {"OK"},
                     "Konnte Datei nicht zum Schreiben öffnen: \"" + m_root + "/sub/a.zyhelp\""),
                 QStringList("Fehler|Speichern fehlgeschlagen.|3"));
        QDir().rmdir(m_root + "/sub/a.zyhelp"); // the edits are kept for another try
        QCOMPARE(run("btnSaveSection") << status() << node("sub/a.zyhelp/de/Zwo")->text(0),
                 QStringList({"Gespeichert: a.zyhelp", "Zwo"}));
        QCOMPARE(saved("sub/a.zyhelp"),
                 "2.1|Bob [de:Servus (Zwo:neu) (Zwei:2) (Drei:3)] [en:Hello (One:Text one)] "
                 "links:index,neu");
        click("sub");
        QCOMPARE(run("btnSaveLang", {"OK"}, "Konnte Datei nicht zum Schreiben öffnen: \"\"")
                     << page(),
                 QStringList({"Fehler|Speichern fehlgeschlagen.|3", "pageEmpty"}));
        run("actionReload");
        m_window->statusBar()->clearMessage();
        QCOMPARE(run("btnSaveFile") << status(), QStringList("")); // no node since the rebuild
    }

    void contextMenu_data() { table("contextmenu"); }
    void contextMenu()
    {
        QFETCH(QString, path);
        QFETCH(QString, replies);
        QFETCH(QString, seen);
        QFETCH(QString, nodes);
        click("sub/a.zyhelp/de/Eins");
        edit("editContent", "lost"); // never taken over
        QCOMPARE(menu(path, replies.split(u';')), seen.split(u';', Qt::SkipEmptyParts));
        QTEST(saved("sub/a.zyhelp"), "after");
        QCOMPARE(dump().size(), nodes.toInt()); // in the tree, rebuilt from the files
        QCOMPARE(page() == "pageEmpty", nodes == "4");
        QCOMPARE(
            Test::readFile(m_root + "/p.zyproject").contains("<file>Sub/sub/sub.zyhelp</file>"),
            nodes == "4");
    }

    void commands()
    {
        QDir().mkpath(m_root + "/neu/later");
        const QStringList seen =
            run("actionNewProject", {m_root + "/neu", ""}); // a folder, then no name
        QCOMPARE(seen.value(0).section(u'|', 0, 0) + u'|' + seen.value(1),
                 "Projektordner wählen|Neues Projekt|Projektname:|MeinProjekt");
        QVERIFY(!QFile::exists(m_root + "/neu/.zyproject"));
        QCOMPARE(run("actionNewProject", {m_root + "/neu", "MeinProjekt", "OK"}).mid(2)
                     << m_window->windowTitle(),
                 QStringList({"Info|Projekt erstellt!|1", "Editor - MeinProjekt"}));
        QCOMPARE(run("actionNewFile", {m_root + "/neu/n.zyhelp"}),
                 QStringList("Neue Datei|" + m_root + "/neu|Hilfe (*.zyhelp)"));
        QCOMPARE(saved("neu/n.zyhelp") + node("n.zyhelp/de")->text(0),
                 "1.0|Ich [de:Neue Beschreibung] links:de");
        QVERIFY(Test::readFile(m_root + "/neu/MeinProjekt.zyproject")
                    .contains("<file>n.zyhelp</file>"));
        Test::writeFile(m_root + "/neu/m.zyhelp", "");
        run("actionReload", {},
            "XML Parsing Fehler in \"" + m_root
                + "/neu/m.zyhelp\" : \"Premature end of document.\"");
        QCOMPARE(tree()->topLevelItem(0)->text(0) + tree()->topLevelItem(1)->text(0),
                 "m.zyhelpn.zyhelp");
        QFile::remove(registryFile());
        QCOMPARE(run("actionRegisterPath", {"OK"}),
                 QStringList("Info|Pfad (inkl. Unterordner) wurde registriert.|1"));
        QVERIFY(Test::readFile(registryFile()).endsWith("/neu/later\n"));
        m_window = std::make_unique<MainWindow>();
        QCOMPARE(run("actionReload") + run("actionNewFile", {"OK"})
                     + run("actionRegisterPath", {"OK"}),
                 QStringList({"Info|Bitte erst ein Projekt öffnen/erstellen.|2",
                              "Info|Kein Projekt geöffnet.|2"}));
    }

    void openFromCommandLine_data() { table("open"); }
    void openFromCommandLine()
    {
        QFETCH(QString, path);
        QFETCH(QString, shown);
        QFile::link("/proc/sys/vm/drop_caches", m_root + "/locked.zyproject");
        m_window = std::make_unique<MainWindow>();
        const QString file = path.isEmpty() ? path : m_root + u'/' + path;
        bool opened = false;
        const QStringList seen = run([&] { opened = m_window->openProjectFile(file); }, {"OK"});
        QCOMPARE(opened ? m_window->windowTitle() : seen.join(u' '), shown.replace("$PATH", file));
        QCOMPARE(m_window->windowTitle() == "ZY Help Editor", !opened);
    }

    // A rebuild reads again only what changed on disk, and shows the same tree as
    // a fresh read on one thread: an unsaved rename dropped, a collapsed node open.
    // The document is rewritten in place, keeping its inode.
    void rebuild_data() { table("rebuild"); }
    void rebuild()
    {
        QFETCH(QString, change);
        QFETCH(QString, faults);
        const auto rewrite = [this](const QByteArray &bytes, int second) {
            QFile file(m_root + "/sub/a.zyhelp");
            QVERIFY(file.open(QIODevice::ReadWrite) && file.write(bytes) == bytes.size()
                    && file.flush());
            QVERIFY(file.setFileTime(QDateTime(QDate(2024, 5, 1), QTime(12, 0, second)),
                                     QFileDevice::FileModificationTime));
        };
        const QByteArray a = Test::readFile(m_root + "/sub/a.zyhelp");
        rewrite(a, 0);
        Test::writeFile(m_root + "/b.zyhelp", "<zyhelp><lang name='x'>");
        Test::writeFile(m_root + "/z.zyhelp", a);
        run("actionReload", {}, "XML Parsing Fehler in \"" + m_root + "/b.zyhelp\"");
        click("sub/a.zyhelp/de/Eins");
        edit("editSectionName", "Umbenannt");
        click("sub/a.zyhelp/de");
        node("sub/a.zyhelp")->setExpanded(false);
        static QStringList log;
        log.clear();
        const auto previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &m) { log << m; });
        if (change == "fr") {
            QVERIFY(QFile::remove(m_root + "/Sub/sub/sub.zyhelp")
                    && QFile::remove(m_root + "/z.zyhelp"));
            QVERIFY(QDir(m_root).mkdir("z.zyhelp"));
            menu("sub/a.zyhelp", {"Sprache hinzufügen...", "fr"});
        } else {
            rewrite(QByteArray(a).replace("Eins", change.toUtf8()), change == "Uno!");
            run("actionReload");
        }
        const QStringList shown = dump();
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        m_window = std::make_unique<MainWindow>();
        run("actionOpenProject", {m_root + "/p.zyproject"});
        QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
        qInstallMessageHandler(previous);
        const QRegularExpression notZ("^(?!z\\.zyhelp)"); // a folder now: gone from a fresh list
        QCOMPARE(shown.filter(notZ), dump().filter(notZ).replaceInStrings("Uno?", "Eins"));
        QCOMPARE(log.filter(QRegularExpression("^(XML|Kann)")).join(u'\n'),
                 faults.replace("$ROOT", m_root));
    }

    // A document read only up to a fault is kept beside it before its first save,
    // and one fixed on disk meanwhile is not.
    void partlyRead_data() { table("partlyread"); }
    void partlyRead()
    {
        QFETCH(QString, kept);
        QFETCH(QString, added);
        QFETCH(QString, files);
        const QByteArray bad = Test::readFile(QFINDTESTDATA("data/partly.zyhelp"));
        Test::writeFile(m_root + "/bad.zyhelp.bak", "older");
        Test::writeFile(m_root + "/bad.zyhelp", bad);
        run("actionReload", {},
            "XML Parsing Fehler in \"" + m_root + "/bad.zyhelp\" : \"Expected character data.\"");
        if (!added.isEmpty()) { // fixed, then read anew by a rebuild of the same list or another
            Test::writeFile(m_root + "/bad.zyhelp", "<zyhelp version='1'/>");
            Test::writeFile(m_root + u'/' + added, "<zyhelp/>");
            run("actionReload");
        }
        if (!kept.endsWith('1'))
            QFile::remove(m_root + "/bad.zyhelp.bak");
        click("bad.zyhelp");
        edit("editAuthor", "Y");
        const QString note = " (unvollständig gelesen, Original aufbewahrt als " + kept + ")";
        QCOMPARE(run("btnSaveFile") << status() << saved("bad.zyhelp").left(4),
                 QStringList({"Gespeichert: bad.zyhelp" + (kept.isEmpty() ? "" : note), "1|Y "}));
        run("actionSave");
        QCOMPARE(status(), "Gespeichert: bad.zyhelp");
        QCOMPARE(Test::readFile(m_root + u'/' + kept), kept.isEmpty() ? "<missing>" : bad);
        QCOMPARE(QDir(m_root).entryList({"bad*"}).join(u' '), files);
    }

private:
    static void table(const QString &name)
    {
        Test::addRows(QFINDTESTDATA("window/" + name + ".txt"));
    }

    static QString data(const QString &name) // a file in window/ beside this test
    {
        return QString::fromUtf8(Test::readFile(QFINDTESTDATA("window/" + name + ".txt")));
    }

    static QString registryFile() { return QCoreApplication::applicationDirPath() + "/Path"; }
    QTreeWidget *tree() { return m_window->findChild<QTreeWidget *>("projectTree"); }
    // Every node, one a line, indented by depth: text, kind, the document where it
    // changes, key and index, "*" for an icon, " closed" for a closed parent.
    QStringList dump()
    {
        QStringList lines;
        for (QTreeWidgetItemIterator it(tree()); QTreeWidgetItem *node = *it; ++it) {
            const auto value = [node](int role) { return node->data(0, role).toString(); };
            const QString path = value(PathRole);
            QStringList parts{node->text(0), value(TypeRole), value(KeyRole) + value(IndexRole)};
            if (!node->parent() || node->parent()->data(0, PathRole) != path)
                parts.insert(2, QFileInfo(path).fileName());
            parts.removeAll(QString());
            for (QTreeWidgetItem *parent = node->parent(); parent; parent = parent->parent())
                parts.first().prepend("  ");
            lines << parts.join(u' ') + (node->icon(0).isNull() ? "" : "*")
                    + (node->childCount() && !node->isExpanded() ? " closed" : "");
        }
        return lines;
    }
    // The node at a path of node texts, as "sub/a.zyhelp/de".
    QTreeWidgetItem *node(const QString &path)
    {
        for (QTreeWidgetItemIterator it(tree()); *it; ++it) {
            QString at = (*it)->text(0);
            for (QTreeWidgetItem *parent = (*it)->parent(); parent; parent = parent->parent())
                at.prepend(parent->text(0) + u'/');
            if (at == path)
                return *it;
        }
        qFatal("no node %s", qPrintable(path));
    }
    void click(const QString &path) { emit tree()->itemClicked(node(path), 0); }
    QStringList menu(const QString &path, const QStringList &replies)
    {
        QTreeWidgetItem *item = node(path);
        tree()->scrollToItem(item);
        const QPoint at = tree()->visualItemRect(item).center();
        QContextMenuEvent click(QContextMenuEvent::Mouse, at, tree()->viewport()->mapToGlobal(at));
        return run([&] { QApplication::sendEvent(tree()->viewport(), &click); }, replies);
    }
    // Runs a command, answering the windows it opens, and returns what they showed.
    QStringList run(const std::function<void()> &command, const QStringList &replies,
                    const QString &warning = {})
    {
        if (!warning.isEmpty())
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression("^" + QRegularExpression::escape(warning)));
        m_replies = replies;
        m_seen.clear();
        command();
        return m_seen;
    }
    QStringList run(const char *name, const QStringList &replies = {}, const QString &warning = {})
    {
        auto *action = m_window->findChild<QAction *>(name);
        auto *button = m_window->findChild<QPushButton *>(name);
        return run([&] { action ? action->trigger() : button->click(); }, replies, warning);
    }
    // The text of a line edit or a plain text edit (the property a user edits), the links
    // shown, the status bar, the page.
    QWidget *widget(const char *name) { return m_window->findChild<QWidget *>(name); }
    QMetaProperty field(const char *name) { return widget(name)->metaObject()->userProperty(); }
    QString text(const char *name) { return field(name).read(widget(name)).toString(); }
    void edit(const char *name, const QString &text) { field(name).write(widget(name), text); }
    QString links()
    {
        QStringList rows;
        for (QListWidgetItem *row :
             m_window->findChild<QListWidget *>("listLinks")->findItems("", Qt::MatchContains))
            rows << row->text();
        return rows.join(u',');
    }
    QString status() { return m_window->statusBar()->currentMessage(); }
    QString page()
    {
        return m_window->findChild<QStackedWidget *>("editorStack")->currentWidget()->objectName();
    }
    QString saved(const QString &file) // the document on disk
    {
        return QFile::exists(m_root + u'/' + file)
            ? Test::dump(ZyHelp::HelpParser().parse(m_root + u'/' + file))
            : "<missing>";
    }

    // Answers the windows a command opens, in order: a button ("Yes", "No", "OK"), a dialog's text,
    // a menu entry; "Esc" cancels. A window without a reply is cancelled, one open 5 s after it
    // closed: no test hangs.
    void poll()
    {
        QWidget *window = QApplication::activePopupWidget();
        window = window ? window : QApplication::activeModalWidget();
        if (window && window == m_current && m_since.hasExpired(5000))
            window->close();
        if (window && window != m_current) {
            m_current = window;
            m_since.start();
            // Answered outside this slot: polling goes on in the loops the answer opens.
            QTimer::singleShot(0, window, [this, window] { answer(window); });
        }
    }
    void answer(QWidget *window)
    {
        const QString reply = m_replies.isEmpty() ? QString("unexpected") : m_replies.takeFirst();
        auto *box = qobject_cast<QMessageBox *>(window);
        auto *input = qobject_cast<QInputDialog *>(window);
        auto *files = qobject_cast<QFileDialog *>(window);
        auto *menu = qobject_cast<QMenu *>(window);
        const QList<QAction *> entries = menu ? menu->actions() : QList<QAction *>();
        // The title, what the window says and its icon, preset text or folder and filter.
        QStringList shown{window->windowTitle()};
        if (box)
            shown << box->text() << QString::number(box->icon());
        if (input)
            shown << input->labelText() << input->textValue();
        if (files)
            shown << files->directory().absolutePath() << files->nameFilters().join(u';');
        for (QAction *action : entries)
            shown << (action->isSeparator() ? "-" : action->text());
        m_seen.append((reply == "unexpected" ? "unexpected " : "") + shown.join(u'|'));
        const auto button = reply == "Yes" ? QMessageBox::Yes
            : reply == "No"                ? QMessageBox::No
                                           : QMessageBox::Ok;
        const auto entry = std::find_if(entries.cbegin(), entries.cend(),
                                        [&](QAction *a) { return a->text() == reply; });
        if (box && box->button(button)) {
            box->button(button)->click();
        } else if (entry != entries.cend()) {
            menu->setActiveAction(*entry); // as the user does it: highlighted, then Return
            QTest::keyClick(menu, Qt::Key_Return);
        } else if ((input || files) && reply != "Esc" && reply != "unexpected") {
            window->findChild<QLineEdit *>(input ? QString() : QString("fileNameEdit"))
                ->setText(reply);
            static_cast<QDialog *>(window)->accept();
        } else {
            QTest::keyClick(window, Qt::Key_Escape);
        }
    }

    QStringList m_replies, m_seen;
    QTimer m_timer;
    QPointer<QWidget> m_current;
    QElapsedTimer m_since;
    std::optional<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<MainWindow> m_window;
};

QTEST_MAIN(TstWindow)
#include "tst_window.moc"
