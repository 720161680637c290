#include "helpdata.h"
#include "testutil.h"

#include <QtTest>

#include <csignal>
#include <optional>
#include <sys/resource.h>

using namespace ZyHelp;

namespace {

HelpData sample(int sections = 2)
{
    HelpData d;
    d.version = "1.0";
    d.author = "A & \"B\"";
    d.languages["en"].description = " Hi\n";
    d.languages["de"].description = "";
    for (int i = 0; i < sections; ++i)
        d.languages["de"].sections.append({"S" + QString::number(i), QString("a < b\nc \U0001F600") + QChar(0xd800)});
    d.links = {"start", "", "start"};
    return d;
}

const QByteArray sampleBytes =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyhelp version=\"1.0\" author=\"A &amp; &quot;B&quot;\">\n"
    "    <lang name=\"de\">\n        <description></description>\n"
    "        <section name=\"S0\">a &lt; b\nc \U0001F600</section>\n        <section name=\"S1\">a &lt; b\nc \U0001F600</section>\n"
    "    </lang>\n    <lang name=\"en\">\n        <description> Hi\n</description>\n    </lang>\n"
    "    <link page=\"start\"/>\n    <link page=\"\"/>\n    <link page=\"start\"/>\n</zyhelp>\n";

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
        QTest::newRow("sample") << sample() << sampleBytes;
    }
    void writes()
    {
        QFETCH(HelpData, data);
        QFETCH(QByteArray, bytes);
        const QString path = m_dir->filePath("w.zyhelp");
        Test::writeFile(path, QByteArray(4000, 'x')); // a longer file is replaced whole
        QVERIFY(HelpWriter().writeXml(data, path));
        QCOMPARE(Test::readFile(path), bytes);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), {"w.zyhelp"});
    }

    void refusesWrite_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing folder") << "gone/x.zyhelp";
        QTest::newRow("a folder") << "folder.zyhelp";
    }
    void refusesWrite()
    {
        QFETCH(QString, name);
        QDir(m_dir->path()).mkdir("folder.zyhelp");
        const QString path = m_dir->filePath(name);
        QTest::ignoreMessage(QtWarningMsg, qPrintable("Konnte Datei nicht zum Schreiben öffnen: \"" + path + u'"'));
        QVERIFY(!HelpWriter().writeXml(sample(), path));
        QVERIFY(!QFile::exists(m_dir->filePath("gone")));
    }

    // As a user without the right to write it, in a folder that would allow
    // the rename; and in a protected folder, a writable file is written in place.
    void permissions()
    {
        QDir dir(m_dir->path());
        dir.mkdir("open");
        dir.mkdir("closed");
        const QString readOnly = dir.filePath("open/r.zyhelp"), inPlace = dir.filePath("closed/w.zyhelp");
        Test::writeFile(readOnly, "old");
        Test::writeFile(inPlace, "old");
        QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadOther);
        QFile::setPermissions(inPlace, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther | QFile::WriteOther);
        QFile::setPermissions(dir.filePath("open"), QFileDevice::Permissions(0x7777));
        QFile::setPermissions(dir.filePath("closed"), QFileDevice::Permissions(0x5555));
        QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(0x5555));
        QCOMPARE(Test::inChild([&] { return HelpWriter().writeXml(sample(), readOnly) ? 1 : 2; }, true), 2);
        QCOMPARE(Test::readFile(readOnly), "old");
        QCOMPARE(Test::inChild([&] { return HelpWriter().writeXml(sample(), inPlace) ? 1 : 2; }, true), 1);
        QCOMPARE(Test::readFile(inPlace), sampleBytes);
        QCOMPARE(QFileInfo(inPlace).permissions() & QFile::WriteOther, QFile::WriteOther);
        QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(0x7700));
        QFile::setPermissions(dir.filePath("closed"), QFileDevice::Permissions(0x7700));
    }

    // A write that fails part-way, as on a full disk: the old file stays whole.
    void failsPartWay()
    {
        const QString path = m_dir->filePath("f.zyhelp");
        Test::writeFile(path, sampleBytes);
        const int result = Test::inChild([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{8192, 8192};
            setrlimit(RLIMIT_FSIZE, &limit);
            static bool warned = false;
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &m) {
                warned = m.startsWith("Konnte Datei nicht schreiben: \"") && m.contains("\" : \"");
            });
            return HelpWriter().writeXml(sample(2000), path) ? 1 : warned ? 3 : 2;
        });
        QCOMPARE(result, 3);
        QCOMPARE(Test::readFile(path), sampleBytes);
    }

    // Killed at random moments while saving, the file is always one whole document.
    void killedWhileSaving()
    {
        const QString path = m_dir->filePath("k.zyhelp");
        QVERIFY(HelpWriter().writeXml(sample(3000), path));
        const QByteArray one = Test::readFile(path);
        QVERIFY(HelpWriter().writeXml(sample(3001), path));
        const QByteArray other = Test::readFile(path);
        for (int kill = 0; kill < 50; ++kill) {
            const pid_t pid = fork();
            if (pid == 0) {
                for (int i = 0;; ++i)
                    HelpWriter().writeXml(sample(3000 + i % 2), path);
            }
            QThread::usleep(QRandomGenerator::global()->bounded(2000, 60000));
            ::kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            const QByteArray bytes = Test::readFile(path);
            QVERIFY2(bytes == one || bytes == other, qPrintable(QString::number(bytes.size())));
        }
        QCOMPARE(QDir(m_dir->path()).entryList({"*.zyhelp"}, QDir::Files), {"k.zyhelp"});
    }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("xml"); // none: no file
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("stop"); // line:column of the fault, "-" if unreadable
        QTest::newRow("written") << sampleBytes
                                 << "1.0|A & \"B\" [de: (S0:a < b\nc \U0001F600) (S1:a < b\nc \U0001F600)] [en:Hi] links:start,,start" << "";
        QTest::newRow("lang attributes")
            << QByteArray("<x version='v'><lang lang='b'/><lang name='a' lang='z'><description>1</description>"
                          "<description> 2 </description></lang><lang name=''><section>s</section></lang>"
                          "<lang><section>t</section></lang><lang lang='b'><section name='n'/></lang></x>")
            << "| [a:2] [b: (n:)] links:" << "";
        QTest::newRow("names by case, anywhere")
            << QByteArray("<zyhelp author='au'><Lang name='x'><lang name='k'><link page='p'/><SECTION/><link/>"
                          "<foo><section name='s'>\r\n t \r\n</section></foo></lang></Lang>"
                          "<description>lost</description></zyhelp>")
            << "|au [k: (s:t)] links:p" << "";
        QTest::newRow("encoding by BOM only")
            << QByteArray("<?xml version='1.0' encoding='ISO-8859-1'?><zyhelp version='\xc3\xa4'/>")
            << QString("\u00e4| links:") << "";
        QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
        const QByteArray utf16Bytes = utf16(QString("<zyhelp version='\u00e4'>\r\n</zyhelp>"));
        QTest::newRow("utf-16") << utf16Bytes << QString("\u00e4| links:") << "";
        QTest::newRow("child in section")
            << QByteArray("<zyhelp version='1'><lang name='a'/>\n<lang name='b'>\n<section>x<b/></section></lang>"
                          "<link page='after'/></zyhelp>")
            << "1| [a:] links:" << "3:14";
        QTest::newRow("bad attribute") << QByteArray("<zyhelp>\n  <lang name='a'/>\n  <lang x>") << "| [a:] links:" << "3:10";
        QTest::newRow("empty") << QByteArray("") << "| links:" << "1:0";
        QTest::newRow("missing") << QByteArray() << "| links:" << "-";
    }
    void reads()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QString, expected);
        QFETCH(QString, stop);
        const QString path = m_dir->filePath("r.zyhelp");
        if (!xml.isNull())
            Test::writeFile(path, xml);
        ParseStatus status;
        QCOMPARE(Test::dump(HelpParser().parse(path, &status)), expected);
        QCOMPARE(status.outcome, stop.isEmpty() ? ParseStatus::Complete
                                 : stop == "-" ? ParseStatus::Unreadable : ParseStatus::Faulty);
        if (status.outcome == ParseStatus::Faulty) {
            QCOMPARE(QString("%1:%2").arg(status.line).arg(status.column), stop);
            QTest::ignoreMessage(QtWarningMsg, qPrintable("XML Parsing Fehler in \"" + path + "\" : \""
                                                          + status.errorString + u'"'));
        } else if (!stop.isEmpty()) {
            QTest::ignoreMessage(QtWarningMsg, qPrintable("Kann XML-Datei nicht öffnen: \"" + path + u'"'));
        }
        QCOMPARE(Test::dump(HelpParser().parse(path)), expected);
    }

private:
    std::optional<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TstDocument)
#include "tst_document.moc"
