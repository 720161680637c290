#include "documentcache.h"

#include <QFile>
#include <QFuture>
#include <QList>
#include <QtConcurrentMap>

#ifdef Q_OS_UNIX
# include <sys/stat.h>
#else
# include <QDateTime>
# include <QFileInfo>
#endif

namespace ZyHelp {

bool DocumentCache::FileIdentity::operator==(const FileIdentity &other) const
{
    return size == other.size && modified == other.modified && inode == other.inode
        && device == other.device;
}

DocumentCache::FileIdentity DocumentCache::identify(const QString &filePath)
{
    FileIdentity identity;
#ifdef Q_OS_UNIX
    struct stat info;
    if (::stat(QFile::encodeName(filePath).constData(), &info) != 0)
        return identity;
# ifdef Q_OS_DARWIN
    const timespec &modified = info.st_mtimespec;
# else
    const timespec &modified = info.st_mtim;
# endif
    identity.size = info.st_size;
    identity.modified = qint64(modified.tv_sec) * 1000000000 + modified.tv_nsec;
    identity.inode = info.st_ino;
    identity.device = info.st_dev;
#else
    // QFileInfo tells no file id: size and time must do.
    const QFileInfo info(filePath);
    if (!info.exists())
        return identity;
    identity.size = info.size();
    identity.modified = info.lastModified().toMSecsSinceEpoch() * 1000000;
#endif
    return identity;
}

void DocumentCache::read(const QStringList &filePaths, const Receiver &receive,
                         const Receiver &prepare)
{
    // What each file is now, and whether its earlier read still holds, looked at on
    // every core: when nothing changed, that is all the work. Taken before the file
    // is read, so that a change during the read is seen by the next one.
    struct Look
    {
        const QString *filePath;
        FileIdentity identity;
        const Entry *kept = nullptr;
    };
    QList<Look> looks;
    looks.reserve(filePaths.size());
    for (const QString &filePath : filePaths)
        looks.append(Look{&filePath, {}});
    QtConcurrent::blockingMap(looks, [this](Look &look) {
        look.identity = identify(*look.filePath);
        const auto entry = m_entries.constFind(*look.filePath);
        if (entry != m_entries.cend() && entry->identity == look.identity)
            look.kept = &*entry;
    });

    struct Job
    {
        QString filePath;
        FileIdentity identity;
        qsizetype index;
    };
    QList<Job> jobs;
    QList<qsizetype> jobOf(filePaths.size(), -1);
    ++m_reads;
    qsizetype listed = 0;
    for (qsizetype i = 0; i < looks.size(); ++i) {
        const Look &look = looks.at(i);
        if (look.kept) {
            look.kept->lastRead = m_reads;
            ++listed;
        } else if (look.identity.size >= 0) {
            jobOf[i] = jobs.size();
            jobs.append({*look.filePath, look.identity, i});
        }
    }

    // The entries stay where they are until every document is handed out.
    const QFuture<Document> reads = QtConcurrent::mapped(jobs, [&prepare](const Job &job) {
        Document document;
        document.data = HelpParser().parse(job.filePath, &document.status);
        if (prepare)
            prepare(job.index, document);
        return document;
    });
    for (qsizetype i = 0; i < looks.size(); ++i) {
        if (looks.at(i).kept)
            receive(i, looks.at(i).kept->document);
        else if (jobOf.at(i) >= 0)
            receive(i, reads.resultAt(int(jobOf.at(i))));
    }

    for (qsizetype j = 0; j < jobs.size(); ++j) {
        const Document document = reads.resultAt(int(j));
        // A file that could not be opened is tried again next time: being made
        // readable does not change what identify() sees.
        if (document.status.outcome != ParseStatus::Unreadable) {
            m_entries.insert(jobs.at(j).filePath, {jobs.at(j).identity, document, m_reads});
            ++listed;
        }
    }
    if (m_entries.size() > listed)
        m_entries.removeIf([this](const auto &entry) { return entry.value().lastRead != m_reads; });
}

} // namespace ZyHelp
