#include "exporter.h"

#include "documentunits.h"
#include "powriter.h"
#include "xliffwriter.h"

#include <QBuffer>
#include <QtConcurrent/QtConcurrentMap>

namespace ZyHelp::Translate {

namespace {

const qsizetype batchSize = 512;

struct DocumentText
{
    QByteArray bytes; // the document's units, written
    QString error;
};

} // namespace

EarlierTranslations::EarlierTranslations(const Catalog &earlier)
    : m_earlier(earlier)
{
    for (qsizetype i = 0; i < m_earlier.units.size(); ++i)
        m_index.insert(m_earlier.units.at(i).id, i);
}

void EarlierTranslations::merge(TranslationUnit *unit) const
{
    const qsizetype index = m_index.value(unit->id, -1);
    if (index < 0 || m_earlier.units.at(index).target.isEmpty())
        return;
    const TranslationUnit &before = m_earlier.units.at(index);
    unit->target = before.target;
    if (before.source == unit->source) {
        unit->fuzzy = before.fuzzy;
        unit->previousSource = before.previousSource;
    } else {
        unit->fuzzy = true;
        unit->previousSource = before.source;
    }
}

QStringList exportCatalog(const QList<DocumentEntry> &documents, const Catalog &header,
                          const EarlierTranslations *earlier, CatalogFile::Format format,
                          QIODevice *device)
{
    const auto write = [&](const DocumentEntry &entry) {
        DocumentText result;
        ParseStatus status;
        const HelpData data = HelpParser().parse(entry.filePath, &status);
        if (status.outcome == ParseStatus::Unreadable) {
            result.error = QStringLiteral("%1: error: cannot open the file: %2; nothing exported")
                               .arg(entry.displayPath, status.errorString);
            return result;
        }
        if (status.outcome == ParseStatus::Faulty) {
            result.error = QStringLiteral("%1:%2:%3: error: faulty XML: %4; nothing exported")
                               .arg(entry.displayPath)
                               .arg(status.line)
                               .arg(status.column)
                               .arg(status.errorString);
            return result;
        }
        QList<TranslationUnit> units = documentUnits(data, entry.relativePath,
                                                     header.sourceLanguage, header.targetLanguage);
        if (earlier) {
            for (TranslationUnit &unit : units)
                earlier->merge(&unit);
        }
        QBuffer buffer(&result.bytes);
        buffer.open(QIODevice::WriteOnly);
        if (format == CatalogFile::Xliff) {
            XliffWriter(&buffer, header.sourceLanguage, header.targetLanguage).writeDocument(units);
        } else {
            PoWriter writer(&buffer);
            for (const TranslationUnit &unit : std::as_const(units))
                writer.writeUnit(unit);
            writer.finish();
        }
        return result;
    };

    QStringList errors;
    if (format == CatalogFile::Xliff)
        XliffWriter(device, header.sourceLanguage, header.targetLanguage).writeHeader();
    else
        PoWriter(device).writeHeader(header);
    // The next batch is read while this one is written out.
    const auto start = [&](qsizetype first) {
        return QtConcurrent::mapped(documents.mid(first, batchSize), write);
    };
    QFuture<DocumentText> batch = start(0);
    for (qsizetype first = 0; first < documents.size(); first += batchSize) {
        const QList<DocumentText> texts = batch.results();
        if (first + batchSize < documents.size())
            batch = start(first + batchSize);
        for (const DocumentText &text : texts) {
            if (!text.error.isEmpty())
                errors.append(text.error);
            device->write(text.bytes);
        }
    }
    if (format == CatalogFile::Xliff)
        XliffWriter(device, header.sourceLanguage, header.targetLanguage).finish();
    return errors;
}

} // namespace ZyHelp::Translate
