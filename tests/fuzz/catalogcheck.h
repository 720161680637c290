#pragma once

// The round trip of a translation file: what the PO and XLIFF targets share.

#include "catalog.h"
#include "fuzzcommon.h"

#include <QBuffer>

namespace Fuzz {

template<typename Reader>
bool readCatalog(QByteArray bytes, ZyHelp::Translate::Catalog *catalog,
                 ZyHelp::Translate::ReadError *error)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return Reader().read(&buffer, catalog, error);
}

inline QString shownUnit(const ZyHelp::Translate::TranslationUnit &u)
{
    return QStringList{u.id, u.source, u.target, u.previousSource, u.document,
                       u.fuzzy ? QStringLiteral("fuzzy") : QString()}
        .join(u'|');
}

inline bool sameUnit(const ZyHelp::Translate::TranslationUnit &a,
                     const ZyHelp::Translate::TranslationUnit &b)
{
    return a.id == b.id && a.source == b.source && a.target == b.target
        && a.previousSource == b.previousSource && a.document == b.document
        && a.fuzzy == b.fuzzy;
}

// The catalog read back from what was written: the first read's languages and units.
template<typename Reader>
void expectReadBack(const ZyHelp::Translate::Catalog &first, const QByteArray &written,
                    ZyHelp::Translate::Catalog *second)
{
    ZyHelp::Translate::ReadError error;
    if (!readCatalog<Reader>(written, second, &error))
        fail("the written file is refused",
             QStringLiteral("%1:%2: %3\n").arg(error.line).arg(error.column).arg(error.message)
                 + QString::fromUtf8(written));
    expectEqual("the source language", first.sourceLanguage, second->sourceLanguage);
    expectEqual("the target language", first.targetLanguage, second->targetLanguage);
    expectEqual("the project", first.projectName, second->projectName);
    expectEqual("the number of units", first.units.size(), second->units.size(),
                QString::number(first.units.size()), QString::number(second->units.size()));
    for (qsizetype i = 0; i < first.units.size(); ++i) {
        if (!sameUnit(first.units.at(i), second->units.at(i)))
            fail("a unit", QStringLiteral("read:      %1\nread back: %2")
                               .arg(shown(shownUnit(first.units.at(i))),
                                    shown(shownUnit(second->units.at(i)))));
    }
}

} // namespace Fuzz
