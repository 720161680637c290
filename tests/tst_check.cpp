#include "testutil.h"

#include <QtTest>

namespace {

// A copy of tests/check, where zyhelpcheck runs: project/ has one instance of every finding, with
// gesperrt.zyhelp, a link to /proc/sys/vm/drop_caches, which not even root may read.
QTemporaryDir data;

// The exit code (-1 for a crash or hang), stdout and stderr of zyhelpcheck, or of the
// editor where the arguments begin with its name; ">/dev/full" first: stdout goes there.
std::tuple<int, QByteArray, QByteArray> check(const QString &arguments)
{
    QStringList list = arguments.split(u' ');
    QProcess proc;
    if (list.first() == ">/dev/full")
        proc.setStandardOutputFile(list.takeFirst().mid(1));
    const bool editor = list.first() == "zyhelpeditor";
    if (editor)
        list.removeFirst();
    proc.setWorkingDirectory(data.path());
    proc.start(editor ? ZY_EDITOR_BINARY : ZY_CHECK_BINARY, list);
    const bool ok = proc.waitForFinished(60000) && proc.exitStatus() == QProcess::NormalExit;
    return {ok ? proc.exitCode() : -1, proc.readAllStandardOutput(), proc.readAllStandardError()};
}

} // namespace

class tst_Check : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("LC_ALL", "C.UTF-8"); // the system's messages in English
        QCOMPARE(QProcess::execute("cp", {"-R", ZY_CHECK_DATA "/.", data.path()}), 0);
        QVERIFY(QFile::link("/proc/sys/vm/drop_caches", data.filePath("project/gesperrt.zyhelp")));
        QVERIFY(QFile::link("project", data.filePath("verknuepft")));
    }

    void run_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("err");
        const QByteArray draft =
            "warnings/entwurf.zyhelp: warning: language 'de': the description "
            "is still the placeholder \"...\" [placeholder]\n1 document, 0 errors, 1 warning\n";
        const auto row = [](const char *name, const char *arguments, int exitCode,
                            const QByteArray &out, const QByteArray &err = QByteArray()) {
            QTest::newRow(name) << QString::fromUtf8(arguments) << exitCode << out << err;
        };
        row("every finding", "project/handbuch.zyproject", 1,
            Test::readFile(ZY_CHECK_DATA "/expected.txt"));
        row("quiet, all twice",
            "--quiet project/gesperrt.zyhelp project/kapitel/../start.zyhelp "
            "project/handbuch.zyproject ./project/handbuch.zyproject verknuepft",
            1, "6 documents, 3 errors, 6 warnings\n");
        row("clean, twice", "clean/ ./clean/seite.zyhelp", 0, "1 document, 0 errors, 0 warnings\n");
        row("clean, to a full disk", ">/dev/full clean", 1, "",
            "stdout: error: cannot write: No space left on device\n");
        row("no documents", "notxml", 0, "0 documents, 0 errors, 0 warnings\n");
        row("warnings", "warnings", 0, draft);
        row("a tie", "tie", 0,
            "tie/a.zyhelp: warning: language 'en' has 1 section, the reference language 'de' has 2 "
            "sections [section-count]\n"
            "1 document, 0 errors, 1 warning\n");
        row("warnings, strict", "--strict warnings", 1, draft);
        row("languages", "--languages de,\tfr clean", 1,
            "clean/seite.zyhelp: error: language 'fr' is "
            "missing; --languages requires it [missing-language]\n1 document, 1 error, 0 "
            "warnings\n");
        row("missing path", "clean fehlt", 2, "", "zyhelpcheck: fehlt: no such file or folder\n");
        row("format", "--format x", 2, "", "zyhelpcheck: --format must be text or json, not 'x'\n");
        row("editor version", "zyhelpeditor --version", 0, "zyhelpeditor 1.0.0\n");
        row("editor, two projects", "zyhelpeditor a b", 1, "",
            "zyhelpeditor: Es kann nur eine Projektdatei angegeben werden.\n");
        row("not XML", "notxml/notxml.zyproject", 2, "",
            "zyhelpcheck: notxml/notxml.zyproject:4:1: "
            "not a project file: Premature end of document.\n");
    }
    void run()
    {
        QFETCH(QString, arguments);
        const auto [exitCode, out, err] = check(arguments);
        QTEST(out, "out");
        QTEST(err, "err");
        QTEST(exitCode, "exitCode");
    }

    void json() // the findings of expected.txt, as one JSON document
    {
        const QByteArray out = std::get<1>(check("--format json project/handbuch.zyproject"));
        QCOMPARE(QJsonDocument::fromJson(out).object().value("findings").toArray().size(), 9);
        QCOMPARE(out, Test::readFile(ZY_CHECK_DATA "/expected.json"));
    }

    void help() // the programs' own descriptions of themselves, their options and arguments
    {
        const QByteArray out = std::get<1>(check("--help")),
                         editor = std::get<1>(check("zyhelpeditor --help"));
        QCOMPARE(out.mid(out.indexOf("  --format")), Test::readFile(ZY_CHECK_DATA "/help.txt"));
        const char *projectOption =
            "  projekt        Projektdatei (.zyproject), die beim Start geöffnet wird.\n";
        QVERIFY(editor.contains("]\nEditor für mehrsprachige Hilfedokumente (ZY Help Editor).\n")
                && editor.contains(projectOption));
    }
};

QTEST_GUILESS_MAIN(tst_Check)
#include "tst_check.moc"
