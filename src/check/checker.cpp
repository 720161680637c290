#include "checker.h"

#include "helpdata.h"
#include "linkindex.h"

#include <QMap>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace ZyHelp::Check {

namespace {

// What the checks need of one document, kept instead of its text: a run
// holds no document whole, however many or large they are.
struct DocumentFacts
{
    ParseStatus status;
    QMap<QString, qsizetype> sectionCounts; // by language
    QStringList placeholderMessages;
    QStringList links;
};

// Why a description or section text still needs writing, or nothing.
QString unwrittenReason(const QString &text)
{
    if (text.isEmpty())
        return QStringLiteral("is empty");
    if (isUnwritten(text))
        return QStringLiteral("is still the placeholder \"%1\"").arg(text);
    return QString();
}

// Runs on the worker threads: one document, read with the parser that logs nothing.
DocumentFacts readFacts(const DocumentEntry &entry)
{
    DocumentFacts facts;
    HelpParser parser;
    const HelpData data = parser.parse(entry.filePath, &facts.status);
    // What follows a fault is not shown in the editor; checking the part
    // before it would report a cut document's gaps as the author's.
    if (facts.status.outcome != ParseStatus::Complete)
        return facts;

    for (auto it = data.languages.cbegin(), end = data.languages.cend(); it != end; ++it) {
        facts.sectionCounts.insert(it.key(), it->sections.size());
        const QString reason = unwrittenReason(it->description);
        if (!reason.isEmpty())
            facts.placeholderMessages.append(
                QStringLiteral("language '%1': the description %2").arg(it.key(), reason));
        for (const HelpSection &section : it->sections) {
            const QString sectionReason = unwrittenReason(section.content);
            if (!sectionReason.isEmpty())
                facts.placeholderMessages.append(
                    QStringLiteral("language '%1', section '%2': the text %3")
                        .arg(it.key(), section.name, sectionReason));
        }
    }
    facts.links = data.links;
    return facts;
}

// The language most documents have; of equally common ones the smallest key.
QString mostCommonLanguage(const QMap<QString, qsizetype> &documentsPerLanguage)
{
    QString language;
    qsizetype most = 0;
    for (auto it = documentsPerLanguage.cbegin(), end = documentsPerLanguage.cend(); it != end;
         ++it) {
        if (it.value() > most) {
            most = it.value();
            language = it.key();
        }
    }
    return language;
}

QString sections(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 section") : QStringLiteral("%1 sections").arg(count);
}

} // namespace

qsizetype CheckResult::count(Finding::Severity severity) const
{
    return std::count_if(findings.cbegin(), findings.cend(),
                         [severity](const Finding &f) { return f.severity == severity; });
}

Checker::Checker(const CheckOptions &options)
    : m_options(options)
{
}

CheckResult Checker::check(const QList<DocumentEntry> &documents,
                           const QList<Finding> &projectFindings) const
{
    // Mapped in order: the facts line up with the documents whatever thread read them.
    const QList<DocumentFacts> facts =
        QtConcurrent::blockingMapped<QList<DocumentFacts>>(documents, readFacts);

    const LinkIndex linkIndex(documents);
    QMap<QString, qsizetype> documentsPerLanguage;
    for (qsizetype i = 0; i < documents.size(); ++i) {
        for (auto it = facts.at(i).sectionCounts.cbegin(), end = facts.at(i).sectionCounts.cend();
             it != end; ++it) {
            ++documentsPerLanguage[it.key()];
        }
    }
    const bool languagesGiven = !m_options.languages.isEmpty();
    const QStringList required = languagesGiven ? m_options.languages : documentsPerLanguage.keys();
    const QString reference = m_options.reference.isEmpty()
        ? mostCommonLanguage(documentsPerLanguage)
        : m_options.reference;

    CheckResult result;
    result.documentCount = documents.size();
    result.findings = projectFindings;
    for (qsizetype i = 0; i < documents.size(); ++i) {
        const QString &path = documents.at(i).displayPath;
        const DocumentFacts &document = facts.at(i);
        const auto add = [&](Finding::Severity severity, const QString &id,
                             const QString &message) {
            result.findings.append(Finding{path, 0, 0, severity, id, message});
        };

        if (document.status.outcome == ParseStatus::Unreadable) {
            add(Finding::Error, QStringLiteral("unreadable"),
                QStringLiteral("cannot open the file: %1").arg(document.status.errorString));
            continue;
        }
        if (document.status.outcome == ParseStatus::Faulty) {
            result.findings.append(
                Finding{path, document.status.line, document.status.column, Finding::Error,
                        QStringLiteral("xml"),
                        QStringLiteral("faulty XML, the editor shows nothing from here on: %1")
                            .arg(document.status.errorString)});
            continue;
        }

        for (const QString &language : required) {
            if (!document.sectionCounts.contains(language))
                add(Finding::Error, QStringLiteral("missing-language"),
                    languagesGiven
                        ? QStringLiteral("language '%1' is missing; --languages requires it")
                              .arg(language)
                        : QStringLiteral("language '%1' is missing; other documents have it")
                              .arg(language));
        }

        const auto referenceCount = document.sectionCounts.constFind(reference);
        if (referenceCount != document.sectionCounts.cend()) {
            for (auto it = document.sectionCounts.cbegin(), end = document.sectionCounts.cend();
                 it != end; ++it) {
                if (it.value() != referenceCount.value())
                    add(Finding::Warning, QStringLiteral("section-count"),
                        QStringLiteral("language '%1' has %2, the reference language '%3' has %4")
                            .arg(it.key(), sections(it.value()), reference,
                                 sections(referenceCount.value())));
            }
        }

        for (const QString &message : document.placeholderMessages)
            add(Finding::Warning, QStringLiteral("placeholder"), message);

        for (const QString &link : document.links) {
            if (!linkIndex.contains(link))
                add(Finding::Warning, QStringLiteral("dangling-link"),
                    QStringLiteral("link '%1' names no document of this check").arg(link));
        }
    }

    std::stable_sort(result.findings.begin(), result.findings.end(),
                     [](const Finding &a, const Finding &b) {
                         if (a.path != b.path)
                             return a.path < b.path;
                         if (a.line != b.line)
                             return a.line < b.line;
                         return a.column < b.column;
                     });
    return result;
}

} // namespace ZyHelp::Check
