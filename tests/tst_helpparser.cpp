#include "helpdata.h"

#include <QtTest>

using namespace ZyHelp;

Q_DECLARE_METATYPE(ZyHelp::HelpData)

namespace {

HelpData document(const QString &version, const QString &author,
                  const QMap<QString, HelpLanguage> &languages = {},
                  const QStringList &links = {})
{
    HelpData data;
    data.version = version;
    data.author = author;
    data.languages = languages;
    data.links = links;
    return data;
}

// One line per record, so a failed comparison shows where the documents part.
QString dump(const HelpData &data)
{
    QString out = "version[" + data.version + "] author[" + data.author + "]\n";
    for (auto it = data.languages.cbegin(), end = data.languages.cend(); it != end; ++it) {
        out += "lang[" + it.key() + "] description[" + it->description + "]\n";
        for (const HelpSection &section : it->sections)
            out += "  section[" + section.name + "] [" + section.content + "]\n";
    }
    for (const QString &link : data.links)
        out += "link[" + link + "]\n";
    return out;
}

QByteArray encoded(const QString &text, QStringConverter::Encoding encoding)
{
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(text);
}

QByteArray withCrLf(QByteArray bytes)
{
    return bytes.replace("\n", "\r\n");
}

// The error a bare XML reader reports for the same bytes: the reader's own
// wording, whatever Qt version runs the test.
QString xmlErrorOf(const QByteArray &bytes)
{
    QXmlStreamReader xml(bytes);
    while (!xml.atEnd() && !xml.hasError())
        xml.readNext();
    return xml.errorString();
}

// The error a bare XML reader reports for the decoded text, which it reads
// whatever encoding the declaration names.
QString xmlErrorOfText(const QString &text)
{
    QXmlStreamReader xml(text);
    while (!xml.atEnd() && !xml.hasError())
        xml.readNext();
    return xml.errorString();
}

QByteArray cutAfter(const QByteArray &bytes, const QByteArray &marker, int occurrence)
{
    qsizetype at = -1;
    for (int i = 0; i < occurrence; ++i) {
        at = bytes.indexOf(marker, at + 1);
        if (at < 0)
            return "<marker not found>";
    }
    return bytes.left(at + marker.size());
}

const QByteArray sample = R"(<?xml version="1.0" encoding="UTF-8"?>
<zyhelp version="2.0" author="Ann">
    <link page="first"/>
    <lang name="en">
        <description>English</description>
        <section name="A">a</section>
    </lang>
    <link page="second"/>
    <lang name="de">
        <description>Deutsch</description>
        <section name="B">b</section>
    </lang>
    <link page="third"/>
</zyhelp>
)";

// Encoded in UTF-8, UTF-16 or UTF-32 by the tests, while its declaration keeps
// naming UTF-8, which the reader ignores. Its text holds characters whose UTF-16
// code units contain the byte 0x0D (U+010D, U+0D0A), which a byte-wise line end
// conversion would tear apart.
const QString unicodeSample = QString::fromUtf8(R"(<?xml version="1.0" encoding="UTF-8"?>
<zyhelp version="1" author="Zoë">
    <lang name="de">
        <description>Grüße č ഊ 😀</description>
        <section name="Straße">eins
zwei</section>
    </lang>
    <link page="Seite ä"/>
</zyhelp>
)");

HelpData unicodeSampleData()
{
    return document("1", QString::fromUtf8("Zoë"),
                    {{"de",
                      {QString::fromUtf8("Grüße č ഊ 😀"),
                       {{QString::fromUtf8("Straße"), "eins\nzwei"}}}}},
                    {QString::fromUtf8("Seite ä")});
}

// Collects warnings instead of printing them, so two runs can be compared.
class WarningCollector
{
public:
    WarningCollector()
    {
        s_messages.clear();
        m_previous = qInstallMessageHandler(collect);
    }
    ~WarningCollector() { qInstallMessageHandler(m_previous); }

    QStringList messages() const { return s_messages; }

private:
    static void collect(QtMsgType type, const QMessageLogContext &, const QString &message)
    {
        if (type == QtWarningMsg)
            s_messages.append(message);
    }

    static QStringList s_messages;
    QtMessageHandler m_previous;
};

QStringList WarningCollector::s_messages;

} // namespace

class TstHelpParser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void readsRules_data();
    void readsRules();
    void roundTrip_data();
    void roundTrip();
    void unopenableFile_data();
    void unopenableFile();
    void faultyXml_data();
    void faultyXml();
    void truncatedFile_data();
    void truncatedFile();
    void elementInsideText_data();
    void elementInsideText();
    void encodings_data();
    void encodings();
    void bothDecodingPaths_data();
    void bothDecodingPaths();
    void readsBytesAsDecodedText_data();
    void readsBytesAsDecodedText();
    void deepNesting_data();
    void deepNesting();
    void entityExpansionIsBounded_data();
    void entityExpansionIsBounded();
    void largeFile();

