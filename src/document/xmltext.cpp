#include "xmltext.h"

#include <QXmlStreamWriter>

namespace ZyHelp {

QString withoutLoneSurrogates(const QString &text)
{
    const qsizetype size = text.size();
    QString result;
    qsizetype copied = 0; // text before this index is in result
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = text.at(i);
        if (!c.isSurrogate())
            continue;
        if (c.isHighSurrogate() && i + 1 < size && text.at(i + 1).isLowSurrogate()) {
            ++i; // a pair
            continue;
        }
        result.append(QStringView(text).sliced(copied, i - copied));
        copied = i + 1;
    }
    if (copied == 0)
        return text;
    result.append(QStringView(text).sliced(copied));
    return result;
}

void writeXmlText(QXmlStreamWriter &xml, const QString &text)
{
    qsizetype from = 0;
    for (qsizetype cr = text.indexOf(u'\r'); cr >= 0; cr = text.indexOf(u'\r', from)) {
        xml.writeCharacters(text.mid(from, cr - from));
        xml.writeEntityReference(QStringLiteral("#13"));
        from = cr + 1;
    }
    xml.writeCharacters(from == 0 ? text : text.mid(from));
}

} // namespace ZyHelp
