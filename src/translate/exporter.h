#pragma once

#include "catalog.h"
#include "catalogfile.h"

#include "documentcollector.h"

#include <QByteArray>
#include <QHash>
#include <QStringList>

class QIODevice;

namespace ZyHelp::Translate {

// The translations of an earlier export, merged into a new one as msgmerge
// does: a unit keeps the earlier translation of the same source; one whose
// source changed keeps it too, fuzzy, with the earlier source as its previous
// source. New units stay as they are; units the earlier file has and the new
// export has not are dropped by not being asked for.
//
// Only units with a translation are kept, compressed in blocks of a few
// documents, as their texts are most of an earlier file and a merge is to
// need little more memory than the project's files: a document's blocks are
// unpacked when that document is exported.
class EarlierTranslations
{
public:
    // Reads the earlier file at path; header takes its languages and header
    // fields. False, with error, as CatalogFile::read.
    bool read(const QString &path, Catalog *header, QString *error);

    // units: those of one document. Safe from several threads at once.
    void merge(QList<TranslationUnit> *units) const;

private:
    void add(const TranslationUnit &unit);
    void pack();

    QList<QByteArray> m_blocks; // compressed units
    QHash<QByteArray, QList<qsizetype>> m_blocksOf; // by document path in UTF-8
    QByteArray m_document; // of the unit read last
    QByteArray m_open; // units read and not packed yet: the next block
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