private:
    QString writeFile(const QString &name, const QByteArray &bytes);
    HelpData parseBytes(const QByteArray &bytes, const QString &name = "doc.zyhelp");
    void expectXmlWarning(const QString &path, const QString &error);
    void expectXmlWarningAnyError(const QString &path);

    QTemporaryDir m_dir;
};

void TstHelpParser::initTestCase()
{
    QVERIFY2(m_dir.isValid(), qPrintable(m_dir.errorString()));
}

// Only the warnings a test expects may appear.
void TstHelpParser::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

QString TstHelpParser::writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

HelpData TstHelpParser::parseBytes(const QByteArray &bytes, const QString &name)
{
    HelpParser parser;
    return parser.parse(writeFile(name, bytes));
}

void TstHelpParser::expectXmlWarning(const QString &path, const QString &error)
{
    QTest::ignoreMessage(QtWarningMsg, qUtf8Printable("XML Parsing Fehler in \"" + path
                                                      + "\" : \"" + error + '"'));
}

void TstHelpParser::expectXmlWarningAnyError(const QString &path)
{
    const QString prefix = "XML Parsing Fehler in \"" + path + "\" : \"";
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(
                                           '^' + QRegularExpression::escape(prefix) + ".+\"$"));
}

void TstHelpParser::readsRules_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");

    QTest::newRow("key from the lang attribute")
        << QByteArray(R"(<zyhelp><lang lang="de"><description>d</description></lang></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}});
    QTest::newRow("name wins over lang")
        << QByteArray(R"(<zyhelp><lang lang="en" name="de"><description>d</description></lang></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}});
    QTest::newRow("present empty name drops the language, lang unread")
        << QByteArray(R"(<zyhelp><lang name="" lang="de"><description>d</description><section name="s">c</section></lang></zyhelp>)")
        << document("", "");
    QTest::newRow("no key drops the language")
        << QByteArray(R"(<zyhelp><lang><description>d</description></lang><lang title="x"/></zyhelp>)")
        << document("", "");
    QTest::newRow("keyless lang inside a keyed one keeps the outer key")
        << QByteArray(R"(<zyhelp><lang name="de"><description>a</description><lang><description>b</description></lang></lang></zyhelp>)")
        << document("", "", {{"de", {"b", {}}}});
    QTest::newRow("a lang start discards the block gathered so far")
        << QByteArray(R"(<zyhelp><lang name="de"><description>a</description><section name="s">x</section>)"
                      R"(<lang name="en"><description>b</description></lang><section name="t">y</section></lang></zyhelp>)")
        << document("", "", {{"en", {"b", {}}}});
    QTest::newRow("attribute values are not trimmed")
        << QByteArray(R"(<zyhelp version=" 1 " author=" a "><lang name=" de "><section name=" s ">x</section></lang><link page=" p "/></zyhelp>)")
        << document(" 1 ", " a ", {{" de ", {"", {{" s ", "x"}}}}}, {" p "});
    QTest::newRow("texts are trimmed, inner blank lines kept")
        << QByteArray("<zyhelp><lang name=\"de\"><description>\n\t  Text \n</description>"
                      "<section name=\"s\">\n\n  eins\n\n  zwei  \n\n</section>"
                      "<section name=\"t\"> \n </section></lang></zyhelp>")
        << document("", "", {{"de", {"Text", {{"s", "eins\n\n  zwei"}, {"t", ""}}}}});
    QTest::newRow("entities, character references and CDATA resolved")
        << QByteArray(R"(<zyhelp><lang name="a&amp;b"><section name="&lt;&#x41;&gt;">x &lt; y &amp; z&#33;<![CDATA[ <raw> & ]]></section></lang></zyhelp>)")
        << document("", "", {{"a&b", {"", {{"<A>", "x < y & z! <raw> &"}}}}});
    QTest::newRow("comments and processing instructions inside texts skipped")
        << QByteArray(R"(<zyhelp><lang name="de"><section name="s">a<!-- note -->b<?pi data?>c</section></lang></zyhelp>)")
        << document("", "", {{"de", {"", {{"s", "abc"}}}}});
    QTest::newRow("internal entity declared in a DTD")
        << QByteArray(R"(<!DOCTYPE zyhelp [<!ENTITY prod "ZY Help">]><zyhelp><lang name="de"><description>&prod; hilft</description></lang></zyhelp>)")
        << document("", "", {{"de", {"ZY Help hilft", {}}}});
    QTest::newRow("recognised at any depth")
        << QByteArray(R"(<zyhelp><outer><inner><lang name="de"><description>d</description></lang></inner><link page="p"/></outer></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}}, {"p"});
    QTest::newRow("unknown elements inside a language passed over")
        << QByteArray(R"(<zyhelp><lang name="de"><group><description>d</description><part><section name="s">c</section></part></group></lang></zyhelp>)")
        << document("", "", {{"de", {"d", {{"s", "c"}}}}});
    QTest::newRow("a link inside a lang is a link of the document")
        << QByteArray(R"(<zyhelp><lang name="de"><link page="p"/><description>d</description></lang></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}}, {"p"});
    QTest::newRow("names are case-sensitive")
        << QByteArray(R"(<ZyHelp version="1"><Lang name="x"><lang name="de"><DESCRIPTION>no</DESCRIPTION><description>d</description>)"
                      R"(<SECTION name="S">no</SECTION><section name="s">c</section><Link page="no"/></lang></Lang></ZyHelp>)")
        << document("", "", {{"de", {"d", {{"s", "c"}}}}});
    QTest::newRow("last description wins, also after sections")
        << QByteArray(R"(<zyhelp><lang name="de"><description>a</description><section name="s">c</section><description>b</description></lang></zyhelp>)")
        << document("", "", {{"de", {"b", {{"s", "c"}}}}});
    QTest::newRow("a later language with the same key wins")
        << QByteArray(R"(<zyhelp><lang name="de"><description>a</description><section name="s1">1</section></lang>)"
                      R"(<lang lang="de"><description>b</description></lang></zyhelp>)")
        << document("", "", {{"de", {"b", {}}}});
    QTest::newRow("section without name")
        << QByteArray(R"(<zyhelp><lang name="de"><section>c</section><section title="t">d</section></lang></zyhelp>)")
        << document("", "", {{"de", {"", {{"", "c"}, {"", "d"}}}}});
    QTest::newRow("link without page adds nothing, an empty page adds an entry")
        << QByteArray(R"(<zyhelp><link/><link page=""/><link ref="x"/><link page="b"/><link page="b"/></zyhelp>)")
        << document("", "", {}, {"", "b", "b"});
    QTest::newRow("document element with another name")
        << QByteArray(R"(<help version="1" author="a"><lang name="de"><description>d</description></lang><link page="p"/></help>)")
        << document("", "", {{"de", {"d", {}}}}, {"p"});
    QTest::newRow("zyhelp attributes taken only when present")
        << QByteArray(R"(<zyhelp version="1" author="a"><zyhelp version="2"/></zyhelp>)")
        << document("2", "a");
    QTest::newRow("description and section outside lang dropped")
        << QByteArray(R"(<zyhelp><description>x</description><section name="s">y</section><lang name="de"><description>d</description></lang>)"
                      R"(<section name="late">z</section><description>w</description></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}});
    QTest::newRow("order is free, languages sorted by key")
        << QByteArray(R"(<zyhelp><link page="1"/><lang name="en"><section name="s">e</section><description>E</description></lang>)"
                      R"(<link page="2"/><lang name="EN"/><lang name="de"><description>D</description></lang><link page="1"/></zyhelp>)")
        << document("", "", {{"EN", {}}, {"de", {"D", {}}}, {"en", {"E", {{"s", "e"}}}}}, {"1", "2", "1"});
    QTest::newRow("local element names, qualified attribute names")
        << QByteArray(R"(<zyhelp xmlns:h="urn:h"><h:lang h:name="x" lang="de"><h:description>d</h:description></h:lang></zyhelp>)")
        << document("", "", {{"de", {"d", {}}}});
    QTest::newRow("attribute defaulted by the DTD is present")
        << QByteArray(R"(<!DOCTYPE zyhelp [<!ATTLIST lang name CDATA "dflt">]><zyhelp><lang lang="de"><description>d</description></lang></zyhelp>)")
        << document("", "", {{"dflt", {"d", {}}}});
    QTest::newRow("declaration, comments and processing instructions ignored")
        << QByteArray(R"(<?xml version="1.0"?><!-- c --><?pi x?><zyhelp version="1"><!-- c --></zyhelp>)")
        << document("1", "");
}

void TstHelpParser::readsRules()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);

    QCOMPARE(dump(parseBytes(input)), dump(expected));
}

void TstHelpParser::roundTrip_data()
{
    QTest::addColumn<HelpData>("written");
    QTest::addColumn<HelpData>("expected");

    QTest::newRow("default document") << HelpData() << HelpData();

    const HelpData plain = document("2.0", "Ann",
                                    {{"de", {"Hilfe", {{"Start", "Erster\nSchritt"}, {"Ende", "Fertig"}}}},
                                     {"en", {"Help", {{"Start", "First step"}}}}},
                                    {"intro", "index", "intro"});
    QTest::newRow("plain document") << plain << plain;

    const QString special = QString::fromUtf8("a < b & \"c\" > 'd' ä 😀 ]]>");
    const HelpData reserved = document(special, special, {{special, {special, {{special, special}}}}},
                                       {special});
    QTest::newRow("reserved and non-ASCII characters") << reserved << reserved;

    const HelpData whitespace = document("1\t2", "a\nb",
                                         {{"d\te", {"a\tb\n\n\tc", {{"x\ty\nz", "1\n\n\t2"}}}}},
                                         {"l\n1", "l\t2"});
    QTest::newRow("tabs and line feeds inside texts and attributes") << whitespace << whitespace;

    QTest::newRow("outer white space of texts dropped, of attributes kept")
        << document(" 1 ", " a ", {{" de ", {"  d \n", {{" s ", "\n c\n\n"}}}}}, {" p "})
        << document(" 1 ", " a ", {{" de ", {"d", {{" s ", "c"}}}}}, {" p "});

    QTest::newRow("empty key dropped")
        << document("", "", {{"", {"x", {{"s", "y"}}}}, {"de", {"d", {}}}})
        << document("", "", {{"de", {"d", {}}}});

    const HelpData empties = document("", "", {{"de", {"", {{"", ""}, {"", ""}}}}}, {"", ""});
    QTest::newRow("empty texts and links") << empties << empties;
}

void TstHelpParser::roundTrip()
{
    QFETCH(HelpData, written);
    QFETCH(HelpData, expected);

    const QString path = m_dir.filePath("roundtrip.zyhelp");
    HelpWriter writer;
    QVERIFY(writer.writeXml(written, path));
    HelpParser parser;
    QCOMPARE(dump(parser.parse(path)), dump(expected));
}

void TstHelpParser::unopenableFile_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("missing file") << m_dir.filePath("nothing.zyhelp");
    QTest::newRow("missing folder") << m_dir.filePath("nowhere/doc.zyhelp");
    QTest::newRow("a directory") << m_dir.path();
}

void TstHelpParser::unopenableFile()
{
    QFETCH(QString, path);

    QTest::ignoreMessage(QtWarningMsg,
                         qUtf8Printable("Kann XML-Datei nicht öffnen: \"" + path + '"'));
    HelpParser parser;
    QCOMPARE(dump(parser.parse(path)), dump(HelpData()));
}

void TstHelpParser::faultyXml_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");

    QTest::newRow("empty file") << QByteArray() << HelpData();
    QTest::newRow("declaration only")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") << HelpData();
    QTest::newRow("white space only") << QByteArray(" \n\n") << HelpData();
    QTest::newRow("mismatched end tag in the second language")
        << QByteArray(R"(<zyhelp version="1"><lang name="en"><description>e</description></lang><link page="p"/>)"
                      R"(<lang name="de"><description>d</description></wrong><link page="q"/></zyhelp>)")
        << document("1", "", {{"en", {"e", {}}}}, {"p"});
    QTest::newRow("content after the document element")
        << QByteArray(R"(<zyhelp version="1"><lang name="de"/></zyhelp>junk)")
        << document("1", "", {{"de", {}}});
    QTest::newRow("undefined entity in a text")
        << QByteArray(R"(<zyhelp><lang name="en"/><lang name="de"><description>&nope;</description></lang></zyhelp>)")
        << document("", "", {{"en", {}}});
    QTest::newRow("control character in a text")
        << QByteArray("<zyhelp version=\"1\"><lang name=\"en\"/><lang name=\"de\"><description>a\x01"
                      "b</description></lang></zyhelp>")
        << document("1", "", {{"en", {}}});
    QTest::newRow("duplicate attribute")
        << QByteArray(R"(<zyhelp version="1"><link page="a"/><link page="b" page="c"/></zyhelp>)")
        << document("1", "", {}, {"a"});
}

void TstHelpParser::faultyXml()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);

    const QString error = xmlErrorOf(input);
    QVERIFY(!error.isEmpty());
    expectXmlWarning(m_dir.filePath("faulty.zyhelp"), error);
    QCOMPARE(dump(parseBytes(input, "faulty.zyhelp")), dump(expected));
}

