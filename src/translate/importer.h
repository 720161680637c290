#pragma once

#include "catalog.h"

#include "documentcollector.h"

#include <QStringList>

namespace ZyHelp::Translate {

struct ImportResult
{
    QStringList messages; // compiler-style warnings and errors, by file and line
    QStringList changes; // "wrote PATH" or, on a dry run, "would write PATH"
    qsizetype applied = 0; // units whose translation is in their document now
    qsizetype lost = 0; // units not applied and documents not written
};

// Puts the translations of catalog (read from catalogPath) into the target
// language of the documents. Only a unit whose id names an existing text whose
// source is still exactly the unit's source is applied; fuzzy and empty units
// change nothing. Documents are read and written in parallel; a document whose
// text would not change, or that was read only partly, is not written.
ImportResult importCatalog(const Catalog &catalog, const QString &catalogPath,
                           const QList<DocumentEntry> &documents, bool dryRun);

} // namespace ZyHelp::Translate
