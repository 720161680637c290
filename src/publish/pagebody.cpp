#include "pagebody.h"

#include "helpdata.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <vector>

namespace ZyHelp::Publish {

namespace {

// Tables for the characters of almost every text, instead of a chain of comparisons.
constexpr auto htmlSpecial = [] {
    std::array<bool, 0x100> special{};
    for (const char c : {'&', '<', '>', '"', '\''})
        special[uchar(c)] = true;
    for (char c = 0; c < 0x20; ++c)
        special[uchar(c)] = c != '\t' && c != '\n';
    return special;
}();
constexpr auto latin1Lower = [] {
    std::array<char16_t, 0x100> lower{};
    for (char16_t u = 0; u < 0x100; ++u) {
        const bool upper = (u >= u'A' && u <= u'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7);
        lower[u] = upper ? char16_t(u + 0x20) : u;
    }
    return lower;
}();
const auto latin1Word = [] {
    std::array<bool, 0x100> word{};
    for (char16_t c = 0; c < 0x100; ++c)
        word[c] = QChar::isLetterOrNumber(c);
    return word;
}();

// The length of the letter or digit at i, 2 for one beyond the BMP, or 0.
int wordCharacterAt(const char16_t *text, qsizetype size, qsizetype i)
{
    const char16_t c = text[i];
    if (c < 0x100)
        return latin1Word[c];
    if (QChar::isHighSurrogate(c) && i + 1 < size && QChar::isLowSurrogate(text[i + 1]))
        return QChar::isLetterOrNumber(QChar::surrogateToUcs4(c, text[i + 1])) ? 2 : 0;
    return QChar::isLetterOrNumber(c) ? 1 : 0;
}

constexpr quint64 hashBasis = 14695981039346656037u;
constexpr quint64 hashPrime = 1099511628211u;

// The distinct words of a page, as places in its lowered text: open addressing
// with linear probing and the words' FNV-1a hashes, without the allocation per
// word of std::unordered_set, as a page repeats most of its words.
class WordSet
{
public:
    explicit WordSet(const QString &text)
        : m_text(text)
    {
    }

    void insert(qsizetype start, qsizetype length, quint64 hash)
    {
        if (2 * (m_count + 1) > qsizetype(m_slots.size()))
            rehash(m_slots.size() * 2);
        const QChar *text = m_text.constData();
        const size_t mask = m_slots.size() - 1;
        for (size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot &slot = m_slots[i];
            if (slot.length == 0) {
                slot = Slot{start, length, hash};
                ++m_count;
                return;
            }
            if (slot.hash == hash && slot.length == length
                && std::equal(text + start, text + start + length, text + slot.start))
                return;
        }
    }

    std::vector<QStringView> words() const
    {
        std::vector<QStringView> words;
        words.reserve(m_count);
        for (const Slot &slot : m_slots) {
            if (slot.length > 0)
                words.push_back(QStringView(m_text).sliced(slot.start, slot.length));
        }
        return words;
    }

private:
    struct Slot
    {
        qsizetype start = 0;
        qsizetype length = 0; // 0: free
        quint64 hash = 0;
    };

    void rehash(size_t size)
    {
        std::vector<Slot> old(size);
        old.swap(m_slots);
        for (const Slot &slot : old) {
            if (slot.length == 0)
                continue;
            size_t i = slot.hash & (size - 1);
            while (m_slots[i].length > 0)
                i = (i + 1) & (size - 1);
            m_slots[i] = slot;
        }
    }

    const QString &m_text;
    std::vector<Slot> m_slots = std::vector<Slot>(256);
    qsizetype m_count = 0;
};

bool isLatin1(QStringView text)
{
    char16_t bits = 0;
    for (const QChar c : text)
        bits |= c.unicode();
    return bits < 0x100;
}

// Appends text lowered to *lower and adds its words, runs of letters and
// digits as the search page splits a query, to *words. Below U+0100 lowering
// maps one character to one and keeps letters letters, so that almost every
// text is lowered and split in one pass through tables.
void addText(QStringView text, QString *lower, WordSet *words)
{
    const qsizetype at = lower->size();
    if (!isLatin1(text)) {
        lower->append(text.toString().toLower());
        const char16_t *s = QStringView(*lower).utf16();
        for (qsizetype i = at; i < lower->size();) {
            int length = wordCharacterAt(s, lower->size(), i);
            if (length == 0) {
                ++i;
                continue;
            }
            const qsizetype start = i;
            quint64 hash = hashBasis;
            do {
                for (const qsizetype end = i + length; i < end; ++i)
                    hash = (hash ^ s[i]) * hashPrime;
            } while (i < lower->size() && (length = wordCharacterAt(s, lower->size(), i)) > 0);
            words->insert(start, i - start, hash);
        }
        return;
    }
    lower->resize(at + text.size());
    const char16_t *from = text.utf16();
    char16_t *to = reinterpret_cast<char16_t *>(lower->data()) + at;
    for (qsizetype i = 0; i < text.size();) {
        char16_t c = latin1Lower[from[i]];
        to[i] = c;
        if (!latin1Word[c]) {
            ++i;
            continue;
        }
        const qsizetype start = i;
        quint64 hash = hashBasis;
        do {
            hash = (hash ^ c) * hashPrime;
            if (++i == text.size())
                break;
            c = latin1Lower[from[i]];
            to[i] = c;
        } while (latin1Word[c]);
        words->insert(at + start, i - start, hash);
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

void PageBody::appendEscaped(QByteArrayView utf8, QByteArray *out)
{
    // Runs of bytes that stay as they are are appended at once. What needs
    // replacing is ASCII, so no byte of a longer UTF-8 sequence is taken for it.
    qsizetype run = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const uchar c = uchar(utf8[i]);
        if (!htmlSpecial[c])
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
        default: // control characters other than tab and line breaks are no HTML text
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
    if (utf8.contains('\r'))
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
        // The anchor is s and the position: it stays while sections keep their order.
        const QByteArray position = QByteArray::number(i + 1);
        QByteArray name;
        appendEscaped(section.name.toUtf8(), &name);
        out.append("<section>\n<h2 id=\"s").append(position).append("\">").append(name);
        out.append(" <a class=\"permalink\" href=\"#s").append(position);
        out.append("\" aria-label=\"\u00b6 ").append(name).append("\">\u00b6</a></h2>\n");
        appendParagraphs(section.content, &out);
        out.append("</section>\n");
    }
    return out;
}

QByteArray PageBody::searchWords(const QString &title, const HelpLanguage &language)
{
    // The texts lowered into one string, and a set of places in it: no word
    // is copied until the result is joined, and a text repeats most of its words.
    qsizetype size = title.size() + language.description.size();
    for (const HelpSection &section : language.sections)
        size += section.name.size() + section.content.size();
    QString lower;
    lower.reserve(size);
    WordSet unique(lower);
    addText(title, &lower, &unique);
    addText(language.description, &lower, &unique);
    for (const HelpSection &section : language.sections) {
        addText(section.name, &lower, &unique);
        addText(section.content, &lower, &unique);
    }
    std::vector<QStringView> sorted = unique.words();
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