void TstHelpParser::truncatedFile_data()
{
    QTest::addColumn<QByteArray>("marker");
    QTest::addColumn<int>("occurrence");
    QTest::addColumn<HelpData>("expected");

    const HelpData header = document("2.0", "Ann");
    const HelpLanguage en = {"English", {{"A", "a"}}};
    const HelpLanguage de = {"Deutsch", {{"B", "b"}}};

    QTest::newRow("inside the declaration") << QByteArray("<?xml version") << 1 << HelpData();
    QTest::newRow("inside the zyhelp start tag") << QByteArray("version=\"2.0\"") << 1 << HelpData();
    QTest::newRow("after the zyhelp start tag") << QByteArray("author=\"Ann\">") << 1 << header;
    QTest::newRow("inside a link tag") << QByteArray("<link page=\"fir") << 1 << header;
    QTest::newRow("after the first link")
        << QByteArray("<link page=\"first\"/>") << 1 << document("2.0", "Ann", {}, {"first"});
    QTest::newRow("inside the first section")
        << QByteArray("<section name=\"A\">a") << 1 << document("2.0", "Ann", {}, {"first"});
    QTest::newRow("inside the first lang end tag")
        << QByteArray("</lang") << 1 << document("2.0", "Ann", {}, {"first"});
    QTest::newRow("after the first lang end tag")
        << QByteArray("</lang>") << 1 << document("2.0", "Ann", {{"en", en}}, {"first"});
    QTest::newRow("after the second link")
        << QByteArray("<link page=\"second\"/>") << 1
        << document("2.0", "Ann", {{"en", en}}, {"first", "second"});
    QTest::newRow("inside the second description")
        << QByteArray("<description>Deu") << 1
        << document("2.0", "Ann", {{"en", en}}, {"first", "second"});
    QTest::newRow("after the second lang end tag")
        << QByteArray("</lang>") << 2
        << document("2.0", "Ann", {{"de", de}, {"en", en}}, {"first", "second"});
    QTest::newRow("inside the zyhelp end tag")
        << QByteArray("</zyh") << 1
        << document("2.0", "Ann", {{"de", de}, {"en", en}}, {"first", "second", "third"});
}

