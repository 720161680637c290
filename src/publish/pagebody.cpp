#include "pagebody.h"

#include "helpdata.h"

#include <QList>
#include <QSet>
#include <QStringList>
#include <QStringView>

#include <algorithm>

namespace ZyHelp::Publish {

namespace {

// Words as the search page splits a query: runs of letters and digits, also
// beyond the BMP. The text is lowered first, as the page lowers the query.
void addWords(const QString &lower, QList<QStringView> *words)
{
    const qsizetype size = lower.size();
    qsizetype start = -1;
    qsizetype i = 0;
    while (i <= size) {
        uint c = 0;
        qsizetype length = 1;
        if (i < size) {
            c = lower.at(i).unicode();
            if (QChar::isHighSurrogate(c) && i + 1 < size && lower.at(i + 1).isLowSurrogate()) {
                c = QChar::surrogateToUcs4(lower.at(i), lower.at(i + 1));
                length = 2;
            }
        }
        const bool inWord = i < size && QChar::isLetterOrNumber(c);
        if (inWord && start < 0) {
            start = i;
        } else if (!inWord && start >= 0) {
            words->append(QStringView(lower).sliced(start, i - start));
            start = -1;
        }
        i += length;
    }
}

} // namespace

QString PageBody::escaped(const QString &text)
{
    QString out;
    out.reserve(text.size() + text.size() / 8);
    appendEscaped(text, &out);
    return out;
}

void PageBody::appendEscaped(QStringView text, QString *out)
{
    // Runs of characters that stay as they are are appended at once.
    qsizetype run = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        QLatin1StringView replacement;
        switch (c) {
        case '&':
            replacement = QLatin1StringView("&amp;");
            break;
        case '<':
            replacement = QLatin1StringView("&lt;");
            break;
        case '>':
            replacement = QLatin1StringView("&gt;");
            break;
        case '"':
            replacement = QLatin1StringView("&quot;");
            break;
        case '\'':
            replacement = QLatin1StringView("&#39;");
            break;
        default:
            // Control characters other than tab and line breaks are no HTML text.
            if (c >= 0x20 || c == u'\t' || c == u'\n')
                continue;
        }
        out->append(text.sliced(run, i - run));
        if (replacement.isEmpty())
            *out += u'\uFFFD';
        else
            *out += replacement;
        run = i + 1;
    }
    out->append(text.sliced(run));
}

QString PageBody::paragraphs(const QString &text)
{
    const QString plain = text.contains(u'\r') ? QString(text).remove(u'\r') : text;
    QString out;
    out.reserve(plain.size() + plain.size() / 4);
    bool open = false;
    for (const QStringView line : QStringView(plain).split(u'\n')) {
        if (line.trimmed().isEmpty()) {
            if (open)
                out += QLatin1StringView("</p>\n");
            open = false;
            continue;
        }
        out += open ? QLatin1StringView("<br>\n") : QLatin1StringView("<p>");
        open = true;
        appendEscaped(line, &out);
    }
    if (open)
        out += QLatin1StringView("</p>\n");
    return out;
}

QByteArray PageBody::html(const QString &title, const HelpLanguage &language)
{
    QString out = QLatin1StringView("<h1>") + escaped(title) + QLatin1StringView("</h1>\n");
    if (!language.description.trimmed().isEmpty())
        out += QLatin1StringView("<div class=\"lead\">\n") + paragraphs(language.description)
            + QLatin1StringView("</div>\n");
    for (qsizetype i = 0; i < language.sections.size(); ++i) {
        const HelpSection &section = language.sections.at(i);
        const QString anchor = sectionAnchor(i);
        out += QStringLiteral("<section>\n<h2 id=\"%1\">%2 <a class=\"permalink\" href=\"#%1\" "
                              "aria-label=\"\u00b6 %3\">\u00b6</a></h2>\n")
                   .arg(anchor, escaped(section.name), escaped(section.name))
            + paragraphs(section.content) + QLatin1StringView("</section>\n");
    }
    return out.toUtf8();
}

QString PageBody::lowered(const QString &text)
{
    // Below U+0100 lowering maps one character to one, A-Z and U+00C0-U+00DE
    // but U+00D7 to theirs 0x20 on, so most texts need no case table.
    QString lower = text;
    for (QChar &c : lower) {
        const char16_t u = c.unicode();
        if (u >= 0x100)
            return text.toLower();
        if ((u >= u'A' && u <= u'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7))
            c = QChar(char16_t(u + 0x20));
    }
    return lower;
}

QByteArray PageBody::searchWords(const QString &title, const HelpLanguage &language)
{
    // Views into the lowered texts, made unique, then sorted: no word is
    // copied until the result is joined, and a text repeats most of its words.
    QStringList texts{lowered(title), lowered(language.description)};
    for (const HelpSection &section : language.sections)
        texts << lowered(section.name) << lowered(section.content);
    QList<QStringView> words;
    for (const QString &text : std::as_const(texts))
        addWords(text, &words);
    const QSet<QStringView> unique(words.cbegin(), words.cend());
    QList<QStringView> sorted(unique.cbegin(), unique.cend());
    std::sort(sorted.begin(), sorted.end());
    QString joined;
    for (const QStringView word : std::as_const(sorted)) {
        if (!joined.isEmpty())
            joined += u' ';
        joined += word;
    }
    return joined.toUtf8();
}

} // namespace ZyHelp::Publish
