#include "projectmanager.h"
#include "pathkey.h"
#include "projectfile.h"
#include "savefile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <algorithm>

namespace ZyHelp {

namespace Internal {

namespace {

// Folds one UTF-16 unit the way the case-insensitive comparison does: on its
// own, or, for a low surrogate that follows a high one, as part of the pair.
// Full case folding ("ß" to "ss") would merge strings that the comparison
// keeps apart, so this is the simple one-character folding. A pair keeps its
// high surrogate and yields the low half of the folded pair: case pairs
// beyond the BMP share their high surrogate.
inline char16_t foldUnit(char16_t unit, char16_t last)
{
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? char16_t(unit + 0x20) : unit;
    if (QChar::isLowSurrogate(unit) && QChar::isHighSurrogate(last))
        return QChar::lowSurrogate(QChar::toCaseFolded(QChar::surrogateToUcs4(last, unit)));
    return char16_t(QChar::toCaseFolded(char32_t(unit)));
}

// source and target may be the same.
void foldUnits(const char16_t *source, char16_t *target, qsizetype size)
{
    char16_t last = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = source[i];
        target[i] = foldUnit(unit, last);
        last = unit;
    }
}

} // namespace

QString caseKey(const QString &text)
{
    QString key = text;
    foldUnits(reinterpret_cast<const char16_t *>(text.constData()),
              reinterpret_cast<char16_t *>(key.data()), key.size());
    return key;
}

QString cleanCaseKey(QStringView path)
{
    if (!isCleanPath(path))
        return caseKey(QDir::cleanPath(path.toString()));
    QString key(path.size(), Qt::Uninitialized);
    foldUnits(path.utf16(), reinterpret_cast<char16_t *>(key.data()), path.size());
    return key;
}

bool isCleanPath(QStringView path)
{
    const char16_t *const begin = path.utf16();
    const char16_t *const end = begin + path.size();
    qsizetype segmentLength = 0;
    qsizetype segmentDots = 0;
    for (const char16_t *p = begin; p != end; ++p) {
        const char16_t unit = *p;
        if (unit == u'/') {
            if (segmentLength == 0 && p != begin) // "//"
                return false;
            if (segmentLength == segmentDots && segmentLength > 0 && segmentLength <= 2)
                return false; // a "." or ".." segment
            segmentLength = 0;
            segmentDots = 0;
        } else if (unit == u'\\' || unit == u':') {
            // native separators and drive or resource prefixes: left to QDir
            return false;
        } else {
            ++segmentLength;
            if (unit == u'.')
                ++segmentDots;
        }
    }
    if (segmentLength == 0) // empty, "/", or a final "/" that cleaning drops
        return path.size() <= 1;
    return !(segmentLength == segmentDots && segmentLength <= 2);
}

QString cleanPath(const QString &path)
{
    return isCleanPath(path) ? path : QDir::cleanPath(path);
}

RelativePaths::RelativePaths(const QString &root)
    : m_root(root)
{
    if (QDir::isAbsolutePath(root) && isCleanPath(root))
        m_prefix = root.endsWith(u'/') ? root : root + u'/';
}

QString RelativePaths::relativeFilePath(const QString &path) const
{
    if (!m_prefix.isEmpty() && path.size() > m_prefix.size() && path.startsWith(m_prefix)) {
        const QStringView rest = QStringView(path).mid(m_prefix.size());
        if (rest.front() != u'/' && isCleanPath(rest))
            return rest.toString();
    }
    return m_root.relativeFilePath(path);
}

CandidateSet::CandidateSet(const QStringList &candidates)
{
    m_firstEqual.reserve(candidates.size());
    m_firstIndex.reserve(candidates.size());
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const QString key = caseKey(candidates.at(i));
        qsizetype first = m_firstIndex.value(key, -1);
        if (first < 0) {
            first = i;
            m_firstIndex.insert(key, i);
        }
        m_firstEqual.append(first);
        if (i == 0) {
            m_prefix = key;
        } else {
            const auto differ =
                std::mismatch(m_prefix.cbegin(), m_prefix.cend(), key.cbegin(), key.cend());
            m_prefix.truncate(differ.first - m_prefix.cbegin());
        }
    }
    m_plainPrefix = isCleanPath(m_prefix);
}

qsizetype CandidateSet::indexOf(QStringView entry) const
{
    // Cleaning never lengthens a path, and every key begins with m_prefix.
    const qsizetype prefixSize = m_prefix.size();
    if (entry.isEmpty() || entry.size() < prefixSize)
        return -1;

    // Most lines of a long list differ from the candidates within their first
    // few units. Such a line is settled without computing its key where
    // cleaning cannot change it up to the first differing unit: no backslash,
    // colon, doubled "/" or "." segment up to there, and no ".." anywhere,
    // since ".." removes the segment before it.
    const char16_t *const units = entry.utf16();
    const auto *const prefix = reinterpret_cast<const char16_t *>(m_prefix.constData());
    for (qsizetype i = 0; i < prefixSize; ++i) {
        const char16_t unit = units[i];
        // A unit equal to the folded prefix folds to itself. The prefix is a
        // clean path without backslashes and colons, so then nothing
        // up to here is one either.
        if (unit == prefix[i] && m_plainPrefix)
            continue;
        const char16_t last = i > 0 ? units[i - 1] : 0;
        if (unit == u'\\' || unit == u':' || (unit == u'/' && last == u'/'))
            break; // cleaning may change this unit
        if (foldUnit(unit, last) != prefix[i]) {
            // Past the differing unit, a "." segment only removes itself;
            // ".." could remove what came before it.
            const QStringView head = entry.first(i + 1);
            if (!entry.contains(u'.')
                || (!entry.contains(QStringLiteral("..")) && !head.contains(u'.'))
                || isCleanPath(entry)) {
                return -1;
            }
            break;
        }
    }

    const auto found = m_firstIndex.constFind(cleanCaseKey(entry));
    return found == m_firstIndex.cend() ? -1 : found.value();
}

} // namespace Internal

