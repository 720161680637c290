#pragma once

#include "catalog.h"

class QIODevice;
class QXmlStreamWriter;

namespace ZyHelp::Translate {

// Writes a catalog as XLIFF 1.2 (the strict schema): one <file> per document,
// a fuzzy unit's target in state "needs-adaptation" with the earlier source
// and translation as an <alt-trans> of type "previous-version".
class XliffWriter
{
public:
    XliffWriter(QIODevice *device, const QString &sourceLanguage, const QString &targetLanguage);

    void writeHeader();
    // One document's <file>; units of one document, as documents can be written
    // apart from each other (on several threads) and joined.
    void writeDocument(const QList<TranslationUnit> &units);
    // empty: no document had a unit. XLIFF needs a <file> all the same, for the
    // languages and for the schema, so an empty one is written.
    void finish(bool empty);

    void write(const Catalog &catalog);

private:
    void writeDocumentXml(const QList<TranslationUnit> &units);
    void writeFileStart(QXmlStreamWriter &xml, const QString &original) const;

    QIODevice *m_device;
    QString m_sourceLanguage;
    QString m_targetLanguage;
};

} // namespace ZyHelp::Translate
