#include "testutil.h"

#include "helpdata.h"
#include "htmlpagewriter.h"
#include "pagebody.h"
#include "qhpwriter.h"
#include "sitemodel.h"

#include <QDirIterator>
#include <QHelpEngineCore>
#include <QHelpLink>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

// zyhelppublish as a user runs it, its output checked by the clients that read
// it: tidy, linkchecker, a headless browser and Qt's help engine.
class TestPublish : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void site();
    void qtHelp();
    void badInput_data();
    void badInput();
    void paragraphs_data();
    void paragraphs();
    void siteModel();
    void folderTree();
    void searchWords_data();
    void searchWords();
    void latin1Words();
    void qhpFaults();
    void oneLanguage();
    void lateLanguages();

private:
    int publish(const QStringList &arguments, QByteArray *errors = nullptr);
    static QMap<QString, QByteArray> tree(const QString &folder);
    static QSet<QString> modes(const QString &folder);
    static int tool(const QString &program, const QStringList &arguments,
                    QByteArray *output = nullptr);

    QTemporaryDir m_dir;
    const QString m_data = QStringLiteral(ZY_PUBLISH_DATA);
};

void TestPublish::init()
{
    // linkchecker, run as root, reads as "nobody".
    ::umask(022);
    QVERIFY(QFile::setPermissions(m_dir.path(), QFile::Permissions(0x7755)));
}

// The modes of every folder and file below folder and of folder itself.
QSet<QString> TestPublish::modes(const QString &folder)
{
    QSet<QString> found;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    for (QString path = folder; !path.isEmpty(); path = it.hasNext() ? it.next() : QString()) {
        struct stat status;
        if (::stat(QFile::encodeName(path).constData(), &status) == 0)
            found.insert(QString("%1 %2")
                             .arg(S_ISDIR(status.st_mode) ? "d" : "f")
                             .arg(status.st_mode & 0777, 0, 8));
    }
    return found;
}

int TestPublish::publish(const QStringList &arguments, QByteArray *errors)
{
    return tool(QStringLiteral(ZY_PUBLISH_BINARY), arguments, errors);
}

int TestPublish::tool(const QString &program, const QStringList &arguments, QByteArray *output)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120000))
        return -1; // not started, or hanging
    if (output)
        *output = process.readAllStandardError() + process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

// Every file below folder, by relative path.
QMap<QString, QByteArray> TestPublish::tree(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(folder).relativeFilePath(path), Test::readFile(path));
    }
    return files;
}

