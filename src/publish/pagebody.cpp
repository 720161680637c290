#include "pagebody.h"

#include "helpdata.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <unordered_set>
#include <vector>

namespace ZyHelp::Publish {

namespace {

// FNV-1a: the words are short, and Qt's string hash costs several times more.
struct WordHash
{
    size_t operator()(QStringView word) const noexcept
    {
        quint64 hash = 14695981039346656037u;
        for (const QChar c : word)
            hash = (hash ^ c.unicode()) * 1099511628211u;
        return size_t(hash);
    }
};

using WordSet = std::unordered_set<QStringView, WordHash>;

// Tables for the characters of almost every text, instead of a chain of comparisons.
constexpr auto latin1Lower = [] {
    std::array<char16_t, 0x100> lower{};
    for (char16_t u = 0; u < 0x100; ++u) {
        const bool upper = (u >= u'A' && u <= u'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7);
        lower[u] = upper ? char16_t(u + 0x20) : u;
    }
    return lower;
}();
constexpr auto asciiWord = [] {
    std::array<bool, 0x80> word{};
    for (char16_t c = 0; c < 0x80; ++c)
        word[c] = (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z');
    return word;
}();

// Appends text lowered to out. Below U+0100 lowering maps one character to
// one, A-Z and U+00C0-U+00DE but U+00D7 to theirs 0x20 on, so most texts need
// no case table.
void appendLowered(const QString &text, QString *out)
{
    const qsizetype at = out->size();
    out->resize(at + text.size());
    QChar *to = out->data() + at;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u >= 0x100) {
            out->truncate(at);
            out->append(text.toLower());
            return;
        }
        *to++ = QChar(latin1Lower[u]);
    }
}

// The length of the letter or digit at i, 2 for one beyond the BMP, or 0.
int wordCharacterAt(QStringView text, qsizetype i)
{
    const char16_t c = text[i].unicode();
    if (c < 0x80)
        return asciiWord[c];
    if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate())
        return QChar::isLetterOrNumber(QChar::surrogateToUcs4(c, text[i + 1].unicode())) ? 2 : 0;
    return QChar::isLetterOrNumber(c) ? 1 : 0;
}

// Words as the search page splits a query: runs of letters and digits, also
// beyond the BMP.
void addWords(QStringView text, WordSet *words)
{
    for (qsizetype i = 0; i < text.size();) {
        int length = wordCharacterAt(text, i);
        if (length == 0) {
            ++i;
            continue;
        }
        const qsizetype start = i;
        do
            i += length;
        while (i < text.size() && (length = wordCharacterAt(text, i)) > 0);
        words->insert(text.sliced(start, i - start));
    }
}

// Whether the UTF-8 line holds nothing but white space, as QString::trimmed() sees it.
bool blank(QByteArrayView line)
{
    for (const char c : line) {
        if (uchar(c) >= 0x80)
            return QString::fromUtf8(line).trimmed().isEmpty();
        if (c != ' ' && (c < '\t' || c > '\r'))
            return false;
    }
    return true;
}

} // namespace

QString PageBody::escaped(const QString &text)
{
    QByteArray out;
    appendEscaped(text.toUtf8(), &out);
    return QString::fromUtf8(out);
}

void PageBody::appendEscaped(QByteArrayView utf8, QByteArray *out)
{
    // Runs of bytes that stay as they are are appended at once. What needs
    // replacing is ASCII, so no byte of a longer UTF-8 sequence is taken for it.
    qsizetype run = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const uchar c = uchar(utf8[i]);
        if (c >= '@')
            continue;
        const char *replacement;
        switch (c) {
        case '&':
            replacement = "&amp;";
            break;
        case '<':
            replacement = "&lt;";
            break;
        case '>':
            replacement = "&gt;";
            break;
        case '"':
            replacement = "&quot;";
            break;
        case '\'':
            replacement = "&#39;";
            break;
        default:
            // Control characters other than tab and line breaks are no HTML text.
            if (c >= 0x20 || c == '\t' || c == '\n')
                continue;
            replacement = "\uFFFD";
        }
        out->append(utf8.sliced(run, i - run));
        out->append(replacement);
        run = i + 1;
    }
    out->append(utf8.sliced(run));
}

void PageBody::appendParagraphs(const QString &text, QByteArray *out)
{
    QByteArray utf8 = text.toUtf8();
    utf8.removeIf([](char c) { return c == '\r'; }); // CR LF is a line break
    bool open = false;
    for (qsizetype start = 0, end = 0; start <= utf8.size(); start = end + 1) {
        end = utf8.indexOf('\n', start);
        if (end < 0)
            end = utf8.size();
        const QByteArrayView line = QByteArrayView(utf8).sliced(start, end - start);
        if (blank(line)) {
            if (open)
                out->append("</p>\n");
            open = false;
            continue;
        }
        out->append(open ? "<br>\n" : "<p>");
        open = true;
        appendEscaped(line, out);
    }
    if (open)
        out->append("</p>\n");
}

QByteArray PageBody::html(const QString &title, const HelpLanguage &language)
{
    qsizetype size = 64 + language.description.size();
    for (const HelpSection &section : language.sections)
        size += 128 + 2 * section.name.size() + section.content.size();
    QByteArray out;
    out.reserve(size + size / 4);
    out.append("<h1>");
    appendEscaped(title.toUtf8(), &out);
    out.append("</h1>\n");
    if (!language.description.trimmed().isEmpty()) {
        out.append("<div class=\"lead\">\n");
        appendParagraphs(language.description, &out);
        out.append("</div>\n");
    }
    for (qsizetype i = 0; i < language.sections.size(); ++i) {
        const HelpSection &section = language.sections.at(i);
        const QByteArray anchor = sectionAnchor(i).toLatin1();
        QByteArray name;
        appendEscaped(section.name.toUtf8(), &name);
        out.append("<section>\n<h2 id=\"").append(anchor).append("\">").append(name);
        out.append(" <a class=\"permalink\" href=\"#").append(anchor);
        out.append("\" aria-label=\"\u00b6 ").append(name).append("\">\u00b6</a></h2>\n");
        appendParagraphs(section.content, &out);
        out.append("</section>\n");
    }
    return out;
}

QString PageBody::lowered(const QString &text)
{
    QString lower;
    appendLowered(text, &lower);
    return lower;
}

QByteArray PageBody::searchWords(const QString &title, const HelpLanguage &language)
{
    // The texts lowered into one string, a line break after each, and split
    // into a set of views of it: no word is copied until the result is
    // joined, and a text repeats most of its words.
    qsizetype size = title.size() + language.description.size() + 2;
    for (const HelpSection &section : language.sections)
        size += section.name.size() + section.content.size() + 2;
    QString lower;
    lower.reserve(size);
    const auto add = [&lower](const QString &text) {
        appendLowered(text, &lower);
        lower += u'\n';
    };
    add(title);
    add(language.description);
    for (const HelpSection &section : language.sections) {
        add(section.name);
        add(section.content);
    }
    WordSet unique;
    addWords(lower, &unique);
    std::vector<QStringView> sorted(unique.cbegin(), unique.cend());
    std::sort(sorted.begin(), sorted.end());
    QString joined;
    for (const QStringView word : sorted) {
        if (!joined.isEmpty())
            joined += u' ';
        joined += word;
    }
    return joined.toUtf8();
}

} // namespace ZyHelp::Publish
