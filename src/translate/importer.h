#pragma once

#include "catalog.h"

#include "documentcollector.h"

#include <QFuture>
#include <QHash>
#include <QMutex>
#include <QSet>
#include <QStringList>
#include <QWaitCondition>

namespace ZyHelp::Translate {

struct ImportResult
{
    QStringList messages; // compiler-style warnings and errors, by file and line
    QStringList changes; // "wrote PATH" or, on a dry run, "would write PATH"
    qsizetype applied = 0; // units whose translation is in their document now
    qsizetype lost = 0; // units not applied and documents not written
};

struct ImportJob
{
    const DocumentEntry *entry = nullptr;
    QList<const EncodedUnit *> units; // decoded by the job, on its thread
};

// Whether an import may write its documents: open once its file was found
// whole and usable, closed when not. Jobs that would write wait for it.
class WriteGate
{
public:
    void decide(bool open);
    bool waitOpen(); // blocks until decided

private:
    enum State { Pending, Open, Closed };

    QMutex m_mutex;
    QWaitCondition m_decided;
    State m_state = Pending;
};

struct ImportJobResult
{
    QList<std::pair<qint64, QString>> messages; // by catalog line
    QString change;
    qsizetype applied = 0;
    qsizetype lost = 0;
};

// Puts the translations of a catalog, unit by unit as they are read, into the
// target language of the documents. Only a unit whose id names an existing text
// whose source is still exactly the unit's source is applied; fuzzy and empty
// units change nothing. Units go in batches; the documents of a batch are read
// and written in parallel while the next batch is read. A document whose text
// would not change, or that was read only partly, is not written.
class Importer
{
public:
    // A job writes only once gate opens (a dry run never writes).
    Importer(const Catalog &header, const QString &catalogPath,
             const QList<DocumentEntry> &documents, bool dryRun, WriteGate *gate);
    ~Importer();

    void add(EncodedUnit &&unit);
    ImportResult finish();

private:
    using Job = ImportJob;
    using JobResult = ImportJobResult;

    void startBatch();
    void collect();

    Catalog m_header;
    QString m_catalogPath;
    const QList<DocumentEntry> &m_documents;
    bool m_dryRun;
    WriteGate *m_gate;
    QHash<QByteArray, qsizetype> m_documentIndex; // by relative path in UTF-8
    QList<EncodedUnit> m_pending;
    QList<EncodedUnit> m_runningUnits;
    QList<Job> m_jobs;
    QFuture<JobResult> m_running;
    QList<std::pair<qint64, QString>> m_messages;
    QSet<QString> m_changed;
    ImportResult m_result;
};

// Reads the file at path into an Importer while another thread reads it to
// check it whole and its languages; no document is written before that check
// passes. False, with error, for a file that is not valid or names no usable
// pair of languages: then nothing was changed.
bool importFile(const QString &path, const QList<DocumentEntry> &documents, bool dryRun,
                ImportResult *result, QString *error);

} // namespace ZyHelp::Translate
