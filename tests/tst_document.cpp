#include "documentcache.h"
#include "helpdata.h"
#include "projectmanager.h"
#include "testutil.h"

#include <QtTest>

#include <optional>
#include <vector>

using namespace ZyHelp;

namespace {

// Written, it gives data/sample.zyhelp: escapes, a pair kept, a lone surrogate dropped.
HelpData sample(int sections = 2)
{
    HelpData d;
    d.version = "1.0";
    d.author = "A & \"B\"";
    d.languages["en"].description = " Hi\n";
    for (int i = 0; i < sections; ++i)
        d.languages["de"].sections.append(
            {"S" + QString::number(i), "a < b\nc \U0001F600" + QString(QChar(0xd800))});
    d.links = {"start", "", "start"};
    return d;
}

} // namespace

class TstDocument : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(".*"));
        m_dir.emplace();
    }

    void writes_data()
    {
        QTest::addColumn<HelpData>("data");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << HelpData()
                               << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                             "<zyhelp version=\"\" author=\"\"/>\n");
        QTest::newRow("sample") << sample() << Test::readFile(QFINDTESTDATA("data/sample.zyhelp"));
        HelpData cr; // a carriage return written as it is would read back as a line end
        cr.languages["de"] = HelpLanguage{"a\r\nb\r", {{"s", "\rc"}}};
        QTest::newRow("carriage returns")
            << cr
            << QByteArray(
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyhelp version=\"\" author=\"\">\n"
                   "    <lang name=\"de\">\n        <description>a&#13;\nb&#13;</description>\n"
                   "        <section name=\"s\">&#13;c</section>\n    </lang>\n</zyhelp>\n");
    }
    void writes()
    {
        QFETCH(HelpData, data);
        const QString path = m_dir->filePath("w.zyhelp");
        Test::writeFile(path, QByteArray(4000, 'x')); // a longer file is replaced whole
        QVERIFY(HelpWriter().writeXml(data, path));
        QTEST(Test::readFile(path), "bytes");
    }

    // A save that cannot finish leaves the old file whole: on a full disk, or where the user may
    // not write the file though the folder would allow the rename. Where only the folder is
    // protected, it is written in place.
    void saves_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("limit"); // of a file's size, 0: none
        // The file's mode, for another user, in a folder only it may write; 0: as root.
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("log"); // of the save, for the file and the "Path" list
        const auto row = [](const char *name, const char *file, int limit, int mode,
                            const char *log) {
            QTest::newRow(name) << file << limit << mode << log;
        };
        row("document, full disk", "d.zyhelp", 8192, 0,
            "Konnte Datei nicht schreiben: \"FILE\" : \"File too large\"");
        row("project, full disk", "P.zyproject", 4096, 0,
            "Konnte Pfadliste nicht schreiben: \"LIST\" : \"File too large\"");
        row("document, read-only", "d.zyhelp", 0, 0x4444,
            "Konnte Datei nicht zum Schreiben öffnen: \"FILE\"");
        row("document in place", "d.zyhelp", 0, 0x6666, "");
        row("project in place", "P.zyproject", 0, 0x6666, "");
    }
    void saves()
    {
        QFETCH(QString, name);
        QFETCH(int, limit);
        QFETCH(int, mode);
        QFETCH(QString, log);
        const QString path = m_dir->filePath(name),
                      pathList = QCoreApplication::applicationDirPath() + "/Path";
        for (int i = 0; i < 300; ++i) // a long project file
            Test::writeFile(m_dir->filePath(QString("a-long-name-of-a-document-%1.zyhelp").arg(i)),
                            "");
        Test::writeFile(path, "old");
        Test::writeFile(pathList, QByteArray(5000, '\n'));
        QFile::setPermissions(path, QFileDevice::Permissions(mode ? mode : 0x6600));
        QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(mode ? 0x5555 : 0x7700));
        const bool project = name.endsWith(".zyproject");
        QCOMPARE(
            Test::inChild(
                [&] {
                    static QString logged;
                    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &,
                                              const QString &m) { logged += m; });
                    if (limit)
                        Test::limitFileSize(limit);
                    const bool saved = project ? ProjectManager().createProject(m_dir->path(), "P")
                                               : HelpWriter().writeXml(sample(2000), path);
                    return (saved ? 1 : 2)
                        + (logged == QString(log).replace("FILE", path).replace("LIST", pathList)
                               ? 0
                               : 10);
                },
                mode),
            mode == 0x6666 ? 1 : 2);
        QCOMPARE(Test::readFile(path).left(5), mode == 0x6666 ? "<?xml" : "old");
        QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(0x7700));
    }

    // Killed at random moments while saving, the file is always one whole document.
    void killedWhileSaving()
    {
        const QString path = m_dir->filePath("k.zyhelp");
        QSet<QByteArray> versions;
        for (int i = 0; i < 2; ++i)
            versions << (HelpWriter().writeXml(sample(3000 + i), path) ? Test::readFile(path) : "");
        for (int kill = 0; kill < 50; ++kill) {
            const pid_t pid = fork();
            for (int i = 0; pid == 0; ++i)
                HelpWriter().writeXml(sample(3000 + i % 2), path);
            QThread::usleep(QRandomGenerator::global()->bounded(2000, 60000));
            ::kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            const QByteArray bytes = Test::readFile(path);
            QVERIFY2(versions.contains(bytes) && !bytes.isEmpty(),
                     qPrintable(QString::number(bytes.size())));
        }
        QCOMPARE(QDir(m_dir->path()).entryList({"*.zyhelp"}, QDir::Files), {"k.zyhelp"});
    }

    void reads_data() // the files in data/
    {
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("stop"); // line:column of a fault, "-" if unreadable
        const auto row = [](const char *file, const QString &expected, const char *stop = "") {
            QTest::newRow(file) << expected << stop;
        };
        row("sample.zyhelp",
            "1.0|A & \"B\" [de: (S0:a < b\nc \U0001F600) (S1:a < b\nc \U0001F600)] [en:Hi] "
            "links:start,,start");
        row("read/lang-attributes.zyhelp", "| [a:2] [b: (n:)] links:");
        row("read/names-by-case.zyhelp", "|au [k: (s:t)] links:p");
        row("read/encoding-by-bom.zyhelp", "\u00e4| links:");
        row("read/utf-16.zyhelp", "\u00e4| links:");
        row("read/child-in-section.zyhelp", "1| [a:] links:", "3:14");
        row("read/bad-attribute.zyhelp", "| [a:] links:", "3:10");
        row("read/empty.zyhelp", "| links:", "1:0");
        row("read/none.zyhelp", "| links:", "-");
    }
    void reads()
    {
        QFETCH(QString, stop);
        const QString path =
            QFileInfo(QFINDTESTDATA("data/read")).dir().filePath(QTest::currentDataTag());
        ParseStatus status;
        QTEST(Test::dump(HelpParser().parse(path, &status)), "expected");
        if (status.outcome == ParseStatus::Faulty || stop.contains(u':')) {
            QCOMPARE(QString("%1:%2").arg(status.line).arg(status.column), stop);
            QTest::ignoreMessage(QtWarningMsg,
                                 qPrintable("XML Parsing Fehler in \"" + path + "\" : \""
                                            + status.errorString + u'"'));
        } else if (status.outcome == ParseStatus::Unreadable || !stop.isEmpty()) {
            QTest::ignoreMessage(QtWarningMsg,
                                 qPrintable("Kann XML-Datei nicht öffnen: \"" + path + u'"'));
        }
        QTEST(Test::dump(HelpParser().parse(path)), "expected");
    }

    // A document read is handed to prepare on the pool thread that read it, before
    // receive gets it in list order; one kept from the read before is not prepared.
    void cachePrepares()
    {
        const QStringList paths{m_dir->filePath("a.zyhelp"), m_dir->filePath("gone.zyhelp"),
                                m_dir->filePath("folder.zyhelp"), m_dir->filePath("b.zyhelp")};
        Test::writeFile(paths[0], "<zyhelp version='a'/>");
        Test::writeFile(paths[3], "<zyhelp version='b'/>");
        QVERIFY(QDir().mkdir(paths[2])); // there, but nothing to read
        DocumentCache cache;
        for (const char *expected : {"0a+ 2+ 3b+", "0a 2+ 3bb+"}) {
            std::vector<Qt::HANDLE> preparedBy(paths.size(), nullptr);
            QString received;
            cache.read(
                paths,
                [&](qsizetype i, const DocumentCache::Document &document) {
                    const Qt::HANDLE by = preparedBy[size_t(i)];
                    received += QString(" %1%2%3").arg(i).arg(
                        document.data.version,
                        by ? by == QThread::currentThreadId() ? "!" : "+" : "");
                },
                [&](qsizetype i, const DocumentCache::Document &) {
                    preparedBy[size_t(i)] = QThread::currentThreadId();
                });
            QCOMPARE(received.mid(1), expected);
            Test::writeFile(paths[3], "<zyhelp version='bb'/>"); // another size: read again
        }
    }

private:
    std::optional<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TstDocument)
#include "tst_document.moc"