void TestPublish::site()
{
    const QString out = m_dir.filePath("site");
    QByteArray errors;
    QCOMPARE(publish({"-o", out, m_data + "/site"}, &errors), 0);
    QCOMPARE(errors,
             QByteArray(ZY_PUBLISH_DATA "/site/start.zyhelp: warning: link 'fehlt' names "
                                        "no document of this check [dangling-link]\n"));

    // The pages that show escaping, paragraphs, links, fallback and tree, byte for byte.
    const QString expected = m_data + "/expected/";
    QCOMPARE(Test::readFile(out + "/de/start.html"), Test::readFile(expected + "start.html"));
    QCOMPARE(Test::readFile(out + "/en/kapitel/Über Straße.html"),
             Test::readFile(expected + "fallback.html"));

    const QMap<QString, QByteArray> files = tree(out);
    QCOMPARE(files.size(), 15); // 3 in OUT; per language 4, and 2 pages in kapitel/
    QStringList pages;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (it.key().endsWith(u".html"))
            pages.append(out + u'/' + it.key());
    }
    QCOMPARE(modes(out), QSet<QString>({"d 755", "f 644"}));

    // A second run gives the same bytes, with the modes of its umask.
    ::umask(027);
    const QString again = m_dir.filePath("again");
    QCOMPARE(publish({"-o", again, m_data + "/site"}), 0);
    ::umask(022);
    QCOMPARE(tree(again), files);
    QCOMPARE(modes(again), QSet<QString>({"d 750", "f 640"}));

    for (const QString &page : std::as_const(pages)) {
        QByteArray output;
        // 1: warnings only (tidy calls aria-current proprietary); 2: errors.
        const int status = tool("tidy", {"-e", "-q", page}, &output);
        QVERIFY2(status == 0 || status == 1, qPrintable(page + u'\n' + QString::fromUtf8(output)));
    }

    // linkchecker's anchor check is a plugin, switched on in its configuration.
    const QString config = m_dir.filePath("linkcheckerrc");
    Test::writeFile(config, "[AnchorCheck]\n");
    QByteArray output;
    QCOMPARE(
        tool("linkchecker",
             {"-f", config, "--no-status", QUrl::fromLocalFile(out + "/index.html").toString()},
             &output),
        0);

    // The search from file://, after its scripts ran: one page holds the word.
    QString chromium = QStandardPaths::findExecutable("chromium-headless-shell");
    if (chromium.isEmpty())
        chromium = "/usr/lib/chromium/chromium-headless-shell";
    QUrl search = QUrl::fromLocalFile(out + "/de/search.html");
    search.setQuery("q=ZEBRA");
    QVERIFY(tool(chromium,
                 {"--no-sandbox", "--disable-gpu", "--no-first-run",
                  "--disable-background-networking", "--disable-component-update", "--disable-sync",
                  "--disable-dev-shm-usage", "--user-data-dir=" + m_dir.filePath("chromium"),
                  "--virtual-time-budget=5000", "--dump-dom", search.toString(QUrl::FullyEncoded)},
                 &output)
            == 0);
    const QString dom = QString::fromUtf8(output);
    QVERIFY2(dom.contains(u"<li><a href=\"start.html\">start</a></li>"), qPrintable(dom));
    QVERIFY(dom.contains(u"Treffer: 1"));
}

void TestPublish::qtHelp()
{
    const QString out = m_dir.filePath("qch");
    const QString again = m_dir.filePath("qch2");
    for (const QString &folder : {out, again}) {
        QByteArray errors;
        QCOMPARE(publish({"--format", "qthelp", "-o", folder, m_data + "/site"}, &errors), 0);
    }
    const QMap<QString, QByteArray> files = tree(out);
    QCOMPARE(files.keys(), QStringList({"site_de.qch", "site_en.qch"}));
    QCOMPARE(tree(again), files);

    const QStringList links{"start", "kapitel/Über Straße", "kapitel/𝄞 noten"};
    for (const QString &language : QStringList{"de", "en"}) {
        QHelpEngineCore engine(m_dir.filePath(language + ".qhc"));
        engine.setReadOnly(false); // a new collection file is written
        QVERIFY(engine.setupData());
        QVERIFY2(engine.registerDocumentation(out + "/site_" + language + ".qch"),
                 qPrintable(engine.error()));
        const QString ns = "zyhelp.site." + language;
        QCOMPARE(engine.registeredDocumentations(), QStringList{ns});
        QCOMPARE(engine.files(ns, QString(), "html").size(), links.size() + 1);
        for (const QString &link : links) {
            const QList<QHelpLink> found = engine.documentsForIdentifier(link);
            QCOMPARE(found.size(), 1);
            QCOMPARE(found.first().url.path(), QString("/doc/%1.html").arg(link));
            QVERIFY(engine.fileData(found.first().url).contains("<h1>"));
        }
    }
}

