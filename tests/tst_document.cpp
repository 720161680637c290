#include "helpdata.h"
#include "testutil.h"

#include <QtTest>

#include <optional>

using namespace ZyHelp;

namespace {

// Written, it gives data/sample.zyhelp: escapes, a pair kept, a lone surrogate dropped.
HelpData sample(int sections = 2)
{
    HelpData d;
    d.version = "1.0";
    d.author = "A & \"B\"";
    d.languages["en"].description = " Hi\n";
    d.languages["de"].description = "";
    for (int i = 0; i < sections; ++i)
        d.languages["de"].sections.append({"S" + QString::number(i), "a < b\nc \U0001F600" + QString(QChar(0xd800))});
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
        QTest::newRow("empty") << HelpData() << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                           "<zyhelp version=\"\" author=\"\"/>\n");
        QTest::newRow("sample") << sample() << Test::readFile(QFINDTESTDATA("data/sample.zyhelp"));
    }
    void writes()
    {
        QFETCH(HelpData, data);
        const QString path = m_dir->filePath("w.zyhelp");
        Test::writeFile(path, QByteArray(4000, 'x')); // a longer file is replaced whole
        QVERIFY(HelpWriter().writeXml(data, path));
        QTEST(Test::readFile(path), "bytes");
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), {"w.zyhelp"});
    }

    // As a user who may not write the file, though the folder would allow the
    // rename: refused. Where only the folder is protected: written in place.
    void permissions_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode");
        QTest::newRow("read-only") << "open/r.zyhelp" << 0x4444;
        QTest::newRow("in place") << "closed/w.zyhelp" << 0x6666;
    }
    void permissions()
    {
        QFETCH(QString, name);
        QFETCH(int, mode);
        const QString path = m_dir->filePath(name);
        Test::writeFile(path, "old");
        QFile::setPermissions(path, QFileDevice::Permissions(mode));
        for (const QString &dir : {m_dir->path(), m_dir->filePath("closed")})
            QFile::setPermissions(dir, QFileDevice::Permissions(0x5555));
        QFile::setPermissions(m_dir->filePath("open"), QFileDevice::Permissions(0x7777));
        const bool inPlace = mode == 0x6666;
        QCOMPARE(Test::inChild([&] { return HelpWriter().writeXml(sample(), path) ? 1 : 2; }, true), inPlace ? 1 : 2);
        QCOMPARE(Test::readFile(path), inPlace ? Test::readFile(QFINDTESTDATA("data/sample.zyhelp")) : "old");
        QCOMPARE(int(QFileInfo(path).permissions() & 0xf0ff), mode & 0xf0ff); // the user's own bits vary
        for (const QString &dir : {m_dir->path(), m_dir->filePath("closed")})
            QFile::setPermissions(dir, QFileDevice::Permissions(0x7700));
    }

    // A write that fails part-way, as on a full disk: the old file stays whole.
    void failsPartWay()
    {
        const QString path = m_dir->filePath("f.zyhelp");
        Test::writeFile(path, "old");
        QCOMPARE(Test::inChild([&] {
            static QString warning;
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &m) { warning = m; });
            Test::limitFileSize(8192);
            return HelpWriter().writeXml(sample(2000), path) ? 1 : warning.startsWith("Konnte Datei nicht schreiben: \"" + path + "\" : \"") ? 3 : 2;
        }), 3);
        QCOMPARE(Test::readFile(path), "old");
    }

    // Killed at random moments while saving, the file is always one whole document.
    void killedWhileSaving()
    {
        const QString path = m_dir->filePath("k.zyhelp");
        QByteArray versions[2];
        for (int i = 0; i < 2; ++i) {
            QVERIFY(HelpWriter().writeXml(sample(3000 + i), path));
            versions[i] = Test::readFile(path);
        }
        for (int kill = 0; kill < 50; ++kill) {
            const pid_t pid = fork();
            for (int i = 0; pid == 0; ++i)
                HelpWriter().writeXml(sample(3000 + i % 2), path);
            QThread::usleep(QRandomGenerator::global()->bounded(2000, 60000));
            ::kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            const QByteArray bytes = Test::readFile(path);
            QVERIFY2(bytes == versions[0] || bytes == versions[1], qPrintable(QString::number(bytes.size())));
        }
        QCOMPARE(QDir(m_dir->path()).entryList({"*.zyhelp"}, QDir::Files), {"k.zyhelp"});
    }

    void reads_data() // the files in data/
    {
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("stop"); // line:column of a fault, "-" if unreadable
        QTest::newRow("sample.zyhelp")
            << "1.0|A & \"B\" [de: (S0:a < b\nc \U0001F600) (S1:a < b\nc \U0001F600)] [en:Hi] links:start,,start" << "";
        QTest::newRow("read/lang-attributes.zyhelp") << "| [a:2] [b: (n:)] links:" << "";
        QTest::newRow("read/names-by-case.zyhelp") << "|au [k: (s:t)] links:p" << "";
        QTest::newRow("read/encoding-by-bom.zyhelp") << QString("\u00e4| links:") << "";
        QTest::newRow("read/utf-16.zyhelp") << QString("\u00e4| links:") << "";
        QTest::newRow("read/child-in-section.zyhelp") << "1| [a:] links:" << "3:14";
        QTest::newRow("read/bad-attribute.zyhelp") << "| [a:] links:" << "3:10";
        QTest::newRow("read/empty.zyhelp") << "| links:" << "1:0";
        QTest::newRow("read/none.zyhelp") << "| links:" << "-";
    }
    void reads()
    {
        QFETCH(QString, stop);
        const QString path = QFileInfo(QFINDTESTDATA("data/read")).dir().filePath(QTest::currentDataTag());
        ParseStatus status;
        QTEST(Test::dump(HelpParser().parse(path, &status)), "expected");
        QCOMPARE(status.outcome, stop.isEmpty() ? ParseStatus::Complete : stop == "-" ? ParseStatus::Unreadable
                                                                                     : ParseStatus::Faulty);
        if (status.outcome == ParseStatus::Faulty) {
            QCOMPARE(QString("%1:%2").arg(status.line).arg(status.column), stop);
            QTest::ignoreMessage(QtWarningMsg, qPrintable("XML Parsing Fehler in \"" + path + "\" : \""
                                                          + status.errorString + u'"'));
        } else if (!stop.isEmpty()) {
            QTest::ignoreMessage(QtWarningMsg, qPrintable("Kann XML-Datei nicht öffnen: \"" + path + u'"'));
        }
        QTEST(Test::dump(HelpParser().parse(path)), "expected");
    }

private:
    std::optional<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TstDocument)
#include "tst_document.moc"
