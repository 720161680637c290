#include "xliffwriter.h"

namespace ZyHelp::Translate {

XliffWriter::XliffWriter(QIODevice *device)
    : m_xml(device)
{
    m_xml.setAutoFormatting(true);
    m_xml.setAutoFormattingIndent(2);
}

void XliffWriter::writeHeader(const Catalog &catalog)
{
    m_sourceLanguage = catalog.sourceLanguage;
    m_targetLanguage = catalog.targetLanguage;
    m_xml.writeStartDocument();
    m_xml.writeDefaultNamespace(QStringLiteral("urn:oasis:names:tc:xliff:document:1.2"));
    m_xml.writeStartElement(QStringLiteral("xliff"));
    m_xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.2"));
}

void XliffWriter::writeUnit(const TranslationUnit &unit)
{
    if (!m_fileOpen || unit.document != m_document) {
        if (m_fileOpen) {
            m_xml.writeEndElement(); // body
            m_xml.writeEndElement(); // file
        }
        m_document = unit.document;
        m_fileOpen = true;
        m_xml.writeStartElement(QStringLiteral("file"));
        m_xml.writeAttribute(QStringLiteral("original"), unit.document);
        m_xml.writeAttribute(QStringLiteral("source-language"), m_sourceLanguage);
        if (!m_targetLanguage.isEmpty())
            m_xml.writeAttribute(QStringLiteral("target-language"), m_targetLanguage);
        m_xml.writeAttribute(QStringLiteral("datatype"), QStringLiteral("plaintext"));
        m_xml.writeStartElement(QStringLiteral("body"));
    }
    m_xml.writeStartElement(QStringLiteral("trans-unit"));
    m_xml.writeAttribute(QStringLiteral("id"), unit.id);
    // Line breaks and spaces are part of the text.
    m_xml.writeAttribute(QStringLiteral("xml:space"), QStringLiteral("preserve"));
    m_xml.writeTextElement(QStringLiteral("source"), unit.source);
    if (!m_targetLanguage.isEmpty() && !unit.target.isEmpty()) {
        m_xml.writeStartElement(QStringLiteral("target"));
        m_xml.writeAttribute(QStringLiteral("state"), unit.fuzzy ? QStringLiteral("needs-adaptation")
                                                                 : QStringLiteral("translated"));
        m_xml.writeCharacters(unit.target);
        m_xml.writeEndElement();
    }
    if (!unit.note.isEmpty())
        m_xml.writeTextElement(QStringLiteral("note"), unit.note);
    if (unit.fuzzy && !unit.previousSource.isEmpty() && !unit.target.isEmpty()) {
        m_xml.writeStartElement(QStringLiteral("alt-trans"));
        m_xml.writeAttribute(QStringLiteral("alttranstype"), QStringLiteral("previous-version"));
        m_xml.writeTextElement(QStringLiteral("source"), unit.previousSource);
        m_xml.writeTextElement(QStringLiteral("target"), unit.target);
        m_xml.writeEndElement();
    }
    m_xml.writeEndElement();
}

void XliffWriter::finish()
{
    m_xml.writeEndDocument(); // closes every element still open
}

void XliffWriter::write(const Catalog &catalog)
{
    writeHeader(catalog);
    for (const TranslationUnit &unit : catalog.units)
        writeUnit(unit);
    finish();
}

} // namespace ZyHelp::Translate
