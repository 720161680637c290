#include "powriter.h"

#include <QDateTime>
#include <QIODevice>

#include <algorithm>
#include <array>

namespace ZyHelp::Translate {

namespace {

const int wrapWidth = 79; // gettext's

// Whether the backslash at index is itself escaped by the one before it.
bool escapedBackslash(const QByteArray &text, qsizetype index)
{
    qsizetype run = 0;
    while (index - run - 1 >= 0 && text.at(index - run - 1) == '\\')
        ++run;
    return run % 2 == 1;
}

// The bytes that a PO string escapes: one load decides, instead of three comparisons.
constexpr auto poSpecial = [] {
    std::array<bool, 0x100> special{};
    for (uchar c = 0; c < 0x20; ++c)
        special[c] = true;
    special['\\'] = special['"'] = true;
    return special;
}();

// Appends the text in UTF-8 with the C escapes of PO strings to out.
void appendEscaped(const QString &text, QByteArray *out)
{
    const QByteArray utf8 = text.toUtf8();
    const auto special = [](char c) { return poSpecial[uchar(c)]; };
    auto run = std::find_if(utf8.cbegin(), utf8.cend(), special);
    out->append(utf8.cbegin(), run - utf8.cbegin());
    while (run != utf8.cend()) {
        switch (*run) {
        case '\\':
            *out += "\\\\";
            break;
        case '"':
            *out += "\\\"";
            break;
        case '\n':
            *out += "\\n";
            break;
        case '\t':
            *out += "\\t";
            break;
        case '\r':
            *out += "\\r";
            break;
        case '\a':
            *out += "\\a";
            break;
        case '\b':
            *out += "\\b";
            break;
        case '\f':
            *out += "\\f";
            break;
        case '\v':
            *out += "\\v";
            break;
        default:
            *out += *run;
        }
        const auto next = std::find_if(run + 1, utf8.cend(), special);
        out->append(run + 1, next - run - 1);
        run = next;
    }
}

// The columns gettext counts for a byte of UTF-8: none for the continuation
// of a character, nor for a control character that has no escape.
constexpr auto byteColumns = [] {
    std::array<uchar, 0x100> columns{};
    for (int c = 0x20; c < 0x100; ++c)
        columns[c] = (c & 0xC0) != 0x80;
    return columns;
}();

int columnsOf(char c)
{
    return byteColumns[uchar(c)];
}

// Where gettext would cut the escaped text into lines: after every "\n"
// and, where a line would pass the width (in columns, not UTF-8 bytes),
// after the last space that fits. A longer word stays whole. ends takes the
// end of every line but the last, which ends with the text.
void wrap(const QByteArray &text, qsizetype width, QList<qsizetype> *ends)
{
    ends->clear();
    qsizetype start = 0;
    qsizetype columns = 0;
    qsizetype cut = -1; // after the last space of the line
    bool word = false; // whether the line has more than spaces so far
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        columns += columnsOf(c);
        if (columns > width && cut > start) {
            ends->append(cut);
            start = cut;
            i = cut - 1;
            columns = 0;
            cut = -1;
            word = false;
            continue;
        }
        if (c != ' ')
            word = true;
        else if (word) // spaces that begin a line are no place to cut
            cut = i + 1;
        if (c == 'n' && i > start && text.at(i - 1) == '\\' && !escapedBackslash(text, i - 1)) {
            ends->append(i + 1);
            start = i + 1;
            columns = 0;
            cut = -1;
            word = false;
        }
    }
    if (!ends->isEmpty() && ends->last() == text.size())
        ends->removeLast();
}

QString header(const Catalog &catalog)
{
    const bool isTemplate = catalog.targetLanguage.isEmpty();
    const QString now =
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm+0000"));
    QList<std::pair<QString, QString>> fields{
        {QStringLiteral("Project-Id-Version"), catalog.projectName},
        {QStringLiteral("Report-Msgid-Bugs-To"), QString()},
        {QStringLiteral("POT-Creation-Date"), now},
        {QStringLiteral("PO-Revision-Date"),
         isTemplate ? QStringLiteral("YEAR-MO-DA HO:MI+ZONE") : now},
        {QStringLiteral("Last-Translator"),
         isTemplate ? QStringLiteral("FULL NAME <EMAIL@ADDRESS>") : QString()},
        {QStringLiteral("Language-Team"),
         isTemplate ? QStringLiteral("LANGUAGE <LL@li.org>") : catalog.targetLanguage},
        {QStringLiteral("Language"), catalog.targetLanguage},
        {QStringLiteral("MIME-Version"), QStringLiteral("1.0")},
        {QStringLiteral("Content-Type"), QStringLiteral("text/plain; charset=UTF-8")},
        {QStringLiteral("Content-Transfer-Encoding"), QStringLiteral("8bit")},
        {QStringLiteral("X-Source-Language"), catalog.sourceLanguage},
        {QStringLiteral("X-Generator"), QStringLiteral("zyhelptranslate")},
    };
    // Not a structured binding: clang before 16 cannot capture one in a lambda.
    for (const std::pair<QString, QString> &field : catalog.translatorFields) {
        const auto known = std::find_if(fields.begin(), fields.end(),
                                        [&](const auto &f) { return f.first == field.first; });
        if (known != fields.end())
            known->second = field.second;
        else
            fields.append(field);
    }
    QString text;
    for (const auto &[name, value] : std::as_const(fields))
        text += name + QStringLiteral(": ") + value + u'\n';
    return text;
}

} // namespace

