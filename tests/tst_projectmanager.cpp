#include "pathkey.h"
#include "projectmanager.h"

#include <QtTest>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using ZyHelp::ProjectManager;
namespace Internal = ZyHelp::Internal;

namespace {

const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// The global path list lies beside the running executable: for this test,
// in its own build folder.
QString pathFile()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("Path"));
}

void removePathFile()
{
    const QFileInfo info(pathFile());
    if (info.isDir() && !info.isSymLink())
        QDir(info.filePath()).removeRecursively();
    else
        QFile::remove(info.filePath());
}

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<cannot read ") + path.toUtf8() + '>';
    return file.readAll();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Folders end in "/", everything else is a file.
void makeTree(const QString &root, const QStringList &entries)
{
    for (const QString &entry : entries) {
        if (entry.endsWith(u'/'))
            QDir(root).mkpath(entry);
        else
            writeFile(QDir(root).filePath(entry), "<zyhelp/>\n");
    }
}

// The lines that a registration appends for these folders.
QByteArray pathLines(const QStringList &folders)
{
    QByteArray lines;
    for (const QString &folder : folders)
        lines += QDir::toNativeSeparators(folder).toUtf8() + '\n';
    return lines;
}

QString registered(const QString &folder)
{
    return QStringLiteral("Registriere Unterordner: \"%1\"").arg(folder);
}

// Subfolders in the order in which the file system gives them.
QStringList subfoldersOnDisk(const QString &root)
{
    QStringList folders;
    QDirIterator it(root, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        folders.append(it.next());
    return folders;
}

QStringList filesInProjectFile(const QString &path)
{
    QFile file(path);
    QStringList files;
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("<cannot read>")};
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"file")
            files.append(xml.readElementText());
    }
    return files;
}

bool runningAsRoot()
{
#ifdef Q_OS_UNIX
    return ::geteuid() == 0;
#else
    return false;
#endif
}

// Records every message and hands it on, so that QTest::ignoreMessage
// still takes the expected ones out of the test log.
class MessageRecorder
{
public:
    MessageRecorder()
    {
        s_messages.clear();
        s_previous = qInstallMessageHandler(record);
    }
    ~MessageRecorder() { qInstallMessageHandler(s_previous); }

    // "debug: text", "warning: text", ...
    QStringList messages() const { return s_messages; }

    // What a registration of these folders logs, as recorded.
    static QStringList registrations(const QStringList &folders)
    {
        QStringList lines;
        for (const QString &folder : folders)
            lines.append(QStringLiteral("debug: ") + registered(folder));
        return lines;
    }

private:
    static void record(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        static const char *const names[] = {"debug", "warning", "critical", "fatal", "info"};
        s_messages.append(QLatin1String(names[type]) + QStringLiteral(": ") + text);
        if (s_previous)
            s_previous(type, context, text);
    }

    static inline QStringList s_messages;
    static inline QtMessageHandler s_previous = nullptr;
};

void expectRegistered(const QStringList &folders)
{
    for (const QString &folder : folders)
        QTest::ignoreMessage(QtDebugMsg, registered(folder).toUtf8().constData());
}

class CurrentDirGuard
{
public:
    CurrentDirGuard() : m_saved(QDir::currentPath()) {}
    ~CurrentDirGuard() { QDir::setCurrent(m_saved); }

private:
    QString m_saved;
};

QString fromUnits(std::initializer_list<char16_t> units)
{
    return QString(reinterpret_cast<const QChar *>(units.begin()), qsizetype(units.size()));
}

// Sorts the strings with the case-insensitive comparison and checks that
// strings compare equal exactly when their keys are equal.
void checkKeysAgainstCompare(QStringList strings)
{
    const auto less = [](const QString &a, const QString &b) {
        return QString::compare(a, b, Qt::CaseInsensitive) < 0;
    };
    std::sort(strings.begin(), strings.end(), less);
    QHash<QString, qsizetype> groupOfKey;
    qsizetype group = 0;
    for (qsizetype i = 0; i < strings.size(); ++i) {
        if (i > 0 && QString::compare(strings.at(i - 1), strings.at(i), Qt::CaseInsensitive) != 0)
            ++group;
        const QString key = Internal::caseKey(strings.at(i));
        // The candidate lookup takes a unit equal to a folded one as folded.
        if (Internal::caseKey(key) != key)
            QFAIL("Folding twice gives another key");
        const auto found = groupOfKey.constFind(key);
        if (found == groupOfKey.cend())
            groupOfKey.insert(key, group);
        else if (found.value() != group)
            QFAIL(qPrintable(QStringLiteral("U+%1 has the key of a string that compares unequal")
                                 .arg(strings.at(i).toUcs4().value(0), 4, 16, QLatin1Char('0'))));
    }
    // One key per group: equal strings never got different keys.
    QCOMPARE(groupOfKey.size(), group + 1);
}

} // namespace

class TstProjectManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsWithoutProject();

    void savesExactBytes_data();
    void savesExactBytes();
    void saveReplacesWholeFile();
    void saveFailsWithoutWritableFile();

    void opensNameAndRoot_data();
    void opensNameAndRoot();
    void openFailureChangesNothing_data();
    void openFailureChangesNothing();
    void openKeepsRelativeProjectFilePath();
    void openTwiceAndCopy();

    void createsProject();
    void createWithNameInSubfolder_data();
    void createWithNameInSubfolder();

    void registersRootAndSubfolders();
    void registerSkipsKnownEntries_data();
    void registerSkipsKnownEntries();
    void registerCleansRoot_data();
    void registerCleansRoot();
    void registerFoldersThatDifferInCapitals();
    void registerMissingRoot();
    void registerLinks();
    void registerCannotWrite_data();
    void registerCannotWrite();

    void refreshesSortedList_data();
    void refreshesSortedList();
    void refreshLinks();
    void refreshWithRootSpelledOtherwise_data();
    void refreshWithRootSpelledOtherwise();

    void addsFile_data();
    void addsFile();
    void removesFile_data();
    void removesFile();
    void removeSavesBeforeDeleting();
    void removeWithUnwritableProjectFile();

    void caseKeyForEveryCodePoint();
    void caseKeyForShortStrings();
    void caseKeyForPaths_data();
    void caseKeyForPaths();
    void cleanPathFastPath();
    void relativePathFastPath();
    void candidateLookup();

private:
    QString dir(const QString &name) const { return QDir(m_temp.path()).filePath(name); }

    QTemporaryDir m_temp;
};

