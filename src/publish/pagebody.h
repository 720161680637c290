#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ZyHelp {
struct HelpLanguage;
}

namespace ZyHelp::Publish {

// A language's text of a document as HTML: the title, the description as
// lead, each section under a heading with a stable anchor. The text is plain:
// every character is escaped, nothing in it is taken as markup.
class PageBody
{
public:
    static QByteArray html(const QString &title, const HelpLanguage &language);
    // The distinct lower-case words of the text, sorted, joined by spaces.
    static QByteArray searchWords(const QString &title, const HelpLanguage &language);

    static void appendEscaped(QByteArrayView utf8, QByteArray *out);
    // Paragraphs at blank lines; a line break inside one stays a line break.
    static void appendParagraphs(const QString &text, QByteArray *out);
};

} // namespace ZyHelp::Publish
