#include "sitemodel.h"

#include "linkindex.h"

#include <QUrl>

#include <algorithm>

namespace ZyHelp::Publish {

SiteModel::SiteModel(const QList<DocumentEntry> &documents)
    : m_documents(documents)
{
    m_folders.append(SiteFolder());
    QHash<QString, int> pageByKey; // case-folded page path: the first document
    for (int i = 0; i < documents.size(); ++i) {
        const QString path = LinkIndex::linkName(documents.at(i).relativePath);
        m_pagePaths.append(path);
        m_pageUrls.append(url(path) + QLatin1StringView(".html"));
        const qsizetype slash = path.lastIndexOf(u'/');
        m_folderOf.append(folderFor(slash < 0 ? QString() : path.left(slash)));
        m_folders[m_folderOf.last()].pages.append(i);

        const QString key = path.toCaseFolded();
        const auto first = pageByKey.constFind(key);
        if (first == pageByKey.cend()) {
            pageByKey.insert(key, i);
            continue;
        }
        m_collisions.append(
            Finding{documents.at(i).displayPath, 0, 0, Finding::Error, QStringLiteral("page-name"),
                    QStringLiteral("its page '%1.html' collides with that of '%2' on a disk that "
                                   "ignores case")
                        .arg(path, documents.at(first.value()).displayPath)});
    }

    for (SiteFolder &folder : m_folders) {
        std::sort(folder.folders.begin(), folder.folders.end(),
                  [this](int a, int b) { return m_folders.at(a).name < m_folders.at(b).name; });
        std::sort(folder.pages.begin(), folder.pages.end(),
                  [this](int a, int b) { return m_pagePaths.at(a) < m_pagePaths.at(b); });
    }
    m_position.resize(documents.size());
    addInOrder(0);
}

QString SiteModel::title(int document) const
{
    return m_pagePaths.at(document).section(u'/', -1);
}

QString SiteModel::url(const QString &path)
{
    QStringList segments = path.split(u'/');
    for (QString &segment : segments)
        segment = QString::fromLatin1(QUrl::toPercentEncoding(segment));
    return segments.join(u'/');
}

int SiteModel::folderFor(const QString &folderPath)
{
    if (folderPath.isEmpty())
        return 0;
    const auto known = m_folderIndexes.constFind(folderPath);
    if (known != m_folderIndexes.cend())
        return known.value();
    const qsizetype slash = folderPath.lastIndexOf(u'/');
    const int parent = folderFor(slash < 0 ? QString() : folderPath.left(slash));
    SiteFolder folder;
    folder.name = folderPath.mid(slash + 1);
    folder.path = folderPath;
    folder.parent = parent;
    folder.depth = m_folders.at(parent).depth + 1;
    m_folders.append(folder);
    m_folders[parent].folders.append(int(m_folders.size() - 1));
    m_folderIndexes.insert(folderPath, int(m_folders.size() - 1));
    return int(m_folders.size() - 1);
}

void SiteModel::addInOrder(int folder)
{
    for (int child : m_folders.at(folder).folders)
        addInOrder(child);
    for (int page : m_folders.at(folder).pages) {
        m_position[page] = int(m_order.size());
        m_order.append(page);
    }
}

} // namespace ZyHelp::Publish
