#include "powriter.h"

#include <QDateTime>
#include <QIODevice>

#include <algorithm>

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

QByteArray escaped(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    const auto special = [](char c) { return uchar(c) < 0x20 || c == '\\' || c == '"'; };
    auto run = std::find_if(utf8.cbegin(), utf8.cend(), special);
    if (run == utf8.cend())
        return utf8;
    QByteArray out;
    out.reserve(utf8.size() + utf8.size() / 8);
    out.append(utf8.cbegin(), run - utf8.cbegin());
    while (run != utf8.cend()) {
        switch (*run) {
        case '\\': out += "\\\\"; break;
        case '"': out += "\\\""; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '\r': out += "\\r"; break;
        case '\a': out += "\\a"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\v': out += "\\v"; break;
        default: out += *run;
        }
        const auto next = std::find_if(run + 1, utf8.cend(), special);
        out.append(run + 1, next - run - 1);
        run = next;
    }
    return out;
}

// The escaped text cut into the lines gettext would write: after every "\n"
// and, where a line would pass the width (in characters, not UTF-8 bytes),
// after the last space that fits. A longer word stays whole.
QList<QByteArray> wrapped(const QByteArray &text, qsizetype width)
{
    QList<QByteArray> lines;
    qsizetype start = 0;
    qsizetype columns = 0;
    qsizetype cut = -1; // after the last space of the line
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        columns += (uchar(c) & 0xC0) != 0x80;
        if (columns > width && cut > start) {
            lines.append(text.mid(start, cut - start));
            start = cut;
            i = cut - 1;
            columns = 0;
            cut = -1;
            continue;
        }
        if (c == ' ')
            cut = i + 1;
        if (c == 'n' && i > start && text.at(i - 1) == '\\' && !escapedBackslash(text, i - 1)) {
            lines.append(text.mid(start, i + 1 - start));
            start = i + 1;
            columns = 0;
            cut = -1;
        }
    }
    if (start < text.size())
        lines.append(text.mid(start));
    return lines;
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
    for (const auto &[name, value] : catalog.translatorFields) {
        const auto known = std::find_if(fields.begin(), fields.end(),
                                        [&](const auto &f) { return f.first == name; });
        if (known != fields.end())
            known->second = value;
        else
            fields.append({name, value});
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
    const QByteArray body = escaped(text);
    const qsizetype lead = qsizetype(qstrlen(prefix) + qstrlen(keyword)) + 1;
    const QList<QByteArray> lines = wrapped(body, wrapWidth - 2 - qsizetype(qstrlen(prefix)));
    const auto characters = std::count_if(body.cbegin(), body.cend(),
                                          [](char c) { return (uchar(c) & 0xC0) != 0x80; });
    if (lines.size() <= 1 && lead + 2 + characters <= wrapWidth) {
        m_buffer += prefix + QByteArray(keyword) + " \"" + body + "\"\n";
        return;
    }
    m_buffer += prefix + QByteArray(keyword) + " \"\"\n";
    for (const QByteArray &line : lines)
        m_buffer += prefix + ('"' + line + "\"\n");
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
    if (!unit.note.isEmpty())
        m_buffer += "#. " + QString(unit.note).replace(u'\n', u' ').toUtf8() + '\n';
    if (!unit.document.isEmpty())
        m_buffer += "#: " + unit.document.toUtf8() + '\n';
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