ProjectManager::ProjectManager() = default;
ProjectManager::~ProjectManager() = default;

QString ProjectManager::projectName() const
{
    return m_projectName;
}

QString ProjectManager::rootPath() const
{
    return m_rootPath;
}

QStringList ProjectManager::files() const
{
    return m_files;
}

bool ProjectManager::saveProject()
{
    // Without a project there is no file; QFile would warn about the empty name.
    if (m_projectFilePath.isEmpty())
        return false;
    // Written aside and renamed over the old file when complete, as documents are.
    QSaveFile file(m_projectFilePath);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;

    const QByteArray bytes = ProjectFileWriter::toXml(m_projectName, m_files);
    QString error;
    return commitSaveFile(&file, file.write(bytes) == bytes.size(), &error);
}

void ProjectManager::refreshFileList()
{
    m_files.clear();
    const Internal::RelativePaths root(m_rootPath);
    QDirIterator it(m_rootPath, {QStringLiteral("*.zyhelp")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        m_files.append(root.relativeFilePath(it.next()));
    m_files.sort(Qt::CaseSensitive);
}

void ProjectManager::addFileToProject(const QString &path)
{
    const QString entry =
        QFileInfo(path).isRelative() ? path : QDir(m_rootPath).relativeFilePath(path);
    if (!m_files.contains(entry, Qt::CaseSensitive)) {
        m_files.append(entry);
        saveProject();
    }
    registerPathInGlobalConfig();
}

void ProjectManager::removeFileFromProject(const QString &path, bool deleteFromDisk)
{
    const QString entry = QDir(m_rootPath).relativeFilePath(path);
    const qsizetype index = m_files.indexOf(entry);
    if (index >= 0)
        m_files.removeAt(index);
    saveProject();
    if (deleteFromDisk)
        QFile::remove(path);
}

void ProjectManager::registerPathInGlobalConfig()
{
    if (m_rootPath.isEmpty()) // no project open: there is nothing to register
        return;

    const QString listPath =
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("Path"));

    // The candidates are collected before the list is read, so that each line
    // is looked up among the few candidates instead of every line being kept
    // for a list that only ever grows. Neither step depends on the other.
    QStringList candidates{Internal::cleanPath(m_rootPath)};
    QDirIterator it(m_rootPath, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        candidates.append(Internal::cleanPath(it.next()));
    const Internal::CandidateSet candidateSet(candidates);

    // known[i]: candidate i, or one equal to it, is in the list already.
    QList<bool> known(candidates.size(), false);
    QFile file(listPath);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        QString line;
        while (in.readLineInto(&line)) {
            const qsizetype index = candidateSet.indexOf(QStringView(line).trimmed());
            if (index >= 0)
                known[index] = true;
        }
        file.close();
    }

    // The new lines go out in one write, and only lines that reached the file
    // are logged as registered. A failure is logged; the caller goes on.
    QString lines;
    QStringList written;
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const qsizetype first = candidateSet.firstEqual(i);
        if (known.at(first))
            continue;
        known[first] = true;
        lines += QDir::toNativeSeparators(candidates.at(i)) + u'\n';
        written.append(candidates.at(i));
    }
    if (written.isEmpty())
        return;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    const QByteArray bytes = lines.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        qWarning() << "Konnte Pfadliste nicht schreiben:" << listPath << ":" << file.errorString();
        return;
    }
    file.close();
    for (const QString &candidate : std::as_const(written))
        qDebug() << "Registriere Unterordner:" << candidate;
}

bool ProjectManager::createProject(const QString &directory, const QString &name)
{
    m_rootPath = directory;
    m_projectName = name;
    m_projectFilePath = QDir(directory).filePath(name + QStringLiteral(".zyproject"));
    registerPathInGlobalConfig();
    refreshFileList();
    return saveProject();
}

bool ProjectManager::openProject(const QString &path)
{
    if (path.isEmpty()) // cannot be opened; QFile would warn about the empty name
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;

    m_projectFilePath = path;
    m_rootPath = QFileInfo(path).absolutePath();

    if (const std::optional<QString> name = ProjectFileReader::readName(&file))
        m_projectName = *name;
    file.close();

    registerPathInGlobalConfig();
    refreshFileList();
    return true;
}

} // namespace ZyHelp