void TstProjectManager::initTestCase()
{
    QVERIFY(m_temp.isValid());
    // Every test below may write "Path" beside this executable: make sure it
    // is the test's own build folder and not an installed program's.
    QCOMPARE(QDir(QCoreApplication::applicationDirPath()).dirName(),
             QStringLiteral("tst_projectmanager"));
}

void TstProjectManager::init()
{
    removePathFile();
    QDir(m_temp.path()).removeRecursively();
    QDir().mkpath(m_temp.path());
}

void TstProjectManager::cleanup()
{
    removePathFile();
}

void TstProjectManager::startsWithoutProject()
{
    MessageRecorder recorder;
    ProjectManager manager;
    QVERIFY(manager.projectName().isEmpty());
    QVERIFY(manager.rootPath().isEmpty());
    QVERIFY(manager.files().isEmpty());
    QVERIFY(!manager.saveProject());
    // Without a root there is nothing to register.
    manager.registerPathInGlobalConfig();
    QVERIFY(!QFile::exists(pathFile()));
    QCOMPARE(recorder.messages(), QStringList());
}

void TstProjectManager::savesExactBytes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("documents");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("two documents")
        << "Handbuch" << QStringList{"kapitel/a.zyhelp", "einleitung.zyhelp"}
        << declaration + "<zyproject name=\"Handbuch\">\n"
                         "    <file>einleitung.zyhelp</file>\n"
                         "    <file>kapitel/a.zyhelp</file>\n"
                         "</zyproject>\n";
    QTest::newRow("no documents")
        << "Leer" << QStringList{"notiz.txt", "bilder/"}
        << declaration + "<zyproject name=\"Leer\"/>\n";
    QTest::newRow("reserved characters")
        << "A & B <\"C\">" << QStringList{"a&b.zyhelp", "<x>.zyhelp"}
        << declaration + "<zyproject name=\"A &amp; B &lt;&quot;C&quot;&gt;\">\n"
                         "    <file>&lt;x&gt;.zyhelp</file>\n"
                         "    <file>a&amp;b.zyhelp</file>\n"
                         "</zyproject>\n";
    QTest::newRow("umlauts")
        << QStringLiteral("Übersicht") << QStringList{QStringLiteral("kapitel/Größe.zyhelp")}
        << declaration + QStringLiteral("<zyproject name=\"Übersicht\">\n"
                                        "    <file>kapitel/Größe.zyhelp</file>\n"
                                        "</zyproject>\n").toUtf8();
}

void TstProjectManager::savesExactBytes()
{
    QFETCH(QString, name);
    QFETCH(QStringList, documents);
    QFETCH(QByteArray, expected);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, documents + QStringList{QStringLiteral("./")});
    const QString projectFile = QDir(root).filePath(name + QStringLiteral(".zyproject"));

    ProjectManager manager;
    expectRegistered(QStringList{root} + subfoldersOnDisk(root));
    QVERIFY(manager.createProject(root, name));
    QCOMPARE(fileContents(projectFile), expected);
    QVERIFY(manager.saveProject());
    QCOMPARE(fileContents(projectFile), expected);

    // Escaped characters read back unchanged.
    ProjectManager reader;
    QVERIFY(reader.openProject(projectFile));
    QCOMPARE(reader.projectName(), name);
}

void TstProjectManager::saveReplacesWholeFile()
{
    const QString root = dir(QStringLiteral("projekt"));
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    makeTree(root, {"a.zyhelp", "b.zyhelp", "c.zyhelp"});
    // Creating under the name of an existing, longer project file replaces it.
    writeFile(projectFile, QByteArray(4096, 'x'));

    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(filesInProjectFile(projectFile), QStringList({"a.zyhelp", "b.zyhelp", "c.zyhelp"}));

    QFile::remove(QDir(root).filePath(QStringLiteral("a.zyhelp")));
    QFile::remove(QDir(root).filePath(QStringLiteral("c.zyhelp")));
    manager.refreshFileList();
    QVERIFY(manager.saveProject());
    QCOMPARE(fileContents(projectFile), declaration + "<zyproject name=\"P\">\n"
                                                      "    <file>b.zyhelp</file>\n"
                                                      "</zyproject>\n");
}

void TstProjectManager::saveFailsWithoutWritableFile()
{
    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp"});
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));

    // A folder where the project file should be cannot be opened, even by root.
    QVERIFY(QFile::remove(projectFile));
    QVERIFY(QDir().mkdir(projectFile));
    MessageRecorder recorder;
    QVERIFY(!manager.saveProject());
    QVERIFY(QFileInfo(projectFile).isDir());
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
    QCOMPARE(recorder.messages(), QStringList());
}

void TstProjectManager::opensNameAndRoot_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expectedName");

    const QString before = QStringLiteral("Vorher");
    QTest::newRow("project file")
        << declaration + "<zyproject name=\"Neu\">\n    <file>fehlt.zyhelp</file>\n</zyproject>\n"
        << "Neu";
    QTest::newRow("escaped name")
        << QByteArray("<zyproject name=\"A &amp; B &lt;&quot;C&quot;\"/>") << "A & B <\"C\"";
    QTest::newRow("no name attribute") << QByteArray("<zyproject/>") << "";
    QTest::newRow("nested element")
        << QByteArray("<mappe><inhalt><zyproject name=\"Tief\"/></inhalt></mappe>") << "Tief";
    QTest::newRow("first of two")
        << QByteArray("<a><zyproject name=\"Eins\"/><zyproject name=\"Zwei\"/></a>") << "Eins";
    QTest::newRow("error after the element")
        << QByteArray("<zyproject name=\"Gut\"><file>a.zyhelp</datei>") << "Gut";
    QTest::newRow("other capitals") << QByteArray("<ZyProject name=\"X\"/>") << before;
    QTest::newRow("other element") << QByteArray("<project name=\"X\"/>") << before;
    QTest::newRow("error before the element")
        << QByteArray("<a><b></a><zyproject name=\"X\"/>") << before;
    QTest::newRow("not XML") << QByteArray("Projekt: X\nname=X\n") << before;
    QTest::newRow("empty") << QByteArray() << before;
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe\x01zyproject\x00", 14) << before;
}

