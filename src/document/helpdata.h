#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace ZyHelp {

// One named text section of a language block.
struct HelpSection
{
    QString name;
    QString content;
};

// The part of a document in one language. Its key lives in HelpData::languages only.
struct HelpLanguage
{
    QString description;
    QList<HelpSection> sections;
};

// One help document, as read from and written to a .zyhelp file.
struct HelpData
{
    HelpData();

    QString version;
    QString author;
    QMap<QString, HelpLanguage> languages; // ordered by key, case-sensitively
    QStringList links;
};

// Reads a .zyhelp file tolerantly: a faulty file yields what was complete.
class HelpParser
{
public:
    HelpParser();

    HelpData parse(const QString &filePath);
};

// Writes a document in the .zyhelp format.
class HelpWriter
{
public:
    HelpWriter();

    bool writeXml(const HelpData &data, const QString &filePath);
};

} // namespace ZyHelp
