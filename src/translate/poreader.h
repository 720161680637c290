#pragma once

#include "catalog.h"

#include <functional>

class QIODevice;

namespace ZyHelp::Translate {

// Reads a gettext PO file as gettext and translate-toolkit write it: strings
// over several lines however wrapped, C escapes, flags, previous ("#|") and
// obsolete ("#~") entries. Obsolete entries and the header are not units; the
// header gives the languages (Language, X-Source-Language).
class PoReader
{
public:
    // False, with error, for a file that is not valid UTF-8 PO: a byte-order
    // mark, a syntax error, a string cut short, an id given twice.
    // sink, where given, takes each unit instead of catalog->units, so that a
    // large file need not be held whole.
    bool read(QIODevice *device, Catalog *catalog, ReadError *error,
              const std::function<void(TranslationUnit &&)> &sink = {});
    // The same with each unit, still in UTF-8, to sink, and without looking for
    // ids given twice: for a file that check() reads too.
    bool readEncoded(QIODevice *device, Catalog *catalog, ReadError *error,
                     const std::function<void(EncodedUnit &&)> &sink);
    // Reads the whole file for its faults and header only, keeping no unit.
    bool check(QIODevice *device, Catalog *catalog, ReadError *error);

private:
    bool read(QIODevice *device, Catalog *catalog, ReadError *error,
              const std::function<void(TranslationUnit &&)> &sink,
              const std::function<void(EncodedUnit &&)> &encodedSink, bool keepUnits);
};

} // namespace ZyHelp::Translate
