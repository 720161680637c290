#pragma once

#include "catalog.h"

#include <functional>

class QIODevice;

namespace ZyHelp::Translate {

// Reads XLIFF 1.2 as CAT tools write it. A target counts as a translation in
// the states "translated", "final" and "signed-off" (or without a state);
// every other state is fuzzy. Inline elements in a text give their text.
class XliffReader
{
public:
    // False, with error, for a file that is not well-formed UTF-8 XLIFF 1.2,
    // has a byte-order mark, mixes language pairs or gives an id twice.
    // sink, where given, takes each unit instead of catalog->units, so that a
    // large file need not be held whole.
    bool read(QIODevice *device, Catalog *catalog, ReadError *error,
              const std::function<void(TranslationUnit &&)> &sink = {});
};

} // namespace ZyHelp::Translate
