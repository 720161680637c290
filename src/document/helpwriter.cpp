#include "helpdata.h"

#include <QDebug>
#include <QFile>
#include <QXmlStreamWriter>

namespace ZyHelp {

HelpWriter::HelpWriter() = default;

bool HelpWriter::writeXml(const HelpData &data, const QString &filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qWarning() << "Konnte Datei nicht zum Schreiben öffnen:" << filePath;
        return false;
    }

    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();

    xml.writeStartElement(QStringLiteral("zyhelp"));
    xml.writeAttribute(QStringLiteral("version"), data.version);
    xml.writeAttribute(QStringLiteral("author"), data.author);

    for (auto it = data.languages.cbegin(), end = data.languages.cend(); it != end; ++it) {
        xml.writeStartElement(QStringLiteral("lang"));
        xml.writeAttribute(QStringLiteral("name"), it.key());
        xml.writeTextElement(QStringLiteral("description"), it->description);
        for (const HelpSection &section : it->sections) {
            xml.writeStartElement(QStringLiteral("section"));
            xml.writeAttribute(QStringLiteral("name"), section.name);
            xml.writeCharacters(section.content);
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }

    for (const QString &link : data.links) {
        xml.writeStartElement(QStringLiteral("link"));
        xml.writeAttribute(QStringLiteral("page"), link);
        xml.writeEndElement();
    }

    xml.writeEndElement();
    xml.writeEndDocument();
    file.close();
    return true;
}

} // namespace ZyHelp
