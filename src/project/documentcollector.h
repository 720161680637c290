#pragma once

#include "finding.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace ZyHelp {

// A document of the run: where it is read from, how it is printed and the
// name that links use for it.
struct DocumentEntry
{
    QString filePath;
    QString displayPath; // the path given on the command line, joined with relativePath
    QString relativePath; // below the project folder or folder given; a file given: its name
};

// Turns the paths of the command line into the documents of one run, each
// document once, however often and by whichever path it is named.
class DocumentCollector
{
public:
    // Adds a .zyproject file (the documents below its folder), a folder (the
    // documents below it) or a .zyhelp file. Returns false, with
    // errorString(), for a path that is none of these and for a project file
    // that is not one.
    bool addPath(const QString &path);
    QString errorString() const { return m_errorString; }

    QList<DocumentEntry> documents() const { return m_documents; }
    // The project-list findings of the project files added.
    QList<Finding> findings() const { return m_findings; }
    // The name of the run's project, taken from the first path added: a
    // project file's base name, a folder's name, or a document's folder's name.
    QString projectName() const { return m_projectName; }

private:
    bool addProject(const QString &path);
    QStringList addFolder(const QString &folder, const QString &displayBase);
    static QString canonicalKey(const QString &path);
    bool isNew(const QString &key);

    QList<DocumentEntry> m_documents;
    QList<Finding> m_findings;
    QSet<QString> m_seen; // canonicalKey() of every document, folder and project file added
    QString m_errorString;
    QString m_projectName;
};

} // namespace ZyHelp
