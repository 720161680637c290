#include "documentcollector.h"
#include "pathkey.h"
#include "projectfile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>

namespace ZyHelp {

namespace {

bool hasSuffix(const QString &path, QLatin1StringView suffix)
{
    return path.endsWith(suffix, Qt::CaseInsensitive);
}

// Joined the way a compiler prints a file it found below a path it was given.
QString joined(const QString &base, const QString &relative)
{
    if (base.isEmpty())
        return relative;
    return base.endsWith(u'/') ? base + relative : base + u'/' + relative;
}

// The entries a project file lists. The editor opens any file leniently; a
// check that passed over a damaged project file would hide the damage, so
// anything but a well-formed <zyproject> document is refused.
bool readProjectList(const QString &path, QStringList *entries, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error =
            QStringLiteral("%1: cannot open the project file: %2").arg(path, file.errorString());
        return false;
    }
    return ProjectFileReader::readList(&file, path, entries, error);
}

Finding projectListFinding(const QString &projectPath, const QString &message)
{
    return Finding{projectPath, 0, 0, Finding::Warning, QStringLiteral("project-list"), message};
}

} // namespace

bool DocumentCollector::addPath(const QString &path)
{
    const QFileInfo info(path);
    if (m_projectName.isEmpty() && info.exists()) {
        if (info.isDir())
            m_projectName = QDir(info.canonicalFilePath()).dirName();
        else if (hasSuffix(path, QLatin1StringView(".zyproject")))
            m_projectName = info.completeBaseName();
        else
            m_projectName = QFileInfo(info.canonicalFilePath()).dir().dirName();
    }
    if (info.isDir()) {
        if (isNew(canonicalKey(path)))
            addFolder(path, path);
        return true;
    }
    if (info.isFile() && hasSuffix(path, QLatin1StringView(".zyproject")))
        return addProject(path);
    if (info.isFile() && hasSuffix(path, QLatin1StringView(".zyhelp"))) {
        if (isNew(canonicalKey(path)))
            m_documents.append(DocumentEntry{path, path, info.fileName()});
        return true;
    }
    m_errorString = info.exists()
        ? QStringLiteral("%1: neither a folder nor a .zyproject or .zyhelp file").arg(path)
        : QStringLiteral("%1: no such file or folder").arg(path);
    return false;
}

bool DocumentCollector::addProject(const QString &path)
{
    QStringList listed;
    if (!readProjectList(path, &listed, &m_errorString))
        return false;
    if (!isNew(canonicalKey(path)))
        return true;

    const QDir root(QFileInfo(path).absolutePath());
    const QStringList foundList = addFolder(root.path(), path.left(path.lastIndexOf(u'/') + 1));
    const QSet<QString> found(foundList.cbegin(), foundList.cend());
    QSet<QString> listedSet;
    for (const QString &entry : std::as_const(listed)) {
        const QString relative =
            QDir::cleanPath(QDir::isAbsolutePath(entry) ? root.relativeFilePath(entry) : entry);
        listedSet.insert(relative);
        if (!found.contains(relative))
            m_findings.append(projectListFinding(
                path,
                QStringLiteral("'%1' is listed but not found below the project folder")
                    .arg(entry)));
    }
    for (const QString &relative : foundList) {
        if (!listedSet.contains(relative))
            m_findings.append(projectListFinding(
                path,
                QStringLiteral("'%1' is found below the project folder but not listed")
                    .arg(relative)));
    }
    return true;
}

// Finds the documents below folder as the editor finds a project's: the name
// pattern ignores case, hidden folders are not entered, and the relative
// paths are sorted case-sensitively. Returns every one found, also those
// added before.
QStringList DocumentCollector::addFolder(const QString &folder, const QString &displayBase)
{
    const QString root = QFileInfo(folder).absoluteFilePath();
    const Internal::RelativePaths relativePaths(root);
    QMap<QString, bool> found; // relative path: is a symbolic link
    QDirIterator it(root, {QStringLiteral("*.zyhelp")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        found.insert(relativePaths.relativeFilePath(path), it.fileInfo().isSymLink());
    }

    // The walk enters no linked folder, so a document that is no link itself
    // has the folder's canonical path joined with its relative path, without
    // asking the file system about every document of a large project.
    const QString canonicalRoot = canonicalKey(root);
    for (auto f = found.cbegin(), end = found.cend(); f != end; ++f) {
        const QString filePath = joined(root, f.key());
        if (isNew(f.value() ? canonicalKey(filePath) : joined(canonicalRoot, f.key())))
            m_documents.append(DocumentEntry{filePath, joined(displayBase, f.key()), f.key()});
    }
    return found.keys();
}

// A file or folder counts as known by its canonical path, so that a second
// name for it (a relative path, "..", a symbolic link) adds nothing.
QString DocumentCollector::canonicalKey(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical; // empty: gone meanwhile
}

bool DocumentCollector::isNew(const QString &key)
{
    const qsizetype before = m_seen.size();
    m_seen.insert(key);
    return m_seen.size() != before;
}

} // namespace ZyHelp
