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
#include <numeric>

namespace ZyHelp::Publish {

// What the pages need to know of a document besides its text, and the
// checker's part: a run keeps no document's text, however large the project.
struct DocumentFacts
{
    ParseStatus status;
    QStringList languages;
    QList<PageLink> links;
};

// What every page depends on beyond its own document.
struct LanguageChoice
{
    QStringList languages;
    QString fallback;
};

namespace {

// The documents whose languages give the first guess of the published ones.
const qsizetype guessedFrom = 16;

// Pages of one folder that one thread writes.
struct FolderPages
{
    int folder = -1;
    QList<int> documents;
};

// The folders' pages, a large folder's in parts so that a project of one
// folder still keeps every thread busy; ordered so that neighbouring tasks,
// which run at the same time, lie in different folders where there are several.
QList<FolderPages> folderTasks(const SiteModel &model)
{
    const qsizetype partSize = 100;
    QList<QList<FolderPages>> rounds;
    for (qsizetype f = 0; f < model.folderCount(); ++f) {
        const QList<int> &pages = model.folder(int(f)).pages;
        for (qsizetype from = 0, part = 0; from < pages.size(); from += partSize, ++part) {
            if (rounds.size() <= part)
                rounds.resize(part + 1);
            rounds[part].append(FolderPages{int(f), pages.mid(from, partSize)});
        }
    }
    QList<FolderPages> tasks;
    for (const QList<FolderPages> &round : std::as_const(rounds))
        tasks += round;
    return tasks;
}

// The text a page shows: its language's, else the fallback's, else the
// document's first language's.
QString shownLanguage(const QStringList &has, const QString &language, const QString &fallback)
{
    if (has.contains(language) || has.isEmpty())
        return language;
    return has.contains(fallback) ? fallback : has.first();
}

// Unbuffered: a page is written whole, and a buffer would only copy it once more.
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && file.write(bytes) == bytes.size();
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

// Reads a document and what its pages need to know of it.
HelpData readDocument(const DocumentEntry &document, const LinkIndex &linkIndex,
                      DocumentFacts *facts)
{
    HelpData data = HelpParser().parse(document.filePath, &facts->status);
    facts->languages = data.languages.keys();
    for (const QString &link : std::as_const(data.links))
        facts->links.append(PageLink{int(linkIndex.indexOf(link)), link});
    return data;
}

// The documents' facts, read in parallel and in order.
QList<DocumentFacts> readFacts(const QList<DocumentEntry> &documents, const LinkIndex &linkIndex)
{
    return QtConcurrent::blockingMapped<QList<DocumentFacts>>(
        documents, [&](const DocumentEntry &document) {
            DocumentFacts facts;
            readDocument(document, linkIndex, &facts);
            return facts;
        });
}

} // namespace

Publisher::Publisher(const PublishOptions &options, const QString &projectName)
    : m_options(options)
    , m_projectName(projectName.isEmpty() ? QStringLiteral("Hilfe") : projectName)
{
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
    const bool site = m_options.format == PublishOptions::Html;
    QTemporaryDir staging;
    const QString root = site ? output.path() : staging.path();
    if (!site && !staging.isValid()) {
        m_errorString =
            QStringLiteral("cannot make a temporary folder: %1").arg(staging.errorString());
        return Failed;
    }

    // Every page names the published languages and shows the fallback's text
    // where its own is missing, and both are certain only once every document
    // has been read. Reading each document twice, once for them and once for
    // its pages, would double the run; so they are guessed from the first
    // documents, and the pages are written as the documents are read. Where
    // the guess proves wrong, the pages are written again.
    const LinkIndex linkIndex(documents);
    QList<DocumentFacts> facts =
        readFacts(documents.first(std::min(documents.size(), guessedFrom)), linkIndex);
    LanguageChoice guess;
    QString error;
    const bool guessed = chooseLanguages(facts, &guess, &error) == Published;
    QList<WrittenPages> written;
    if (guessed)
        written = writePages(model, documents, linkIndex, guess, root, &facts);
    else
        facts = readFacts(documents, linkIndex);

    for (qsizetype i = 0; i < documents.size(); ++i) {
        const DocumentFacts &content = facts.at(i);
        const QString &path = documents.at(i).displayPath;
        if (content.status.outcome == ParseStatus::Unreadable)
            m_findings.append(Finding{
                path, 0, 0, Finding::Error, QStringLiteral("unreadable"),
                QStringLiteral("cannot open the file: %1").arg(content.status.errorString)});
        else if (content.status.outcome == ParseStatus::Faulty)
            m_findings.append(Finding{path, content.status.line, content.status.column,
                                      Finding::Error, QStringLiteral("xml"),
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

    LanguageChoice choice;
    const Status chosen = chooseLanguages(facts, &choice, &m_errorString);
    if (chosen != Published)
        return chosen;
    if (!guessed || choice.languages != guess.languages || choice.fallback != guess.fallback) {
        // The guess named no language that the choice does not: the
        // first documents' languages are among all documents' languages.
        written = writePages(model, documents, linkIndex, choice, root, nullptr);
    }

    const bool pagesWritten = std::all_of(written.cbegin(), written.cend(),
                                          [](const WrittenPages &pages) { return pages.ok; });
    const HtmlPageWriter writer(model, m_projectName, choice.languages,
                                site ? HtmlPageWriter::Site : HtmlPageWriter::QtHelp);
    if (!pagesWritten || !writeLanguageFiles(model, writer, choice.languages, written, root)) {
        m_errorString = QStringLiteral("%1: cannot write the pages").arg(m_options.out);
        return Failed;
    }
    if (!site && !compileQtHelp(model, choice.languages, root, output.path()))
        return Failed;
    if (!output.commit()) {
        m_errorString = output.errorString();
        return Failed;
    }
    return faulty ? Failed : Published;
}

Publisher::Status Publisher::chooseLanguages(const QList<DocumentFacts> &facts,
                                             LanguageChoice *choice, QString *error) const
{
    QMap<QString, qsizetype> documentsPerLanguage;
    for (const DocumentFacts &content : facts) {
        for (const QString &language : content.languages)
            ++documentsPerLanguage[language];
    }
    for (const QString &language : m_options.languages) {
        if (!usableKey(language) || !documentsPerLanguage.contains(language)) {
            *error = QStringLiteral("--languages: no document has the language '%1'").arg(language);
            return UsageError;
        }
        choice->languages.append(language);
    }
    if (choice->languages.isEmpty()) {
        for (const QString &language : documentsPerLanguage.keys()) {
            if (usableKey(language))
                choice->languages.append(language);
        }
    }
    if (choice->languages.isEmpty()) {
        *error = QStringLiteral("nothing to publish: no document has a language");
        return Failed;
    }
    if (!m_options.fallback.isEmpty() && !documentsPerLanguage.contains(m_options.fallback)) {
        *error =
            QStringLiteral("--fallback: no document has the language '%1'").arg(m_options.fallback);
        return UsageError;
    }
    choice->fallback =
        m_options.fallback.isEmpty() ? mostCommon(documentsPerLanguage) : m_options.fallback;
    return Published;
}

// Writes every document's pages in the languages of choice, reading each
// document once; facts, where given, takes what the reading learned.
QList<WrittenPages> Publisher::writePages(const SiteModel &model,
                                          const QList<DocumentEntry> &documents,
                                          const LinkIndex &linkIndex, const LanguageChoice &choice,
                                          const QString &root, QList<DocumentFacts> *facts) const
{
    const bool site = m_options.format == PublishOptions::Html;
    const HtmlPageWriter writer(model, m_projectName, choice.languages,
                                site ? HtmlPageWriter::Site : HtmlPageWriter::QtHelp);
    for (const QString &language : choice.languages) {
        for (qsizetype f = 0; f < model.folderCount(); ++f)
            QDir(root).mkpath(language + u'/' + model.folder(int(f)).path);
    }

    // A task takes the pages of one folder: its tree is made once per
    // language, and the threads create files in different folders instead of
    // waiting on each other for the same folder's lock.
    const QList<FolderPages> tasks = folderTasks(model);
    using TaskPages = QList<std::pair<DocumentFacts, WrittenPages>>;
    const QList<TaskPages> byTask =
        QtConcurrent::blockingMapped<QList<TaskPages>>(tasks, [&](const FolderPages &task) {
            QList<FolderTree> trees;
            for (const QString &language : choice.languages)
                trees.append(writer.folderTree(task.folder, language));
            TaskPages results;
            for (int i : task.documents) {
                DocumentFacts content;
                WrittenPages pages;
                const HelpData data = readDocument(documents.at(i), linkIndex, &content);
                QMap<QString, QByteArray> bodies;
                QMap<QString, QByteArray> entries; // search index entries
                for (qsizetype l = 0; l < choice.languages.size(); ++l) {
                    const QString &language = choice.languages.at(l);
                    const QString shown =
                        shownLanguage(content.languages, language, choice.fallback);
                    if (!bodies.contains(shown)) {
                        const HelpLanguage text = data.languages.value(shown);
                        bodies.insert(shown, PageBody::html(model.title(i), text));
                        if (site) {
                            entries.insert(shown,
                                           SearchIndexWriter::entry(
                                               model.pageUrl(i), model.title(i),
                                               PageBody::searchWords(model.title(i), text)));
                        }
                    }
                    const QByteArray html = writer.documentPage(
                        i, language, shown, bodies.value(shown), content.links, trees.at(l));
                    pages.ok = writeFile(root + u'/' + language + u'/' + model.pagePath(i)
                                             + QLatin1StringView(".html"),
                                         html)
                        && pages.ok;
                    pages.searchEntries.append(entries.value(shown));
                }
                results.append({content, pages});
            }
            return results;
        });
    QList<WrittenPages> written(documents.size());
    if (facts)
        facts->resize(documents.size());
    for (qsizetype t = 0; t < tasks.size(); ++t) {
        for (qsizetype d = 0; d < tasks.at(t).documents.size(); ++d) {
            const int document = tasks.at(t).documents.at(d);
            written[document] = byTask.at(t).at(d).second;
            if (facts)
                (*facts)[document] = byTask.at(t).at(d).first;
        }
    }
    return written;
}

// Per language the contents page and, for the site, the search page and its
// index; for Qt Help the style sheet. The site's shared files lie in root.
bool Publisher::writeLanguageFiles(const SiteModel &model, const HtmlPageWriter &writer,
                                   const QStringList &languages, const QList<WrittenPages> &written,
                                   const QString &root) const
{
    const bool site = m_options.format == PublishOptions::Html;
    bool ok = true;
    for (qsizetype l = 0; l < languages.size(); ++l) {
        const QString folder = root + u'/' + languages.at(l);
        ok = ok
            && writeFile(folder + QLatin1StringView("/index.html"),
                         writer.contentsPage(languages.at(l)));
        if (site) {
            SearchIndexWriter index;
            for (int document : model.order())
                index.add(written.at(document).searchEntries.at(l));
            ok = ok
                && writeFile(folder + QLatin1StringView("/search.html"),
                             writer.searchPage(languages.at(l)))
                && writeFile(folder + QLatin1StringView("/search-index.js"), index.script());
        } else {
            ok = ok
                && writeFile(folder + QLatin1StringView("/style.css"),
                             resource(QStringLiteral("help.css")));
        }
    }
    if (site) {
        ok = ok && writeFile(root + QLatin1StringView("/index.html"), writer.redirectPage())
            && writeFile(root + QLatin1StringView("/style.css"),
                         resource(QStringLiteral("style.css")))
            && writeFile(root + QLatin1StringView("/search.js"),
                         resource(QStringLiteral("search.js")));
    }
    return ok;
}

// Writes, checks and compiles each language's Qt Help project in root into
// out/NAME_LANG.qch.
bool Publisher::compileQtHelp(const SiteModel &model, const QStringList &languages,
                              const QString &root, const QString &out)
{
    HelpGenerator generator(m_options.helpGenerator);
    for (const QString &language : languages) {
        const QString folder = root + u'/' + language;
        const QhpWriter qhp(model, m_projectName, language);
        const QString name = m_projectName + u'_' + language;
        const QString qhpFile = folder + u'/' + name + QLatin1StringView(".qhp");
        const QStringList faults = qhp.faults(folder);
        if (!faults.isEmpty()) {
            m_errorString =
                QStringLiteral("%1: %2").arg(qhpFile, faults.join(QLatin1StringView("; ")));
            return false;
        }
        if (!writeFile(qhpFile,
                       qhp.project({QStringLiteral("index.html"), QStringLiteral("style.css")}))) {
            m_errorString = QStringLiteral("%1: cannot write the file").arg(qhpFile);
            return false;
        }
        if (!generator.run(qhpFile, out + u'/' + name + QLatin1StringView(".qch"))) {
            m_errorString = generator.errorString();
            return false;
        }
    }
    return true;
}

} // namespace ZyHelp::Publish
