#pragma once

#include "documentcollector.h"

#include <QHash>
#include <QList>
#include <QString>

namespace ZyHelp {

// Finds the document that a link names. A link names a document by its path
// relative to the project folder or by its file name, each with or without the
// ".zyhelp" suffix that every document has.
class LinkIndex
{
public:
    explicit LinkIndex(const QList<DocumentEntry> &documents);

    // The index in documents of the document that link names, or -1. A
    // relative path wins over a file name; of documents that share a file name
    // the first one in document order is meant.
    qsizetype indexOf(const QString &link) const;
    bool contains(const QString &link) const { return indexOf(link) >= 0; }

    // The name by which a link names the document at relativePath: the path without ".zyhelp".
    static QString linkName(const QString &relativePath);

private:
    QHash<QString, qsizetype> m_indexes;
};

} // namespace ZyHelp
