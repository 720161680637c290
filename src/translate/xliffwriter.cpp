#include "xliffwriter.h"

#include "xmltext.h"

#include <QIODevice>
#include <QXmlStreamWriter>

namespace ZyHelp::Translate {

namespace {

// Whether text needs no escape but &, <, > and ": no control character but,
// in element text, tab and line feed; no character that XML lacks.
bool isPlain(const QString &text, bool elementText)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c >= 0x20 && c < 0xD800)
            continue;
        if (c < 0x20) {
            if (!elementText || (c != u'\n' && c != u'\t'))
                return false;
        } else if (QChar::isHighSurrogate(c) && i + 1 < text.size()
                   && text.at(i + 1).isLowSurrogate()) {
            ++i;
        } else if (QChar::isSurrogate(c) || c == 0xFFFE || c == 0xFFFF) {
            return false;
        }
    }
    return true;
}

// Escapes as QXmlStreamWriter does in text and in attributes.
void appendEscaped(QString *out, const QString &text)
{
    qsizetype run = 0; // start of the characters not yet appended
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t u = text.at(i).unicode();
        if (u != u'<' && u != u'>' && u != u'&' && u != u'"')
            continue;
        out->append(QStringView(text).sliced(run, i - run));
        out->append(u == u'<' ? u"&lt;" : u == u'>' ? u"&gt;" : u == u'&' ? u"&amp;" : u"&quot;");
        run = i + 1;
    }
    out->append(QStringView(text).sliced(run));
}

} // namespace

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
    // QXmlStreamWriter costs half as much as parsing the document did; texts
    // that need no more than the four escapes are written here, as it writes them.
    const auto plainAttribute = [](const QString &text) { return isPlain(text, false); };
    const auto plainText = [](const QString &text) { return isPlain(text, true); };
    bool plain = plainAttribute(units.first().document) && plainAttribute(m_sourceLanguage)
        && plainAttribute(m_targetLanguage);
    for (const TranslationUnit &unit : units) {
        plain = plain && plainAttribute(unit.id) && plainText(unit.source) && plainText(unit.target)
            && plainText(unit.note) && plainText(unit.previousSource);
    }
    if (!plain) {
        writeDocumentXml(units);
        return;
    }
    QString xml;
    xml += u"\n<file original=\"";
    appendEscaped(&xml, units.first().document);
    xml += u"\" source-language=\"";
    appendEscaped(&xml, m_sourceLanguage);
    if (!m_targetLanguage.isEmpty()) {
        xml += u"\" target-language=\"";
        appendEscaped(&xml, m_targetLanguage);
    }
    xml += u"\" datatype=\"plaintext\">\n  <body>";
    const auto element = [&xml](QStringView start, const QString &text, QStringView end) {
        xml += start;
        appendEscaped(&xml, text);
        xml += end;
    };
    for (const TranslationUnit &unit : units) {
        element(u"\n    <trans-unit id=\"", unit.id, u"\" xml:space=\"preserve\">");
        element(u"\n      <source>", unit.source, u"</source>");
        if (!m_targetLanguage.isEmpty() && !unit.target.isEmpty()) {
            element(unit.fuzzy ? u"\n      <target state=\"needs-adaptation\">"
                               : u"\n      <target state=\"translated\">",
                    unit.target, u"</target>");
        }
        if (!unit.note.isEmpty())
            element(u"\n      <note>", unit.note, u"</note>");
        if (unit.fuzzy && !unit.previousSource.isEmpty() && !unit.target.isEmpty()) {
            xml += u"\n      <alt-trans alttranstype=\"previous-version\">";
            element(u"\n        <source>", unit.previousSource, u"</source>");
            element(u"\n        <target>", unit.target, u"</target>");
            xml += u"\n      </alt-trans>";
        }
        xml += u"\n    </trans-unit>";
    }
    xml += u"\n  </body>\n</file>";
    m_device->write(xml.toUtf8());
}

// The same through QXmlStreamWriter, for texts with characters it treats
// otherwise (control characters, lone surrogates, line breaks in attributes).
void XliffWriter::writeDocumentXml(const QList<TranslationUnit> &units)
{
    QString text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    writeFileStart(xml, units.first().document);
    xml.writeStartElement(QStringLiteral("body"));
    const auto textElement = [&xml](const QString &name, const QString &content) {
        xml.writeStartElement(name);
        writeXmlText(xml, content);
        xml.writeEndElement();
    };
    for (const TranslationUnit &unit : units) {
        xml.writeStartElement(QStringLiteral("trans-unit"));
        xml.writeAttribute(QStringLiteral("id"), unit.id);
        // Line breaks and spaces are part of the text.
        xml.writeAttribute(QStringLiteral("xml:space"), QStringLiteral("preserve"));
        textElement(QStringLiteral("source"), unit.source);
        if (!m_targetLanguage.isEmpty() && !unit.target.isEmpty()) {
            xml.writeStartElement(QStringLiteral("target"));
            xml.writeAttribute(QStringLiteral("state"),
                               unit.fuzzy ? QStringLiteral("needs-adaptation")
                                          : QStringLiteral("translated"));
            writeXmlText(xml, unit.target);
            xml.writeEndElement();
        }
        if (!unit.note.isEmpty())
            textElement(QStringLiteral("note"), unit.note);
        if (unit.fuzzy && !unit.previousSource.isEmpty() && !unit.target.isEmpty()) {
            xml.writeStartElement(QStringLiteral("alt-trans"));
            xml.writeAttribute(QStringLiteral("alttranstype"), QStringLiteral("previous-version"));
            textElement(QStringLiteral("source"), unit.previousSource);
            textElement(QStringLiteral("target"), unit.target);
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndElement();
    m_device->write(text.toUtf8());
}

void XliffWriter::writeFileStart(QXmlStreamWriter &xml, const QString &original) const
{
    xml.writeStartElement(QStringLiteral("file"));
    xml.writeAttribute(QStringLiteral("original"), original);
    xml.writeAttribute(QStringLiteral("source-language"), m_sourceLanguage);
    if (!m_targetLanguage.isEmpty())
        xml.writeAttribute(QStringLiteral("target-language"), m_targetLanguage);
    xml.writeAttribute(QStringLiteral("datatype"), QStringLiteral("plaintext"));
}

void XliffWriter::finish(bool empty)
{
    if (empty) {
        QString text;
        QXmlStreamWriter xml(&text);
        xml.writeCharacters(QStringLiteral("\n"));
        writeFileStart(xml, QString());
        xml.writeEmptyElement(QStringLiteral("body"));
        xml.writeEndElement();
        m_device->write(text.toUtf8());
    }
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
    finish(catalog.units.isEmpty());
}

} // namespace ZyHelp::Translate