void TstProjectManager::opensNameAndRoot()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expectedName);

    const QString first = dir(QStringLiteral("erstes"));
    const QString second = dir(QStringLiteral("zweites"));
    makeTree(first, {"alt.zyhelp"});
    makeTree(second, {"doc.zyhelp", "unter/b.zyhelp"});
    const QString projectFile = QDir(second).filePath(QStringLiteral("projekt.zyproject"));
    writeFile(projectFile, content);

    ProjectManager manager;
    expectRegistered({first});
    QVERIFY(manager.createProject(first, QStringLiteral("Vorher")));
    // Both roots registered already, so that the open itself logs nothing.
    const QByteArray list = pathLines({first, second, second + QStringLiteral("/unter")});
    writeFile(pathFile(), list);

    MessageRecorder recorder;
    QVERIFY(manager.openProject(projectFile));
    QCOMPARE(manager.projectName(), expectedName);
    QCOMPARE(manager.rootPath(), second);
    // The list comes from the folder, not from the file; the file is not written.
    QCOMPARE(manager.files(), QStringList({"doc.zyhelp", "unter/b.zyhelp"}));
    QCOMPARE(fileContents(projectFile), content);
    QCOMPARE(fileContents(pathFile()), list);
    QCOMPARE(recorder.messages(), QStringList());
}

void TstProjectManager::openFailureChangesNothing_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("empty path") << "empty";
    QTest::newRow("missing file") << "missing";
    QTest::newRow("folder instead of file") << "folder";
    QTest::newRow("parent is a file") << "parent";
    QTest::newRow("no read permission") << "permission";
}

void TstProjectManager::openFailureChangesNothing()
{
    QFETCH(QString, kind);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp"});
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    removePathFile();

    const QString other = dir(QStringLiteral("anderes"));
    makeTree(other, {"b.zyhelp"});
    QString path = QDir(other).filePath(QStringLiteral("Q.zyproject"));
    if (kind == u"empty") {
        path.clear();
    } else if (kind == u"folder") {
        QDir().mkpath(path);
    } else if (kind == u"parent") {
        path = QDir(other).filePath(QStringLiteral("b.zyhelp/Q.zyproject"));
    } else if (kind == u"permission") {
        if (runningAsRoot())
            QSKIP("Permission bits do not keep root from reading a file");
        writeFile(path, "<zyproject name=\"Q\"/>");
        QFile::setPermissions(path, QFileDevice::WriteOwner);
    }

    MessageRecorder recorder;
    QVERIFY(!manager.openProject(path));
    QCOMPARE(manager.projectName(), QStringLiteral("P"));
    QCOMPARE(manager.rootPath(), root);
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
    QVERIFY(!QFile::exists(pathFile()));
    QCOMPARE(recorder.messages(), QStringList());

    // The project file path is still the old one.
    QVERIFY(QFile::remove(projectFile));
    QVERIFY(manager.saveProject());
    QCOMPARE(filesInProjectFile(projectFile), QStringList{QStringLiteral("a.zyhelp")});
}

void TstProjectManager::openKeepsRelativeProjectFilePath()
{
    const QString first = dir(QStringLiteral("eins"));
    const QString second = dir(QStringLiteral("zwei"));
    const QByteArray content = "<zyproject name=\"R\"/>";
    writeFile(QDir(first).filePath(QStringLiteral("proj/r.zyproject")), content);
    makeTree(first, {"proj/a.zyhelp"});
    QDir().mkpath(QDir(second).filePath(QStringLiteral("proj")));

    CurrentDirGuard guard;
    QVERIFY(QDir::setCurrent(first));
    const QString absoluteRoot = QDir::currentPath() + QStringLiteral("/proj");
    ProjectManager manager;
    expectRegistered({absoluteRoot});
    QVERIFY(manager.openProject(QStringLiteral("proj/r.zyproject")));
    QCOMPARE(manager.rootPath(), absoluteRoot);
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
    QCOMPARE(fileContents(pathFile()), pathLines({absoluteRoot}));

    // Saving from elsewhere writes below the new working folder: the path
    // was kept relative.
    QVERIFY(QDir::setCurrent(second));
    QVERIFY(manager.saveProject());
    QCOMPARE(filesInProjectFile(QDir(second).filePath(QStringLiteral("proj/r.zyproject"))),
             QStringList{QStringLiteral("a.zyhelp")});
    QCOMPARE(fileContents(QDir(first).filePath(QStringLiteral("proj/r.zyproject"))), content);
}

void TstProjectManager::openTwiceAndCopy()
{
    const QString root = dir(QStringLiteral("hilfe"));
    makeTree(root, {"kapitel/a.zyhelp", "bilder/"});
    const QString projectFile = QDir(root).filePath(QStringLiteral("H.zyproject"));
    writeFile(projectFile, "<zyproject name=\"H\"><file>weg.zyhelp</file></zyproject>");

    ProjectManager manager;
    const QStringList folders = QStringList{root} + subfoldersOnDisk(root);
    expectRegistered(folders);
    QVERIFY(manager.openProject(projectFile));
    const QByteArray list = fileContents(pathFile());
    QCOMPARE(list, pathLines(folders));

    MessageRecorder recorder;
    QVERIFY(manager.openProject(projectFile));
    QCOMPARE(fileContents(pathFile()), list);
    QCOMPARE(recorder.messages(), QStringList());

    // A copy opens as a project of the folder that holds it.
    const QString copy = dir(QStringLiteral("kopie"));
    makeTree(copy, {"z.zyhelp"});
    const QString copiedFile = QDir(copy).filePath(QStringLiteral("H.zyproject"));
    QVERIFY(QFile::copy(projectFile, copiedFile));
    expectRegistered({copy});
    QVERIFY(manager.openProject(copiedFile));
    QCOMPARE(manager.projectName(), QStringLiteral("H"));
    QCOMPARE(manager.rootPath(), copy);
    QCOMPARE(manager.files(), QStringList{QStringLiteral("z.zyhelp")});
    QCOMPARE(fileContents(pathFile()), list + pathLines({copy}));
    QCOMPARE(recorder.messages(), MessageRecorder::registrations({copy}));
}

