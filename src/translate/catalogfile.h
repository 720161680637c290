#pragma once

#include "catalog.h"

#include <functional>

namespace ZyHelp::Translate {

// A translation file on disk, its format told by its name: .po or .pot
// (gettext), .xlf or .xliff (XLIFF 1.2).
class CatalogFile
{
public:
    enum Format { Unknown, Po, Xliff };

    static Format formatOf(const QString &path);

    // False, with a compiler-style line in errorString: the file cannot be
    // opened or is not of its format.
    // sink: as the readers take it.
    static bool read(const QString &path, Catalog *catalog, QString *errorString,
                     const std::function<void(TranslationUnit &&)> &sink = {});
    // The same with each unit, still in UTF-8, to sink.
    static bool readEncoded(const QString &path, Catalog *catalog, QString *errorString,
                            const std::function<void(EncodedUnit &&)> &sink);
    // The same, for the file's faults and header only: no unit is kept.
    static bool check(const QString &path, Catalog *header, QString *errorString);
    // Writes the whole file or, on failure, leaves the old one as it was.
    static bool write(const QString &path, const Catalog &catalog, QString *errorString);

private:
    enum Mode { Units, Encoded, CheckOnly };

    static bool read(const QString &path, Catalog *catalog, QString *errorString,
                     const std::function<void(TranslationUnit &&)> &sink,
                     const std::function<void(EncodedUnit &&)> &encodedSink, Mode mode);
};

} // namespace ZyHelp::Translate
