#pragma once

class QString;
class QXmlStreamWriter;

namespace ZyHelp {

// Writes text as character data with its carriage returns as character
// references. Written as they are, a reader takes them for line ends (CR LF
// as LF, XML's end-of-line rule), and the text would not read back; Qt 6.4's
// writer leaves them as they are.
void writeXmlText(QXmlStreamWriter &xml, const QString &text);

} // namespace ZyHelp