void TstProjectManager::createsProject()
{
    const QString root = dir(QStringLiteral("neu"));
    makeTree(root, {"b/z.zyhelp", "a/c/d.zyhelp", "M.zyhelp", "leer/"});

    MessageRecorder recorder;
    const QStringList folders = QStringList{root} + subfoldersOnDisk(root);
    expectRegistered(folders);
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("Neu")));
    QCOMPARE(manager.projectName(), QStringLiteral("Neu"));
    QCOMPARE(manager.rootPath(), root);
    const QStringList sorted{"M.zyhelp", "a/c/d.zyhelp", "b/z.zyhelp"};
    QCOMPARE(manager.files(), sorted);
    QCOMPARE(filesInProjectFile(QDir(root).filePath(QStringLiteral("Neu.zyproject"))), sorted);
    QCOMPARE(fileContents(pathFile()), pathLines(folders));
    QCOMPARE(recorder.messages(), MessageRecorder::registrations(folders));
}

void TstProjectManager::createWithNameInSubfolder_data()
{
    QTest::addColumn<bool>("subfolderExists");
    QTest::newRow("subfolder exists") << true;
    QTest::newRow("subfolder missing") << false;
}

void TstProjectManager::createWithNameInSubfolder()
{
    QFETCH(bool, subfolderExists);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp", subfolderExists ? "unter/" : "anders/"});
    const QStringList folders = QStringList{root} + subfoldersOnDisk(root);
    expectRegistered(folders);

    ProjectManager manager;
    QCOMPARE(manager.createProject(root, QStringLiteral("unter/P")), subfolderExists);
    // The state is the new project's either way.
    QCOMPARE(manager.projectName(), QStringLiteral("unter/P"));
    QCOMPARE(manager.rootPath(), root);
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
    QCOMPARE(fileContents(pathFile()), pathLines(folders));
    QCOMPARE(QFile::exists(QDir(root).filePath(QStringLiteral("unter/P.zyproject"))),
             subfolderExists);
}

void TstProjectManager::registersRootAndSubfolders()
{
    const QString root = dir(QStringLiteral("hilfe"));
    makeTree(root, {"kapitel/unter/", "bilder/", ".versteckt/innen/", "datei.txt"});
    const QStringList subfolders = subfoldersOnDisk(root);
    QStringList sortedSubfolders = subfolders;
    sortedSubfolders.sort();
    QCOMPARE(sortedSubfolders, QStringList({root + "/bilder", root + "/kapitel",
                                            root + "/kapitel/unter"}));

    MessageRecorder recorder;
    expectRegistered(QStringList{root} + subfolders);
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("H")));
    const QByteArray first = pathLines(QStringList{root} + subfolders);
    QCOMPARE(fileContents(pathFile()), first);

    manager.registerPathInGlobalConfig();
    QCOMPARE(fileContents(pathFile()), first);

    // A folder made later is appended after the earlier lines.
    QVERIFY(QDir(root).mkdir(QStringLiteral("anhang")));
    expectRegistered({root + "/anhang"});
    manager.registerPathInGlobalConfig();
    QCOMPARE(fileContents(pathFile()), first + pathLines({root + "/anhang"}));

    QCOMPARE(recorder.messages(), MessageRecorder::registrations(QStringList{root} + subfolders
                                                                 + QStringList{root + "/anhang"}));
}

void TstProjectManager::registerSkipsKnownEntries_data()
{
    QTest::addColumn<QString>("rootName");
    QTest::addColumn<QByteArray>("content"); // %ROOT% stands for the root, %PARENT% for its folder
    QTest::addColumn<bool>("rootWritten");

    const QString hilfe = QStringLiteral("Hilfe");
    QTest::newRow("no file") << hilfe << QByteArray("<none>") << true;
    QTest::newRow("empty file") << hilfe << QByteArray() << true;
    QTest::newRow("same line") << hilfe << QByteArray("%ROOT%\n") << false;
    QTest::newRow("among others") << hilfe << QByteArray("/a\n%ROOT%\n/b\n") << false;
    QTest::newRow("last line without line end") << hilfe << QByteArray("/a\n%ROOT%") << false;
    QTest::newRow("other capitals") << hilfe << QByteArray("%PARENT%/hILFE\n") << false;
    QTest::newRow("trailing separator") << hilfe << QByteArray("%ROOT%/\n") << false;
    QTest::newRow("surrounding blanks") << hilfe << QByteArray(" \t %ROOT% \t\n") << false;
    QTest::newRow("dot segments") << hilfe << QByteArray("%PARENT%/./Hilfe/.\n") << false;
    QTest::newRow("dot-dot segment") << hilfe << QByteArray("%ROOT%/weg/..\n") << false;
    QTest::newRow("doubled separators") << hilfe << QByteArray("%PARENT%//Hilfe\n") << false;
    QTest::newRow("CR LF line ends") << hilfe << QByteArray("/a\r\n%ROOT%\r\n") << false;
    QTest::newRow("CR LF, other lines") << hilfe << QByteArray("/a\r\n/b\r\n") << true;
    QTest::newRow("blank lines kept") << hilfe << QByteArray("\n   \n\t\n") << true;
    QTest::newRow("other line without line end") << hilfe << QByteArray("/a") << true;
    QTest::newRow("longer name") << hilfe << QByteArray("%ROOT%x\n") << true;
    QTest::newRow("parent only") << hilfe << QByteArray("%PARENT%\n") << true;
    QTest::newRow("umlaut capitals")
        << QStringLiteral("Über") << QStringLiteral("%PARENT%/üBER\n").toUtf8() << false;
    QTest::newRow("sharp s is not ss")
        << QStringLiteral("straße") << QByteArray("%PARENT%/STRASSE\n") << true;
    QTest::newRow("capital sharp s")
        << QStringLiteral("straße") << QStringLiteral("%PARENT%/STRAẞE\n").toUtf8() << false;
    QTest::newRow("Kelvin sign")
        << QStringLiteral("kelvin") << QStringLiteral("%PARENT%/\u212Aelvin\n").toUtf8() << false;
    QTest::newRow("dotted capital I is not i")
        << QStringLiteral("index") << QStringLiteral("%PARENT%/\u0130ndex\n").toUtf8() << true;
    QTest::newRow("final sigma")
        << QStringLiteral("λόγος") << QStringLiteral("%PARENT%/ΛΌΓΟΣ\n").toUtf8() << false;
    QTest::newRow("Deseret beyond the BMP")
        << QStringLiteral("\U00010400x") << QStringLiteral("%PARENT%/\U00010428X\n").toUtf8()
        << false;
}

