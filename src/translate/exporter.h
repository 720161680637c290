#pragma once

#include "catalog.h"
#include "catalogfile.h"

#include "documentcollector.h"

#include <QHash>
#include <QStringList>

class QIODevice;

namespace ZyHelp::Translate {

// The translations of an earlier export, merged into a new one as msgmerge
// does: a unit keeps the earlier translation of the same source; one whose
// source changed keeps it too, fuzzy, with the earlier source as its previous
// source. New units stay as they are; units the earlier file has and the new
// export has not are dropped by not being asked for.
class EarlierTranslations
{
public:
    explicit EarlierTranslations(const Catalog &earlier);

    void merge(TranslationUnit *unit) const; // safe from several threads at once

private:
    Catalog m_earlier;
    QHash<QString, qsizetype> m_index; // by id
};

// Writes the units of documents from header's source to its target language
// to device. Documents are read, turned into units, merged with earlier (if
// given) and written in parallel, a batch at a time, so that a large project
// is never held whole. Returns compiler-style lines for documents that could
// not be read whole.
QStringList exportCatalog(const QList<DocumentEntry> &documents, const Catalog &header,
                          const EarlierTranslations *earlier, CatalogFile::Format format,
                          QIODevice *device);

} // namespace ZyHelp::Translate
