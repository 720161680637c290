#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

class QIODevice;

namespace ZyHelp {

// The .zyproject format: a <zyproject name="..."> root element holding one
// <file> element per document, its path relative to the project folder.
class ProjectFileReader
{
public:
    // The editor's lenient reading: the name of the first <zyproject> element
    // at any depth, or nothing when the XML ends or turns faulty before one.
    static std::optional<QString> readName(QIODevice *device);
    // The checker's strict reading: the documents listed by a well-formed
    // document whose root is <zyproject>. False, with error (prefixed with
    // path, and where known the line and column), for anything else.
    static bool readList(QIODevice *device, const QString &path, QStringList *entries,
                         QString *error);
};

class ProjectFileWriter
{
public:
    // The file's bytes, as ProjectManager::saveProject writes them.
    static QByteArray toXml(const QString &name, const QStringList &files);
};

} // namespace ZyHelp
