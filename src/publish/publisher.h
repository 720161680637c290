#pragma once

#include "documentcollector.h"
#include "finding.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace ZyHelp {
class LinkIndex;
}

namespace ZyHelp::Publish {

class HtmlPageWriter;
class SiteModel;
struct DocumentFacts;
struct LanguageChoice;

// The search index entries of a document's pages, one per published language;
// false where a page could not be written.
struct WrittenPages
{
    QList<QByteArray> searchEntries;
    bool ok = true;
};

struct PublishOptions
{
    enum Format { Html, QtHelp };

    Format format = Html;
    QStringList languages; // empty: every language a document has
    QString fallback; // empty: the language most documents have
    QString out;
    QString helpGenerator; // empty: found beside Qt's tools
};

// Publishes a run's documents as an HTML site or as Qt Help files into a new
// folder that replaces OUT when complete.
class Publisher
{
public:
    enum Status { Published = 0, Failed = 1, UsageError = 2 };

    Publisher(const PublishOptions &options, const QString &projectName);

    Status publish(const QList<DocumentEntry> &documents);
    // The documents' faults and dangling links, sorted as zyhelpcheck sorts them.
    QList<Finding> findings() const { return m_findings; }
    // Why the run stopped, where it did.
    QString errorString() const { return m_errorString; }

private:
    Status chooseLanguages(const QList<DocumentFacts> &facts, LanguageChoice *choice,
                           QString *error) const;
    QList<WrittenPages> writePages(const SiteModel &model, const QList<DocumentEntry> &documents,
                                   const LinkIndex &linkIndex, const LanguageChoice &choice,
                                   const QString &root, QList<DocumentFacts> *facts) const;
    bool writeLanguageFiles(const SiteModel &model, const HtmlPageWriter &writer,
                            const QStringList &languages, const QList<WrittenPages> &written,
                            const QString &root) const;
    bool compileQtHelp(const SiteModel &model, const QStringList &languages, const QString &root,
                       const QString &out);

    PublishOptions m_options;
    QString m_projectName;
    QList<Finding> m_findings;
    QString m_errorString;
};

} // namespace ZyHelp::Publish
