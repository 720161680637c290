#include "testutil.h"

#include "catalogfile.h"
#include "poreader.h"
#include "xliffreader.h"

#include <QBuffer>

#include <QtTest>

using namespace ZyHelp;
using namespace ZyHelp::Translate;

namespace {

// Every rule of escaping at once: quotes, backslashes, tabs, several lines, umlauts, <&>, non-BMP.
const QString hard = QStringLiteral("Er sagte \"Hallo\" \\ und\tging.\nZweite Zeile\n\n"
                                    "Dritte: <&> Größe \U0001F600 \\n ist kein Umbruch");

struct Run
{
    int code = -1;
    QString out;
    QString err;
};

class tst_Translate : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    Run run(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(m_dir.path());
        process.start(program, arguments);
        Run result;
        if (process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit)
            result.code = process.exitCode();
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }
    Run translate(const QString &arguments) const
    {
        return run(ZY_TRANSLATE_BINARY, arguments.split(u' '));
    }

    // The sample project: a.zyhelp in German only, with a placeholder section that is
    // nothing to translate; kapitel/b.zyhelp half translated into English.
    void makeProject() const
    {
        QDir(path("proj")).removeRecursively();
        HelpData a;
        a.languages["de"] =
            HelpLanguage{"Harte Texte", {{"Zitat", hard}, {"Leer", "..."}, {"Drei", "Text drei"}}};
        HelpData b;
        b.languages["de"] = HelpLanguage{"Kapitel", {{"Eins", "Erster Text"}, {"Zwei", "Zweiter"}}};
        b.languages["en"] = HelpLanguage{"Chapter", {{"One", "First text"}}};
        QVERIFY(QDir().mkpath(path("proj/kapitel")));
        QVERIFY(HelpWriter().writeXml(a, path("proj/a.zyhelp")));
        QVERIFY(HelpWriter().writeXml(b, path("proj/kapitel/b.zyhelp")));
        Test::writeFile(path("proj/p.zyproject"),
                        "<zyproject name=\"p\"><file>a.zyhelp</file>"
                        "<file>kapitel/b.zyhelp</file></zyproject>\n");
    }

    QMap<QString, QByteArray> documents() const
    {
        QMap<QString, QByteArray> bytes;
        for (const char *name : {"proj/a.zyhelp", "proj/kapitel/b.zyhelp"})
            bytes.insert(name, Test::readFile(path(name)));
        return bytes;
    }

    HelpData read(const QString &name) const { return HelpParser().parse(path(name)); }

    // An export into English, filled by a translator's tool: msgen copies each source into
    // its empty translation; an XLIFF file gets them through our reader and writer.
    void exportFilled(const QString &file) const
    {
        QCOMPARE(translate("export --source de --target en -o " + file + " proj").code, 0);
        if (CatalogFile::formatOf(file) == CatalogFile::Po) {
            QCOMPARE(run("msgen", {file, "-o", file}).code, 0);
            return;
        }
        Catalog catalog;
        QString error;
        QVERIFY2(CatalogFile::read(path(file), &catalog, &error), qPrintable(error));
        for (TranslationUnit &unit : catalog.units) {
            if (unit.target.isEmpty())
                unit.target = unit.source;
        }
        QVERIFY(CatalogFile::write(path(file), catalog, &error));
    }

    // The check of the translators' tools: msgfmt -c for PO, the strict schema for XLIFF.
    void validate(const QString &file) const
    {
        const Run check = CatalogFile::formatOf(file) == CatalogFile::Po
            ? run("msgfmt", {"-c", "-o", "/dev/null", file})
            : run("xmllint", {"--noout", "--schema", ZY_XLIFF_SCHEMA, file});
        QVERIFY2(check.code == 0, qPrintable(check.err));
    }

