#include "helpdata.h"

#include <QtTest>

#include <functional>

using namespace ZyHelp;

using DocumentEdit = std::function<void(HelpData &)>;

Q_DECLARE_METATYPE(ZyHelp::HelpData)
Q_DECLARE_METATYPE(DocumentEdit)

namespace {

const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

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

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<cannot read ") + path.toUtf8() + '>';
    return file.readAll();
}

} // namespace

class TstHelpWriter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void writesExactBytes_data();
    void writesExactBytes();
    void overwriteReplacesWholeFile();
    void missingFolderCreatesNothing();
    void copiesChangeIndependently_data();
    void copiesChangeIndependently();

private:
    QString filePath(const QString &name) const { return m_dir.filePath(name); }
    QByteArray written(const HelpData &data, const QString &name);

    QTemporaryDir m_dir;
};

void TstHelpWriter::initTestCase()
{
    QVERIFY2(m_dir.isValid(), qPrintable(m_dir.errorString()));
}

// Writes the document and returns the file's bytes; an empty result means the
// write failed, which no document gives (the declaration is always there).
QByteArray TstHelpWriter::written(const HelpData &data, const QString &name)
{
    HelpWriter writer;
    if (!writer.writeXml(data, filePath(name)))
        return QByteArray();
    return fileContents(filePath(name));
}

// Only the warnings a test expects may appear.
void TstHelpWriter::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TstHelpWriter::writesExactBytes_data()
{
    QTest::addColumn<HelpData>("data");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("default document") << HelpData()
                                      << declaration + "<zyhelp version=\"\" author=\"\"/>\n";

    QTest::newRow("version and author only")
        << document("1.2", "Jo") << declaration + "<zyhelp version=\"1.2\" author=\"Jo\"/>\n";

    QTest::newRow("language without sections")
        << document("", "", {{"de", {"Beschreibung", {}}}})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description>Beschreibung</description>
    </lang>
</zyhelp>
)";

    QTest::newRow("empty texts keep start and end tag")
        << document("", "", {{"de", {"", {{"", ""}}}}})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description></description>
        <section name=""></section>
    </lang>
</zyhelp>
)";

    QTest::newRow("full document")
        << document("2.0", "Ann",
                    {{"de", {"Hilfe", {{"Start", "Erster Schritt"}, {"Ende", "Fertig"}}}},
                     {"en", {"Help", {{"Start", "First step"}}}}},
                    {"intro", "index"})
        << declaration + R"(<zyhelp version="2.0" author="Ann">
    <lang name="de">
        <description>Hilfe</description>
        <section name="Start">Erster Schritt</section>
        <section name="Ende">Fertig</section>
    </lang>
    <lang name="en">
        <description>Help</description>
        <section name="Start">First step</section>
    </lang>
    <link page="intro"/>
    <link page="index"/>
</zyhelp>
)";

    QTest::newRow("links only, duplicates and empty ones kept")
        << document("", "", {}, {"b", "a", "b", ""})
        << declaration + R"(<zyhelp version="" author="">
    <link page="b"/>
    <link page="a"/>
    <link page="b"/>
    <link page=""/>
</zyhelp>
)";

    QTest::newRow("sections in list order")
        << document("", "", {{"x", {"d", {{"3", "c"}, {"1", "a"}, {"2", "b"}}}}})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="x">
        <description>d</description>
        <section name="3">c</section>
        <section name="1">a</section>
        <section name="2">b</section>
    </lang>
</zyhelp>
)";

    // Keys sort by UTF-16 code unit, not by locale: upper case comes first.
    HelpData unsorted;
    for (const char *key : {"en", "fr", "de", "EN"})
        unsorted.languages.insert(key, {key, {}});
    QTest::newRow("languages in key order") << unsorted << declaration + R"(<zyhelp version="" author="">
    <lang name="EN">
        <description>EN</description>
    </lang>
    <lang name="de">
        <description>de</description>
    </lang>
    <lang name="en">
        <description>en</description>
    </lang>
    <lang name="fr">
        <description>fr</description>
    </lang>
</zyhelp>
)";

    HelpData replaced;
    replaced.languages.insert("de", {"alt", {{"a", "1"}, {"b", "2"}}});
    replaced.languages.insert("de", {"neu", {{"c", "3"}}});
    QTest::newRow("insert replaces the whole language") << replaced << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description>neu</description>
        <section name="c">3</section>
    </lang>
</zyhelp>
)";

    HelpData looked;
    looked.languages["fr"];
    QTest::newRow("lookup of a missing key adds an empty language")
        << looked << declaration + R"(<zyhelp version="" author="">
    <lang name="fr">
        <description></description>
    </lang>
</zyhelp>
)";

    QTest::newRow("links follow all languages")
        << document("", "", {{"de", {"d", {}}}}, {"p"}) << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description>d</description>
    </lang>
    <link page="p"/>
</zyhelp>
)";

    const QString special = QStringLiteral("a < b & \"c\" > 'd'");
    QTest::newRow("reserved characters in texts")
        << document("", "", {{"de", {special, {{"s", special}}}}})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description>a &lt; b &amp; &quot;c&quot; &gt; 'd'</description>
        <section name="s">a &lt; b &amp; &quot;c&quot; &gt; 'd'</section>
    </lang>
