#include "xliffwriter.h"

#include <QIODevice>
#include <QXmlStreamWriter>

namespace ZyHelp::Translate {

XliffWriter::XliffWriter(QIODevice *device, const QString &sourceLanguage,
                         const QString &targetLanguage)
    : m_device(device)
    , m_sourceLanguage(sourceLanguage)
    , m_targetLanguage(targetLanguage)
{
}

void XliffWriter::writeHeader()
{
    m_device->write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<xliff version=\"1.2\" xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">");
}

void XliffWriter::writeDocument(const QList<TranslationUnit> &units)
{
    if (units.isEmpty())
        return;
    // Written to a string and then to the device at once: the writer's many
    // small writes cost more through a device than the text itself.
    QString text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartElement(QStringLiteral("file"));
    xml.writeAttribute(QStringLiteral("original"), units.first().document);
    xml.writeAttribute(QStringLiteral("source-language"), m_sourceLanguage);
    if (!m_targetLanguage.isEmpty())
        xml.writeAttribute(QStringLiteral("target-language"), m_targetLanguage);
    xml.writeAttribute(QStringLiteral("datatype"), QStringLiteral("plaintext"));
    xml.writeStartElement(QStringLiteral("body"));
    for (const TranslationUnit &unit : units) {
        xml.writeStartElement(QStringLiteral("trans-unit"));
        xml.writeAttribute(QStringLiteral("id"), unit.id);
        // Line breaks and spaces are part of the text.
        xml.writeAttribute(QStringLiteral("xml:space"), QStringLiteral("preserve"));
        xml.writeTextElement(QStringLiteral("source"), unit.source);
        if (!m_targetLanguage.isEmpty() && !unit.target.isEmpty()) {
            xml.writeStartElement(QStringLiteral("target"));
            xml.writeAttribute(QStringLiteral("state"), unit.fuzzy
                                   ? QStringLiteral("needs-adaptation")
                                   : QStringLiteral("translated"));
            xml.writeCharacters(unit.target);
            xml.writeEndElement();
        }
        if (!unit.note.isEmpty())
            xml.writeTextElement(QStringLiteral("note"), unit.note);
        if (unit.fuzzy && !unit.previousSource.isEmpty() && !unit.target.isEmpty()) {
            xml.writeStartElement(QStringLiteral("alt-trans"));
            xml.writeAttribute(QStringLiteral("alttranstype"), QStringLiteral("previous-version"));
            xml.writeTextElement(QStringLiteral("source"), unit.previousSource);
            xml.writeTextElement(QStringLiteral("target"), unit.target);
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndElement();
    m_device->write(text.toUtf8());
}

void XliffWriter::finish()
{
    m_device->write("\n</xliff>\n");
}

void XliffWriter::write(const Catalog &catalog)
{
    writeHeader();
    qsizetype first = 0;
    for (qsizetype i = 1; i <= catalog.units.size(); ++i) {
        if (i == catalog.units.size()
            || catalog.units.at(i).document != catalog.units.at(first).document) {
            writeDocument(catalog.units.mid(first, i - first));
            first = i;
        }
    }
    finish();
}

} // namespace ZyHelp::Translate