void TstHelpParser::truncatedFile()
{
    QFETCH(QByteArray, marker);
    QFETCH(int, occurrence);
    QFETCH(HelpData, expected);

    const QByteArray input = cutAfter(sample, marker, occurrence);
    QVERIFY(input.size() < sample.size());
    expectXmlWarning(m_dir.filePath("cut.zyhelp"), xmlErrorOf(input));
    QCOMPARE(dump(parseBytes(input, "cut.zyhelp")), dump(expected));
}

void TstHelpParser::elementInsideText_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");

    QTest::newRow("element inside a section")
        << QByteArray(R"(<zyhelp version="1"><link page="p"/><lang name="en"><description>e</description></lang>)"
                      R"(<lang name="de"><section name="s">a<b>x</b>c</section></lang><link page="q"/>)"
                      R"(<lang name="fr"><description>f</description></lang></zyhelp>)")
        << document("1", "", {{"en", {"e", {}}}}, {"p"});
    QTest::newRow("empty element inside a description")
        << QByteArray(R"(<zyhelp><lang name="en"><description>e</description></lang><lang name="de"><description>a<br/></description></lang></zyhelp>)")
        << document("", "", {{"en", {"e", {}}}});
    QTest::newRow("section inside a section")
        << QByteArray(R"(<zyhelp><lang name="de"><section name="s"><section name="t">x</section></section></lang></zyhelp>)")
        << document("", "");
}

