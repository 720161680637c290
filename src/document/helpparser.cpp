#include "helpdata.h"

#include <QDebug>
#include <QFile>
#include <QStringConverter>
#include <QXmlStreamReader>

#include <optional>

namespace ZyHelp {

using namespace Qt::StringLiterals;

namespace {

// The file's text is UTF-8 whatever its XML declaration names; only a byte order
// mark switches to the encoding it marks, and undecodable bytes become U+FFFD.
// The reader gets a string, so the declaration cannot reinterpret the text.
// Carriage returns are dropped from the decoded text, so CR LF reads as LF.
void setText(QXmlStreamReader &xml, const QByteArray &bytes)
{
    const auto encoding = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(encoding.value_or(QStringConverter::Utf8));
    QString text = decoder(bytes);
    text.remove(u'\r');
    xml.addData(text);
}

// The attribute's value, or nothing when the element lacks it. Presence is
// decided by the name alone: an attribute given as "" is present.
std::optional<QString> attribute(const QXmlStreamAttributes &attributes, QLatin1StringView name)
{
    for (const QXmlStreamAttribute &a : attributes) {
        if (a.qualifiedName() == name)
            return a.value().toString();
    }
    return std::nullopt;
}

// The element's text without the white space around it. The reader builds the text
// piece by piece, at every entity, and leaves room to spare that a project of
// thousands of documents would keep: a fifth of its memory.
QString elementText(QXmlStreamReader &xml)
{
    QString text = xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement).trimmed();
    text.squeeze();
    return text;
}

} // namespace

HelpParser::HelpParser() = default;

HelpData HelpParser::parse(const QString &filePath)
{
    ParseStatus status;
    HelpData result = parse(filePath, &status);
    logStatus(filePath, status);
    return result;
}

void HelpParser::logStatus(const QString &filePath, const ParseStatus &status)
{
    if (status.outcome == ParseStatus::Unreadable)
        qWarning() << "Kann XML-Datei nicht öffnen:" << filePath;
    else if (status.outcome == ParseStatus::Faulty)
        qWarning() << "XML Parsing Fehler in" << filePath << ":" << status.errorString;
}

HelpData HelpParser::parse(const QString &filePath, ParseStatus *status)
{
    *status = ParseStatus();

    // Not in text mode: that would drop every 0x0D byte before decoding and
    // so tear UTF-16 and UTF-32 code units apart. setText drops carriage
    // returns from the decoded text instead.
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        status->outcome = ParseStatus::Unreadable;
        status->errorString = file.errorString();
        return HelpData();
    }
    const QByteArray bytes = file.readAll();
    file.close();
    return parseData(bytes, status);
}

HelpData HelpParser::parseData(const QByteArray &bytes, ParseStatus *status)
{
    HelpData result;
    *status = ParseStatus();

    QXmlStreamReader xml;
    setText(xml, bytes);

    QString currentKey;
    HelpLanguage currentLanguage;

    while (!xml.atEnd() && !xml.hasError()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (name == u"section") {
                HelpSection section;
                section.name = attribute(xml.attributes(), "name"_L1).value_or(QString());
                section.content = elementText(xml);
                currentLanguage.sections.append(section);
            } else if (name == u"description") {
                currentLanguage.description = elementText(xml);
            } else if (name == u"lang") {
                const QXmlStreamAttributes attributes = xml.attributes();
                if (auto key = attribute(attributes, "name"_L1))
                    currentKey = *key;
                else if (auto lang = attribute(attributes, "lang"_L1))
                    currentKey = *lang;
                currentLanguage = HelpLanguage();
            } else if (name == u"link") {
                if (auto page = attribute(xml.attributes(), "page"_L1))
                    result.links.append(*page);
            } else if (name == u"zyhelp") {
                const QXmlStreamAttributes attributes = xml.attributes();
                if (auto version = attribute(attributes, "version"_L1))
                    result.version = *version;
                if (auto author = attribute(attributes, "author"_L1))
                    result.author = *author;
            }
        } else if (token == QXmlStreamReader::EndElement && xml.name() == u"lang") {
            if (!currentKey.isEmpty())
                result.languages.insert(currentKey, currentLanguage);
            currentKey.clear();
        }
    }

    if (xml.hasError()) {
        status->outcome = ParseStatus::Faulty;
        status->line = xml.lineNumber();
        status->column = xml.columnNumber(); // the last character read, counted from 1
        status->errorString = xml.errorString();
    }

    return result;
}

} // namespace ZyHelp
