#include "projectfile.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace ZyHelp {

std::optional<QString> ProjectFileReader::readName(QIODevice *device)
{
    QXmlStreamReader xml(device);
    while (!xml.atEnd() && !xml.hasError()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"zyproject")
            return xml.attributes().value(QStringLiteral("name")).toString();
    }
    return std::nullopt;
}

bool ProjectFileReader::readList(QIODevice *device, const QString &path, QStringList *entries,
                                 QString *error)
{
    QXmlStreamReader xml(device);
    QString rootName;
    int depth = 0;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (++depth == 1)
                rootName = xml.name().toString();
            if (depth == 2 && rootName == u"zyproject" && xml.name() == u"file") {
                entries->append(xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed());
                --depth; // the end element is read
            }
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
    }
    if (xml.hasError()) {
        *error = QStringLiteral("%1:%2:%3: not a project file: %4")
                     .arg(path)
                     .arg(xml.lineNumber())
                     .arg(xml.columnNumber() + 1)
                     .arg(xml.errorString());
        return false;
    }
    if (rootName != u"zyproject") {
        *error = QStringLiteral("%1: not a project file: the root element is <%2>, not <zyproject>")
                     .arg(path, rootName);
        return false;
    }
    return true;
}

QByteArray ProjectFileWriter::toXml(const QString &name, const QStringList &files)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("zyproject"));
    xml.writeAttribute(QStringLiteral("name"), withoutLoneSurrogates(name));
    for (const QString &entry : files) {
        xml.writeStartElement(QStringLiteral("file"));
        writeXmlText(xml, withoutLoneSurrogates(entry));
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

} // namespace ZyHelp
