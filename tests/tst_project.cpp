#include "pathkey.h"
#include "projectmanager.h"
#include "testutil.h"

#include <QtTest>

#include <optional>

using namespace ZyHelp;

namespace {

QString pathList()
{
    return QCoreApplication::applicationDirPath() + "/Path";
}

// Every string of up to `length` tokens.
QStringList combinations(const QStringList &tokens, int length)
{
    QStringList all{QString()};
    for (qsizetype from = 0, to = 1; length-- > 0; from = to, to = all.size()) {
        for (qsizetype i = from; i < to; ++i)
            for (const QString &token : tokens)
                all.append(all.at(i) + token);
    }
    return all;
}

} // namespace

class TstProject : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir.emplace();
        m_root = QDir(m_dir->path()).canonicalPath();
        for (const char *name : {"b.zyhelp", "Z.zyhelp", "a/x.zyhelp", "a2.zyhelp", "ALT.ZYHELP",
                                 "n.zyhelp.bak", "n.txt", ".hidden/h.zyhelp", "a/b/c/d.zyhelp"})
            Test::writeFile(m_root + u'/' + name, "");
    }

    void createAndSave()
    {
        ProjectManager pm;
        QVERIFY(pm.createProject(m_root, "H&<\""));
        const QString file = m_root + "/H&<\".zyproject";
        QCOMPARE(Test::readFile(file), Test::readFile(QFINDTESTDATA("data/project.zyproject")));
        pm.addFileToProject(m_root + "/new.zyhelp"); // appended unsorted, saved
        pm.addFileToProject("./b.zyhelp");
        QFile::remove(file);
        pm.addFileToProject("b.zyhelp"); // listed: not saved again
        QVERIFY(!QFile::exists(file));
        QCOMPARE(pm.files().mid(5), QStringList({"b.zyhelp", "new.zyhelp", "./b.zyhelp"}));
        pm.removeFileFromProject(m_root + "/ALT.ZYHELP", true);
        // Not listed: saved and deleted all the same.
        pm.removeFileFromProject(m_root + "/n.txt", true);
        QVERIFY(!QFile::exists(m_root + "/ALT.ZYHELP") && !QFile::exists(m_root + "/n.txt"));
        QVERIFY(Test::readFile(file).contains("\">\n    <file>Z.zyhelp</file>"));
        QVERIFY(!pm.createProject(m_root, "missing/P")); // the state changed all the same
        QCOMPARE(pm.projectName() + pm.files().join(u','),
                 "missing/PZ.zyhelp,a/b/c/d.zyhelp,a/x.zyhelp,a2.zyhelp,b.zyhelp");
        // A carriage return written as it is would read back as a line end.
        Test::writeFile(m_root + "/c\r.zyhelp", "");
        QVERIFY(pm.createProject(m_root, "P"));
        QVERIFY(Test::readFile(m_root + "/P.zyproject").contains("<file>c&#13;.zyhelp</file>"));
        // Read from UTF-16, a name may hold a lone surrogate, after which Qt 6.4
        // would write nothing whole.
        const QString utf16 = QString("<zyproject name=\"a") + QChar(0xd800) + "b\"/>";
        const QString file16 = m_root + "/P.zyproject";
        const QByteArray bytes(reinterpret_cast<const char *>(utf16.utf16()), utf16.size() * 2);
        Test::writeFile(file16, "\xff\xfe" + bytes);
        QVERIFY(pm.openProject(file16) && pm.saveProject());
        QVERIFY(Test::readFile(file16).contains("name=\"ab\">\n    <file>Z.zyhelp</file>"));
    }

    void registers_data()
    {
        QTest::addColumn<QString>("known"); // lines in "Path" before
        QTest::addColumn<QStringList>("appended");
        QTest::newRow("none") << "" << QStringList({"", "/a", "/a/b", "/a/b/c"});
        QTest::newRow("spelled otherwise") << "  ROOT/  \n\n   \nROOT/./A/B\n"
                                           << QStringList({"/a", "/a/b/c"});
        QTest::newRow("no final line end") << "ROOT/a/B/c" << QStringList({"", "/a", "/a/b"});
    }
    void registers()
    {
        QFETCH(QString, known);
        QFETCH(QStringList, appended);
        QDir().mkpath(m_root + "/A"); // one line for a and A, whichever comes first
        const QByteArray before = known.replace("ROOT", m_root).toUtf8();
        Test::writeFile(pathList(), before);
        for (const QString &folder : appended)
            QTest::ignoreMessage(QtDebugMsg,
                                 QRegularExpression("^Registriere Unterordner: \"" + m_root + "("
                                                    + folder + "|/A)\"$"));
        ProjectManager pm;
        QVERIFY(pm.createProject(m_root, "P"));
        const QByteArray after = Test::readFile(pathList());
        QStringList lines =
            QString(after.mid(before.size())).replace(m_root + "/A", m_root + "/a").split(u'\n');
        QCOMPARE(after.left(before.size()) + lines.takeLast().toUtf8() + lines.value(0).toUtf8(),
                 before + m_root + appended.value(0));
        lines.sort();
        QCOMPARE(lines.join(u'|'), (m_root + appended.join(u'|' + m_root)));
        pm.registerPathInGlobalConfig(); // nothing new, where the last line was whole
        QCOMPARE(Test::readFile(pathList()) == after, before.isEmpty() || before.endsWith('\n'));
    }

    // The path helpers against the QString and QDir functions they stand for,
    // on paths made of the pieces that cleaning or folding treats specially.
    void pathHelpersMatchQDir()
    {
        const QStringList candidates{"/srv/Hilfe", "/srv/Hilfe/a", "/srv/Hilfe/A/b.c",
                                     "/srv/Hilfe/\u00DF", "/srv/Hilfe/a"};
        const Internal::CandidateSet set(candidates);
        const QStringList roots{"/srv/Hilfe", "/srv/Hilfe/", "srv/Hilfe", "/srv/./Hilfe"};
        // "\U00010428" is a letter outside the BMP; its two halves follow alone.
        const QStringList pieces{"/",      "a",          "z",           "\u00E4",     ".",
                                 "..",     "/..",        "\\",          ":",          "SS",
                                 "\u00DF", "\U00010428", QChar(0xD801), QChar(0xDC28)};
        for (const QString &tail : combinations(pieces, 4)) {
            for (const QString &path :
                 {tail, "/srv/Hilfe" + tail, "/srv/hilf" + tail, "/srv" + tail + "Hilfe/a"}) {
                const QString clean = QDir::cleanPath(path);
                QCOMPARE(Internal::cleanPath(path), clean);
                QCOMPARE(Internal::cleanCaseKey(path), Internal::caseKey(clean));
                QCOMPARE(Internal::caseKey(tail) == Internal::caseKey(tail.toUpper()),
                         QString::compare(tail, tail.toUpper(), Qt::CaseInsensitive) == 0);
                qsizetype first = candidates.size() - 1;
                while (first >= 0
                       && QString::compare(candidates.at(first), clean, Qt::CaseInsensitive) != 0)
                    --first;
                QCOMPARE(set.indexOf(path), first < 0 ? -1 : set.firstEqual(first));
                for (const QString &root : roots)
                    QCOMPARE(Internal::RelativePaths(root).relativeFilePath(path),
                             QDir(root).relativeFilePath(path));
            }
        }
        QCOMPARE(set.firstEqual(4), 1);
    }

private:
    std::optional<QTemporaryDir> m_dir;
    QString m_root;
};

QTEST_GUILESS_MAIN(TstProject)
#include "tst_project.moc"
