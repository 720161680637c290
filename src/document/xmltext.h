#pragma once

#include <QString>

class QXmlStreamWriter;

namespace ZyHelp {

// The text without UTF-16 surrogates that are not part of a pair. Such a
// surrogate cannot be written as XML: Qt 6.11's writer drops it, but Qt 6.4's
// loses everything written after it (names, text, end tags), so the writers
// drop it first and both give the same file.
QString withoutLoneSurrogates(const QString &text);

// Writes text as character data with its carriage returns as character
// references. Written as they are, a reader takes them for line ends (CR LF
// as LF, XML's end-of-line rule), and the text would not read back; Qt 6.4's
// writer leaves them as they are.
void writeXmlText(QXmlStreamWriter &xml, const QString &text);

} // namespace ZyHelp
