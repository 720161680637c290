#pragma once

// The round trip of a translation file, as the PO and XLIFF targets share it.

#include "catalog.h"
#include "fuzzcommon.h"

namespace Fuzz {

using ZyHelp::Translate::Catalog;
using ZyHelp::Translate::ReadError;
using ZyHelp::Translate::TranslationUnit;

// What a reader gives of a catalog: its languages and project, then every unit.
inline QList<QStringList> fields(const Catalog &catalog)
{
    QList<QStringList> all{{catalog.sourceLanguage, catalog.targetLanguage, catalog.projectName}};
    for (const TranslationUnit &u : catalog.units) {
        all.append({u.id, u.source, u.target, u.previousSource, u.document,
                    u.fuzzy ? QStringLiteral("fuzzy") : QString()});
    }
    return all;
}

template<typename Reader>
bool read(const QByteArray &bytes, Catalog *catalog, ReadError *error)
{
    Input input(bytes);
    return Reader().read(&input, catalog, error);
}

// Read back, what was written must give what was read.
template<typename Reader>
void expectReadBack(const Catalog &first, const QByteArray &written, Catalog *second)
{
    ReadError error;
    if (!read<Reader>(written, second, &error))
        fail("the written file is refused",
             QStringLiteral("%1:%2: %3\n%4")
                 .arg(error.line)
                 .arg(error.column)
                 .arg(error.message, QString::fromUtf8(written)));
    const QList<QStringList> read = fields(first);
    const QList<QStringList> back = fields(*second);
    for (qsizetype i = 0; i < std::max(read.size(), back.size()); ++i)
        expectEqual("the catalog", read.value(i), back.value(i));
}

} // namespace Fuzz