void TstHelpParser::elementInsideText()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);

    expectXmlWarningAnyError(m_dir.filePath("child.zyhelp"));
    QCOMPARE(dump(parseBytes(input, "child.zyhelp")), dump(expected));
}

void TstHelpParser::encodings_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");

    const QByteArray utf8 = unicodeSample.toUtf8();
    const HelpData data = unicodeSampleData();

    QTest::newRow("UTF-8") << utf8 << data;
    QTest::newRow("UTF-8 with BOM") << "\xEF\xBB\xBF" + utf8 << data;
    QTest::newRow("UTF-8, CR LF") << withCrLf(utf8) << data;
    QTest::newRow("UTF-16 LE with BOM") << encoded(unicodeSample, QStringConverter::Utf16LE) << data;
    QTest::newRow("UTF-16 BE with BOM") << encoded(unicodeSample, QStringConverter::Utf16BE) << data;
    QTest::newRow("UTF-16 LE with BOM, CR LF")
        << encoded(QString(unicodeSample).replace("\n", "\r\n"), QStringConverter::Utf16LE) << data;
    QTest::newRow("UTF-16 BE with BOM, CR LF")
        << encoded(QString(unicodeSample).replace("\n", "\r\n"), QStringConverter::Utf16BE) << data;
    QTest::newRow("UTF-32 LE with BOM") << encoded(unicodeSample, QStringConverter::Utf32LE) << data;
    QTest::newRow("UTF-32 BE with BOM, CR LF")
        << encoded(QString(unicodeSample).replace("\n", "\r\n"), QStringConverter::Utf32BE) << data;
    QTest::newRow("declaration naming ISO-8859-1 over UTF-8 bytes")
        << QByteArray(utf8).replace("encoding=\"UTF-8\"", "encoding=\"ISO-8859-1\"") << data;
    QTest::newRow("declaration naming UTF-16 over UTF-8 bytes")
        << QByteArray(utf8).replace("encoding=\"UTF-8\"", "encoding=\"UTF-16\"") << data;

    const QString replacement(1, QChar::ReplacementCharacter);
    QTest::newRow("Latin-1 bytes become replacement characters")
        << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><zyhelp author=\"J\xfcrgen\"/>")
        << document("", "J" + replacement + "rgen");
    QTest::newRow("invalid bytes in texts and attributes")
        << QByteArray("<zyhelp><lang name=\"d\xff\"><description>a\xff"
                      "b</description><section name=\"\xc3\">\xfe</section></lang></zyhelp>")
        << document("", "", {{"d" + replacement, {"a" + replacement + "b", {{replacement, replacement}}}}});
    QTest::newRow("invalid byte after a UTF-8 BOM")
        << "\xEF\xBB\xBF" + QByteArray(utf8).replace("Grüße", "Gr\xff")
        << document("1", QString::fromUtf8("Zoë"),
                    {{"de", {QString::fromUtf8("Gr\xef\xbf\xbd č ഊ 😀"),
                             {{QString::fromUtf8("Straße"), "eins\nzwei"}}}}},
                    {QString::fromUtf8("Seite ä")});

    const QByteArray broken[] = {"a\xed\xa0\x80z", "a\xc0\x80z", "a\xe2\x82z", "a\xf0\x9f\x98z"};
    for (const QByteArray &text : broken) {
        QTest::addRow("broken sequence %s", text.toHex().constData())
            << "<zyhelp><lang name=\"de\"><description>" + text + "</description></lang></zyhelp>"
            << document("", "", {{"de", {QString::fromUtf8(text), {}}}});
    }
    // Line ends are dropped from the decoded text, not from the bytes.
    QTest::newRow("carriage return inside a broken sequence")
        << QByteArray("<zyhelp><lang name=\"de\"><description>\xc3\r\xa9</description></lang></zyhelp>")
        << document("", "", {{"de", {replacement + replacement, {}}}});
    QTest::newRow("incomplete sequence at the end of the file")
        << utf8 + "\xf0\x9f" << data;
    QTest::newRow("lone carriage returns dropped, references kept")
        << QByteArray("<zyhelp author=\"x\r\ny\rz\"><lang name=\"de\"><description>a\rb\r\nc&#13;d</description></lang></zyhelp>")
        << document("", "x yz", {{"de", {"ab\nc\rd", {}}}});
}