void TstProjectManager::registerSkipsKnownEntries()
{
    QFETCH(QString, rootName);
    QFETCH(QByteArray, content);
    QFETCH(bool, rootWritten);

    const QString root = dir(rootName);
    QVERIFY(QDir().mkpath(root));
    content.replace("%ROOT%", root.toUtf8()).replace("%PARENT%", m_temp.path().toUtf8());
    if (content != "<none>")
        writeFile(pathFile(), content);
    else
        content.clear();

    MessageRecorder recorder;
    if (rootWritten)
        expectRegistered({root});
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    const QByteArray expected = content + (rootWritten ? pathLines({root}) : QByteArray());
    QCOMPARE(fileContents(pathFile()), expected);
    QCOMPARE(recorder.messages(),
             rootWritten ? MessageRecorder::registrations({root}) : QStringList());

    // What was written counts as known from then on; but without a line end
    // before it, the root went onto the end of the last line and is still new.
    const bool glued = rootWritten && !content.isEmpty() && !content.endsWith('\n');
    if (glued)
        expectRegistered({root});
    manager.registerPathInGlobalConfig();
    QCOMPARE(fileContents(pathFile()), expected + (glued ? pathLines({root}) : QByteArray()));
}

void TstProjectManager::registerCleansRoot_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::newRow("trailing separator") << "/";
    QTest::newRow("dot segment") << "/.";
    QTest::newRow("dot-dot segment") << "/kapitel/..";
    QTest::newRow("doubled separator") << "//";
}

void TstProjectManager::registerCleansRoot()
{
    QFETCH(QString, suffix);

    const QString root = dir(QStringLiteral("hilfe"));
    makeTree(root, {"kapitel/"});
    MessageRecorder recorder;
    expectRegistered({root, root + "/kapitel"});
    ProjectManager manager;
    QVERIFY(manager.createProject(root + suffix, QStringLiteral("P")));
    QCOMPARE(manager.rootPath(), root + suffix);
    QCOMPARE(fileContents(pathFile()), pathLines({root, root + "/kapitel"}));
    QCOMPARE(recorder.messages(), MessageRecorder::registrations({root, root + "/kapitel"}));
}

void TstProjectManager::registerFoldersThatDifferInCapitals()
{
    const QString root = dir(QStringLiteral("hilfe"));
    makeTree(root, {"Kapitel/", "kapitel/"});
    const QStringList subfolders = subfoldersOnDisk(root);
    if (subfolders.size() != 2)
        QSKIP("This file system does not tell capitals apart");

    expectRegistered({root, subfolders.first()});
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(fileContents(pathFile()), pathLines({root, subfolders.first()}));
}

void TstProjectManager::registerMissingRoot()
{
    const QString root = dir(QStringLiteral("fehlt"));
    expectRegistered({root});
    ProjectManager manager;
    QVERIFY(!manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(fileContents(pathFile()), pathLines({root}));
    QVERIFY(manager.files().isEmpty());
}

void TstProjectManager::registerLinks()
{
    const QString root = dir(QStringLiteral("hilfe"));
    const QString outside = dir(QStringLiteral("draussen"));
    makeTree(root, {"kapitel/"});
    makeTree(outside, {"innen/", "datei.txt"});
    if (!QFile::link(outside, QDir(root).filePath(QStringLiteral("verweis"))))
        QSKIP("Symbolic links cannot be made here");
    QVERIFY(QFile::link(root, QDir(root).filePath(QStringLiteral("kapitel/schleife"))));
    QVERIFY(QFile::link(QDir(outside).filePath(QStringLiteral("datei.txt")),
                        QDir(root).filePath(QStringLiteral("dateiverweis"))));
    // Two links that point at each other lead to no folder at all.
    const QString a = QDir(root).filePath(QStringLiteral("a"));
    const QString b = QDir(root).filePath(QStringLiteral("b"));
    QVERIFY(QFile::link(b, a));
    QVERIFY(QFile::link(a, b));

    const QStringList subfolders = subfoldersOnDisk(root);
    QStringList sortedSubfolders = subfolders;
    sortedSubfolders.sort();
    QCOMPARE(sortedSubfolders, QStringList({root + "/kapitel", root + "/kapitel/schleife",
                                            root + "/verweis"}));
    expectRegistered(QStringList{root} + subfolders);
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(fileContents(pathFile()), pathLines(QStringList{root} + subfolders));
}

void TstProjectManager::registerCannotWrite_data()
{
    QTest::addColumn<bool>("asFolder");
    QTest::newRow("folder named Path") << true;
    QTest::newRow("read-only file") << false;
}

void TstProjectManager::registerCannotWrite()
{
    QFETCH(bool, asFolder);

    const QByteArray content = "/a\n";
    if (asFolder) {
        QVERIFY(QDir().mkpath(pathFile()));
    } else {
        if (runningAsRoot())
            QSKIP("Permission bits do not keep root from writing a file");
        writeFile(pathFile(), content);
        QFile::setPermissions(pathFile(), QFileDevice::ReadOwner);
    }
    const QString root = dir(QStringLiteral("hilfe"));
    makeTree(root, {"kapitel/", "a.zyhelp"});

    MessageRecorder recorder;
    ProjectManager manager;
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
    if (asFolder)
        QVERIFY(QDir(pathFile()).isEmpty());
    else
        QCOMPARE(fileContents(pathFile()), content);
    QCOMPARE(recorder.messages(), QStringList());
}

void TstProjectManager::refreshesSortedList_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("no documents") << QStringList{"notiz.txt", "leer/"} << QStringList();
    QTest::newRow("deep folder") << QStringList{"a/b/c/d.zyhelp"} << QStringList{"a/b/c/d.zyhelp"};
    QTest::newRow("capitals first")
        << QStringList{"zusatz.zyhelp", "anleitung.zyhelp", "Zusatz.zyhelp", "Anleitung.zyhelp"}
        << QStringList{"Anleitung.zyhelp", "Zusatz.zyhelp", "anleitung.zyhelp", "zusatz.zyhelp"};
    QTest::newRow("slash before digits and letters")
        << QStringList{"kapitel2.zyhelp", "kapitelb.zyhelp", "kapitel/a.zyhelp",
                       "kapitel-c.zyhelp"}
        << QStringList{"kapitel-c.zyhelp", "kapitel/a.zyhelp", "kapitel2.zyhelp",
                       "kapitelb.zyhelp"};
    QTest::newRow("by code units")
        << QStringList{QStringLiteral("ä.zyhelp"), QStringLiteral("Ü.zyhelp"), "z.zyhelp"}
        << QStringList{"z.zyhelp", QStringLiteral("Ü.zyhelp"), QStringLiteral("ä.zyhelp")};
    QTest::newRow("name pattern")
        << QStringList{"ALT.ZYHELP", "Mix.ZyHelp", "notiz.zyhelp.bak", "notiz.txt", "zyhelp",
                       "ordner.zyhelp/innen.zyhelp"}
        << QStringList{"ALT.ZYHELP", "Mix.ZyHelp", "ordner.zyhelp/innen.zyhelp"};
    QTest::newRow("hidden files and folders")
        << QStringList{".versteckt.zyhelp", ".ordner/a.zyhelp", "sichtbar.zyhelp"}
        << QStringList{"sichtbar.zyhelp"};
}

