#include "exporter.h"

#include "documentunits.h"
#include "powriter.h"
#include "xliffwriter.h"

#include <QBuffer>
#include <QFileDevice>
#include <QtConcurrent/QtConcurrentMap>
#include <QtEndian>

#include <algorithm>
#include <cstring>

#ifdef Q_OS_LINUX
# include <fcntl.h>
#endif

namespace ZyHelp::Translate {

namespace {

const qsizetype batchSize = 512;

struct DocumentText
{
    QByteArray bytes; // the document's units, written
    QString error;
};

} // namespace

namespace {

// A packed unit: the lengths of its id, source, target and previous source,
// its fuzzy flag, then the four texts in UTF-8.
void appendText(QByteArray *out, const QByteArray &text)
{
    const quint32 size = qToLittleEndian(quint32(text.size()));
    out->append(reinterpret_cast<const char *>(&size), sizeof size);
    out->append(text);
}

QByteArrayView takeText(QByteArrayView *in)
{
    quint32 size = 0;
    std::memcpy(&size, in->data(), sizeof size);
    size = qFromLittleEndian(size);
    const QByteArrayView text = in->sliced(sizeof size, size);
    *in = in->sliced(sizeof size + size);
    return text;
}

// The document part of a unit id, "kapitel/b.zyhelp" of "kapitel/b.zyhelp#2/name".
QByteArrayView documentOf(QByteArrayView id)
{
    qsizetype hash = id.size() - 1;
    while (hash > 0 && id.at(hash) != '#')
        --hash;
    return id.first(std::max<qsizetype>(hash, 0));
}

// The file reaches the disk when it is committed, and a large export would
// make its user wait for all of it then: what is written so far is sent on
// its way while the next documents are read. Nothing waits for it here.
void startWriteback(QIODevice *device)
{
#ifdef Q_OS_LINUX
    auto *file = qobject_cast<QFileDevice *>(device);
    if (file && file->handle() >= 0 && file->flush())
        ::sync_file_range(file->handle(), 0, 0, SYNC_FILE_RANGE_WRITE);
#else
    Q_UNUSED(device);
#endif
}

} // namespace

bool EarlierTranslations::read(const QString &path, Catalog *header, QString *error)
{
    const bool read =
        CatalogFile::read(path, header, error, [this](TranslationUnit &&unit) { add(unit); });
    pack();
    return read;
}

void EarlierTranslations::add(const TranslationUnit &unit)
{
    if (unit.target.isEmpty())
        return; // nothing to merge
    const QByteArray id = unit.id.toUtf8();
    const QByteArrayView document = documentOf(id);
    if (document.isEmpty())
        return; // no id of ours
    if (document != m_document) {
        // Blocks of some 64 KiB: zlib's own memory for each call costs more
        // than a block of a single document saves.
        if (m_open.size() >= 1 << 16)
            pack();
        m_document = document.toByteArray();
    }
    QList<qsizetype> &blocks = m_blocksOf[m_document];
    if (blocks.isEmpty() || blocks.last() != m_blocks.size())
        blocks.append(m_blocks.size()); // the block m_open becomes
    appendText(&m_open, id);
    appendText(&m_open, unit.source.toUtf8());
    appendText(&m_open, unit.target.toUtf8());
    appendText(&m_open, unit.previousSource.toUtf8());
    m_open.append(unit.fuzzy ? '1' : '0');
}

void EarlierTranslations::pack()
{
    if (m_open.isEmpty())
        return;
    QByteArray packed = qCompress(m_open, 1);
    packed.squeeze(); // qCompress leaves room for the text uncompressed
    m_blocks.append(packed);
    m_open.resize(0);
}

void EarlierTranslations::merge(QList<TranslationUnit> *units) const
{
    if (units->isEmpty())
        return;
    const QByteArray document = documentOf(units->first().id.toUtf8()).toByteArray();
    const auto blockList = m_blocksOf.constFind(document);
    if (blockList == m_blocksOf.cend())
        return;
    struct Before
    {
        QByteArrayView source;
        QByteArrayView target;
        QByteArrayView previousSource;
        bool fuzzy = false;
    };
    QList<QByteArray> blocks;
    QHash<QByteArrayView, Before> byId;
    for (const qsizetype block : *blockList) {
        blocks.append(qUncompress(m_blocks.at(block)));
        for (QByteArrayView in(blocks.last()); !in.isEmpty();) {
            const QByteArrayView id = takeText(&in);
            Before before;
            before.source = takeText(&in);
            before.target = takeText(&in);
            before.previousSource = takeText(&in);
            before.fuzzy = in.front() == '1';
            in = in.sliced(1);
            if (documentOf(id) == document)
                byId.insert(id, before);
        }
    }
    for (TranslationUnit &unit : *units) {
        const auto found = byId.constFind(unit.id.toUtf8());
        if (found == byId.cend())
            continue;
        unit.target = QString::fromUtf8(found->target);
        if (found->source == unit.source.toUtf8()) {
            unit.fuzzy = found->fuzzy;
            unit.previousSource = QString::fromUtf8(found->previousSource);
        } else {
            unit.fuzzy = true;
            unit.previousSource = QString::fromUtf8(found->source);
        }
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
        QList<TranslationUnit> units =
            documentUnits(data, entry.relativePath, header.sourceLanguage, header.targetLanguage);
        if (earlier)
            earlier->merge(&units);
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
    bool empty = true;
    for (qsizetype first = 0; first < documents.size(); first += batchSize) {
        const QList<DocumentText> texts = batch.results();
        if (first + batchSize < documents.size())
            batch = start(first + batchSize);
        for (const DocumentText &text : texts) {
            if (!text.error.isEmpty())
                errors.append(text.error);
            device->write(text.bytes);
            empty = empty && text.bytes.isEmpty();
        }
        startWriteback(device);
    }
    if (format == CatalogFile::Xliff)
        XliffWriter(device, header.sourceLanguage, header.targetLanguage).finish(empty);
    return errors;
}

} // namespace ZyHelp::Translate