void TstHelpParser::encodings()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);

    QCOMPARE(dump(parseBytes(input)), dump(expected));
}

void TstHelpParser::bothDecodingPaths_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");
    QTest::addColumn<bool>("faulty");

    // "@" is replaced once by a plain letter and once by a byte that is no UTF-8.
    const QByteArray comment = "<!-- @ -->";
    const QByteArray utf8 = QByteArray(unicodeSample.toUtf8()).replace("?>", "?>" + comment);
    const HelpData data = unicodeSampleData();

    QTest::newRow("complete document") << utf8 << data << false;
    QTest::newRow("comment at the end") << unicodeSample.toUtf8() + comment << data << false;
    QTest::newRow("UTF-8 BOM") << "\xEF\xBB\xBF" + utf8 << data << false;
    QTest::newRow("two UTF-8 BOMs") << "\xEF\xBB\xBF\xEF\xBB\xBF" + utf8 << data << false;
    QTest::newRow("CR LF and a lone CR")
        << withCrLf(QByteArray(utf8).replace("eins", "ei\rns")) << data << false;
    QTest::newRow("declaration naming ISO-8859-1")
        << QByteArray(utf8).replace("encoding=\"UTF-8\"", "encoding=\"ISO-8859-1\"") << data << false;
    QTest::newRow("entities and CDATA")
        << QByteArray("<!DOCTYPE zyhelp [<!ENTITY e \"&#xE4;\">]>" + comment
                      + "<zyhelp><lang name=\"&e;\"><description>&e;<![CDATA[<&>]]></description></lang></zyhelp>")
        << document("", "", {{QString::fromUtf8("ä"), {QString::fromUtf8("ä<&>"), {}}}}) << false;
    QTest::newRow("truncated in the second language")
        << cutAfter(QByteArray(sample).replace("<zyhelp", comment + "<zyhelp"), "<description>Deu", 1)
        << document("2.0", "Ann", {{"en", {"English", {{"A", "a"}}}}}, {"first", "second"}) << true;
    QTest::newRow("element inside a section")
        << QByteArray(comment + R"(<zyhelp><lang name="en"/><lang name="de"><section name="s">a<b/></section></lang></zyhelp>)")
        << document("", "", {{"en", {}}}) << true;
}