    // Every translated text in English stands where its German source stands.
    void verifyInPlace(const QString &name, const std::function<QString(QString)> &expected)
    {
        const HelpData data = read(name);
        const HelpLanguage de = data.languages.value("de");
        const HelpLanguage en = data.languages.value("en");
        for (qsizetype i = 0; i < en.sections.size(); ++i) {
            const HelpSection &s = en.sections.at(i);
            if (s.content != "..." && !s.content.contains("First text"))
                QCOMPARE(s.content, expected(de.sections.value(i).content));
            if (!s.name.isEmpty() && !s.name.contains("One"))
                QCOMPARE(s.name, expected(de.sections.value(i).name));
        }
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ZY_XLIFF_SCHEMA),
                 "no XLIFF schema: run scripts/fetch-xliff-schema.sh or set ZY_XLIFF_SCHEMA");
    }
    void init()
    {
        makeProject();
        for (const char *file : {"x.po", "y.po", "x.pot", "x.xlf", "x.xliff"})
            QFile::remove(path(file));
    }

    void exportsPassTheirTools_data() { Test::addRows(ZY_TRANSLATE_DATA "/exports.txt"); }
    void exportsPassTheirTools()
    {
        QFETCH(QString, file);
        QFETCH(QString, target);
        QFETCH(QString, changed);
        QFETCH(QString, source);
        const QString arguments =
            QStringLiteral("export --source %1%2 -o %3 proj")
                .arg(source, target.isEmpty() ? "" : " --target " + target, file);
        QCOMPARE(translate(arguments).code, 0);
        if (!changed.isEmpty()) {
            HelpData b = read("proj/kapitel/b.zyhelp");
            b.languages["de"].sections[0].content = "Erster Text, neu";
            QVERIFY(HelpWriter().writeXml(b, path("proj/kapitel/b.zyhelp")));
            QCOMPARE(translate(arguments).code, 0);
        }
        validate(file);
        const QString text = QString::fromUtf8(Test::readFile(path(file)));
        QVERIFY(text.contains(changed));
        if (CatalogFile::formatOf(file) == CatalogFile::Po) { // wrapped as gettext wraps
            QCOMPARE(run("msgcat", {file, "-o", "gettext.po"}).code, 0);
            QCOMPARE(Test::readFile(path("gettext.po")), text.toUtf8());
        }
        QVERIFY(!text.contains("a.zyhelp#2/content")); // a placeholder is not exported
    }

    void poWrapping_data()
    {
        QTest::addColumn<QString>("text");
        const QString words = "Ein Satz mit Wörtern, die über die Zeilenbreite von gettext "
                              "hinaus gehen und dort umbrochen werden; ";
        QTest::newRow("spaces") << words + words;
        QTest::newRow("a word longer than a line")
            << "Vor " + QString(120, u'x') + " nach " + words;
        QTest::newRow("umlauts at the width") << QString(70, u'ä') + " " + QString(20, u'ö');
        QTest::newRow("line breaks and backslashes")
            << words + "\n\\\nEnde\n" + words + "\\" + words + "\n";
        QTest::newRow("tabs and quotes") << words + "\t\"Zitat\"\t" + words;
        // Control characters without an escape take no column.
        QTest::newRow("control characters") << words + "\a\b\f\v\r\x01\x1f " + words;
        QTest::newRow("control characters, one line") << QString(69, u'x') + "\x01\x02\x03\x05";
        QTest::newRow("one long word") << QString(100, u'x');
        QTest::newRow("long word, short word") << QString(100, u'x') + " y";
        QTest::newRow("long word before a space") << QString(100, u'x') + " ";
        // Spaces that begin a line are no place to cut it.
        QTest::newRow("long word after a space") << "  " + QString(100, u'x');
        QTest::newRow("long word after a short one") << " a " + QString(100, u'x');
        QTest::newRow("long word at a line's start")
            << QString(70, u'a') + "\n " + QString(100, u'x');
    }
    void poWrapping() // PO strings wrapped exactly as gettext's msgcat wraps them
    {
        QFETCH(QString, text);
        Catalog catalog;
        catalog.sourceLanguage = "de";
        catalog.targetLanguage = "en";
        const TranslationUnit unit{"a.zyhelp#1/content", text, text, text, "a.zyhelp", text, true};
        catalog.units = {unit};
        QString error;
        QVERIFY(CatalogFile::write(path("x.po"), catalog, &error));
        QCOMPARE(run("msgcat", {"x.po", "-o", "gettext.po"}).code, 0);
        QCOMPARE(Test::readFile(path("x.po")), Test::readFile(path("gettext.po")));
    }

    // The XLIFF writer writes texts that need only the four escapes itself, as
    // QXmlStreamWriter would, and leaves the others to it: the hard text goes the
    // first way, an earlier translation with a carriage return the second.
    void xliffWriterPaths()
    {
        QCOMPARE(translate("export --source de --target en -o x.xlf proj").code, 0);
        QByteArray xlf = Test::readFile(path("x.xlf"));
        QVERIFY(xlf.contains("\n      <source>Er sagte &quot;Hallo&quot; \\ und\tging.\nZweite"));
        xlf.replace(">First text</target>", ">First&#13;text</target>");
        Test::writeFile(path("x.xlf"), xlf);
        QCOMPARE(translate("export --source de --target en -o x.xlf proj").code, 0);
        validate("x.xlf");
        Catalog merged;
        QString error;
        QVERIFY2(CatalogFile::read(path("x.xlf"), &merged, &error), qPrintable(error));
        QHash<QString, TranslationUnit> units;
        for (const TranslationUnit &unit : std::as_const(merged.units))
            units.insert(unit.id, unit);
        QCOMPARE(units.size(), 11);
        QCOMPARE(units.value("a.zyhelp#1/content").source, hard);
        QCOMPARE(units.value("kapitel/b.zyhelp#description").target, "Chapter");
        // Written as a character reference, a carriage return reads back as itself.
        QVERIFY(Test::readFile(path("x.xlf")).contains(">First&#13;text</target>"));
        QCOMPARE(units.value("kapitel/b.zyhelp#1/content").target, "First\rtext");
    }

    void roundTrip_data() { Test::addRows(ZY_TRANSLATE_DATA "/round-trip.txt"); }
    void roundTrip()
    {
        QFETCH(QString, file);
        QFETCH(QString, rewrite);
        QFETCH(QString, decoration);
        exportFilled(file);
        if (!rewrite.isEmpty()) {
            QStringList tool = rewrite.split(u' ');
            QCOMPARE(run(tool.takeFirst(), tool).code, 0);
            file = tool.last();
        }
        validate(file);
        const Run import = translate("import " + file + " proj/p.zyproject");
        QVERIFY2(import.code == 0, qPrintable(import.err));
        QVERIFY(import.out.contains("wrote proj/a.zyhelp\nwrote proj/kapitel/b.zyhelp\n"));
        const auto expected = [&](const QString &source) { return decoration.arg(source); };
        QCOMPARE(read("proj/a.zyhelp").languages.value("en").sections.value(0).content,
                 expected(hard));
        QCOMPARE(read("proj/a.zyhelp").languages.value("en").description, expected("Harte Texte"));
        verifyInPlace("proj/a.zyhelp", expected);
        verifyInPlace("proj/kapitel/b.zyhelp", expected);
        QCOMPARE(read("proj/kapitel/b.zyhelp").languages.value("en").sections.size(), 2);
    }

    void unchangedFileChangesNoByte_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("po") << "x.po";
        QTest::newRow("xliff") << "x.xlf";
    }
    void unchangedFileChangesNoByte()
    {
        QFETCH(QString, file);
        QCOMPARE(run("cp", {"-R", ZY_TRANSLATE_DATA "/../../examples/handbuch/.", "proj"}).code, 0);
        const QMap<QString, QByteArray> before = documents();
        QCOMPARE(translate("export --source de --target en -o " + file + " proj").code, 0);
        const Run import = translate("import " + file + " proj");
        QCOMPARE(import.code, 0);
        QVERIFY2(import.out.endsWith(" 0 documents written\n"), qPrintable(import.out));
        QCOMPARE(documents(), before);
    }

    void mergeKeepsTranslations_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("sorted"); // by msgid: the documents' units in several runs
        QTest::newRow("po") << "x.po" << false;
        QTest::newRow("po sorted by msgcat") << "x.po" << true;
        QTest::newRow("xliff") << "x.xlf" << false;
    }
    void mergeKeepsTranslations()
    {
        QFETCH(QString, file);
        QFETCH(bool, sorted);
        exportFilled(file);
        if (sorted)
            QCOMPARE(run("msgcat", {"--sort-output", file, "-o", file}).code, 0);
        // The header fields that a translator's tool sets stay as they were.
        const QStringList fields{"PO-Revision-Date: 2026-11-02 10:00+0100",
                                 "Last-Translator: Ana <ana@example.org>",
                                 "Language-Team: English <en@example.org>",
                                 "Plural-Forms: nplurals=2; plural=(n != 1);"};
        if (file.endsWith(".po")) {
            QString po = QString::fromUtf8(Test::readFile(path(file)));
            po.remove(
                QRegularExpression("\"(PO-Revision-Date|Last-Translator|Language-Team):.*\n"));
            po.replace("\"Language: en\\n\"\n",
                       "\"Language: en\\n\"\n\"" + fields.join("\\n\"\n\"") + "\\n\"\n");
            Test::writeFile(path(file), po.toUtf8());
        }
        HelpData a = read("proj/a.zyhelp");
        a.languages["de"].sections[0].content = "Neu";
        a.languages["de"].sections.append(HelpSection{"Vier", "Text vier"});
        QVERIFY(HelpWriter().writeXml(a, path("proj/a.zyhelp")));
        HelpData b = read("proj/kapitel/b.zyhelp");
        b.languages["de"].sections.removeLast();
        QVERIFY(HelpWriter().writeXml(b, path("proj/kapitel/b.zyhelp")));
        QCOMPARE(translate("export --source de --target en -o " + file + " proj").code, 0);
        validate(file);

        Catalog merged;
        QString error;
        QVERIFY2(CatalogFile::read(path(file), &merged, &error), qPrintable(error));
        QHash<QString, TranslationUnit> units;
        for (const TranslationUnit &unit : std::as_const(merged.units))
            units.insert(unit.id, unit);
        const TranslationUnit edited = units.value("a.zyhelp#1/content");
        QVERIFY(edited.fuzzy);
        QCOMPARE(edited.previousSource, hard);
        QCOMPARE(edited.target, hard); // the earlier translation, kept
        QVERIFY(!units.value("a.zyhelp#1/name").fuzzy);
        QCOMPARE(units.value("a.zyhelp#1/name").target, "Zitat");
        QVERIFY(units.value("a.zyhelp#4/content").target.isEmpty()); // new
        QVERIFY(!units.value("a.zyhelp#4/content").fuzzy);
        QVERIFY(!units.contains("a.zyhelp#2/content")); // a placeholder
        QVERIFY(!units.contains("kapitel/b.zyhelp#2/content")); // gone
        QCOMPARE(units.value("kapitel/b.zyhelp#1/content").target, "First text");
        QCOMPARE(merged.units.size(), 8 + 3);
        const QByteArray po = Test::readFile(path(file));
        for (const QString &field : fields) // PO only: XLIFF has no such fields
            QVERIFY(!file.endsWith(".po") || po.contains(("\"" + field + "\\n\"\n").toUtf8()));
    }

    void staleUnitsLandNowhere_data() { unchangedFileChangesNoByte_data(); }
    void staleUnitsLandNowhere()
    {
        QFETCH(QString, file);
        exportFilled(file);
        HelpData a = read("proj/a.zyhelp");
        a.languages["de"].sections.insert(0, {"Davor", "Eingefügt"}); // every section moves on
        QVERIFY(HelpWriter().writeXml(a, path("proj/a.zyhelp")));
        HelpData b = read("proj/kapitel/b.zyhelp");
        b.languages["de"].sections.swapItemsAt(0, 1);
        b.languages["de"].description = "Kapitel, neu";
        QVERIFY(HelpWriter().writeXml(b, path("proj/kapitel/b.zyhelp")));

        const QMap<QString, QByteArray> before = documents();
        const Run dry = translate("import --dry-run " + file + " proj");
        QCOMPARE(dry.code, 1);
        QCOMPARE(documents(), before);
        const Run import = translate("import " + file + " proj");
        QCOMPARE(import.code, 1);
        QCOMPARE(import.err, dry.err);
        QCOMPARE(import.out,
                 QString(dry.out).replace("would write", "wrote").replace("to write", "written"));
        QVERIFY(import.err.contains(QRegularExpression("^" + file
                                                           + ":\\d+: warning: "
                                                             "kapitel/b.zyhelp#description: stale",
                                                       QRegularExpression::MultilineOption)));
        verifyInPlace("proj/a.zyhelp", [](const QString &source) { return source; });
        verifyInPlace("proj/kapitel/b.zyhelp", [](const QString &source) { return source; });
    }

    void otherToolsFiles_data() { Test::addRows(ZY_TRANSLATE_DATA "/other-tools.txt"); }
    void otherToolsFiles() // gettext's features; CAT tools' states, inline markup, suggestions
    {
        QFETCH(QString, file);
        const QByteArray b = Test::readFile(path("proj/kapitel/b.zyhelp"));
        const Run import = translate("import " ZY_TRANSLATE_DATA "/" + file + " proj");
        QVERIFY2(import.code == 0, qPrintable(import.err));
        QTEST(import.out, "output");
        QTEST(Test::dump(read("proj/a.zyhelp")).section(" [en:", 1), "english");
        QCOMPARE(Test::readFile(path("proj/kapitel/b.zyhelp")), b);
    }

    void faultyDocuments() // reported, never written, and the others go on
    {
        exportFilled("x.po");
        const QByteArray faulty = Test::readFile(path("proj/a.zyhelp")).replace("</lang>", "");
        Test::writeFile(path("proj/a.zyhelp"), faulty);
        const Run import = translate("import x.po proj");
        QCOMPARE(import.code, 1);
        QVERIFY2(import.err.contains(QRegularExpression("^proj/a.zyhelp:\\d+:\\d+: error: the "
                                                        "document was not read whole")),
                 qPrintable(import.err));
        QCOMPARE(Test::readFile(path("proj/a.zyhelp")), faulty);
        QCOMPARE(import.out,
                 "wrote proj/kapitel/b.zyhelp\n5 translations in place, 6 not "
                 "applied, 1 document written\n");
        const Run again = translate("export --source de --target en -o x.po proj");
        QCOMPARE(again.code, 1);
        QVERIFY(again.err.startsWith("proj/a.zyhelp:"));
        QVERIFY(Test::readFile(path("x.po")).contains("msgstr \"Zweiter\""));
    }

    void spacesAroundTranslations() // trimmed as documents hold texts: a second import is idle
    {
        QCOMPARE(translate("export --source de --target en -o x.po proj").code, 0);
        QByteArray po = Test::readFile(path("x.po"));
        po.replace("msgid \"Text drei\"\nmsgstr \"\"",
                   "msgid \"Text drei\"\nmsgstr \"  Text three\t \"");
        Test::writeFile(path("x.po"), po);
        QCOMPARE(translate("import x.po proj").code, 0);
        QCOMPARE(read("proj/a.zyhelp").languages.value("en").sections.value(2).content,
                 "Text three");
        QVERIFY(translate("import x.po proj").out.endsWith(" 0 documents written\n"));
    }

    void poReader_data()
    {
        Test::addRows(ZY_TRANSLATE_DATA "/po-reader.txt", {"po"});
        const QByteArray head = "msgid \"\"\nmsgstr \"Language: en\\n\"\n\n";
        const auto row = [](const char *name, const QByteArray &po, const char *expected) {
            QTest::newRow(name) << po << QString::fromUtf8(expected);
        };
        // The reader reads blocks of 1 MiB: lines across them are still counted as lines.
        // A CR LF whose CR ends a block and whose LF begins the next.
        const QByteArray start = head + "msgctxt \"i\"\nmsgid \"";
        row("CR LF across blocks",
            start + QByteArray((1 << 20) - 2 - start.size(), 'x') + "\"\r\nmsgstr \"y\"\n",
            "i|xxx");
        row("lines across blocks",
            head + "msgctxt \"i\"\nmsgid \"" + QByteArray(3 << 19, 'x')
                + "\"\r\nmsgstr \"\"\n\nmsgid \"\\q\"\n",
            "8:8: unknown escape sequence");
    }
    void poReader()
    {
        QFETCH(QByteArray, po);
        QBuffer buffer(&po);
        buffer.open(QIODevice::ReadOnly);
        Catalog catalog;
        ReadError error;
        QString units;
        if (!PoReader().read(&buffer, &catalog, &error))
            units = QString("%1:%2: %3").arg(error.line).arg(error.column).arg(error.message);
        for (const TranslationUnit &u : std::as_const(catalog.units))
            units += QStringLiteral("%1|%2|%3|%4|%5")
                         .arg(u.id, u.source, u.target)
                         .arg(u.fuzzy)
                         .arg(u.previousSource);
        QFETCH(QString, expected);
        QVERIFY2(expected.isEmpty() ? units.isEmpty() : units.startsWith(expected),
                 qPrintable(units));
    }

    void batches() // a document's units split between two batches still all go in, once
    {
        QVERIFY(QDir().mkpath(path("proj/viele")));
        for (int i = 0; i < 1000; ++i) {
            HelpData d;
            for (int s = 0; s < 10; ++s)
                d.languages["de"].sections.append({QString("N%1").arg(s), QString("T%1").arg(s)});
            d.languages["de"].description = "D";
            QVERIFY(HelpWriter().writeXml(d, path(QString("proj/viele/%1.zyhelp").arg(i))));
        }
        exportFilled("x.po");
        // A fault after the last unit: the batches before, that would write, wait for the
        // check of the whole file, which fails.
        Test::writeFile(path("y.po"), Test::readFile(path("x.po")) + "\nmsgid \"\\q\"\n");
        const QByteArray first = Test::readFile(path("proj/viele/0.zyhelp"));
        const Run faulty = translate("import y.po proj");
        QCOMPARE(faulty.code, 2);
        QVERIFY(faulty.out.isEmpty());
        QCOMPARE(Test::readFile(path("proj/viele/0.zyhelp")), first);
        const Run import = translate("import x.po proj");
        QCOMPARE(import.code, 0);
        QCOMPARE(import.out.count("wrote "), 1002);
        QCOMPARE(translate("status --source de proj").out.section('\n', -2),
                 QString("en from de, 1002 documents: 21011 translated (21029 words), 0 "
                         "untranslated (0 words), "
                         "1 not ready (1 words)\n"));

        // Merged with an earlier file whose translations are not the documents': each unit
        // gets its earlier one, held in blocks of several documents, also where the file
        // has a document's units in two runs.
        QByteArray po = Test::readFile(path("x.po"));
        const QByteArray moved = "\n#. section 1 of 10, \"N0\"\n#: viele/0.zyhelp\n"
                                 "msgctxt \"viele/0.zyhelp#1/content\"\nmsgid \"T0\"\n"
                                 "msgstr \"T0\"\n";
        QVERIFY(po.contains(moved));
        po.replace(moved, "").append(moved).replace("msgstr \"T", "msgstr \"\u00dc");
        Test::writeFile(path("x.po"), po);
        HelpData d = read("proj/viele/500.zyhelp");
        d.languages["de"].sections[3].content = "T3 neu";
        QVERIFY(HelpWriter().writeXml(d, path("proj/viele/500.zyhelp")));
        QCOMPARE(translate("export --source de --target en -o x.po proj").code, 0);
        po = Test::readFile(path("x.po"));
        QCOMPARE(po.count("msgstr \"\u00dc"), 10000 + 1); // and a.zyhelp's "Text drei"
        QVERIFY(po.contains("msgctxt \"viele/0.zyhelp#1/content\"\nmsgid \"T0\"\n"
                            "msgstr \"\u00dc0\"\n"));
        QCOMPARE(po.count("#, fuzzy\n"), 1);
        QVERIFY(po.contains("#, fuzzy\n#| msgid \"T3\"\nmsgctxt \"viele/500.zyhelp#4/content\"\n"));
    }

    void earlierFileLeftAlone() // an earlier file that cannot be merged stays as it is
    {
        Test::writeFile(path("x.po"), "msgid \"x\"\n");
        QCOMPARE(translate("export --source de --target en -o x.po proj").code, 2);
        QCOMPARE(Test::readFile(path("x.po")), "msgid \"x\"\n");
        const Run out = translate("export --source de --target en proj"); // PO on stdout
        QCOMPARE(out.code, 0);
        QVERIFY(out.out.contains("\nmsgctxt \"kapitel/b.zyhelp#1/content\"\nmsgid \"Erster Text\"\n"
                                 "msgstr \"First text\"\n"));
    }

    void notWrittenWhole_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("output"); // the file written, or stdout
        QTest::newRow("export PO") << "export --source de --target en -o x.po proj"
                                   << "x.po";
        QTest::newRow("export XLIFF") << "export --source de --target en -o x.xlf proj"
                                      << "x.xlf";
        QTest::newRow("export to stdout") << "export --source de --target en proj"
                                          << "stdout";
        QTest::newRow("status") << "status --source de proj"
                                << "stdout";
    }
    void notWrittenWhole() // as on a full disk: exit 1, and an earlier file stays whole
    {
        QFETCH(QString, arguments);
        QFETCH(QString, output);
        QByteArray earlier;
        if (output != "stdout") {
            exportFilled(output); // merged with, so the new file would differ
            earlier = Test::readFile(path(output));
        }
        // Files may grow to 512 bytes (dash counts in blocks of 512); an export is longer.
        QVERIFY(translate("export --source de --target en proj").out.size() > 1024);
        const QString script = "trap '' XFSZ; ulimit -f 1; exec \"$0\" \"$@\" > /dev/full";
        const Run limited =
            run("sh", QStringList{"-c", script, ZY_TRANSLATE_BINARY} + arguments.split(u' '));
        QCOMPARE(limited.code, 1);
        QVERIFY2(limited.err.startsWith(output + ": error: cannot write: "),
                 qPrintable(limited.err));
        if (output != "stdout")
            QCOMPARE(Test::readFile(path(output)), earlier);
    }

    void status()
    {
        HelpData c;
        c.languages["de"] = HelpLanguage{"Neue Beschreibung", {{"Eins", "Ein Wort"}}};
        c.languages["fr"] = HelpLanguage{"...", {{"Un", "Un mot"}}};
        QVERIFY(HelpWriter().writeXml(c, path("proj/c.zyhelp")));
        const Run json = translate("status --source de --format json proj");
        QCOMPARE(json.code, 0);
        QCOMPARE(json.out.toUtf8(), Test::readFile(ZY_TRANSLATE_DATA "/status.json"));
        const Run text = translate("status --source de proj/p.zyproject");
        QVERIFY(text.out.contains("\nen from de, 3 documents: 3 translated (4 words), "
                                  "10 untranslated (28 words), 2 not ready (3 words)\n"));
    }

    void usageErrors_data() { Test::addRows(ZY_TRANSLATE_DATA "/usage-errors.txt"); }
    void usageErrors()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, message);
        QCOMPARE(translate("export --source de -o x.pot proj").code, 0);
        QVERIFY(QDir().mkpath(path("x")));
        QFile::copy(path("proj/a.zyhelp"), path("x/a.zyhelp")); // or there from a row before
        const Run result = translate(arguments);
        QCOMPARE(result.code, 2);
        QVERIFY2(result.err.contains(message), qPrintable(result.err));
    }

    void badInput_data() { Test::addRows(ZY_TRANSLATE_DATA "/bad-input.txt", {"from", "to"}); }
    void badInput()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, message);
        exportFilled(file);
        QByteArray bytes = Test::readFile(path(file));
        const qsizetype at = bytes.indexOf(from);
        QVERIFY(at >= 0);
        bytes = to.isEmpty() ? bytes.left(at) : bytes.replace(from, to);
        Test::writeFile(path(file), bytes);
        const QMap<QString, QByteArray> before = documents();
        const Run import = translate("import " + file + " proj");
        QTEST(QString::number(import.code), "code");
        QVERIFY2(import.err.contains(QRegularExpression(message)), qPrintable(import.err));
        if (import.code == 2)
            QCOMPARE(documents(), before);
        else // the other units go in, the faulty one does not
            QVERIFY(read("proj/a.zyhelp").languages.value("en").sections.value(2).content
                    != "Text drei\n");
    }
};

} // namespace

QTEST_GUILESS_MAIN(tst_Translate)
#include "tst_translate.moc"
