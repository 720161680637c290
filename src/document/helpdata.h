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

inline bool operator==(const HelpSection &a, const HelpSection &b)
{
    return a.name == b.name && a.content == b.content;
}
inline bool operator!=(const HelpSection &a, const HelpSection &b)
{
    return !(a == b);
}

// The part of a document in one language. Its key lives in HelpData::languages only.
struct HelpLanguage
{
    QString description;
    QList<HelpSection> sections;
};

inline bool operator==(const HelpLanguage &a, const HelpLanguage &b)
{
    return a.description == b.description && a.sections == b.sections;
}
inline bool operator!=(const HelpLanguage &a, const HelpLanguage &b)
{
    return !(a == b);
}

// One help document, as read from and written to a .zyhelp file.
struct HelpData
{
    HelpData();

    QString version;
    QString author;
    QMap<QString, HelpLanguage> languages; // ordered by key, case-sensitively
    QStringList links;
};

inline bool operator==(const HelpData &a, const HelpData &b)
{
    return a.version == b.version && a.author == b.author && a.languages == b.languages
        && a.links == b.links;
}
inline bool operator!=(const HelpData &a, const HelpData &b)
{
    return !(a == b);
}

// A description or section text that is empty or still the text the editor
// puts into a new document ("Neue Beschreibung"), language or section ("..."):
// nothing has been written there yet.
bool isUnwritten(const QString &text);

// How reading a document ended: whole, not at all, or stopped at a fault.
struct ParseStatus
{
    enum Outcome { Complete, Unreadable, Faulty };

    Outcome outcome = Complete;
    qint64 line = 0; // where the XML reader stopped (Faulty only), from 1
    qint64 column = 0; // of the last character read, from 1
    QString errorString; // the XML reader's message, or why the file could not be opened
};

// Reads a .zyhelp file tolerantly: a faulty file yields what was complete.
class HelpParser
{
public:
    HelpParser();

    // Logs a warning when the file cannot be opened or its XML is faulty.
    HelpData parse(const QString &filePath);
    // Logs nothing: status tells whether and where the read stopped early.
    // Safe to call from several threads at once.
    HelpData parse(const QString &filePath, ParseStatus *status);
    // The same on a file's bytes, already read.
    HelpData parseData(const QByteArray &bytes, ParseStatus *status);

    // The warning that parse(filePath) logs for this outcome, if any.
    static void logStatus(const QString &filePath, const ParseStatus &status);
};

// Writes a document in the .zyhelp format.
class HelpWriter
{
public:
    HelpWriter();

    bool writeXml(const HelpData &data, const QString &filePath);
    // The file's bytes, as writeXml writes them.
    QByteArray toXml(const HelpData &data) const;
};

} // namespace ZyHelp
