#include "helpdata.h"
#include "savefile.h"
#include "xmltext.h"

#include <QDebug>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace ZyHelp {

HelpWriter::HelpWriter() = default;

QByteArray HelpWriter::toXml(const HelpData &data) const
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();

    xml.writeStartElement(QStringLiteral("zyhelp"));
    xml.writeAttribute(QStringLiteral("version"), withoutLoneSurrogates(data.version));
    xml.writeAttribute(QStringLiteral("author"), withoutLoneSurrogates(data.author));

    for (auto it = data.languages.cbegin(), end = data.languages.cend(); it != end; ++it) {
        xml.writeStartElement(QStringLiteral("lang"));
        xml.writeAttribute(QStringLiteral("name"), withoutLoneSurrogates(it.key()));
        xml.writeStartElement(QStringLiteral("description"));
        writeXmlText(xml, withoutLoneSurrogates(it->description));
        xml.writeEndElement();
        for (const HelpSection &section : it->sections) {
            xml.writeStartElement(QStringLiteral("section"));
            xml.writeAttribute(QStringLiteral("name"), withoutLoneSurrogates(section.name));
            writeXmlText(xml, withoutLoneSurrogates(section.content));
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }

    for (const QString &link : data.links) {
        xml.writeStartElement(QStringLiteral("link"));
        xml.writeAttribute(QStringLiteral("page"), withoutLoneSurrogates(link));
        xml.writeEndElement();
    }

    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

bool HelpWriter::writeXml(const HelpData &data, const QString &filePath)
{
    // The document goes to a temporary file beside the target that replaces it
    // only when complete, so a full disk or a crash leaves the old file whole.
    // QSaveFile refuses a write-protected file, as an in-place write would;
    // where only the folder is protected, the file is written in place.
    QSaveFile file(filePath);
    file.setDirectWriteFallback(true);
    // QSaveFile would take an empty name for a file in the current folder.
    if (filePath.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qWarning() << "Konnte Datei nicht zum Schreiben öffnen:" << filePath;
        return false;
    }

    const QByteArray bytes = toXml(data);

    QString error;
    if (!commitSaveFile(&file, file.write(bytes) == bytes.size(), &error)) {
        qWarning() << "Konnte Datei nicht schreiben:" << filePath << ":" << error;
        return false;
    }
    return true;
}

} // namespace ZyHelp
