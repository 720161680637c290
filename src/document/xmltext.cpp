#include "xmltext.h"

#include <QString>
#include <QXmlStreamWriter>

namespace ZyHelp {

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
