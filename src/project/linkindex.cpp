#include "linkindex.h"

namespace ZyHelp {

namespace {

QString withoutSuffix(const QString &name)
{
    return name.endsWith(u".zyhelp", Qt::CaseInsensitive) ? name.chopped(7) : name;
}

} // namespace

LinkIndex::LinkIndex(const QList<DocumentEntry> &documents)
{
    // Relative paths first, so that no file name of another document hides one.
    for (qsizetype i = 0; i < documents.size(); ++i) {
        const QString &path = documents.at(i).relativePath;
        m_indexes.insert(path, i);
        m_indexes.insert(withoutSuffix(path), i);
    }
    for (qsizetype i = 0; i < documents.size(); ++i) {
        const QString fileName = documents.at(i).relativePath.section(u'/', -1);
        for (const QString &name : {fileName, withoutSuffix(fileName)}) {
            if (!m_indexes.contains(name))
                m_indexes.insert(name, i);
        }
    }
}

qsizetype LinkIndex::indexOf(const QString &link) const
{
    return m_indexes.value(link, -1);
}

QString LinkIndex::linkName(const QString &relativePath)
{
    return withoutSuffix(relativePath);
}

} // namespace ZyHelp
