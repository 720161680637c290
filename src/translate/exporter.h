#pragma once

#include "catalog.h"

#include "documentcollector.h"

#include <QStringList>

namespace ZyHelp::Translate {

// The units of a run's documents, read in parallel.
struct ExportResult
{
    Catalog catalog;
    QStringList errors; // compiler-style lines: documents that could not be read whole
};

ExportResult exportUnits(const QList<DocumentEntry> &documents, const QString &source,
                         const QString &target);

// Merges as msgmerge does: a unit keeps the earlier translation of the same
// source; one whose source changed keeps it too, fuzzy, with the earlier
// source as its previous source; new units stay as they are; units the
// earlier file has and fresh has not are dropped.
void mergeEarlier(Catalog *fresh, const Catalog &earlier);

} // namespace ZyHelp::Translate
