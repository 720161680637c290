#pragma once

#include "helpdata.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

namespace ZyHelp {

// Reads many documents on all cores and keeps each with the identity its file had
// when it was read, so that reading an unchanged file again costs a stat, not a parse.
class DocumentCache
{
public:
    struct Document
    {
        HelpData data;
        ParseStatus status;
    };
    using Receiver = std::function<void(qsizetype index, const Document &document)>;

    // Calls receive, in the calling thread and in the order of filePaths, for every
    // file that exists, while the ones not kept from an earlier read are still being
    // read on the thread pool. Forgets every file that is not listed or not there.
    // Calls prepare, if given, on the pool thread that read a document, right after
    // the read and before receive gets that document; never for a kept one. It runs
    // on several threads at once and must touch only what belongs to its index.
    void read(const QStringList &filePaths, const Receiver &receive, const Receiver &prepare = {});

private:
    // Size, modification time in nanoseconds, inode and device; size -1: no file.
    struct FileIdentity
    {
        qint64 size = -1;
        qint64 modified = 0;
        quint64 inode = 0;
        quint64 device = 0;

        bool operator==(const FileIdentity &other) const;
    };
    struct Entry
    {
        FileIdentity identity;
        Document document;
        mutable quint64 lastRead; // the read() that last listed the file
    };

    static FileIdentity identify(const QString &filePath);

    QHash<QString, Entry> m_entries;
    quint64 m_reads = 0;
};

} // namespace ZyHelp