void TestPublish::badInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("replaced");

    // Arguments split at spaces; DATA is the folder of the test's files.
    const auto row = [](const char *name, const QString &arguments, int status, const char *message,
                        bool replaced = false) {
        QTest::newRow(name) << QString(arguments).replace("DATA", ZY_PUBLISH_DATA).split(u' ')
                            << status << message << replaced;
    };
    row("OUT is a file", "-o FILE DATA/site", 1, "exists and is no folder");
    row("OUT cannot be written", "-o /proc/zyhelp DATA/site", 1, "cannot write beside it");
    row("language nobody has", "--languages de,fr DATA/site", 2,
        "--languages: no document has the language 'fr'");
    row("fallback nobody has", "--fallback fr DATA/site", 2,
        "--fallback: no document has the language 'fr'");
    row("bad format", "--format pdf DATA/site", 2, "--format must be html or qthelp");
    row("page names collide", "CASES", 1, "its page 'b.html' collides with that of");
    row("OUT's folder missing", "-o FILE/none/out DATA/site", 1, "no such folder");
    row("qhelpgenerator only warns",
        "--format qthelp --qhelpgenerator DATA/warning-qhelpgenerator.sh DATA/site", 1,
        "Warning: file index.html not found");
    row("qhelpgenerator fails",
        "--format qthelp --qhelpgenerator DATA/failing-qhelpgenerator.sh DATA/site", 1,
        "(exit status 3): Error: cannot read the help project");
    row("no qhelpgenerator", "--format qthelp --qhelpgenerator /nonexistent DATA/site", 1,
        "/nonexistent: not an executable program");
    row("faulty document", "DATA/faulty.zyhelp", 1, "faulty.zyhelp:8:48: error: faulty XML", true);
}

void TestPublish::badInput()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, message);
    QFETCH(bool, replaced);

    const QDir base(m_dir.filePath(QString::fromLatin1(QTest::currentDataTag())));
    const QString out = base.filePath("old");
    Test::writeFile(out + "/de/index.html", "previous site");
    Test::writeFile(base.filePath("FILE"), "a file");
    Test::writeFile(base.filePath("cases/b.zyhelp"), "<zyhelp/>");
    Test::writeFile(base.filePath("cases/B.zyhelp"), "<zyhelp/>");
    arguments.replaceInStrings("FILE", base.filePath("FILE"));
    arguments.replaceInStrings("CASES", base.filePath("cases"));
    if (!arguments.contains("-o"))
        arguments << "-o" << out;

    QByteArray errors;
    QCOMPARE(publish(arguments, &errors), status);
    QVERIFY2(errors.contains(message.toUtf8()), errors.constData());
    QCOMPARE(Test::readFile(out + "/de/index.html") == "previous site", !replaced);
    if (replaced) // published up to the fault
        QVERIFY(Test::readFile(out + "/de/faulty.html").contains("Vor dem Fehler"));
    // Nothing is left beside OUT.
    QCOMPARE(base.entryList(QDir::Hidden | QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({"cases", "FILE", "old"}));
}

void TestPublish::paragraphs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");

    const auto row = [](const char *name, const char *text, const char *html) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(html);
    };
    row("one line", "a", "<p>a</p>\n");
    row("line break", "a\nb", "<p>a<br>\nb</p>\n");
    row("blank line", "a\n\nb", "<p>a</p>\n<p>b</p>\n");
    row("blank line of spaces, CR LF", "a\r\n  \t\r\nb\r\n", "<p>a</p>\n<p>b</p>\n");
    row("blank line of no-break spaces", "a\n\u00a0\u3000\nb", "<p>a</p>\n<p>b</p>\n");
    row("several blank lines", "\n\na\n\n\n\nb\n\n", "<p>a</p>\n<p>b</p>\n");
    row("empty", "", "");
    row("markup", "<a href='x' title=\"y\">&amp;</a>",
        "<p>&lt;a href=&#39;x&#39; title=&quot;y&quot;&gt;&amp;amp;&lt;/a&gt;</p>\n");
    row("control characters, not tab", "a\001b\tc\037 ", "<p>a\uFFFDb\tc\uFFFD </p>\n");
}

void TestPublish::paragraphs()
{
    QFETCH(QString, text);
    QFETCH(QString, html);
    QByteArray out;
    ZyHelp::Publish::PageBody::appendParagraphs(text, &out);
    QCOMPARE(QString::fromUtf8(out), html);
}

