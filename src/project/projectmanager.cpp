#include "projectmanager.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTextStream>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace ZyHelp {

namespace {

// A key under which two paths are equal exactly when QString::compare finds them
// equal ignoring case: each UTF-16 unit folded on its own, with a low surrogate
// folded as part of its pair. Full case folding ("ß" to "ss") would merge paths
// that the comparison keeps apart, so the single-character folding is used.
QString caseKey(const QString &path)
{
    QString key = path;
    char16_t *units = reinterpret_cast<char16_t *>(key.data());
    const qsizetype size = key.size();
    char16_t last = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = units[i];
        if (QChar::isLowSurrogate(unit) && QChar::isHighSurrogate(last))
            units[i] = QChar::lowSurrogate(QChar::toCaseFolded(QChar::surrogateToUcs4(last, unit)));
        else if (unit >= 0x80 || (unit >= u'A' && unit <= u'Z'))
            units[i] = char16_t(QChar::toCaseFolded(char32_t(unit)));
        last = unit;
    }
    return key;
}

} // namespace

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
    QFile file(m_projectFilePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;

    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("zyproject"));
    xml.writeAttribute(QStringLiteral("name"), m_projectName);
    for (const QString &entry : std::as_const(m_files))
        xml.writeTextElement(QStringLiteral("file"), entry);
    xml.writeEndElement();
    xml.writeEndDocument();
    file.close();
    return true;
}

void ProjectManager::refreshFileList()
{
    m_files.clear();
    const QDir root(m_rootPath);
    QDirIterator it(m_rootPath, {QStringLiteral("*.zyhelp")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        m_files.append(root.relativeFilePath(it.next()));
    m_files.sort(Qt::CaseSensitive);
}

void ProjectManager::addFileToProject(const QString &path)
{
    const QString entry = QFileInfo(path).isRelative() ? path
                                                       : QDir(m_rootPath).relativeFilePath(path);
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

    const QString listPath = QDir(QCoreApplication::applicationDirPath())
                                 .filePath(QStringLiteral("Path"));

    QSet<QString> known;
    QFile file(listPath);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        QString line;
        while (in.readLineInto(&line)) {
            const QString entry = line.trimmed();
            if (!entry.isEmpty())
                known.insert(caseKey(QDir::cleanPath(entry)));
        }
        file.close();
    }

    QStringList candidates{QDir::cleanPath(m_rootPath)};
    QDirIterator it(m_rootPath, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        candidates.append(QDir::cleanPath(it.next()));

    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    QTextStream out(&file);
    for (const QString &candidate : std::as_const(candidates)) {
        const QString key = caseKey(candidate);
        if (known.contains(key))
            continue;
        out << QDir::toNativeSeparators(candidate) << '\n';
        known.insert(key);
        qDebug() << "Registriere Unterordner:" << candidate;
    }
    out.flush();
    file.close();
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
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;

    m_projectFilePath = path;
    m_rootPath = QFileInfo(path).absolutePath();

    QXmlStreamReader xml(&file);
    while (!xml.atEnd() && !xml.hasError()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"zyproject") {
            m_projectName = xml.attributes().value(QStringLiteral("name")).toString();
            break;
        }
    }
    file.close();

    registerPathInGlobalConfig();
    refreshFileList();
    return true;
}

} // namespace ZyHelp
