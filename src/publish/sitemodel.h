#pragma once

#include "documentcollector.h"
#include "finding.h"

#include <QHash>
#include <QList>
#include <QString>

namespace ZyHelp::Publish {

// A folder of the contents tree; folder 0 is the project's root.
struct SiteFolder
{
    QString name;
    QString path; // relative to the root, "" for the root
    int parent = -1;
    int depth = 0; // the root's folders have depth 1
    QList<int> folders; // sorted by name
    QList<int> pages; // document indexes, sorted by file name
};

// The structure of a published site, the same in every language: where each
// document's page lies, its title, the contents tree and the reading order.
class SiteModel
{
public:
    explicit SiteModel(const QList<DocumentEntry> &documents);

    qsizetype pageCount() const { return m_pagePaths.size(); }
    // The page's path below a language's folder, without ".html": the
    // document's link name.
    QString pagePath(int document) const { return m_pagePaths.at(document); }
    QString title(int document) const;
    // pagePath() as a relative URL with ".html".
    QString pageUrl(int document) const { return m_pageUrls.at(document); }
    int folderOf(int document) const { return m_folderOf.at(document); }
    const SiteFolder &folder(int index) const { return m_folders.at(index); }
    qsizetype folderCount() const { return m_folders.size(); }

    // Every document in contents order: a folder's subfolders, then its pages.
    const QList<int> &order() const { return m_order; }
    int position(int document) const { return m_position.at(document); }

    // Pages whose names differ only in case, or not at all: a reader's disk
    // that ignores case holds only one of them.
    const QList<Finding> &collisions() const { return m_collisions; }

    // A page path as a relative URL: every segment percent-encoded.
    static QString url(const QString &path);

private:
    int folderFor(const QString &folderPath);
    QHash<QString, int> m_folderIndexes; // by path
    void addInOrder(int folder);

    QList<DocumentEntry> m_documents;
    QStringList m_pagePaths;
    QStringList m_pageUrls;
    QList<int> m_folderOf;
    QList<SiteFolder> m_folders;
    QList<int> m_order;
    QList<int> m_position;
    QList<Finding> m_collisions;
};

} // namespace ZyHelp::Publish