// Valid UTF-8 takes a shorter way into the XML reader than other input; both
// must read the same document and report the same trouble.
void TstHelpParser::bothDecodingPaths()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);
    QFETCH(bool, faulty);

    const QByteArray valid = QByteArray(input).replace('@', 'x');
    const QByteArray invalid = QByteArray(input).replace('@', '\xff');
    QVERIFY(valid.isValidUtf8());
    QVERIFY(!invalid.isValidUtf8());

    QStringList warnings[2];
    HelpData results[2];
    const QByteArray inputs[2] = {valid, invalid};
    for (int i = 0; i < 2; ++i) {
        WarningCollector collector;
        results[i] = parseBytes(inputs[i], "path.zyhelp");
        warnings[i] = collector.messages();
    }

    QCOMPARE(dump(results[0]), dump(expected));
    QCOMPARE(dump(results[1]), dump(expected));
    QCOMPARE(warnings[0].size(), faulty ? 1 : 0);
    QCOMPARE(warnings[1], warnings[0]);
}

void TstHelpParser::readsBytesAsDecodedText_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<HelpData>("expected");

    const QByteArray body = QByteArray(R"(<zyhelp version="1" author="Zoë"/>)");
    const HelpData data = document("1", QString::fromUtf8("Zoë"));

    QTest::newRow("no declaration") << body << data;
    QTest::newRow("declaration without encoding") << "<?xml version=\"1.0\"?>" + body << data;
    QTest::newRow("lower case utf-8") << "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + body << data;
    QTest::newRow("single quotes, blanks around =")
        << "<?xml version='1.0' encoding = 'UTF-8'?>\n" + body << data;
    QTest::newRow("ISO-8859-1 in single quotes")
        << "<?xml version='1.0' encoding='ISO-8859-1'?>" + body << data;
    QTest::newRow("ISO-8859-1 after blanks around =")
        << "<?xml version=\"1.0\" encoding\n=\t\"ISO-8859-1\" standalone=\"yes\"?>" + body << data;
    QTest::newRow("windows-1252") << "<?xml version=\"1.0\" encoding=\"windows-1252\"?>" + body << data;
    QTest::newRow("two BOMs before a declaration naming ISO-8859-1")
        << "\xEF\xBB\xBF\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + body << data;
    QTest::newRow("declaration not at the start")
        << " <?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + body << HelpData();
    QTest::newRow("unterminated declaration")
        << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"") << HelpData();
    QTest::newRow("two bytes") << QByteArray("ab") << HelpData();
    QTest::newRow("three bytes") << QByteArray("<a>") << HelpData();
    QTest::newRow("NUL first") << QByteArray("\0<zyhelp version=\"1\"/>", 21) << HelpData();
    QTest::newRow("NUL second") << QByteArray("<\0zyhelp version=\"1\"/>", 21) << HelpData();
}

// Valid UTF-8 skips the decoder on its way to the XML reader, and the reader,
// given bytes, decodes them by what the declaration names; the result and the
// warning must be those of the decoded text all the same.
void TstHelpParser::readsBytesAsDecodedText()
{
    QFETCH(QByteArray, input);
    QFETCH(HelpData, expected);

    QVERIFY(input.isValidUtf8());
    // The decoder drops a first byte order mark; the text reader a second one.
    const QString error = xmlErrorOfText(QString::fromUtf8(input));
    const QString path = m_dir.filePath("utf8.zyhelp");

    WarningCollector collector;
    const HelpData read = parseBytes(input, "utf8.zyhelp");
    const QStringList warnings = collector.messages();

    QCOMPARE(dump(read), dump(expected));
    if (error.isEmpty())
        QCOMPARE(warnings, QStringList());
    else
        QCOMPARE(warnings, QStringList("XML Parsing Fehler in \"" + path + "\" : \"" + error + '"'));
}

