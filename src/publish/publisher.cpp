#include "publisher.h"

#include "helpdata.h"
#include "helpgenerator.h"
#include "htmlpagewriter.h"
#include "linkindex.h"
#include "outputfolder.h"
#include "pagebody.h"
#include "qhpwriter.h"
#include "searchindexwriter.h"
#include "sitemodel.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <atomic>
#include <numeric>

namespace ZyHelp::Publish {

namespace {

// What the pages need of one document, kept instead of its model: the bodies
// as UTF-8 hold less than the parsed text.
struct DocumentContent
{
    ParseStatus status;
    QMap<QString, QByteArray> bodies; // by language
    QMap<QString, QByteArray> words; // by language
    QList<PageLink> links;
};

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/zyhelppublish/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The language most documents have; of equally common ones the smallest key.
QString mostCommon(const QMap<QString, qsizetype> &documentsPerLanguage)
{
    QString language;
    qsizetype most = 0;
    for (auto it = documentsPerLanguage.cbegin(); it != documentsPerLanguage.cend(); ++it) {
        if (it.value() > most) {
            most = it.value();
            language = it.key();
        }
    }
    return language;
}

// A language key names a folder; one that cannot is not published.
bool usableKey(const QString &key)
{
    return !key.isEmpty() && key != u"." && key != u".." && !key.contains(u'/');
}

} // namespace

Publisher::Publisher(const PublishOptions &options, const QString &projectName)
    : m_options(options)
    , m_projectName(projectName.isEmpty() ? QStringLiteral("Hilfe") : projectName)
{
}

QString Publisher::toText(const Finding &f)
{
    const QString location =
        f.line > 0 ? QStringLiteral("%1:%2:%3").arg(f.path).arg(f.line).arg(f.column) : f.path;
    return QStringLiteral("%1: %2: %3 [%4]")
        .arg(location, f.severity == Finding::Error ? QStringLiteral("error")
                                                    : QStringLiteral("warning"),
             f.message, f.id);
}

Publisher::Status Publisher::publish(const QList<DocumentEntry> &documents)
{
    const SiteModel model(documents);
    if (!model.collisions().isEmpty()) {
        m_findings = model.collisions();
        m_errorString = QStringLiteral("nothing published: page names collide");
        return Failed;
    }
    OutputFolder output(m_options.out);
    if (!output.prepare()) {
        m_errorString = output.errorString();
        return Failed;
    }

    // Read in parallel, in order: the contents line up with the documents.
    const LinkIndex linkIndex(documents);
    QList<int> indexes(documents.size());
    std::iota(indexes.begin(), indexes.end(), 0);
    const QList<DocumentContent> contents = QtConcurrent::blockingMapped<QList<DocumentContent>>(
        indexes, [&](int i) {
            DocumentContent content;
            HelpParser parser;
            const HelpData data = parser.parse(documents.at(i).filePath, &content.status);
            for (auto it = data.languages.cbegin(); it != data.languages.cend(); ++it) {
                content.bodies.insert(it.key(), PageBody::html(model.title(i), it.value()));
                content.words.insert(it.key(), PageBody::searchWords(model.title(i), it.value()));
            }
            for (const QString &link : data.links)
                content.links.append(PageLink{int(linkIndex.indexOf(link)), link});
            return content;
        });

    QMap<QString, qsizetype> documentsPerLanguage;
    for (qsizetype i = 0; i < documents.size(); ++i) {
        const DocumentContent &content = contents.at(i);
        const QString &path = documents.at(i).displayPath;
        for (auto it = content.bodies.cbegin(); it != content.bodies.cend(); ++it)
            ++documentsPerLanguage[it.key()];
        if (content.status.outcome == ParseStatus::Unreadable)
            m_findings.append(Finding{path, 0, 0, Finding::Error, QStringLiteral("unreadable"),
                                      QStringLiteral("cannot open the file: %1")
                                          .arg(content.status.errorString)});
        else if (content.status.outcome == ParseStatus::Faulty)
            m_findings.append(Finding{
                path, content.status.line, content.status.column, Finding::Error,
                QStringLiteral("xml"),
                QStringLiteral("faulty XML, published up to here: %1")
                    .arg(content.status.errorString)});
        for (const PageLink &link : content.links) {
            if (link.target < 0)
                m_findings.append(Finding{
                    path, 0, 0, Finding::Warning, QStringLiteral("dangling-link"),
                    QStringLiteral("link '%1' names no document of this check").arg(link.text)});
        }
    }
    std::stable_sort(m_findings.begin(), m_findings.end(), [](const Finding &a, const Finding &b) {
        return a.path != b.path ? a.path < b.path
                                : (a.line != b.line ? a.line < b.line : a.column < b.column);
    });
    const bool faulty = std::any_of(m_findings.cbegin(), m_findings.cend(),
                                    [](const Finding &f) { return f.severity == Finding::Error; });

    QStringList languages;
    for (const QString &language : m_options.languages) {
        if (!documentsPerLanguage.contains(language)) {
            m_errorString = QStringLiteral("--languages: no document has the language '%1'")
                                .arg(language);
            return UsageError;
        }
        languages.append(language);
    }
    if (languages.isEmpty()) {
        for (const QString &language : documentsPerLanguage.keys()) {
            if (usableKey(language))
                languages.append(language);
        }
    }
    if (languages.isEmpty()) {
        m_errorString = QStringLiteral("nothing to publish: no document has a language");
        return Failed;
    }
    if (!m_options.fallback.isEmpty() && !documentsPerLanguage.contains(m_options.fallback)) {
        m_errorString = QStringLiteral("--fallback: no document has the language '%1'")
                            .arg(m_options.fallback);
        return UsageError;
    }
    const QString fallback =
        m_options.fallback.isEmpty() ? mostCommon(documentsPerLanguage) : m_options.fallback;

    // The text a page shows: its language's, else the fallback's, else the
    // document's first language's.
    const auto textLanguage = [&](int document, const QString &language) {
        const DocumentContent &content = contents.at(document);
        if (content.bodies.contains(language) || content.bodies.isEmpty())
            return language;
        return content.bodies.contains(fallback) ? fallback : content.bodies.firstKey();
    };

    const bool site = m_options.format == PublishOptions::Html;
    QTemporaryDir staging;
    const QString root = site ? output.path() : staging.path();
    if (!site && !staging.isValid()) {
        m_errorString = QStringLiteral("cannot make a temporary folder: %1")
                            .arg(staging.errorString());
        return Failed;
    }
    const HtmlPageWriter writer(model, m_projectName, languages,
                                site ? HtmlPageWriter::Site : HtmlPageWriter::QtHelp);
    for (const QString &language : languages) {
        for (qsizetype f = 0; f < model.folderCount(); ++f)
            QDir(root).mkpath(language + u'/' + model.folder(int(f)).path);
    }

    QList<QPair<QString, int>> pages; // language, document
    for (const QString &language : languages) {
        for (int document : model.order())
            pages.append({language, document});
    }
    std::atomic<bool> written{true};
    QtConcurrent::blockingMap(pages, [&](const QPair<QString, int> &page) {
        const QString shown = textLanguage(page.second, page.first);
        const QByteArray body = contents.at(page.second).bodies.value(
            shown, PageBody::html(model.title(page.second), HelpLanguage()));
        const QByteArray html = writer.documentPage(page.second, page.first, shown, body,
                                                    contents.at(page.second).links);
        if (!writeFile(root + u'/' + page.first + u'/' + model.pagePath(page.second)
                           + QLatin1StringView(".html"),
                       html))
            written = false;
    });

    bool ok = written;
    for (const QString &language : languages) {
        const QString folder = root + u'/' + language;
        ok = ok && writeFile(folder + QLatin1StringView("/index.html"),
                             writer.contentsPage(language));
        if (site) {
            SearchIndexWriter index;
            for (int document : model.order())
                index.add(SiteModel::url(model.pagePath(document)) + QLatin1StringView(".html"),
                          model.title(document),
                          contents.at(document).words.value(textLanguage(document, language)));
            ok = ok && writeFile(folder + QLatin1StringView("/search.html"),
                                 writer.searchPage(language))
                && writeFile(folder + QLatin1StringView("/search-index.js"), index.script());
        } else {
            ok = ok && writeFile(folder + QLatin1StringView("/style.css"),
                                 resource(QStringLiteral("style.css")));
        }
    }
    if (!ok) {
        m_errorString = QStringLiteral("%1: cannot write the pages").arg(m_options.out);
        return Failed;
    }

    if (site) {
        ok = writeFile(root + QLatin1StringView("/index.html"), writer.redirectPage())
            && writeFile(root + QLatin1StringView("/style.css"),
                         resource(QStringLiteral("style.css")))
            && writeFile(root + QLatin1StringView("/search.js"),
                         resource(QStringLiteral("search.js")));
    } else {
        HelpGenerator generator(m_options.helpGenerator);
        for (const QString &language : languages) {
            const QString folder = root + u'/' + language;
            const QhpWriter qhp(model, m_projectName, language);
            const QString name = m_projectName + u'_' + language;
            const QString qhpFile = folder + u'/' + name + QLatin1StringView(".qhp");
            const QStringList faults = qhp.faults(folder);
            if (!faults.isEmpty()) {
                m_errorString = QStringLiteral("%1: %2").arg(qhpFile, faults.join(QLatin1StringView("; ")));
                return Failed;
            }
            if (!writeFile(qhpFile, qhp.project({QStringLiteral("index.html"),
                                                 QStringLiteral("style.css")}))
                || !generator.run(qhpFile, output.path() + u'/' + name + QLatin1StringView(".qch"))) {
                m_errorString = generator.errorString();
                return Failed;
            }
        }
    }
    if (!output.commit()) {
        m_errorString = output.errorString();
        return Failed;
    }
    return faulty ? Failed : Published;
}

} // namespace ZyHelp::Publish
