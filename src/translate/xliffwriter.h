#pragma once

#include "catalog.h"

#include <QXmlStreamWriter>

class QIODevice;

namespace ZyHelp::Translate {

// Writes a catalog as XLIFF 1.2 (the strict schema): one <file> per document,
// a fuzzy unit's target in state "needs-adaptation" with the earlier source
// and translation as an <alt-trans> of type "previous-version".
class XliffWriter
{
public:
    explicit XliffWriter(QIODevice *device);

    void writeHeader(const Catalog &catalog);
    void writeUnit(const TranslationUnit &unit);
    void finish();

    void write(const Catalog &catalog);

private:
    QXmlStreamWriter m_xml;
    QString m_sourceLanguage;
    QString m_targetLanguage;
    QString m_document; // whose <file> is open
    bool m_fileOpen = false;
};

} // namespace ZyHelp::Translate
