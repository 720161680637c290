#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace ZyHelp::Publish {

class SiteModel;

// A link of a document as its page shows it: to a page, or plain text.
struct PageLink
{
    int target = -1; // the linked document, -1 for a link that names none
    QString text;
};

// Writes the pages of one language around the bodies: contents tree,
// breadcrumbs, previous/next, language switch and search. For Qt Help the
// same pages come without search and language switch, and without scripts.
class HtmlPageWriter
{
public:
    enum Target { Site, QtHelp };

    HtmlPageWriter(const SiteModel &model, const QString &projectName,
                   const QStringList &languages, Target target);

    // textLanguage differs from language where the page shows the fallback's text.
    QByteArray documentPage(int document, const QString &language, const QString &textLanguage,
                            const QByteArray &body, const QList<PageLink> &links) const;
    QByteArray contentsPage(const QString &language) const;
    QByteArray searchPage(const QString &language) const;
    // OUT/index.html: sends the reader on to the first language.
    QByteArray redirectPage() const;

private:
    QString head(const QString &language, const QString &title, const QString &up) const;
    QString banner(const QString &language, const QString &up, const QString &pagePath) const;
    QString tree(int current, const QString &up, const QString &language) const;
    void addTreeFolder(int folder, int current, const QString &up, QString *out) const;
    QString pageUrl(int document, const QString &up) const;
    QString folderUrl(int folder, const QString &up) const;
    QString up(int document) const;

    const SiteModel &m_model;
    QStringList m_titles; // escaped, by document
    QStringList m_folderNames; // escaped, by folder
    QString m_projectName;
    QStringList m_languages;
    Target m_target;
};

} // namespace ZyHelp::Publish
