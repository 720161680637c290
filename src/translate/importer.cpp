#include "importer.h"

#include "catalogfile.h"
#include "documentunits.h"

#include <QHash>
#include <QThread>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <memory>
#include <optional>

namespace ZyHelp::Translate {

namespace {

// Units held at once: a large file goes through in batches of this many.
const qsizetype batchSize = 4096;

using Job = ImportJob;
using JobResult = ImportJobResult;

// Characters that XML 1.0 cannot hold: a document with one would not read back.
bool hasNonXmlCharacter(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if ((c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c == 0xFFFE || c == 0xFFFF)
            return true;
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (QChar::isSurrogate(c))
            return true;
    }
    return false;
}

QString notPlaced(const QString &catalogPath, const TranslationUnit &unit, bool validId)
{
    return QStringLiteral("%1:%2: warning: %3: %4; not applied")
        .arg(catalogPath)
        .arg(unit.line)
        .arg(unit.id,
             validId ? QStringLiteral("no document of this run has this path")
                     : QStringLiteral("not a unit id of zyhelptranslate"));
}

JobResult runJob(const Job &job, const Catalog &catalog, const QString &catalogPath, bool dryRun,
                 WriteGate *gate)
{
    JobResult result;
    const auto warn = [&](const TranslationUnit &unit, const QString &message) {
        result.messages.append({unit.line,
                                QStringLiteral("%1:%2: warning: %3: %4")
                                    .arg(catalogPath)
                                    .arg(unit.line)
                                    .arg(unit.id, message)});
        ++result.lost;
    };
    // The reading thread placed the units by the path in their ids only.
    struct PlacedUnit
    {
        TranslationUnit unit;
        UnitPlace place;
    };
    QList<PlacedUnit> units;
    units.reserve(job.units.size());
    for (const EncodedUnit *encoded : job.units) {
        PlacedUnit placed{encoded->decoded(), {}};
        QString path;
        if (parseUnitId(placed.unit.id, &path, &placed.place)) {
            units.append(std::move(placed));
        } else if (!placed.unit.fuzzy && !placed.unit.target.isEmpty()) {
            result.messages.append({placed.unit.line, notPlaced(catalogPath, placed.unit, false)});
            ++result.lost;
        }
    }
    if (units.isEmpty())
        return result;
    ParseStatus status;
    const HelpData data = HelpParser().parse(job.entry->filePath, &status);
    if (status.outcome != ParseStatus::Complete) {
        const QString where = status.outcome == ParseStatus::Faulty
            ? QStringLiteral("%1:%2:%3")
                  .arg(job.entry->displayPath)
                  .arg(status.line)
                  .arg(status.column)
            : job.entry->displayPath;
        result.messages.append(
            {units.first().unit.line,
             QStringLiteral("%1: error: the document was not read whole (%2); not written, "
                            "%3 units not applied")
                 .arg(where, status.errorString)
                 .arg(units.size())});
        result.lost += units.size();
        return result;
    }

    HelpData changed = data;
    const auto source = data.languages.constFind(catalog.sourceLanguage);
    bool modified = false;
    for (const PlacedUnit &placed : std::as_const(units)) {
        const TranslationUnit *unit = &placed.unit;
        const UnitPlace &place = placed.place;
        if (unit->fuzzy || unit->target.isEmpty())
            continue;
        const QString *today = source == data.languages.cend() ? nullptr : textAt(*source, place);
        if (!today) {
            warn(*unit,
                 QStringLiteral("stale: the document has no such text in '%1' any more; "
                                "not applied")
                     .arg(catalog.sourceLanguage));
            continue;
        }
        if (*today != unit->source) {
            warn(*unit,
                 QStringLiteral("stale: the source text is not the one translated (a "
                                "section inserted, deleted, moved or edited since the "
                                "export); not applied"));
            continue;
        }
        if (unit->target.startsWith(u'\n') != unit->source.startsWith(u'\n')
            || unit->target.endsWith(u'\n') != unit->source.endsWith(u'\n')) {
            warn(*unit,
                 QStringLiteral("the translation and its source differ in a leading or "
                                "trailing line break (msgfmt -c rejects this); not "
                                "applied"));
            continue;
        }
        if (hasNonXmlCharacter(unit->target)) {
            warn(*unit,
                 QStringLiteral("the translation holds a character that a document "
                                "cannot hold; not applied"));
            continue;
        }
        // Documents hold their texts trimmed: a translation is applied as it reads back.
        QString text = unit->target.trimmed();
        ++result.applied;
        // Most units of a file imported before are in place already: the document
        // is copied only for one that is not.
        const auto current = data.languages.constFind(catalog.targetLanguage);
        const QString *now = current == data.languages.cend() ? nullptr : textAt(*current, place);
        if (now && *now == text)
            continue;
        HelpLanguage &target = changed.languages[catalog.targetLanguage];
        if (!data.languages.contains(catalog.targetLanguage) && target.description.isEmpty())
            target.description = QStringLiteral("...");
        textAt(target, place) = std::move(text);
        modified = true;
    }
    if (!modified || data.languages == changed.languages)
        return result;
    if (dryRun) {
        result.change = QStringLiteral("would write %1").arg(job.entry->displayPath);
    } else if (!gate->waitOpen()) {
        return result; // the file is not valid: the import reports that, and nothing else
    } else if (HelpWriter().writeXml(changed, job.entry->filePath)) {
        result.change = QStringLiteral("wrote %1").arg(job.entry->displayPath);
    } else {
        result.messages.append({units.first().unit.line,
                                QStringLiteral("%1: error: cannot write the document; %2 units "
                                               "not applied")
                                    .arg(job.entry->displayPath)
                                    .arg(result.applied)});
        result.lost += result.applied;
        result.applied = 0;
    }
    return result;
}

} // namespace

void WriteGate::decide(bool open)
{
    const QMutexLocker locker(&m_mutex);
    m_state = open ? Open : Closed;
    m_decided.wakeAll();
}

bool WriteGate::waitOpen()
{
    QMutexLocker locker(&m_mutex);
    while (m_state == Pending)
        m_decided.wait(&m_mutex);
    return m_state == Open;
}

Importer::Importer(const Catalog &header, const QString &catalogPath,
                   const QList<DocumentEntry> &documents, bool dryRun, WriteGate *gate)
    : m_header(header)
    , m_catalogPath(catalogPath)
    , m_documents(documents)
    , m_dryRun(dryRun)
    , m_gate(gate)
{
    for (const DocumentEntry &entry : documents)
        m_documentIndex.insert(entry.relativePath.toUtf8(), &entry - documents.constData());
}

Importer::~Importer()
{
    m_running.waitForFinished();
}

void Importer::add(EncodedUnit &&unit)
{
    if (m_pending.isEmpty())
        m_pending.reserve(batchSize);
    m_pending.append(std::move(unit));
    if (m_pending.size() >= batchSize)
        startBatch();
}

void Importer::collect()
{
    const QList<JobResult> results = m_running.results();
    for (const JobResult &job : results) {
        m_messages.append(job.messages);
        if (!job.change.isEmpty() && !m_changed.contains(job.change)) {
            m_changed.insert(job.change);
            m_result.changes.append(job.change);
        }
        m_result.applied += job.applied;
        m_result.lost += job.lost;
    }
    m_running = QFuture<JobResult>();
}

// The batch before must be done: its documents may be this batch's too.
void Importer::startBatch()
{
    collect();
    m_runningUnits = std::move(m_pending);
    m_pending = QList<EncodedUnit>();
    QHash<qsizetype, qsizetype> jobIndex; // by document index
    m_jobs.clear();
    // Only the path is looked at here, in UTF-8, and looked up again only where
    // it changes: the rest of a unit is the job's, on the pool's threads.
    QByteArrayView lastPath;
    qsizetype lastDocument = -1;
    for (const EncodedUnit &unit : std::as_const(m_runningUnits)) {
        const QByteArrayView id = unit.id();
        qsizetype hash = id.size() - 1;
        while (hash > 0 && id.at(hash) != '#')
            --hash;
        const QByteArrayView path = id.first(std::max<qsizetype>(hash, 0));
        if (hash <= 0 || path != lastPath) {
            lastDocument = hash <= 0 ? -1 : m_documentIndex.value(path.toByteArray(), -1);
            lastPath = hash <= 0 ? QByteArrayView() : path;
        }
        const qsizetype document = lastDocument;
        if (document < 0) {
            // Only a translation makes a unit that cannot be placed a loss.
            if (!unit.fuzzy && unit.hasTarget()) {
                const TranslationUnit decoded = unit.decoded();
                QString relativePath;
                UnitPlace place;
                const bool valid = parseUnitId(decoded.id, &relativePath, &place);
                m_messages.append({unit.line, notPlaced(m_catalogPath, decoded, valid)});
                ++m_result.lost;
            }
            continue;
        }
        auto job = jobIndex.constFind(document);
        if (job == jobIndex.cend()) {
            job = jobIndex.insert(document, m_jobs.size());
            m_jobs.append(Job{&m_documents.at(document), {}});
        }
        m_jobs[*job].units.append(&unit);
    }
    m_running = QtConcurrent::mapped(m_jobs, [this](const Job &job) {
        return runJob(job, m_header, m_catalogPath, m_dryRun, m_gate);
    });
}

ImportResult Importer::finish()
{
    startBatch();
    collect();
    std::stable_sort(m_messages.begin(), m_messages.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (const auto &message : std::as_const(m_messages))
        m_result.messages.append(message.second);
    return m_result;
}

bool importFile(const QString &path, const QList<DocumentEntry> &documents, bool dryRun,
                ImportResult *result, QString *error)
{
    // The whole file is checked before any document is written, so that a file
    // found faulty halfway changes nothing. The check reads it on a thread of
    // its own while the units are applied: a job that would write waits for it,
    // and until then the documents are read on the other cores.
    WriteGate gate;
    Catalog header;
    QString checkError;
    const std::unique_ptr<QThread> checker(QThread::create([&] {
        if (CatalogFile::check(path, &header, &checkError)) {
            if (header.targetLanguage.isEmpty())
                checkError = QStringLiteral("%1: error: the file names no target language (PO: "
                                            "the Language header; XLIFF: target-language)")
                                 .arg(path);
            else if (header.sourceLanguage.isEmpty())
                checkError = QStringLiteral("%1: error: the file names no source language (PO: "
                                            "the X-Source-Language header; XLIFF: "
                                            "source-language)")
                                 .arg(path);
            else if (header.sourceLanguage == header.targetLanguage)
                checkError = QStringLiteral("%1: error: the file translates '%2' into itself")
                                 .arg(path, header.sourceLanguage);
        }
        gate.decide(checkError.isEmpty());
    }));
    checker->start();

    // The languages are the file's own, read before its first unit.
    Catalog languages;
    std::optional<Importer> importer;
    const auto start = [&] {
        if (!importer)
            importer.emplace(languages, path, documents, dryRun, &gate);
    };
    QString readError;
    const bool read =
        CatalogFile::readEncoded(path, &languages, &readError, [&](EncodedUnit &&unit) {
            start();
            importer->add(std::move(unit));
        });
    ImportResult applied;
    if (read) {
        start();
        applied = importer->finish();
    }
    importer.reset(); // its jobs wait for the check
    checker->wait();
    if (!checkError.isEmpty()) {
        *error = checkError;
        return false;
    }
    if (!read) {
        *error = readError; // changed since the check
        return false;
    }
    *result = applied;
    return true;
}

} // namespace ZyHelp::Translate