void TstProjectManager::refreshesSortedList()
{
    QFETCH(QStringList, entries);
    QFETCH(QStringList, expected);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"alt.zyhelp"});
    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    // Documents outside the root leave with the next refresh.
    manager.addFileToProject(dir(QStringLiteral("draussen.zyhelp")));
    QCOMPARE(manager.files(), QStringList({"alt.zyhelp", "../draussen.zyhelp"}));
    QFile::remove(QDir(root).filePath(QStringLiteral("alt.zyhelp")));
    makeTree(root, entries);
    const QByteArray projectFile = fileContents(QDir(root).filePath(QStringLiteral("P.zyproject")));
    const QByteArray list = fileContents(pathFile());

    MessageRecorder recorder;
    manager.refreshFileList();
    QCOMPARE(manager.files(), expected);
    // A refresh neither saves nor registers.
    QCOMPARE(fileContents(QDir(root).filePath(QStringLiteral("P.zyproject"))), projectFile);
    QCOMPARE(fileContents(pathFile()), list);
    QCOMPARE(recorder.messages(), QStringList());
}

void TstProjectManager::refreshLinks()
{
    const QString root = dir(QStringLiteral("projekt"));
    const QString outside = dir(QStringLiteral("draussen"));
    makeTree(root, {"a.zyhelp"});
    makeTree(outside, {"fremd.zyhelp", "ordner/innen.zyhelp"});
    if (!QFile::link(QDir(outside).filePath(QStringLiteral("fremd.zyhelp")),
                     QDir(root).filePath(QStringLiteral("verweis.zyhelp"))))
        QSKIP("Symbolic links cannot be made here");
    QVERIFY(QFile::link(QDir(outside).filePath(QStringLiteral("ordner")),
                        QDir(root).filePath(QStringLiteral("ordner"))));

    ProjectManager manager;
    expectRegistered({root, root + "/ordner"});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QCOMPARE(manager.files(), QStringList({"a.zyhelp", "verweis.zyhelp"}));
}

void TstProjectManager::refreshWithRootSpelledOtherwise_data()
{
    QTest::addColumn<QString>("rootSuffix");
    QTest::addColumn<bool>("relative");
    QTest::addColumn<QStringList>("expected");

    const QStringList plain{"a.zyhelp", "k/b.zyhelp"};
    QTest::newRow("as is") << "" << false << plain;
    QTest::newRow("trailing separator") << "/" << false << plain;
    QTest::newRow("dot segment") << "/." << false << plain;
    QTest::newRow("dot-dot segment") << "/k/.." << false << plain;
    QTest::newRow("doubled separator") << "//" << false << plain;
    // QDir::relativeFilePath leaves a relative path as it is.
    QTest::newRow("relative root")
        << "" << true << QStringList{"projekt/a.zyhelp", "projekt/k/b.zyhelp"};
    QTest::newRow("relative root with dot") << "/." << true
                                           << QStringList{"projekt/a.zyhelp", "projekt/k/b.zyhelp"};
}

void TstProjectManager::refreshWithRootSpelledOtherwise()
{
    QFETCH(QString, rootSuffix);
    QFETCH(bool, relative);
    QFETCH(QStringList, expected);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp", "k/b.zyhelp"});
    CurrentDirGuard guard;
    QVERIFY(QDir::setCurrent(m_temp.path()));
    const QString given = (relative ? QStringLiteral("projekt") : root) + rootSuffix;

    ProjectManager manager;
    const QString registeredRoot = QDir::cleanPath(given);
    expectRegistered({registeredRoot, registeredRoot + "/k"});
    QVERIFY(manager.createProject(given, QStringLiteral("P")));
    QCOMPARE(manager.rootPath(), given);
    QCOMPARE(manager.files(), expected);
}

void TstProjectManager::addsFile_data()
{
    QTest::addColumn<QString>("path"); // %ROOT% stands for the root
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("saved");

    QTest::newRow("absolute, sorted last")
        << "%ROOT%/a.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "a.zyhelp"} << true;
    QTest::newRow("absolute, already listed")
        << "%ROOT%/k/c.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp"} << false;
    QTest::newRow("absolute, cleaned")
        << "%ROOT%/./k/../a.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "a.zyhelp"} << true;
    QTest::newRow("absolute, other capitals")
        << "%ROOT%/B.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "B.zyhelp"} << true;
    QTest::newRow("outside the root")
        << "%ROOT%/../x.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "../x.zyhelp"} << true;
    QTest::newRow("relative, kept as it is")
        << "neu/./d.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "neu/./d.zyhelp"} << true;
    QTest::newRow("relative, already listed")
        << "b.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp"} << false;
    QTest::newRow("relative, same document again")
        << "./b.zyhelp" << QStringList{"b.zyhelp", "k/c.zyhelp", "./b.zyhelp"} << true;
}

void TstProjectManager::addsFile()
{
    QFETCH(QString, path);
    QFETCH(QStringList, expected);
    QFETCH(bool, saved);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"b.zyhelp", "k/c.zyhelp"});
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    ProjectManager manager;
    expectRegistered({root, root + "/k"});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    // Gone files show whether the add saved and registered.
    QVERIFY(QFile::remove(projectFile));
    removePathFile();

    MessageRecorder recorder;
    expectRegistered({root, root + "/k"});
    manager.addFileToProject(path.replace(QStringLiteral("%ROOT%"), root));
    QCOMPARE(manager.files(), expected);
    QCOMPARE(QFile::exists(projectFile), saved);
    if (saved)
        QCOMPARE(filesInProjectFile(projectFile), expected);
    // Registered in every case.
    QCOMPARE(fileContents(pathFile()), pathLines({root, root + "/k"}));
    QCOMPARE(recorder.messages(), MessageRecorder::registrations({root, root + "/k"}));
}

