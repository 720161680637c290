#pragma once

#include <QByteArray>
#include <QHash>
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

// The contents tree that every page of one folder shows in one language,
// as UTF-8: the pages differ only in the mark of the current one, which goes
// at marks[document].
struct FolderTree
{
    int folder = -1;
    QByteArray html;
    QHash<int, qsizetype> marks;
};

// Writes the pages of one language around the bodies: contents tree,
// breadcrumbs, previous/next, language switch and search. For Qt Help the
// same pages come without search and language switch, and without scripts.
class HtmlPageWriter
{
public:
    enum Target { Site, QtHelp };

    HtmlPageWriter(const SiteModel &model, const QString &projectName, const QStringList &languages,
                   Target target);

    // Made once per folder and language: a page's tree is this one with its mark.
    FolderTree folderTree(int folder, const QString &language) const;
    // textLanguage differs from language where the page shows the fallback's text;
    // tree is folderTree() of the document's folder in language.
    QByteArray documentPage(int document, const QString &language, const QString &textLanguage,
                            const QByteArray &body, const QList<PageLink> &links,
                            const FolderTree &tree) const;
    QByteArray contentsPage(const QString &language) const;
    QByteArray searchPage(const QString &language) const;
    // OUT/index.html: sends the reader on to the first language.
    QByteArray redirectPage() const;

private:
    // title is escaped UTF-8, as are the other parts but language.
    void appendHead(QByteArray *out, const QString &language, QByteArrayView title,
                    QByteArrayView up) const;
    void appendBanner(QByteArray *out, const QString &language, QByteArrayView up,
                      QByteArrayView pagePath) const;
    void addTreeFolder(int folder, const QList<int> &openFolders, const QByteArray &up,
                       FolderTree *tree) const;
    QByteArray up(int document) const;

    const SiteModel &m_model;
    QList<QByteArray> m_titles; // escaped UTF-8, by document
    QList<QByteArray> m_pageUrls; // by document
    QList<QByteArray> m_folderNames; // escaped UTF-8, by folder
    QString m_projectName;
    QByteArray m_projectHtml; // escaped UTF-8
    QStringList m_languages;
    QList<QByteArray> m_languageNames; // escaped UTF-8
    Target m_target;
};

} // namespace ZyHelp::Publish
