#include "benchutil.h"

#include "projectmanager.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

const int topFolders = 20;
const int subFoldersPerTop = 49; // 20 + 20 * 49 = 1000 folders
const int filesPerFolder = 20; // half of them help documents
const int pathFileLines = 100000;

// The registration logs a debug line per new entry; the figures should not
// include printing a thousand lines to the terminal.
void discardMessages(QtMsgType, const QMessageLogContext &, const QString &) { }

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// topFolders folders with subFoldersPerTop folders each; with withFiles, every
// folder holds filesPerFolder files of which half match "*.zyhelp".
QStringList makeTree(const QString &root, bool withFiles)
{
    QStringList folders;
    for (int top = 0; top < topFolders; ++top) {
        const QString topName = QStringLiteral("Kapitel%1").arg(top, 2, 10, QLatin1Char('0'));
        folders.append(topName);
        for (int sub = 0; sub < subFoldersPerTop; ++sub)
            folders.append(topName
                           + QStringLiteral("/abschnitt%1").arg(sub, 2, 10, QLatin1Char('0')));
    }
    const QDir dir(root);
    for (const QString &folder : std::as_const(folders)) {
        dir.mkpath(folder);
        if (!withFiles)
            continue;
        for (int i = 0; i < filesPerFolder / 2; ++i) {
            const QString base = dir.filePath(folder) + QStringLiteral("/seite%1").arg(i);
            writeFile(base + (i == 0 ? QStringLiteral(".ZYHELP") : QStringLiteral(".zyhelp")),
                      "<zyhelp/>\n");
            writeFile(base + (i % 2 ? QStringLiteral(".png") : QStringLiteral(".zyhelp.bak")), "x");
        }
    }
    return folders;
}

// A global path list as it grows over years of projects: mostly clean
// absolute folders, a quarter of them beside the registered root (`base`),
// some with umlauts, other capitals, a final separator, surrounding blanks or
// "." segments, and the odd blank line.
QByteArray makePathFile(const QString &base)
{
    const QByteArray near = base.toUtf8() + "/projekt";
    static const char *const users[] = {"anna", "bernd", "claudia", "dieter", "eva"};
    static const char *const projects[] = {"Handbuch",       "Übersetzungen", "Kurzanleitung",
                                           "Größentabellen", "Referenz",      "Schulung"};
    static const char *const sections[] = {"kapitel", "bilder", "anhang", "glossar", "beispiele"};
    QByteArray bytes;
    bytes.reserve(pathFileLines * 64);
    for (int i = 0; i < pathFileLines; ++i) {
        QByteArray line = i % 4 == 3 ? near + QByteArray::number(i / 40 % 100) + '/'
                + sections[i / 7 % 5] + QByteArray::number(i % 97)
                                     : QByteArray("/home/") + users[i % 5] + "/Projekte/"
                + projects[i / 5 % 6] + QByteArray::number(i / 30 % 200) + '/' + sections[i / 7 % 5]
                + QByteArray::number(i % 97) + "/teil" + QByteArray::number(i);
        switch (i % 100) {
        case 10:
            line = line.toUpper();
            break;
        case 20:
            line += '/';
            break;
        case 30:
            line = "  " + line + '\t';
            break;
        case 40:
            line.replace("/Projekte/", "/Projekte/./");
            break;
        case 50:
            line.clear();
            break;
        default:
            break;
        }
        bytes += line + '\n';
    }
    return bytes;
}

int readPathFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return 0;
    QTextStream in(&file);
    QString line;
    int lines = 0;
    while (in.readLineInto(&line))
        ++lines;
    return lines;
}

// Fastest of `runs` calls of fn, each after `prepare`, which is not timed.
double bestPreparedOfMs(int runs, const std::function<void()> &prepare,
                        const std::function<void()> &fn)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        prepare();
        best = std::min(best, Bench::bestOfMs(1, fn));
    }
    return best;
}

} // namespace

void benchProject()
{
    QTemporaryDir temp;
    if (!temp.isValid()) {
        std::printf("  cannot create a temporary folder\n");
        return;
    }
    Bench::PathFileGuard pathFile;
    const QtMessageHandler previousHandler = qInstallMessageHandler(discardMessages);

    // File list: refreshFileList against the bare walk that it is built on.
    const QString docRoot = QDir(temp.path()).filePath(QStringLiteral("dokumente"));
    QDir().mkpath(docRoot);
    makeTree(docRoot, true);
    ZyHelp::ProjectManager docProject;
    docProject.createProject(docRoot, QStringLiteral("Bench"));

    qsizetype walked = 0;
    const double walkMs = Bench::bestOfMs(7, [&] {
        walked = 0;
        QDirIterator it(docRoot, {QStringLiteral("*.zyhelp")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            ++walked;
        }
    });
    const double refreshMs = Bench::bestOfMs(7, [&] { docProject.refreshFileList(); });
    Bench::printFigure(
        QStringLiteral("bare QDirIterator walk, 1000 folders, %1 of 20000 files").arg(walked),
        walkMs, QStringLiteral("ms"));
    Bench::printFigure(
        QStringLiteral("refreshFileList, same tree (%1 entries)").arg(docProject.files().size()),
        refreshMs, QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("refreshFileList / bare walk"), refreshMs / walkMs, 1.3);

    // Registration: a root with 1000 subfolders against a long global path list.
    const QString regRoot = QDir(temp.path()).filePath(QStringLiteral("registrierung"));
    QDir().mkpath(regRoot);
    makeTree(regRoot, false);
    const QByteArray listBytes = makePathFile(temp.path());
    writeFile(pathFile.path(), listBytes);
    const double readMs = Bench::bestOfMs(9, [&] { readPathFile(pathFile.path()); });
    // Not part of the floor, but most of what the registration adds to it.
    const double regWalkMs = Bench::bestOfMs(9, [&] {
        QDirIterator it(regRoot, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (it.hasNext())
            it.next();
    });

    // openProject registers as well; the project file only gives the manager its root.
    const QString projectFile = QDir(regRoot).filePath(QStringLiteral("bench.zyproject"));
    writeFile(projectFile, "<?xml version=\"1.0\"?>\n<zyproject name=\"Bench\"/>\n");
    ZyHelp::ProjectManager regProject;
    regProject.openProject(projectFile);

    // Cutting the file back to the generated lines drops what the last run appended.
    const double firstMs = bestPreparedOfMs(
        9, [&] { QFile::resize(pathFile.path(), listBytes.size()); },
        [&] { regProject.registerPathInGlobalConfig(); });
    const int linesAfterFirst = readPathFile(pathFile.path());
    const double againMs = Bench::bestOfMs(9, [&] { regProject.registerPathInGlobalConfig(); });
    const int linesAfterAgain = readPathFile(pathFile.path());

    Bench::printFigure(
        QStringLiteral("read \"Path\" file of %1 lines (QTextStream)").arg(pathFileLines), readMs,
        QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("bare QDirIterator walk of its 1000 subfolders"), regWalkMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("registerPathInGlobalConfig, 1000 subfolders, +%1 lines")
                           .arg(linesAfterFirst - pathFileLines),
                       firstMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("registerPathInGlobalConfig again, +%1 lines")
                           .arg(linesAfterAgain - linesAfterFirst),
                       againMs, QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("registerPathInGlobalConfig (new folders) / read"),
                      firstMs / readMs, 2.0);
    Bench::printRatio(QStringLiteral("registerPathInGlobalConfig (all known) / read"),
                      againMs / readMs, 2.0);

    qInstallMessageHandler(previousHandler);
}