void TstProjectManager::removesFile_data()
{
    QTest::addColumn<QString>("path"); // %ROOT% stands for the root
    QTest::addColumn<bool>("deleteFromDisk");
    QTest::addColumn<QStringList>("expected");

    const QStringList all{"a.zyhelp", "k/c.zyhelp", "./a.zyhelp"};
    QTest::newRow("listed, deleted")
        << "%ROOT%/k/c.zyhelp" << true << QStringList{"a.zyhelp", "./a.zyhelp"};
    QTest::newRow("listed, kept on disk")
        << "%ROOT%/k/c.zyhelp" << false << QStringList{"a.zyhelp", "./a.zyhelp"};
    QTest::newRow("listed twice: the first goes")
        << "%ROOT%/a.zyhelp" << true << QStringList{"k/c.zyhelp", "./a.zyhelp"};
    QTest::newRow("spelled otherwise")
        << "%ROOT%/k/../a.zyhelp" << false << QStringList{"k/c.zyhelp", "./a.zyhelp"};
    QTest::newRow("other capitals") << "%ROOT%/A.zyhelp" << true << all;
    QTest::newRow("not listed, deleted") << "%ROOT%/z.zyhelp" << true << all;
    QTest::newRow("missing file") << "%ROOT%/fehlt.zyhelp" << true << all;
}

void TstProjectManager::removesFile()
{
    QFETCH(QString, path);
    QFETCH(bool, deleteFromDisk);
    QFETCH(QStringList, expected);

    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp", "k/c.zyhelp", "A.zyhelp", "z.zyhelp"});
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    ProjectManager manager;
    expectRegistered({root, root + "/k"});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    QFile::remove(QDir(root).filePath(QStringLiteral("A.zyhelp")));
    QFile::remove(QDir(root).filePath(QStringLiteral("z.zyhelp")));
    manager.refreshFileList();
    manager.addFileToProject(QStringLiteral("./a.zyhelp"));
    makeTree(root, {"A.zyhelp", "z.zyhelp"});
    QVERIFY(QFile::remove(projectFile));
    removePathFile();

    path.replace(QStringLiteral("%ROOT%"), root);
    const bool existed = QFile::exists(path);
    MessageRecorder recorder;
    manager.removeFileFromProject(path, deleteFromDisk);
    QCOMPARE(manager.files(), expected);
    // Saved in every case, and nothing registered.
    QCOMPARE(filesInProjectFile(projectFile), expected);
    QVERIFY(!QFile::exists(pathFile()));
    QCOMPARE(recorder.messages(), QStringList());
    QCOMPARE(QFile::exists(path), existed && !deleteFromDisk);
}

void TstProjectManager::removeSavesBeforeDeleting()
{
    // The project file is removed as the document: deleting it after the
    // save leaves nothing behind, saving after the delete would bring it back.
    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp"});
    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    manager.removeFileFromProject(projectFile, true);
    QVERIFY(!QFile::exists(projectFile));
    QCOMPARE(manager.files(), QStringList{QStringLiteral("a.zyhelp")});
}

void TstProjectManager::removeWithUnwritableProjectFile()
{
    const QString root = dir(QStringLiteral("projekt"));
    makeTree(root, {"a.zyhelp", "b.zyhelp"});
    ProjectManager manager;
    expectRegistered({root});
    QVERIFY(manager.createProject(root, QStringLiteral("P")));
    const QString projectFile = QDir(root).filePath(QStringLiteral("P.zyproject"));
    QVERIFY(QFile::remove(projectFile));
    QVERIFY(QDir().mkdir(projectFile));

    const QString document = QDir(root).filePath(QStringLiteral("a.zyhelp"));
    manager.removeFileFromProject(document, true);
    QCOMPARE(manager.files(), QStringList{QStringLiteral("b.zyhelp")});
    QVERIFY(QFileInfo(projectFile).isDir());
    QVERIFY(!QFile::exists(document));
}

void TstProjectManager::caseKeyForEveryCodePoint()
{
    // Every code point alone: the BMP including lone surrogates as one unit,
    // the rest as surrogate pairs.
    QStringList strings;
    strings.reserve(0x110000);
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (QChar::requiresSurrogates(c))
            strings.append(fromUnits({QChar::highSurrogate(c), QChar::lowSurrogate(c)}));
        else
            strings.append(QString(QChar(char16_t(c))));
    }
    checkKeysAgainstCompare(strings);
}

void TstProjectManager::caseKeyForShortStrings()
{
    // Every string of up to three units over units whose folding is special,
    // so that each unit meets each neighbour: surrogates alone and in pairs.
    const char16_t units[] = {u'a', u'A', u'k', 0x212A, u's', 0x17F, 0xDF, 0x1E9E, 0x130, u'i',
                              0x131, 0x3C2, 0x3C3, 0x3A3, 0xD801, 0xDC00, 0xDC28, 0xD800, u'/'};
    QStringList strings{QString()};
    for (int length = 1; length <= 3; ++length) {
        const qsizetype start = strings.size();
        for (qsizetype i = 0; i < start; ++i) {
            if (strings.at(i).size() != length - 1)
                continue;
            for (const char16_t unit : units)
                strings.append(strings.at(i) + QChar(unit));
        }
    }
    QCOMPARE(strings.size(), 1 + 19 + 19 * 19 + 19 * 19 * 19);
    checkKeysAgainstCompare(strings);
}