</zyhelp>
)";

    QTest::newRow("reserved characters in attributes")
        << document(special, special, {{special, {"", {{special, ""}}}}}, {special})
        << declaration
               + R"(<zyhelp version="a &lt; b &amp; &quot;c&quot; &gt; 'd'" author="a &lt; b &amp; &quot;c&quot; &gt; 'd'">
    <lang name="a &lt; b &amp; &quot;c&quot; &gt; 'd'">
        <description></description>
        <section name="a &lt; b &amp; &quot;c&quot; &gt; 'd'"></section>
    </lang>
    <link page="a &lt; b &amp; &quot;c&quot; &gt; 'd'"/>
</zyhelp>
)";

    QTest::newRow("multi-line texts stay unindented")
        << document("", "", {{"de", {"\nzwei\n", {{"s", " vorne\n\n    eingerückt\n\tTab\nhinten\n"}}}}})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description>
zwei
</description>
        <section name="s"> vorne

    eingerückt
	Tab
hinten
</section>
    </lang>
</zyhelp>
)";

    // Line breaks and tabs in attribute values would be normalised to blanks by
    // any reader, so the writer gives them as character references.
    QTest::newRow("line breaks and tabs in attributes")
        << document("", "", {{"de", {"", {{"a\tb\nc", ""}}}}}, {"x\ny"})
        << declaration + R"(<zyhelp version="" author="">
    <lang name="de">
        <description></description>
        <section name="a&#9;b&#10;c"></section>
    </lang>
    <link page="x&#10;y"/>
</zyhelp>
)";

    // An unpaired surrogate cannot be written as XML; everything around it is.
    const QString lone = QString::fromUtf16(u"a\xD800" "b\xDC00" "c\xD83D\xDE00");
    QTest::newRow("unpaired surrogates dropped")
        << document(lone, "", {{lone, {lone, {{lone, lone}}}}}, {lone})
        << declaration + QByteArray(R"(<zyhelp version="abc😀" author="">
    <lang name="abc😀">
        <description>abc😀</description>
        <section name="abc😀">abc😀</section>
    </lang>
    <link page="abc😀"/>
</zyhelp>
)");

    QTest::newRow("non-ASCII as UTF-8")
        << document(QString::fromUtf8("ä"), QString::fromUtf8("Jürgen 😀"),
                    {{QString::fromUtf8("ελ"), {QString::fromUtf8("Grüße"), {}}}})
        << declaration + QByteArray(R"(<zyhelp version="ä" author="Jürgen 😀">
    <lang name="ελ">
        <description>Grüße</description>
    </lang>
</zyhelp>
)");
}

void TstHelpWriter::writesExactBytes()
{
    QFETCH(HelpData, data);
    QFETCH(QByteArray, expected);

    QCOMPARE(written(data, "doc.zyhelp"), expected);
}

void TstHelpWriter::overwriteReplacesWholeFile()
{
    HelpData large = document("1", "a", {{"de", {"lang", {{"s", QString(5000, u'x')}}}}});
    QVERIFY(written(large, "over.zyhelp").size() > 5000);

    const QByteArray small = written(HelpData(), "over.zyhelp");
    QCOMPARE(small, declaration + "<zyhelp version=\"\" author=\"\"/>\n");
}

void TstHelpWriter::missingFolderCreatesNothing()
{
    const QString folder = filePath("missing");
    const QString path = folder + "/doc.zyhelp";
    QTest::ignoreMessage(QtWarningMsg,
                         qUtf8Printable("Konnte Datei nicht zum Schreiben öffnen: \"" + path + '"'));

    HelpWriter writer;
    QVERIFY(!writer.writeXml(document("1", "a", {{"de", {"d", {}}}}), path));
    QVERIFY(!QFileInfo::exists(folder));
}

void TstHelpWriter::copiesChangeIndependently_data()
{
    QTest::addColumn<DocumentEdit>("edit");

    QTest::newRow("append a section") << DocumentEdit([](HelpData &d) {
        d.languages["de"].sections.append(HelpSection{"neu", "text"});
    });
    QTest::newRow("change a section's content") << DocumentEdit([](HelpData &d) {
        d.languages["de"].sections[0].content = "anders";
    });
    QTest::newRow("change a description") << DocumentEdit([](HelpData &d) {
        d.languages["en"].description = "other";
    });
    QTest::newRow("remove a language") << DocumentEdit([](HelpData &d) {
        d.languages.remove("en");
    });
    QTest::newRow("append a link") << DocumentEdit([](HelpData &d) { d.links.append("p2"); });
    QTest::newRow("change the author") << DocumentEdit([](HelpData &d) { d.author = "Bo"; });
}

// A loaded document may be copied out of the window's map and edited; the
// stored one must not change with it.
void TstHelpWriter::copiesChangeIndependently()
{
    QFETCH(DocumentEdit, edit);

    const HelpData original = document(
        "1", "Ann", {{"de", {"Hilfe", {{"a", "eins"}}}}, {"en", {"Help", {{"a", "one"}}}}}, {"p"});
    const QByteArray before = written(original, "original.zyhelp");

    HelpData copy = original;
    edit(copy);

    QCOMPARE(written(original, "original.zyhelp"), before);
    QVERIFY(written(copy, "copy.zyhelp") != before);
}

QTEST_GUILESS_MAIN(TstHelpWriter)
#include "tst_helpwriter.moc"