void TestPublish::siteModel()
{
    using ZyHelp::DocumentEntry;
    const auto entry = [](const QString &relative) {
        return DocumentEntry{relative, relative, relative};
    };
    const QList<DocumentEntry> entries{
        entry("z.zyhelp"),          entry("b/b/x.zyhelp"), entry("a/Ä 100%#?.zyhelp"),
        entry("a/ä 100%#?.ZYHELP"), entry("b/a.zyhelp"),
    };
    const ZyHelp::Publish::SiteModel model(entries);
    // Contents order: a folder's subfolders, then its pages; by name.
    QCOMPARE(model.order(), QList<int>({2, 3, 1, 4, 0}));
    QCOMPARE(model.position(4), 3);
    QCOMPARE(model.pageUrl(2), "a/%C3%84%20100%25%23%3F.html");
    QCOMPARE(model.folder(model.folderOf(1)).path, "b/b");
    QCOMPARE(model.folder(model.folderOf(1)).depth, 2);
    QCOMPARE(model.collisions().size(), 1);
    QCOMPARE(model.collisions().first().path, "a/ä 100%#?.ZYHELP");
}

// A page's tree is its folder's, made once, with the mark spliced in: it must
// mark the page itself, open the folders on its way and nothing else.
void TestPublish::folderTree()
{
    using ZyHelp::DocumentEntry;
    QList<DocumentEntry> entries;
    for (const char *path : {"a.zyhelp", "b/c/x.zyhelp", "b/c/y.zyhelp", "b/z.zyhelp",
                             "b/c/\xc3\x9c <&>.zyhelp", "d/w.zyhelp"})
        entries.append(DocumentEntry{QString::fromUtf8(path), QString::fromUtf8(path),
                                     QString::fromUtf8(path)});
    const ZyHelp::Publish::SiteModel model(entries);
    const ZyHelp::Publish::HtmlPageWriter writer(model, "P", {"de"},
                                                 ZyHelp::Publish::HtmlPageWriter::Site);
    const QByteArray mark = " aria-current=\"page\"";
    QMap<int, QByteArray> unmarkedByFolder;
    for (int document = 0; document < int(model.pageCount()); ++document) {
        const int folder = model.folderOf(document);
        const QString de = "de";
        const QByteArray page =
            writer.documentPage(document, de, de, "BODY", {}, writer.folderTree(folder, de));
        const QByteArray contents = page.mid(page.indexOf("<nav class=\"contents\""));
        const QByteArray nav = contents.left(contents.indexOf("</nav>"));
        QCOMPARE(nav.count(mark), 1);
        const QByteArray own = QByteArray("../").repeated(model.folder(folder).depth)
            + model.pageUrl(document).toLatin1() + '"' + mark + '>';
        QVERIFY2(nav.contains(own), nav.constData());
        QCOMPARE(nav.count("folder open"), model.folder(folder).depth);
        QByteArray unmarked = nav;
        unmarked.replace(mark, "");
        QCOMPARE(unmarkedByFolder.value(folder, unmarked), unmarked);
        unmarkedByFolder.insert(folder, unmarked);
        QVERIFY(page.contains("</nav>\n<main id=\"main\">")
                && page.contains("BODY</article>\n<nav class=\"pager\""));
    }
    QCOMPARE(unmarkedByFolder.size(), 4);
}

void TestPublish::searchWords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("words");

    QTest::newRow("sorted, once, lower case") << "Beta alpha BETA" << QByteArray("alpha beta t");
    QTest::newRow("umlauts and digits") << "Größe 100%" << QByteArray("100 größe t");
    QTest::newRow("beyond the BMP")
        << "\U0001D400b \U0001F600" << QString("t \U0001D400b").toUtf8();
    QTest::newRow("markup is text") << "<b>fett</b>" << QByteArray("b fett t");
    // Lowered before it is split: the dot that lowering adds splits the word.
    // Latin-1 text and the rest go different ways, to the same words.
    QTest::newRow("one word both ways") << "t \u0394" << QString("t \u03b4").toUtf8();
    QTest::newRow("longer in lower case") << "\u0130stanbul" << QByteArray("i stanbul t");
}