void TstProjectManager::caseKeyForPaths_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("equal");

    QTest::newRow("capitals") << "/srv/Hilfe/Kapitel" << "/SRV/hilfe/kapitel" << true;
    QTest::newRow("different") << "/srv/hilfe/a" << "/srv/hilfe/b" << false;
    QTest::newRow("longer") << "/srv/hilfe" << "/srv/hilfe/" << false;
    QTest::newRow("umlauts") << QStringLiteral("/Größe/Übung") << QStringLiteral("/GRÖßE/übung")
                             << true;
    QTest::newRow("sharp s and ss") << QStringLiteral("/straße") << "/strasse" << false;
    QTest::newRow("sharp s and capital sharp s")
        << QStringLiteral("/straße") << QStringLiteral("/STRAẞE") << true;
    QTest::newRow("dotted capital I") << QStringLiteral("/\u0130") << "/i" << false;
    QTest::newRow("dotless i") << QStringLiteral("/\u0131") << "/I" << false;
    QTest::newRow("n with apostrophe")
        << QStringLiteral("/\u0149") << QStringLiteral("/\u02BCn") << false;
    QTest::newRow("Kelvin sign") << QStringLiteral("/\u212A") << "/k" << true;
    QTest::newRow("sigmas") << QStringLiteral("/ΟΔΟΣ/σς") << QStringLiteral("/οδος/ΣΣ") << true;
    QTest::newRow("Deseret") << QStringLiteral("/\U00010400") << QStringLiteral("/\U00010428")
                             << true;
    QTest::newRow("lone high surrogates")
        << fromUnits({u'/', 0xD801, u'A'}) << fromUnits({u'/', 0xD801, u'a'}) << true;
    QTest::newRow("lone low surrogates")
        << fromUnits({u'/', 0xDC00}) << fromUnits({u'/', 0xDC28}) << false;
    QTest::newRow("pair and lone units")
        << fromUnits({0xD801, 0xDC28}) << fromUnits({0xDC28, 0xDC28}) << false;
    // Decided by the comparison alone: whether these fold together depends
    // on the Unicode version.
    QTest::newRow("iota with dialytika and tonos")
        << QStringLiteral("/\u0390") << QStringLiteral("/\u1FD3") << bool(QString::compare(
               QStringLiteral("/\u0390"), QStringLiteral("/\u1FD3"), Qt::CaseInsensitive) == 0);
}

void TstProjectManager::caseKeyForPaths()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, equal);

    QCOMPARE(QString::compare(a, b, Qt::CaseInsensitive) == 0, equal);
    QCOMPARE(Internal::caseKey(a) == Internal::caseKey(b), equal);
}

void TstProjectManager::cleanPathFastPath()
{
    // Every path of up to seven units over these.
    const char16_t units[] = {u'/', u'.', u'a', u'B', u'\\', u':'};
    QStringList paths{QString()};
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (paths.at(i).size() < 7) {
            for (const char16_t unit : units)
                paths.append(paths.at(i) + QChar(unit));
        }
    }
    paths << "/home/anna/Projekte" << "C:/" << "c:/x/../y" << "//server/share" << ":/res/a"
          << "qrc:/a/../b" << "/a b/ c /" << QStringLiteral("/ü/ß/.ä") << "a/.../b" << "/..";

    for (const QString &path : std::as_const(paths)) {
        const QString cleaned = QDir::cleanPath(path);
        if (Internal::isCleanPath(path) && cleaned != path)
            QFAIL(qPrintable(QStringLiteral("\"%1\" is not clean: \"%2\"").arg(path, cleaned)));
        QCOMPARE(Internal::cleanPath(path), cleaned);
        QCOMPARE(Internal::cleanCaseKey(path), Internal::caseKey(cleaned));
        // The candidate lookup rejects lines that are too short on this.
        QVERIFY2(cleaned.size() <= path.size(), qPrintable(path));
    }
}

void TstProjectManager::relativePathFastPath()
{
    const QStringList roots{"/r", "/r/s", "/", "/R", "r", "/r/", "/r/./s", "/r//s", "/r/s/..",
                            QStringLiteral("/ü")};
    QStringList suffixes{QString()};
    const char16_t units[] = {u'/', u'.', u'x'};
    for (qsizetype i = 0; i < suffixes.size(); ++i) {
        if (suffixes.at(i).size() < 6) {
            for (const char16_t unit : units)
                suffixes.append(suffixes.at(i) + QChar(unit));
        }
    }
    for (const QString &root : roots) {
        const Internal::RelativePaths relative(root);
        const QDir dir(root);
        for (const QString &suffix : std::as_const(suffixes)) {
            const QString path = root + suffix;
            QCOMPARE(relative.relativeFilePath(path), dir.relativeFilePath(path));
        }
        QCOMPARE(relative.relativeFilePath(QStringLiteral("/r/s/t/u.zyhelp")),
                 dir.relativeFilePath(QStringLiteral("/r/s/t/u.zyhelp")));
    }
}

void TstProjectManager::candidateLookup()
{
    // The lookup must find what a scan with the cleaning comparison finds.
    const QList<QStringList> candidateLists{
        {"/tmp/Proj", "/tmp/Proj/Kapitel", "/tmp/Proj/kapitel", "/tmp/Proj/bilder",
         QStringLiteral("/tmp/Proj/straße"), "/tmp/Proj/Kapitel/Unter"},
        {"/", "/a"},
        {"x", "y/z", "x/Y"},
    };
    const QStringList starts{"", "/tmp/Proj", "/TMP/proj", "/tmp/./Proj", "/tmp//Proj",
                             "/tmp/x/../Proj", "/tmp/Pro", "/tmp/Projx", "/home/a", "/tmp/Proj/",
                             "\\tmp\\Proj", "/tmp/Proj/..", "/tmp/Proj/../Proj", "x", "X/y/..",
                             "./y", "/", "//", "/a", " /tmp/Proj", "/tmp/.", "/tmp/./x/..",
                             "/home/./a", "/tmp/Pr./oj", "/tmp/Proj/./.."};
    const QStringList ends{"", "/Kapitel", "/kapitel/", "/KAPITEL/.", "/kapitel/../bilder",
                           "/bilder", "/Bilder/x", QStringLiteral("/STRAẞE"), "/STRASSE",
                           "/kapitel/unter", "/z", "/Y", "/.", "/./Kapitel", "/x/../..",
                           "/a..b", "/..."};
    for (const QStringList &candidates : candidateLists) {
        const Internal::CandidateSet set(candidates);
        const auto scan = [&](const QString &path) -> qsizetype {
            for (qsizetype i = 0; i < candidates.size(); ++i) {
                if (QString::compare(path, candidates.at(i), Qt::CaseInsensitive) == 0)
                    return i;
            }
            return -1;
        };
        for (qsizetype i = 0; i < candidates.size(); ++i)
            QCOMPARE(set.firstEqual(i), scan(candidates.at(i)));
        for (const QString &start : starts) {
            for (const QString &end : ends) {
                const QString entry = start + end;
                const qsizetype expected = entry.isEmpty() ? -1 : scan(QDir::cleanPath(entry));
                if (set.indexOf(entry) != expected)
                    QFAIL(qPrintable(QStringLiteral("\"%1\" found as %2, not %3")
                                         .arg(entry).arg(set.indexOf(entry)).arg(expected)));
            }
        }
    }
}

QTEST_GUILESS_MAIN(TstProjectManager)
#include "tst_projectmanager.moc"
