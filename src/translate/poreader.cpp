#include "poreader.h"

#include <QHash>
#include <QIODevice>
#include <QStringDecoder>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace ZyHelp::Translate {

namespace {

const qint64 blockSize = 1 << 20;

// One entry while it is read; the strings stay UTF-8 until it is complete.
struct Entry
{
    QByteArray context;
    QByteArray id;
    QByteArray translation;
    QByteArray previousId;
    bool hasContext = false;
    bool hasId = false;
    bool hasTranslation = false;
    bool plural = false;
    bool fuzzy = false;
    bool obsolete = false;
    bool byteEscapes = false; // octal or hexadecimal: the bytes may not be UTF-8
    qint64 line = 0;
};

// The index of the first byte that is not part of well-formed UTF-8, or -1.
qsizetype invalidUtf8(const QByteArray &text)
{
    const qsizetype size = text.size();
    const char *data = text.constData();
    for (qsizetype i = 0; i < size;) {
        // Help texts are mostly ASCII: eight bytes at a time while no high bit is set.
        if (i + 8 <= size) {
            quint64 word;
            std::memcpy(&word, data + i, 8);
            if (!(word & 0x8080808080808080ULL)) {
                i += 8;
                continue;
            }
        }
        const uchar c = uchar(data[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        const int length = c >= 0xC2 && c <= 0xDF ? 2
            : c >= 0xE0 && c <= 0xEF              ? 3
            : c >= 0xF0 && c <= 0xF4              ? 4
                                                  : 0;
        if (length == 0 || i + length > size)
            return i;
        const uchar second = uchar(text.at(i + 1));
        // Overlong forms, surrogates and code points beyond U+10FFFF.
        if ((c == 0xE0 && second < 0xA0) || (c == 0xED && second > 0x9F)
            || (c == 0xF0 && second < 0x90) || (c == 0xF4 && second > 0x8F))
            return i;
        for (int k = 1; k < length; ++k) {
            if ((uchar(text.at(i + k)) & 0xC0) != 0x80)
                return i;
        }
        i += length;
    }
    return -1;
}

class Parser
{
public:
    Parser(Catalog *catalog, ReadError *error, const std::function<void(TranslationUnit &&)> &sink,
           const std::function<void(EncodedUnit &&)> &encodedSink, bool keepUnits = true)
        : m_catalog(catalog)
        , m_error(error)
        , m_sink(sink)
        , m_encodedSink(encodedSink)
        , m_keepUnits(keepUnits)
    {
    }

    bool line(const QByteArray &text, qint64 number);
    bool finish(qint64 lastLine);

private:
    bool fail(qint64 column, const QString &message)
    {
        *m_error = ReadError{m_line, column, message};
        return false;
    }
    bool keyword(const QByteArray &text, qsizetype from, bool previous);
    bool string(const QByteArray &text, qsizetype from, QByteArray *out);
    bool endEntry();
    bool sendEncoded();
    bool readHeader(const QString &header);

    Catalog *m_catalog;
    ReadError *m_error;
    const std::function<void(TranslationUnit &&)> &m_sink;
    const std::function<void(EncodedUnit &&)> &m_encodedSink;
    Entry m_entry;
    QByteArray *m_current = nullptr; // where a continuation line goes
    QByteArray m_ignored; // strings read but not kept
    qint64 m_line = 0;
    bool m_headerSeen = false;
    QByteArrayView keep(const QByteArray &id);

    QHash<QByteArrayView, qint64> m_ids; // line of each id read, by the id in UTF-8
    QList<QByteArray> m_idStore; // the ids' bytes, in blocks that are never moved
    bool m_keepUnits = true; // false: the file is only checked
};

bool Parser::string(const QByteArray &text, qsizetype from, QByteArray *out)
{
    qsizetype i = from;
    while (i < text.size() && (text.at(i) == ' ' || text.at(i) == '\t'))
        ++i;
    if (i >= text.size() || text.at(i) != '"')
        return fail(i + 1, QStringLiteral("a string in double quotes expected"));
    for (++i; i < text.size(); ++i) {
        const char c = text.at(i);
        if (c == '"') {
            for (qsizetype j = i + 1; j < text.size(); ++j) {
                if (text.at(j) != ' ' && text.at(j) != '\t')
                    return fail(j + 1, QStringLiteral("text after the end of a string"));
            }
            return true;
        }
        if (c != '\\') {
            // The run up to the next quote or backslash in one go, found by memchr:
            // reading a catalog is mostly this.
            const char *data = text.constData();
            const char *stop = data + text.size();
            if (const void *quote = std::memchr(data + i, '"', size_t(stop - data - i)))
                stop = static_cast<const char *>(quote);
            if (const void *backslash = std::memchr(data + i, '\\', size_t(stop - data - i)))
                stop = static_cast<const char *>(backslash);
            const qsizetype end = stop - data;
            out->append(data + i, end - i);
            i = end - 1;
            continue;
        }
        if (++i >= text.size())
            break;
        const char e = text.at(i);
        static const char from8[] = "ntr\"\\abfv?'";
        static const char to8[] = "\n\t\r\"\\\a\b\f\v?'";
        if (const char *known = std::strchr(from8, e); known && e) {
            out->append(to8[known - from8]);
        } else if (e >= '0' && e <= '7') {
            int value = 0;
            for (int n = 0; n < 3 && i < text.size() && text.at(i) >= '0' && text.at(i) <= '7';
                 ++n, ++i)
                value = value * 8 + (text.at(i) - '0');
            --i;
            out->append(char(value));
            m_entry.byteEscapes = true;
        } else if (e == 'x') {
            int value = 0;
            int digits = 0;
            while (i + 1 < text.size() && std::isxdigit(uchar(text.at(i + 1)))) {
                // Any number of digits, of which the last two give the byte.
                value = (value * 16 + QByteArray(1, text.at(++i)).toInt(nullptr, 16)) & 0xFF;
                ++digits;
            }
            if (digits == 0)
                return fail(i + 1, QStringLiteral("\\x without hexadecimal digits"));
            out->append(char(value));
            m_entry.byteEscapes = true;
        } else {
            return fail(i, QStringLiteral("unknown escape sequence '\\%1'").arg(QChar(e)));
        }
    }
    return fail(text.size() + 1, QStringLiteral("the string is not closed"));
}

// "msgid ..." and its kin; previous: after "#|".
bool Parser::keyword(const QByteArray &text, qsizetype from, bool previous)
{
    qsizetype end = from;
    while (end < text.size() && text.at(end) != ' ' && text.at(end) != '\t' && text.at(end) != '"')
        ++end;
    const QByteArrayView word(text.constData() + from, end - from);
    if (previous) {
        // The previous context and plural tell the translator more; only the
        // previous source is kept.
        m_ignored.clear();
        m_current = word == "msgid" ? &m_entry.previousId : &m_ignored;
        if (word != "msgid" && word != "msgctxt" && word != "msgid_plural")
            return fail(from + 1,
                        QStringLiteral("unknown keyword '%1'").arg(QString::fromUtf8(word)));
        return string(text, end, m_current);
    }
    if ((word == "msgctxt" || word == "msgid") && m_entry.hasTranslation) {
        if (!endEntry())
            return false;
    }
    if (m_entry.line == 0)
        m_entry.line = m_line;
    if (word == "msgctxt") {
        if (m_entry.hasContext || m_entry.hasId)
            return fail(from + 1, QStringLiteral("msgctxt out of place"));
        m_entry.hasContext = true;
        m_current = &m_entry.context;
    } else if (word == "msgid") {
        if (m_entry.hasId)
            return fail(from + 1,
                        QStringLiteral("msgid out of place: the entry before has no msgstr"));
        m_entry.hasId = true;
        m_current = &m_entry.id;
    } else if (word == "msgid_plural") {
        if (!m_entry.hasId)
            return fail(from + 1, QStringLiteral("msgid_plural without msgid"));
        m_entry.plural = true;
        m_ignored.clear();
        m_current = &m_ignored;
    } else if (word == "msgstr" || word.startsWith("msgstr[")) {
        if (!m_entry.hasId)
            return fail(from + 1, QStringLiteral("msgstr without msgid"));
        const bool first = !m_entry.hasTranslation;
        m_entry.hasTranslation = true;
        m_ignored.clear();
        m_current =
            (word == "msgstr" || word == "msgstr[0]") && first ? &m_entry.translation : &m_ignored;
    } else {
        return fail(from + 1, QStringLiteral("unknown keyword '%1'").arg(QString::fromUtf8(word)));
    }
    return string(text, end, m_current);
}

// text: the line without its line break.
bool Parser::line(const QByteArray &text, qint64 number)
{
    m_line = number;
    if (number == 1 && text.startsWith("\xEF\xBB\xBF"))
        return fail(1,
                    QStringLiteral("the file starts with a byte-order mark; PO files are "
                                   "UTF-8 without one"));
    if (const qsizetype bad = invalidUtf8(text); bad >= 0)
        return fail(bad + 1, QStringLiteral("not UTF-8"));
    qsizetype i = 0;
    while (i < text.size() && (text.at(i) == ' ' || text.at(i) == '\t'))
        ++i;
    if (i == text.size()) {
        m_current = nullptr;
        return true;
    }
    bool obsolete = false;
    if (i + 1 < text.size() && text.at(i) == '#' && text.at(i + 1) == '~') {
        obsolete = true;
        i += 2;
        while (i < text.size() && text.at(i) == ' ')
            ++i;
        if (i == text.size() || text.at(i) == '|')
            return true; // an obsolete entry's previous fields
    }
    if (obsolete && m_entry.hasId && !m_entry.obsolete && m_entry.hasTranslation && !endEntry())
        return false;
    if (text.at(i) == '#') {
        const char kind = i + 1 < text.size() ? text.at(i + 1) : ' ';
        if (m_entry.hasTranslation && (!obsolete || m_entry.obsolete) && !endEntry())
            return false;
        if (kind == '|') {
            qsizetype from = i + 2;
            while (from < text.size() && text.at(from) == ' ')
                ++from;
            if (from < text.size() && text.at(from) == '"') { // a previous string goes on
                if (!m_current)
                    return fail(from + 1, QStringLiteral("a string that continues nothing"));
                return string(text, from, m_current);
            }
            return keyword(text, from, true);
        }
        if (kind == ',' && !obsolete) {
            const QList<QByteArray> flags = text.mid(i + 2).split(',');
            for (const QByteArray &flag : flags)
                m_entry.fuzzy = m_entry.fuzzy || flag.trimmed() == "fuzzy";
        }
        m_current = nullptr;
        return true;
    }
    if (obsolete)
        m_entry.obsolete = true;
    if (text.at(i) == '"') {
        if (!m_current)
            return fail(i + 1, QStringLiteral("a string that continues nothing"));
        return string(text, i, m_current);
    }
    return keyword(text, i, false);
}

bool Parser::readHeader(const QString &header)
{
    m_headerSeen = true;
    for (const QString &field : header.split(u'\n', Qt::SkipEmptyParts)) {
        const qsizetype colon = field.indexOf(u':');
        if (colon < 0)
            continue;
        const QString name = field.left(colon).trimmed();
        const QString value = field.mid(colon + 1).trimmed();
        if (name == u"Language") {
            m_catalog->targetLanguage = value;
        } else if (name == u"X-Source-Language") {
            m_catalog->sourceLanguage = value;
        } else if (name == u"Project-Id-Version") {
            m_catalog->projectName = value;
        } else if (name == u"Content-Type") {
            const qsizetype charset = value.indexOf(u"charset=", 0, Qt::CaseInsensitive);
            const QString name8 = charset < 0 ? QString() : value.mid(charset + 8).trimmed();
            if (!name8.isEmpty() && name8.compare(u"UTF-8", Qt::CaseInsensitive) != 0
                && name8 != u"CHARSET")
                return fail(1, QStringLiteral("the charset is %1; only UTF-8 is read").arg(name8));
        } else if (name == u"Last-Translator" || name == u"Language-Team"
                   || name == u"PO-Revision-Date" || name == u"Plural-Forms") {
            m_catalog->translatorFields.append({name, value});
        }
    }
    return true;
}

bool Parser::endEntry()
{
    // The entry's buffers are kept for the next one: no allocation per entry.
    struct Reset
    {
        Entry &entry;
        ~Reset()
        {
            for (QByteArray *text :
                 {&entry.context, &entry.id, &entry.translation, &entry.previousId})
                text->resize(0);
            entry.hasContext = entry.hasId = entry.hasTranslation = false;
            entry.plural = entry.fuzzy = entry.obsolete = entry.byteEscapes = false;
            entry.line = 0;
        }
    } reset{m_entry};
    // Its faults are reported at its start; the line read goes on after it.
    const struct LineBack
    {
        qint64 &line;
        qint64 value;
        ~LineBack() { line = value; }
    } lineBack{m_line, m_line};
    const Entry &entry = m_entry;
    m_current = nullptr;
    if (!entry.hasId)
        return true;
    m_line = entry.line;
    if (!entry.hasTranslation)
        return fail(1, QStringLiteral("the entry has no msgstr"));
    if (entry.obsolete)
        return true;
    if (!entry.hasContext && entry.id.isEmpty()) {
        if (m_headerSeen)
            return fail(1, QStringLiteral("a second header entry"));
        return readHeader(QString::fromUtf8(entry.translation));
    }
    // Octal and hexadecimal escapes give bytes, so their strings are checked
    // again; the lines were checked as they were read.
    for (const QByteArray *text :
         {&entry.context, &entry.id, &entry.translation, &entry.previousId}) {
        if (entry.byteEscapes && invalidUtf8(*text) >= 0)
            return fail(1, QStringLiteral("an escape gives a string that is not UTF-8"));
    }
    // An encoded read goes beside a check of the same file, which finds ids given twice.
    if (m_encodedSink)
        return sendEncoded();
    const auto seen = m_ids.constFind(entry.context);
    if (seen != m_ids.cend())
        return fail(1,
                    QStringLiteral("the id '%1' was given before, on line %2")
                        .arg(QString::fromUtf8(entry.context))
                        .arg(seen.value()));
    m_ids.insert(keep(entry.context), entry.line);
    if (!m_keepUnits)
        return true;
    TranslationUnit unit;
    unit.id = QString::fromUtf8(entry.context);
    unit.source = QString::fromUtf8(entry.id);
    // Help texts have no plural forms: a plural entry is nothing of ours.
    if (!entry.plural)
        unit.target = QString::fromUtf8(entry.translation);
    unit.previousSource = QString::fromUtf8(entry.previousId);
    unit.fuzzy = entry.fuzzy;
    unit.line = entry.line;
    if (m_sink)
        m_sink(std::move(unit));
    else
        m_catalog->units.append(std::move(unit));
    return true;
}

bool Parser::sendEncoded()
{
    const Entry &entry = m_entry;
    EncodedUnit unit;
    const QByteArrayView target =
        entry.plural ? QByteArrayView() : QByteArrayView(entry.translation);
    unit.texts.reserve(entry.context.size() + entry.id.size() + target.size()
                       + entry.previousId.size());
    unit.texts += entry.context;
    unit.sourceAt = unit.texts.size();
    unit.texts += entry.id;
    unit.targetAt = unit.texts.size();
    unit.texts.append(target);
    unit.previousAt = unit.texts.size();
    unit.texts += entry.previousId;
    unit.fuzzy = entry.fuzzy;
    unit.line = entry.line;
    m_encodedSink(std::move(unit));
    return true;
}

// A copy of id for m_ids: tens of thousands of ids cost a few blocks, not an
// allocation each.
QByteArrayView Parser::keep(const QByteArray &id)
{
    const qsizetype idBlockSize = 1 << 16;
    if (m_idStore.isEmpty() || m_idStore.last().capacity() - m_idStore.last().size() < id.size()) {
        m_idStore.append(QByteArray());
        m_idStore.last().reserve(std::max(idBlockSize, id.size()));
    }
    QByteArray &block = m_idStore.last();
    const qsizetype at = block.size();
    block.append(id); // within its capacity: the bytes before do not move
    return QByteArrayView(block.constData() + at, id.size());
}

bool Parser::finish(qint64 lastLine)
{
    if (m_entry.hasId && !m_entry.hasTranslation) {
        m_line = lastLine;
        return fail(1, QStringLiteral("the file ends in an entry without msgstr"));
    }
    if (!endEntry())
        return false;
    if (!m_headerSeen) {
        m_line = 1;
        return fail(1, QStringLiteral("no header entry (msgid \"\") with the languages"));
    }
    return true;
}

} // namespace

bool PoReader::check(QIODevice *device, Catalog *catalog, ReadError *error)
{
    return read(device, catalog, error, {}, {}, false);
}

bool PoReader::read(QIODevice *device, Catalog *catalog, ReadError *error,
                    const std::function<void(TranslationUnit &&)> &sink)
{
    return read(device, catalog, error, sink, {}, true);
}

bool PoReader::readEncoded(QIODevice *device, Catalog *catalog, ReadError *error,
                           const std::function<void(EncodedUnit &&)> &sink)
{
    return read(device, catalog, error, {}, sink, true);
}

bool PoReader::read(QIODevice *device, Catalog *catalog, ReadError *error,
                    const std::function<void(TranslationUnit &&)> &sink,
                    const std::function<void(EncodedUnit &&)> &encodedSink, bool keepUnits)
{
    Parser parser(catalog, error, sink, encodedSink, keepUnits);
    // Units take a few hundred bytes each: the list grows seldom.
    if (!sink && !encodedSink && keepUnits)
        catalog->units.reserve(qsizetype(device->size() / 256));
    // Read in large blocks and cut into lines here: a read per line costs
    // more than the parsing. A line that a block cuts goes on in the next.
    qint64 number = 0;
    QByteArray block;
    qsizetype start = 0; // of the next line in block
    bool atEnd = false;
    for (;;) {
        const char *data = block.constData();
        const auto *newline = static_cast<const char *>(
            std::memchr(data + start, '\n', size_t(block.size() - start)));
        if (!newline) {
            if (!atEnd) {
                // The rest of the block to its front, and the next block after it,
                // in the same memory: a new block each time would cost page faults.
                const qsizetype rest = block.size() - start;
                std::memmove(block.data(), block.constData() + start, size_t(rest));
                // A small file gets a block of its size, not a mebibyte.
                const qint64 size = device->isSequential()
                    ? blockSize
                    : std::clamp<qint64>(device->bytesAvailable(), 1, blockSize);
                block.resize(rest + size);
                const qint64 read = device->read(block.data() + rest, size);
                atEnd = read <= 0;
                block.resize(rest + std::max<qint64>(read, 0));
                start = 0;
                continue;
            }
            if (start == block.size())
                break;
        }
        qsizetype end = newline ? newline - data : block.size();
        const qsizetype next = end + 1;
        if (end > start && data[end - 1] == '\r')
            --end;
        if (!parser.line(QByteArray::fromRawData(data + start, end - start), ++number))
            return false;
        if (!newline)
            break; // the last line, without a line break
        start = next;
    }
    return parser.finish(number);
}

} // namespace ZyHelp::Translate