PoWriter::PoWriter(QIODevice *device)
    : m_device(device)
{
}

void PoWriter::writeString(const char *keyword, const QString &text, const char *prefix)
{
    // The escaped text and its line ends are kept in members: a unit's strings
    // allocate nothing once the first few have been written.
    m_escaped.resize(0);
    appendEscaped(text, &m_escaped);
    const QByteArray &body = m_escaped;
    const qsizetype prefixLength = qsizetype(qstrlen(prefix));
    const qsizetype lead = prefixLength + qsizetype(qstrlen(keyword)) + 1;
    wrap(body, wrapWidth - 2 - prefixLength, &m_lineEnds);
    const auto characters = [&] {
        return std::count_if(body.cbegin(), body.cend(), [](char c) { return columnsOf(c) > 0; });
    };
    // gettext cuts only at a space after the first other character and before
    // the last: a text with no such space stays beside its keyword however long.
    const auto cuttable = [&] {
        const auto last = body.isEmpty() ? body.cend() : body.cend() - 1;
        const auto word = std::find_if(body.cbegin(), last, [](char c) { return c != ' '; });
        return std::find(word, last, ' ') != last;
    };
    m_buffer += prefix;
    m_buffer += keyword;
    if (m_lineEnds.isEmpty() && (lead + 2 + characters() <= wrapWidth || !cuttable())) {
        m_buffer += " \"";
        m_buffer += body;
        m_buffer += "\"\n";
        return;
    }
    m_buffer += " \"\"\n";
    qsizetype start = 0;
    for (qsizetype i = 0; i <= m_lineEnds.size(); ++i) {
        const qsizetype end = i < m_lineEnds.size() ? m_lineEnds.at(i) : body.size();
        if (end == start && i == m_lineEnds.size())
            break; // an empty text has no line
        m_buffer += prefix;
        m_buffer += '"';
        m_buffer.append(body.constData() + start, end - start);
        m_buffer += "\"\n";
        start = end;
    }
}

void PoWriter::writeHeader(const Catalog &catalog)
{
    m_buffer += "# Help texts from '" + catalog.sourceLanguage.toUtf8() + "' to '"
        + (catalog.targetLanguage.isEmpty() ? QByteArray("LANGUAGE")
                                            : catalog.targetLanguage.toUtf8())
        + "', written by zyhelptranslate.\n";
    // A template's header is fuzzy, as xgettext writes it: it is not filled in yet.
    if (catalog.targetLanguage.isEmpty())
        m_buffer += "#, fuzzy\n";
    m_buffer += "msgid \"\"\n";
    writeString("msgstr", header(catalog));
    m_device->write(m_buffer);
    m_buffer.clear();
}

void PoWriter::writeUnit(const TranslationUnit &unit)
{
    m_buffer += '\n';
    if (!unit.note.isEmpty()) {
        const qsizetype from = m_buffer.size() + 3;
        m_buffer += "#. ";
        m_buffer += unit.note.toUtf8();
        std::replace(m_buffer.begin() + from, m_buffer.end(), '\n', ' ');
        m_buffer += '\n';
    }
    if (!unit.document.isEmpty()) {
        m_buffer += "#: ";
        m_buffer += unit.document.toUtf8();
        m_buffer += '\n';
    }
    if (unit.fuzzy) {
        m_buffer += "#, fuzzy\n";
        if (!unit.previousSource.isEmpty())
            writeString("msgid", unit.previousSource, "#| ");
    }
    writeString("msgctxt", unit.id);
    writeString("msgid", unit.source);
    writeString("msgstr", unit.target);
    if (m_buffer.size() > 1 << 16) {
        m_device->write(m_buffer);
        m_buffer.clear();
    }
}

void PoWriter::finish()
{
    m_device->write(m_buffer);
    m_buffer.clear();
}

void PoWriter::write(const Catalog &catalog)
{
    writeHeader(catalog);
    for (const TranslationUnit &unit : catalog.units)
        writeUnit(unit);
    finish();
}

} // namespace ZyHelp::Translate
