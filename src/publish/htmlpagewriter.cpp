#include "htmlpagewriter.h"

#include "pagebody.h"
#include "sitemodel.h"
#include "sitetext.h"

#include <functional>

namespace ZyHelp::Publish {

namespace {

QString esc(const QString &text)
{
    return PageBody::escaped(text);
}

const QLatin1StringView pageEnd("</main>\n</div>\n</body>\n</html>\n");

} // namespace

HtmlPageWriter::HtmlPageWriter(const SiteModel &model, const QString &projectName,
                               const QStringList &languages, Target target)
    : m_model(model)
    , m_projectName(projectName)
    , m_languages(languages)
    , m_target(target)
{
    for (qsizetype i = 0; i < model.pageCount(); ++i)
        m_titles.append(esc(model.title(int(i))).toUtf8());
    for (qsizetype i = 0; i < model.folderCount(); ++i)
        m_folderNames.append(esc(model.folder(int(i)).name).toUtf8());
}

QString HtmlPageWriter::up(int document) const
{
    return QStringLiteral("../").repeated(m_model.folder(m_model.folderOf(document)).depth);
}

QString HtmlPageWriter::pageUrl(int document, const QString &up) const
{
    return up + m_model.pageUrl(document);
}

QString HtmlPageWriter::folderUrl(int folder, const QString &up) const
{
    return up + QStringLiteral("index.html#f%1").arg(folder);
}

// Style sheet and script lie in OUT/ for the site, in the language's folder for Qt Help.
QString HtmlPageWriter::head(const QString &language, const QString &title, const QString &up) const
{
    const QString assets = m_target == Site ? up + QLatin1StringView("../") : up;
    return QStringLiteral("<!DOCTYPE html>\n<html lang=\"%1\">\n<head>\n<meta charset=\"utf-8\">\n"
                          "<meta name=\"viewport\" content=\"width=device-width, "
                          "initial-scale=1\">\n<title>%2 \u2013 %3</title>\n"
                          "<link rel=\"stylesheet\" href=\"%4style.css\">\n</head>\n<body>\n")
        .arg(esc(language), esc(title), esc(m_projectName), assets);
}

// The skip link, the project's name, the search and the language switch.
// pagePath is the page below each language's folder, for the switch.
QString HtmlPageWriter::banner(const QString &language, const QString &up,
                               const QString &pagePath) const
{
    const SiteText &text = SiteText::forLanguage(language);
    QString out = QStringLiteral("<a class=\"skip\" href=\"#main\">%1</a>\n<header>\n"
                                 "<p class=\"project\"><a href=\"%2index.html\">%3</a></p>\n")
                      .arg(esc(text.skip), up, esc(m_projectName));
    if (m_target == Site) {
        out += QStringLiteral("<form class=\"search\" role=\"search\" action=\"%1search.html\">"
                              "<input type=\"search\" name=\"q\" id=\"q\" aria-label=\"%2\">"
                              " <button type=\"submit\">%3</button></form>\n")
                   .arg(up, esc(text.searchLabel), esc(text.search));
        if (m_languages.size() > 1) {
            out += QStringLiteral("<nav class=\"languages\" aria-label=\"%1\">\n<ul>\n")
                       .arg(esc(text.languages));
            for (const QString &other : m_languages) {
                if (other == language)
                    out += QStringLiteral("<li><span aria-current=\"true\" lang=\"%1\">%1</span>"
                                          "</li>\n")
                               .arg(esc(other));
                else
                    out += QStringLiteral("<li><a href=\"%1../%2/%3\" hreflang=\"%2\" "
                                          "lang=\"%2\">%2</a></li>\n")
                               .arg(up, esc(other), pagePath);
            }
            out += QLatin1StringView("</ul>\n</nav>\n");
        }
    }
    return out + QLatin1StringView("</header>\n");
}

FolderTree HtmlPageWriter::folderTree(int folder, const QString &language) const
{
    FolderTree tree;
    tree.folder = folder;
    tree.html = QStringLiteral("<div class=\"page\">\n<nav class=\"contents\" aria-label=\"%1\">\n")
                    .arg(esc(SiteText::forLanguage(language).contents))
                    .toUtf8();
    QList<int> openFolders;
    for (int open = folder; open > 0; open = m_model.folder(open).parent)
        openFolders.append(open);
    const QByteArray up = QByteArray("../").repeated(m_model.folder(folder).depth);
    addTreeFolder(0, openFolders, up, &tree);
    tree.html += "</nav>\n";
    return tree;
}

// Only the folders on the way to the current page are open; the others lead
// to their place in the language's contents page, so that a page stays small
// however large the project is.
void HtmlPageWriter::addTreeFolder(int folder, const QList<int> &openFolders, const QByteArray &up,
                                   FolderTree *tree) const
{
    const SiteFolder &f = m_model.folder(folder);
    if (f.folders.isEmpty() && f.pages.isEmpty())
        return;
    QByteArray &out = tree->html;
    out += "<ul>\n";
    for (int child : f.folders) {
        if (openFolders.contains(child)) {
            out += "<li class=\"folder open\"><span>" + m_folderNames.at(child) + "</span>\n";
            addTreeFolder(child, openFolders, up, tree);
            out += "</li>\n";
        } else {
            out += "<li class=\"folder\"><a href=\"" + up + "index.html#f"
                + QByteArray::number(child) + "\">" + m_folderNames.at(child) + "</a></li>\n";
        }
    }
    for (int page : f.pages) {
        out += "<li><a href=\"" + up + m_model.pageUrl(page).toLatin1() + '"';
        if (folder == tree->folder)
            tree->marks.insert(page, out.size());
        out += ">" + m_titles.at(page) + "</a></li>\n";
    }
    out += "</ul>\n";
}

QByteArray HtmlPageWriter::documentPage(int document, const QString &language,
                                        const QString &textLanguage, const QByteArray &body,
                                        const QList<PageLink> &links, const FolderTree &tree) const
{
    const SiteText &text = SiteText::forLanguage(language);
    const QString u = up(document);
    const QString url = SiteModel::url(m_model.pagePath(document)) + QLatin1StringView(".html");
    const QByteArray start =
        (head(language, m_model.title(document), u) + banner(language, u, url)).toUtf8();
    const qsizetype mark = tree.marks.value(document);

    QString top = QStringLiteral("<main id=\"main\">\n<nav class=\"breadcrumbs\" "
                                 "aria-label=\"%1\">\n<ol>\n"
                                 "<li><a href=\"%2index.html\">%3</a></li>\n")
                      .arg(esc(text.breadcrumbs), u, esc(text.contents));
    QList<int> folders;
    for (int f = m_model.folderOf(document); f > 0; f = m_model.folder(f).parent)
        folders.prepend(f);
    for (int f : folders)
        top += QStringLiteral("<li><a href=\"%1\">%2</a></li>\n")
                   .arg(folderUrl(f, u), esc(m_model.folder(f).name));
    top += QStringLiteral("<li aria-current=\"page\">%1</li>\n</ol>\n</nav>\n")
               .arg(esc(m_model.title(document)));
    if (textLanguage != language)
        top += QStringLiteral("<p class=\"note\" role=\"note\">%1</p>\n")
                   .arg(esc(text.untranslated.arg(textLanguage)));
    top += textLanguage == language
        ? QStringLiteral("<article>\n")
        : QStringLiteral("<article lang=\"%1\">\n").arg(esc(textLanguage));

    // The links are the site's words, not the text's: outside the article.
    QString bottom = QStringLiteral("</article>\n");
    if (!links.isEmpty()) {
        bottom += QStringLiteral("<h2 id=\"see-also\">%1</h2>\n<ul class=\"see-also\">\n")
                      .arg(esc(text.seeAlso));
        for (const PageLink &link : links) {
            if (link.target < 0)
                bottom += QStringLiteral("<li>%1</li>\n").arg(esc(link.text));
            else
                bottom += QStringLiteral("<li><a href=\"%1\">%2</a></li>\n")
                              .arg(pageUrl(link.target, u), esc(m_model.title(link.target)));
        }
        bottom += QLatin1StringView("</ul>\n");
    }

    const int position = m_model.position(document);
    const QList<int> &order = m_model.order();
    if (order.size() > 1) {
        bottom +=
            QStringLiteral("<nav class=\"pager\" aria-label=\"%1\">\n<ul>\n").arg(esc(text.pages));
        if (position > 0)
            bottom += QStringLiteral("<li><a rel=\"prev\" href=\"%1\">\u2190 %2: %3</a></li>\n")
                          .arg(pageUrl(order.at(position - 1), u), esc(text.previous),
                               esc(m_model.title(order.at(position - 1))));
        if (position + 1 < order.size())
            bottom += QStringLiteral("<li><a rel=\"next\" href=\"%1\">%2: %3 \u2192</a></li>\n")
                          .arg(pageUrl(order.at(position + 1), u), esc(text.next),
                               esc(m_model.title(order.at(position + 1))));
        bottom += QLatin1StringView("</ul>\n</nav>\n");
    }
    bottom += pageEnd;
    const QByteArray end = bottom.toUtf8();
    QByteArray page = start;
    page.reserve(start.size() + tree.html.size() + top.size() + body.size() + end.size() + 32);
    page.append(tree.html.constData(), mark);
    page += " aria-current=\"page\"";
    page.append(tree.html.constData() + mark, tree.html.size() - mark);
    return page + top.toUtf8() + body + end;
}

// The whole tree, every folder open, each with the anchor that the pages'
// closed folders lead to.
QByteArray HtmlPageWriter::contentsPage(const QString &language) const
{
    const SiteText &text = SiteText::forLanguage(language);
    QString out = head(language, text.contents, QString())
        + banner(language, QString(), QStringLiteral("index.html"))
        + QStringLiteral("<div class=\"page\">\n<main id=\"main\">\n<h1>%1</h1>\n")
              .arg(esc(m_projectName));
    QString list;
    const std::function<void(int)> add = [&](int folder) {
        const SiteFolder &f = m_model.folder(folder);
        list += QLatin1StringView("<ul>\n");
        for (int child : f.folders) {
            list += QStringLiteral("<li class=\"folder\" id=\"f%1\"><span>%2</span>\n")
                        .arg(child)
                        .arg(esc(m_model.folder(child).name));
            add(child);
            list += QLatin1StringView("</li>\n");
        }
        for (int page : f.pages)
            list += QStringLiteral("<li><a href=\"%1\">%2</a></li>\n")
                        .arg(pageUrl(page, QString()), esc(m_model.title(page)));
        list += QLatin1StringView("</ul>\n");
    };
    if (m_model.pageCount() > 0)
        add(0);
    out += QStringLiteral("<nav class=\"contents full\" aria-label=\"%1\">\n%2</nav>\n")
               .arg(esc(text.contents), list);
    return (out + pageEnd).toUtf8();
}

QByteArray HtmlPageWriter::searchPage(const QString &language) const
{
    const SiteText &text = SiteText::forLanguage(language);
    const QString out = head(language, text.search, QString())
        + banner(language, QString(), QStringLiteral("search.html"))
        + QStringLiteral("<div class=\"page\">\n<main id=\"main\">\n<h1>%1</h1>\n"
                         "<p id=\"status\" role=\"status\" data-none=\"%3\" "
                         "data-found=\"%1\">%2</p>\n"
                         "<ol id=\"results\">\n"
                         "<li hidden></li>\n</ol>\n"
                         "<script src=\"search-index.js\"></script>\n"
                         "<script src=\"../search.js\"></script>\n")
              .arg(esc(text.searchResults), esc(text.needsScript), esc(text.noResults));
    return (out + pageEnd).toUtf8();
}

QByteArray HtmlPageWriter::redirectPage() const
{
    const QString first = SiteModel::url(m_languages.value(0)) + QLatin1StringView("/index.html");
    return QStringLiteral("<!DOCTYPE html>\n<html lang=\"%1\">\n<head>\n<meta charset=\"utf-8\">\n"
                          "<meta http-equiv=\"refresh\" content=\"0; url=%2\">\n"
                          "<title>%3</title>\n</head>\n<body>\n<p><a href=\"%2\">%3</a></p>\n"
                          "</body>\n</html>\n")
        .arg(esc(m_languages.value(0)), first, esc(m_projectName))
        .toUtf8();
}

} // namespace ZyHelp::Publish
