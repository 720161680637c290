#pragma once

#include "catalog.h"

class QIODevice;

namespace ZyHelp::Translate {

// Writes a catalog as a gettext PO file (a .pot template when it has no
// target language), in UTF-8, wrapped as gettext wraps.
class PoWriter
{
public:
    explicit PoWriter(QIODevice *device);

    void writeHeader(const Catalog &catalog);
    void writeUnit(const TranslationUnit &unit);
    void finish(); // writes what writeUnit keeps back

    // The whole catalog at once.
    void write(const Catalog &catalog);

private:
    void writeString(const char *keyword, const QString &text, const char *prefix = "");

    QIODevice *m_device;
    QByteArray m_buffer;
    QByteArray m_escaped; // of the string being written
    QList<qsizetype> m_lineEnds; // in m_escaped
};

} // namespace ZyHelp::Translate
