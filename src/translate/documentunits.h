#pragma once

#include "catalog.h"

#include "helpdata.h"

namespace ZyHelp::Translate {

// Where a unit's text lives in a language block.
struct UnitPlace
{
    enum Kind { Description, Name, Content };

    Kind kind = Description;
    qsizetype section = 0; // from 0; Name and Content only
};

// Unit ids: "<relative path>#description", "<relative path>#<N>/name" and
// "<relative path>#<N>/content" with N counted from 1, as an author counts.
QString unitId(const QString &relativePath, const UnitPlace &place);
// False for an id that names no place of a document.
bool parseUnitId(const QString &id, QString *relativePath, UnitPlace *place);

// The language's text at place, or nullptr where the language has none.
const QString *textAt(const HelpLanguage &language, const UnitPlace &place);
// The same for writing; missing sections are made up to place, as the editor
// makes new ones: no name and the placeholder "...".
QString &textAt(HelpLanguage &language, const UnitPlace &place);

// The units of one document from source to target, in document order. Texts
// that are not written yet are nothing to translate and are left out.
QList<TranslationUnit> documentUnits(const HelpData &data, const QString &relativePath,
                                     const QString &source, const QString &target);

} // namespace ZyHelp::Translate