// Latin-1 text is lowered and split through tables of its own: as Qt lowers
// and classifies it, character for character.
void TestPublish::latin1Words()
{
    QString text;
    QStringList words{"t"};
    for (char16_t c = 0; c < 0x100; ++c) {
        text += QChar(c) + QStringLiteral(" x") + QChar(c) + u' ';
        if (QChar::isLetterOrNumber(c))
            words << QString(QChar(c)).toLower() << QStringLiteral("x") + QChar(c).toLower();
    }
    words.append("x");
    words.sort();
    words.removeDuplicates();
    ZyHelp::HelpLanguage language;
    language.description = text;
    QCOMPARE(ZyHelp::Publish::PageBody::searchWords("T", language), words.join(u' ').toUtf8());
}

// The search page splits a query as the index splits the text.
void TestPublish::searchWords()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, words);
    ZyHelp::HelpLanguage language;
    language.sections.append(ZyHelp::HelpSection{QString(), text});
    QCOMPARE(ZyHelp::Publish::PageBody::searchWords("T", language), words);
}

// What qhelpgenerator would only warn about is found before it runs; the project
// file, byte for byte, holds the contents tree that it takes without a word.
void TestPublish::qhpFaults()
{
    const ZyHelp::Publish::SiteModel model(
        {ZyHelp::DocumentEntry{QString(), QString(), "a/b.zyhelp"}});
    const QString folder = m_dir.filePath("qhp");
    const ZyHelp::Publish::QhpWriter writer(model, "Mein Projekt!", "de");
    QCOMPARE(writer.helpNamespace(), "zyhelp.mein-projekt-.de");
    QCOMPARE(writer.faults(folder),
             QStringList(
                 {"the page 'a/b.html' is missing", "the contents page 'index.html' is missing"}));
    Test::writeFile(folder + "/a/b.html", "<p>b</p>");
    Test::writeFile(folder + "/index.html", "<p>index</p>");
    QCOMPARE(writer.faults(folder), QStringList());
    QCOMPARE(writer.project({"style.css"}),
             Test::readFile(ZY_PUBLISH_DATA "/expected/mein-projekt_de.qhp"));
}

// One language: no switch, the entry leads to it, and a stale file of the
// old output is gone.
void TestPublish::oneLanguage()
{
    const QString out = m_dir.filePath("english");
    Test::writeFile(out + "/de/stale.html", "old");
    QCOMPARE(publish({"--languages", "en", "-o", out, m_data + "/site"}), 0);
    QCOMPARE(QDir(out).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList{"en"});
    QVERIFY(Test::readFile(out + "/index.html").contains("url=en/index.html"));
    const QByteArray page = Test::readFile(out + "/en/start.html");
    QVERIFY(page.startsWith("<!DOCTYPE html>\n<html lang=\"en\">"));
    QVERIFY(!page.contains("hreflang"));
    QVERIFY(page.contains("<h2 id=\"see-also\">See also</h2>"));
}

// Pages are written before the last documents are read: what those change of
// the languages and the fallback still reaches every page.
void TestPublish::lateLanguages()
{
    const QString project = m_dir.filePath("late");
    const auto write = [&](int number, const QStringList &languages) {
        QByteArray xml = "<zyhelp>";
        for (const QString &language : languages)
            xml += "<lang name=\"" + language.toUtf8() + "\"><description>Text " + language.toUtf8()
                + "</description></lang>";
        Test::writeFile(QString("%1/d%2.zyhelp").arg(project).arg(number, 2, 10, QChar('0')),
                        xml + "</zyhelp>");
    };
    // fr is the most common language of the first 16 documents, en of all.
    write(0, {"de"});
    write(1, {"en", "fr"});
    for (int i = 2; i < 40; ++i)
        write(i, {i < 16 ? "fr" : "en"});
    const QString out = m_dir.filePath("late-site");
    QCOMPARE(publish({"-o", out, project}), 0);
    QVERIFY(Test::readFile(out + "/de/d01.html").contains("<p>Text en</p>"));
    write(40, {"it"});
    QCOMPARE(publish({"--fallback", "fr", "-o", out, project}), 0);
    QVERIFY(Test::readFile(out + "/de/d00.html").contains("hreflang=\"it\""));
}

QTEST_GUILESS_MAIN(TestPublish)
#include "tst_publish.moc"