void TstHelpParser::deepNesting_data()
{
    QTest::addColumn<bool>("closed");

    QTest::newRow("closed") << true;
    QTest::newRow("never closed") << false;
}

void TstHelpParser::deepNesting()
{
    QFETCH(bool, closed);

    const int depth = 100000;
    QByteArray input = R"(<zyhelp version="1"><lang name="en"><description>e</description></lang>)";
    input += QByteArray("<a>").repeated(depth);
    input += R"(<lang name="in"><description>deep</description></lang>)";
    if (closed)
        input += QByteArray("</a>").repeated(depth);
    input += R"(<lang name="de"><description>after</description></lang><link page="p"/></zyhelp>)";

    // Left open, the nesting makes the final end tag a mismatch: everything
    // before it is still read.
    const HelpData expected =
        document("1", "", {{"de", {"after", {}}}, {"en", {"e", {}}}, {"in", {"deep", {}}}}, {"p"});
    if (!closed)
        expectXmlWarning(m_dir.filePath("deep.zyhelp"), xmlErrorOf(input));
    QCOMPARE(dump(parseBytes(input, "deep.zyhelp")), dump(expected));
}

void TstHelpParser::entityExpansionIsBounded_data()
{
    QTest::addColumn<QByteArray>("use");

    QTest::newRow("in a text") << QByteArray(R"(<lang name="de"><description>&j;</description></lang>)");
    QTest::newRow("in an attribute") << QByteArray(R"(<link page="&j;"/>)");
    QTest::newRow("in a key") << QByteArray(R"(<lang name="&j;"><description>d</description></lang>)");
}

// Ten levels of ten references each would expand to 10^10 characters.
void TstHelpParser::entityExpansionIsBounded()
{
    QFETCH(QByteArray, use);

    QByteArray input = "<?xml version=\"1.0\"?>\n<!DOCTYPE zyhelp [\n<!ENTITY a \"aaaaaaaaaa\">\n";
    const char names[] = "abcdefghij";
    for (int level = 1; level < 10; ++level) {
        input += QByteArray("<!ENTITY ") + names[level] + " \"";
        for (int i = 0; i < 10; ++i)
            input += QByteArray("&") + names[level - 1] + ';';
        input += "\">\n";
    }
    input += R"(]>
<zyhelp version="1"><lang name="en"><description>ok</description></lang>)" + use
        + R"(<link page="after"/></zyhelp>)";

    const QString error = xmlErrorOf(input);
    QVERIFY(!error.isEmpty());
    expectXmlWarning(m_dir.filePath("laughs.zyhelp"), error);
    QCOMPARE(dump(parseBytes(input, "laughs.zyhelp")),
             dump(document("1", "", {{"en", {"ok", {}}}})));
}

void TstHelpParser::largeFile()
{
    const qint64 minimumSize = 50 * 1024 * 1024;
    const QString paragraph = QString::fromUtf8("Absatz mit Umlauten äöü & <Zeichen>, ") .repeated(25);

    HelpData data = document("3.1", "Ann", {}, {"index", "start"});
    for (const char *key : {"de", "en", "fr"}) {
        HelpLanguage &language = data.languages[key];
        language.description = QString("Beschreibung ") + key;
        for (int i = 0; i < 20000; ++i)
            language.sections.append({QString::number(i), paragraph + QString::number(i)});
    }

    const QString path = m_dir.filePath("large.zyhelp");
    HelpWriter writer;
    QVERIFY(writer.writeXml(data, path));
    QVERIFY(QFileInfo(path).size() >= minimumSize);

    HelpParser parser;
    const HelpData read = parser.parse(path);
    QFile::remove(path);

    QCOMPARE(read.version, data.version);
    QCOMPARE(read.author, data.author);
    QCOMPARE(read.links, data.links);
    QCOMPARE(read.languages.keys(), data.languages.keys());
    for (auto it = data.languages.cbegin(), end = data.languages.cend(); it != end; ++it) {
        const HelpLanguage &got = read.languages.value(it.key());
        QCOMPARE(got.description, it->description);
        QCOMPARE(got.sections.size(), it->sections.size());
        for (qsizetype i = 0; i < got.sections.size(); ++i) {
            QCOMPARE(got.sections.at(i).name, it->sections.at(i).name);
            QCOMPARE(got.sections.at(i).content, it->sections.at(i).content);
        }
    }
}

QTEST_GUILESS_MAIN(TstHelpParser)
#include "tst_helpparser.moc"
