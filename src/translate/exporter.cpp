#include "exporter.h"

#include "documentunits.h"

#include <QHash>
#include <QtConcurrent/QtConcurrentMap>

namespace ZyHelp::Translate {

namespace {

struct DocumentResult
{
    QList<TranslationUnit> units;
    QString error;
};

} // namespace

ExportResult exportUnits(const QList<DocumentEntry> &documents, const QString &source,
                         const QString &target)
{
    const auto read = [&](const DocumentEntry &entry) {
        DocumentResult result;
        ParseStatus status;
        const HelpData data = HelpParser().parse(entry.filePath, &status);
        if (status.outcome == ParseStatus::Unreadable)
            result.error = QStringLiteral("%1: error: cannot open the file: %2; nothing exported")
                               .arg(entry.displayPath, status.errorString);
        else if (status.outcome == ParseStatus::Faulty)
            result.error = QStringLiteral("%1:%2:%3: error: faulty XML: %4; nothing exported")
                               .arg(entry.displayPath)
                               .arg(status.line)
                               .arg(status.column)
                               .arg(status.errorString);
        else
            result.units = documentUnits(data, entry.relativePath, source, target);
        return result;
    };
    const QList<DocumentResult> results =
        QtConcurrent::blockingMapped<QList<DocumentResult>>(documents, read);

    ExportResult result;
    result.catalog.sourceLanguage = source;
    result.catalog.targetLanguage = target;
    for (const DocumentResult &document : results) {
        if (!document.error.isEmpty())
            result.errors.append(document.error);
        result.catalog.units.append(document.units);
    }
    return result;
}

void mergeEarlier(Catalog *fresh, const Catalog &earlier)
{
    QHash<QString, const TranslationUnit *> earlierUnits;
    for (const TranslationUnit &unit : earlier.units)
        earlierUnits.insert(unit.id, &unit);
    for (TranslationUnit &unit : fresh->units) {
        const TranslationUnit *before = earlierUnits.value(unit.id);
        if (!before || before->target.isEmpty())
            continue;
        if (before->source == unit.source) {
            unit.target = before->target;
            unit.fuzzy = before->fuzzy;
            unit.previousSource = before->previousSource;
        } else {
            unit.target = before->target;
            unit.fuzzy = true;
            unit.previousSource = before->source;
        }
    }
    fresh->translatorFields = earlier.translatorFields;
}

} // namespace ZyHelp::Translate
