#include "htmlpagewriter.h"

#include "pagebody.h"
#include "sitemodel.h"
#include "sitetext.h"

#include <functional>

namespace ZyHelp::Publish {

namespace {

// Appends text, escaped, as UTF-8.
void appendText(QByteArray *out, const QString &text)
{
    PageBody::appendEscaped(text.toUtf8(), out);
}

QByteArray htmlText(const QString &text)
{
    QByteArray out;
    appendText(&out, text);
    return out;
}

// For the pages that are still filled in with QString::arg().
QString esc(const QString &text)
{
    return QString::fromUtf8(htmlText(text));
}

const char pageEnd[] = "</main>\n</div>\n</body>\n</html>\n";

} // namespace

HtmlPageWriter::HtmlPageWriter(const SiteModel &model, const QString &projectName,
                               const QStringList &languages, Target target)
    : m_model(model)
    , m_projectName(projectName)
    , m_projectHtml(htmlText(projectName))
    , m_languages(languages)
    , m_target(target)
{
    for (qsizetype i = 0; i < model.pageCount(); ++i) {
        m_titles.append(htmlText(model.title(int(i))));
        m_pageUrls.append(model.pageUrl(int(i)).toLatin1());
    }
    for (qsizetype i = 0; i < model.folderCount(); ++i)
        m_folderNames.append(htmlText(model.folder(int(i)).name));
    for (const QString &language : languages)
        m_languageNames.append(htmlText(language));
}

QByteArray HtmlPageWriter::up(int document) const
{
    return QByteArray("../").repeated(m_model.folder(m_model.folderOf(document)).depth);
}

// Style sheet and script lie in OUT/ for the site, in the language's folder for Qt Help.
void HtmlPageWriter::appendHead(QByteArray *out, const QString &language, QByteArrayView title,
                                QByteArrayView up) const
{
    out->append("<!DOCTYPE html>\n<html lang=\"");
    appendText(out, language);
    out->append("\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                "<title>");
    out->append(title).append(" \u2013 ").append(m_projectHtml);
    out->append("</title>\n<link rel=\"stylesheet\" href=\"").append(up);
    if (m_target == Site)
        out->append("../");
    out->append("style.css\">\n</head>\n<body>\n");
}

// The skip link, the project's name, the search and the language switch.
// pagePath is the page below each language's folder, for the switch.
void HtmlPageWriter::appendBanner(QByteArray *out, const QString &language, QByteArrayView up,
                                  QByteArrayView pagePath) const
{
    const SiteText &text = SiteText::forLanguage(language);
    out->append("<a class=\"skip\" href=\"#main\">");
    appendText(out, text.skip);
    out->append("</a>\n<header>\n<p class=\"project\"><a href=\"").append(up);
    out->append("index.html\">").append(m_projectHtml).append("</a></p>\n");
    if (m_target == Site) {
        out->append("<form class=\"search\" role=\"search\" action=\"").append(up);
        out->append("search.html\"><input type=\"search\" name=\"q\" id=\"q\" aria-label=\"");
        appendText(out, text.searchLabel);
        out->append("\"> <button type=\"submit\">");
        appendText(out, text.search);
        out->append("</button></form>\n");
        if (m_languages.size() > 1) {
            out->append("<nav class=\"languages\" aria-label=\"");
            appendText(out, text.languages);
            out->append("\">\n<ul>\n");
            for (qsizetype i = 0; i < m_languages.size(); ++i) {
                const QByteArray &other = m_languageNames.at(i);
                if (m_languages.at(i) == language) {
                    out->append("<li><span aria-current=\"true\" lang=\"").append(other);
                    out->append("\">").append(other).append("</span></li>\n");
                } else {
                    out->append("<li><a href=\"").append(up).append("../").append(other);
                    out->append('/').append(pagePath).append("\" hreflang=\"").append(other);
                    out->append("\" lang=\"").append(other).append("\">").append(other);
                    out->append("</a></li>\n");
                }
            }
            out->append("</ul>\n</nav>\n");
        }
    }
    out->append("</header>\n");
}

FolderTree HtmlPageWriter::folderTree(int folder, const QString &language) const
{
    FolderTree tree;
    tree.folder = folder;
    tree.html = "<div class=\"page\">\n<nav class=\"contents\" aria-label=\"";
    appendText(&tree.html, SiteText::forLanguage(language).contents);
    tree.html += "\">\n";
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
        out += "<li><a href=\"" + up + m_pageUrls.at(page) + '"';
        if (folder == tree->folder)
            tree->marks.insert(page, out.size());
        out += ">" + m_titles.at(page) + "</a></li>\n";
    }
    out += "</ul>\n";
}

// Built as UTF-8 from parts escaped once: a project has many pages.
QByteArray HtmlPageWriter::documentPage(int document, const QString &language,
                                        const QString &textLanguage, const QByteArray &body,
                                        const QList<PageLink> &links, const FolderTree &tree) const
{
    const SiteText &text = SiteText::forLanguage(language);
    const QByteArray u = up(document);
    const QByteArray &title = m_titles.at(document);
    QByteArray page;
    page.reserve(4096 + tree.html.size() + body.size());
    appendHead(&page, language, title, u);
    appendBanner(&page, language, u, m_pageUrls.at(document));
    const qsizetype mark = tree.marks.value(document);
    page.append(tree.html.constData(), mark).append(" aria-current=\"page\"");
    page.append(tree.html.constData() + mark, tree.html.size() - mark);

    page.append("<main id=\"main\">\n<nav class=\"breadcrumbs\" aria-label=\"");
    appendText(&page, text.breadcrumbs);
    page.append("\">\n<ol>\n<li><a href=\"").append(u).append("index.html\">");
    appendText(&page, text.contents);
    page.append("</a></li>\n");
    QList<int> folders;
    for (int f = m_model.folderOf(document); f > 0; f = m_model.folder(f).parent)
        folders.prepend(f);
    for (int f : folders) {
        page.append("<li><a href=\"")
            .append(u)
            .append("index.html#f")
            .append(QByteArray::number(f));
        page.append("\">").append(m_folderNames.at(f)).append("</a></li>\n");
    }
    page.append("<li aria-current=\"page\">").append(title).append("</li>\n</ol>\n</nav>\n");
    if (textLanguage == language) {
        page.append("<article>\n");
    } else {
        page.append("<p class=\"note\" role=\"note\">");
        appendText(&page, text.untranslated.arg(textLanguage));
        page.append("</p>\n<article lang=\"");
        appendText(&page, textLanguage);
        page.append("\">\n");
    }
    page.append(body).append("</article>\n");

    // The links are the site's words, not the text's: outside the article.
    const auto appendLink = [&](int target, const char *before, const char *after) {
        page.append("<li><a ").append(before).append("href=\"").append(u);
        page.append(m_pageUrls.at(target)).append("\">").append(after);
    };
    if (!links.isEmpty()) {
        page.append("<h2 id=\"see-also\">");
        appendText(&page, text.seeAlso);
        page.append("</h2>\n<ul class=\"see-also\">\n");
        for (const PageLink &link : links) {
            if (link.target < 0) {
                page.append("<li>");
                appendText(&page, link.text);
            } else {
                appendLink(link.target, "", "");
                page.append(m_titles.at(link.target)).append("</a>");
            }
            page.append("</li>\n");
        }
        page.append("</ul>\n");
    }

    const int position = m_model.position(document);
    const QList<int> &order = m_model.order();
    if (order.size() > 1) {
        page.append("<nav class=\"pager\" aria-label=\"");
        appendText(&page, text.pages);
        page.append("\">\n<ul>\n");
        if (position > 0) {
            appendLink(order.at(position - 1), "rel=\"prev\" ", "\u2190 ");
            appendText(&page, text.previous);
            page.append(": ").append(m_titles.at(order.at(position - 1))).append("</a></li>\n");
        }
        if (position + 1 < order.size()) {
            appendLink(order.at(position + 1), "rel=\"next\" ", "");
            appendText(&page, text.next);
            page.append(": ").append(m_titles.at(order.at(position + 1)));
            page.append(" \u2192</a></li>\n");
        }
        page.append("</ul>\n</nav>\n");
    }
    return page.append(pageEnd);
}

// The whole tree, every folder open, each with the anchor that the pages'
// closed folders lead to.
QByteArray HtmlPageWriter::contentsPage(const QString &language) const
{
    const SiteText &text = SiteText::forLanguage(language);
    QByteArray out;
    appendHead(&out, language, htmlText(text.contents), {});
    appendBanner(&out, language, {}, "index.html");
    out.append("<div class=\"page\">\n<main id=\"main\">\n<h1>").append(m_projectHtml);
    out.append("</h1>\n");
    out.append("<nav class=\"contents full\" aria-label=\"");
    appendText(&out, text.contents);
    out.append("\">\n");
    const std::function<void(int)> add = [&](int folder) {
        const SiteFolder &f = m_model.folder(folder);
        out.append("<ul>\n");
        for (int child : f.folders) {
            out.append("<li class=\"folder\" id=\"f").append(QByteArray::number(child));
            out.append("\"><span>").append(m_folderNames.at(child)).append("</span>\n");
            add(child);
            out.append("</li>\n");
        }
        for (int page : f.pages) {
            out.append("<li><a href=\"").append(m_pageUrls.at(page)).append("\">");
            out.append(m_titles.at(page)).append("</a></li>\n");
        }
        out.append("</ul>\n");
    };
    if (m_model.pageCount() > 0)
        add(0);
    out.append("</nav>\n");
    return out.append(pageEnd);
}

QByteArray HtmlPageWriter::searchPage(const QString &language) const
{
    const SiteText &text = SiteText::forLanguage(language);
    QByteArray out;
    appendHead(&out, language, htmlText(text.search), {});
    appendBanner(&out, language, {}, "search.html");
    out += QStringLiteral("<div class=\"page\">\n<main id=\"main\">\n<h1>%1</h1>\n"
                          "<p id=\"status\" role=\"status\" data-none=\"%3\" "
                          "data-found=\"%1\">%2</p>\n"
                          "<ol id=\"results\">\n"
                          "<li hidden></li>\n</ol>\n"
                          "<script src=\"search-index.js\"></script>\n"
                          "<script src=\"../search.js\"></script>\n")
               .arg(esc(text.searchResults), esc(text.needsScript), esc(text.noResults))
               .toUtf8();
    return out.append(pageEnd);
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
