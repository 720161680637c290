#include "mainwindow.h"

#include <QtTest>
#include <QtWidgets>

static QStringList messages;
static const QString faulty = R"(XML Parsing Fehler in "b.zyhelp" : "Unexpected '<'.")";

static bool write(const QString &path, const QByteArray &section, int second = 0) // keeps the inode
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
           && file.write(R"(<zyhelp><lang name="de"><section name=")" + section + R"("/></lang></zyhelp>)") > 0
           && file.setFileTime(QDateTime(QDate(2024, 5, 1), QTime(12, 0, second)), QFileDevice::FileModificationTime);
}

static void run(MainWindow &window, int threads, const QString &text, const std::function<void()> &command = {})
{
    QThreadPool::globalInstance()->setMaxThreadCount(threads); // and text typed into the command's dialog
    QTimer::singleShot(0, &window, [text] { // comes in the dialog's event loop
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        dialog->findChild<QLineEdit *>()->setText(text);
        dialog->accept();
    });
    command ? command() : window.findChild<QAction *>("actionOpenProject")->trigger();
}

static QStringList dump(MainWindow &window) // every node in order; z is no document to a fresh list
{
    QStringList lines;
    for (QTreeWidgetItemIterator it(window.findChild<QTreeWidget *>()); QTreeWidgetItem *item = *it; ++it)
        QDebug(&lines.emplace_back()) << item->childCount() << item->text(0) << item->isExpanded() << item->icon(0).cacheKey()
            << item->data(0, MainWindow::ItemTypeRole) << item->data(0, MainWindow::FilePathRole)
            << item->data(0, MainWindow::LangKeyRole) << item->data(0, MainWindow::SectionIndexRole);
    return lines.filter(QRegularExpression("^(?!.*z\\.zyhelp)"));
}

class tst_ProjectView : public QObject
{
    Q_OBJECT

private slots:
    void rebuild_data()
    {
        QTest::addColumn<QString>("change"); // after a read on four threads, c's "Alt1" renamed unsaved, c collapsed
        QTest::addColumn<QStringList>("warnings"); // in document order, the fresh read's last
        QTest::newRow("c: same size, new time") << "Neu1" << QStringList(3, faulty);
        QTest::newRow("c: same size and time, not read again") << "Neu2" << QStringList(3, faulty);
        QTest::newRow("m gone, z a folder, an edit") << "edit" << QStringList{faulty, faulty, R"(Kann XML-Datei nicht öffnen: "z.zyhelp")", faulty};
    }

    void rebuild()
    {
        QFETCH(QString, change);
        QTemporaryDir dir;
        for (const QString name : {"P.zyproject", "a", "b", "m", "sub/c", "sub/deep/d", "z"}) // b is faulty
            QVERIFY(write(dir.filePath(name.contains('.') ? name : name + ".zyhelp"), name == "sub/c" ? "Alt1" : name == "b" ? "<" : "x"));
        messages.clear();
        const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { messages << text; });
        MainWindow window, fresh;
        run(window, 4, dir.filePath("P.zyproject"));
        QTreeWidgetItem *section = window.findChild<QTreeWidget *>()->findItems("Alt1", Qt::MatchRecursive).value(0);
        section->treeWidget()->itemClicked(section, 0);
        window.findChild<QLineEdit *>("editSectionName")->setText("Umbenannt");
        section->treeWidget()->itemClicked(section->parent(), 0);
        section->parent()->parent()->setExpanded(false);
        QVERIFY(change == "edit" ? QFile::remove(dir.filePath("m.zyhelp")) && QFile::remove(dir.filePath("z.zyhelp"))
                    && QDir(dir.path()).mkdir("z.zyhelp") : write(dir.filePath("sub/c.zyhelp"), change.toUtf8(), change == "Neu1"));
        change == "edit" ? run(window, 4, "en", [&] { QMetaObject::invokeMethod(&window, "addLanguage", Q_ARG(QString, dir.filePath("a.zyhelp"))); })
                         : window.findChild<QAction *>("actionReload")->trigger(); // an edit keeps the list
        run(fresh, 1, dir.filePath("P.zyproject"));
        qInstallMessageHandler(handler);
        QTEST(messages.filter(QRegularExpression("^(XML|Kann)")).replaceInStrings(dir.path() + '/', ""), "warnings");
        QCOMPARE(dump(window), dump(fresh).replaceInStrings("Neu2", "Alt1")); // Neu2 not read, Umbenannt dropped
    }
};

QTEST_MAIN(tst_ProjectView)
#include "tst_projectview.moc"
