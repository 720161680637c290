#include "importer.h"

#include "documentunits.h"

#include <QHash>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace ZyHelp::Translate {

namespace {

struct Job
{
    const DocumentEntry *entry = nullptr;
    QList<const TranslationUnit *> units;
};

struct JobResult
{
    QList<std::pair<qint64, QString>> messages; // by catalog line
    QString change;
    qsizetype applied = 0;
    qsizetype lost = 0;
};

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

bool sameLanguages(const HelpData &a, const HelpData &b)
{
    if (a.languages.keys() != b.languages.keys())
        return false;
    for (auto it = a.languages.cbegin(); it != a.languages.cend(); ++it) {
        const HelpLanguage &other = b.languages.value(it.key());
        if (it->description != other.description || it->sections.size() != other.sections.size())
            return false;
        for (qsizetype i = 0; i < it->sections.size(); ++i) {
            if (it->sections.at(i).name != other.sections.at(i).name
                || it->sections.at(i).content != other.sections.at(i).content)
                return false;
        }
    }
    return true;
}

JobResult runJob(const Job &job, const Catalog &catalog, const QString &catalogPath, bool dryRun)
{
    JobResult result;
    const auto warn = [&](const TranslationUnit &unit, const QString &message) {
        result.messages.append({unit.line, QStringLiteral("%1:%2: warning: %3: %4")
                                               .arg(catalogPath)
                                               .arg(unit.line)
                                               .arg(unit.id, message)});
        ++result.lost;
    };
    ParseStatus status;
    const HelpData data = HelpParser().parse(job.entry->filePath, &status);
    if (status.outcome != ParseStatus::Complete) {
        const QString where = status.outcome == ParseStatus::Faulty
            ? QStringLiteral("%1:%2:%3").arg(job.entry->displayPath).arg(status.line).arg(
                status.column)
            : job.entry->displayPath;
        result.messages.append(
            {job.units.first()->line,
             QStringLiteral("%1: error: the document was not read whole (%2); not written, "
                            "%3 units not applied")
                 .arg(where, status.errorString)
                 .arg(job.units.size())});
        result.lost += job.units.size();
        return result;
    }

    HelpData changed = data;
    const auto source = data.languages.constFind(catalog.sourceLanguage);
    for (const TranslationUnit *unit : job.units) {
        if (unit->fuzzy || unit->target.isEmpty())
            continue;
        QString path;
        UnitPlace place;
        parseUnitId(unit->id, &path, &place);
        const QString *today = source == data.languages.cend() ? nullptr : textAt(*source, place);
        if (!today) {
            warn(*unit, QStringLiteral("stale: the document has no such text in '%1' any more; "
                                       "not applied")
                            .arg(catalog.sourceLanguage));
            continue;
        }
        if (*today != unit->source) {
            warn(*unit, QStringLiteral("stale: the source text is not the one translated (a "
                                       "section inserted, deleted, moved or edited since the "
                                       "export); not applied"));
            continue;
        }
        if (unit->target.startsWith(u'\n') != unit->source.startsWith(u'\n')
            || unit->target.endsWith(u'\n') != unit->source.endsWith(u'\n')) {
            warn(*unit, QStringLiteral("the translation and its source differ in a leading or "
                                       "trailing line break (msgfmt -c rejects this); not "
                                       "applied"));
            continue;
        }
        if (hasNonXmlCharacter(unit->target)) {
            warn(*unit, QStringLiteral("the translation holds a character that a document "
                                       "cannot hold; not applied"));
            continue;
        }
        HelpLanguage &target = changed.languages[catalog.targetLanguage];
        if (!data.languages.contains(catalog.targetLanguage) && target.description.isEmpty())
            target.description = QStringLiteral("...");
        // Documents hold their texts trimmed: a translation is applied as it reads back.
        textAt(target, place) = unit->target.trimmed();
        ++result.applied;
    }
    if (sameLanguages(data, changed))
        return result;
    if (dryRun) {
        result.change = QStringLiteral("would write %1").arg(job.entry->displayPath);
    } else if (HelpWriter().writeXml(changed, job.entry->filePath)) {
        result.change = QStringLiteral("wrote %1").arg(job.entry->displayPath);
    } else {
        result.messages.append({job.units.first()->line,
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

ImportResult importCatalog(const Catalog &catalog, const QString &catalogPath,
                           const QList<DocumentEntry> &documents, bool dryRun)
{
    ImportResult result;
    QHash<QString, qsizetype> jobIndex; // by relative path
    for (const DocumentEntry &entry : documents)
        jobIndex.insert(entry.relativePath, -1);
    QList<Job> jobs;
    QList<std::pair<qint64, QString>> messages;
    for (const TranslationUnit &unit : catalog.units) {
        QString path;
        UnitPlace place;
        const bool valid = parseUnitId(unit.id, &path, &place);
        const auto job = jobIndex.find(path);
        if (!valid || job == jobIndex.end()) {
            // Only a translation makes a unit that cannot be placed a loss.
            if (!unit.fuzzy && !unit.target.isEmpty()) {
                messages.append({unit.line, QStringLiteral("%1:%2: warning: %3: %4; not applied")
                                                .arg(catalogPath)
                                                .arg(unit.line)
                                                .arg(unit.id,
                                                     valid ? QStringLiteral("no document of this "
                                                                            "run has this path")
                                                           : QStringLiteral("not a unit id of "
                                                                            "zyhelptranslate"))});
                ++result.lost;
            }
            continue;
        }
        if (*job < 0) {
            *job = jobs.size();
            jobs.append(Job{nullptr, {}});
        }
        jobs[*job].units.append(&unit);
    }
    for (const DocumentEntry &entry : documents) {
        const qsizetype index = jobIndex.value(entry.relativePath);
        if (index >= 0 && !jobs[index].entry)
            jobs[index].entry = &entry;
    }

    const QList<JobResult> results = QtConcurrent::blockingMapped<QList<JobResult>>(
        jobs, [&](const Job &job) { return runJob(job, catalog, catalogPath, dryRun); });
    for (const JobResult &job : results) {
        messages.append(job.messages);
        if (!job.change.isEmpty())
            result.changes.append(job.change);
        result.applied += job.applied;
        result.lost += job.lost;
    }
    std::stable_sort(messages.begin(), messages.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (const auto &message : std::as_const(messages))
        result.messages.append(message.second);
    return result;
}

} // namespace ZyHelp::Translate
