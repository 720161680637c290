#include "statistics.h"

#include "documentunits.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QtConcurrent/QtConcurrentMap>

namespace ZyHelp::Translate {

namespace {

// Words as pocount and wc count them: runs of characters between white space.
qint64 words(const QString &text)
{
    qint64 count = 0;
    bool inWord = false;
    for (const QChar c : text) {
        if (c.isSpace())
            inWord = false;
        else if (!inWord)
            inWord = true, ++count;
    }
    return count;
}

struct DocumentCounts
{
    QMap<QString, UnitCounts> languages;
    UnitCounts absent; // for a target language the document lacks
    QStringList languageKeys; // every language the document has
    QString error;
};

UnitCounts countLanguage(const HelpLanguage &source, const HelpLanguage *target)
{
    UnitCounts counts;
    const auto count = [&](const UnitPlace &place) {
        const QString &text = *textAt(source, place);
        const QString *translation = target ? textAt(*target, place) : nullptr;
        if (isUnwritten(text)) {
            ++counts.notReady;
            counts.notReadyWords += words(text);
        } else if (translation && !isUnwritten(*translation)) {
            ++counts.translated;
            counts.translatedWords += words(text);
        } else {
            ++counts.untranslated;
            counts.untranslatedWords += words(text);
        }
    };
    count(UnitPlace{UnitPlace::Description, 0});
    for (qsizetype i = 0; i < source.sections.size(); ++i) {
        count(UnitPlace{UnitPlace::Name, i});
        count(UnitPlace{UnitPlace::Content, i});
    }
    return counts;
}

DocumentCounts countDocument(const DocumentEntry &entry, const QString &source)
{
    DocumentCounts result;
    ParseStatus status;
    const HelpData data = HelpParser().parse(entry.filePath, &status);
    if (status.outcome != ParseStatus::Complete) {
        result.error = QStringLiteral("%1: error: the document was not read whole: %2")
                           .arg(entry.displayPath, status.errorString);
        return result;
    }
    result.languageKeys = data.languages.keys();
    // A document without the source language has nothing to translate.
    const auto sourceLanguage = data.languages.constFind(source);
    if (sourceLanguage == data.languages.cend())
        return result;
    result.absent = countLanguage(*sourceLanguage, nullptr);
    for (auto target = data.languages.cbegin(); target != data.languages.cend(); ++target) {
        if (target.key() != source)
            result.languages.insert(target.key(), countLanguage(*sourceLanguage, &*target));
    }
    return result;
}

QString countsText(const UnitCounts &c)
{
    return QStringLiteral("%1 translated (%2 words), %3 untranslated (%4 words), %5 not ready "
                          "(%6 words)")
        .arg(c.translated)
        .arg(c.translatedWords)
        .arg(c.untranslated)
        .arg(c.untranslatedWords)
        .arg(c.notReady)
        .arg(c.notReadyWords);
}

QJsonObject countsJson(const UnitCounts &c)
{
    return QJsonObject{{QStringLiteral("translated"), c.translated},
                       {QStringLiteral("translatedWords"), c.translatedWords},
                       {QStringLiteral("untranslated"), c.untranslated},
                       {QStringLiteral("untranslatedWords"), c.untranslatedWords},
                       {QStringLiteral("notReady"), c.notReady},
                       {QStringLiteral("notReadyWords"), c.notReadyWords}};
}

} // namespace

void UnitCounts::add(const UnitCounts &o)
{
    translated += o.translated;
    translatedWords += o.translatedWords;
    untranslated += o.untranslated;
    untranslatedWords += o.untranslatedWords;
    notReady += o.notReady;
    notReadyWords += o.notReadyWords;
}

Statistics countUnits(const QList<DocumentEntry> &documents, const QString &source)
{
    const QList<DocumentCounts> counts = QtConcurrent::blockingMapped<QList<DocumentCounts>>(
        documents, [&](const DocumentEntry &entry) { return countDocument(entry, source); });
    Statistics statistics;
    statistics.sourceLanguage = source;
    QSet<QString> targets;
    for (const DocumentCounts &document : counts) {
        for (const QString &key : document.languageKeys)
            targets.insert(key);
    }
    targets.remove(source);
    statistics.targetLanguages = QStringList(targets.cbegin(), targets.cend());
    statistics.targetLanguages.sort();
    for (qsizetype i = 0; i < documents.size(); ++i) {
        const DocumentCounts &document = counts.at(i);
        if (!document.error.isEmpty()) {
            statistics.errors.append(document.error);
            continue;
        }
        DocumentStatistics entry{documents.at(i).displayPath, document.languages};
        for (const QString &target : std::as_const(statistics.targetLanguages)) {
            if (!entry.languages.contains(target))
                entry.languages.insert(target, document.absent);
        }
        statistics.documents.append(entry);
    }
    return statistics;
}

QString textStatistics(const Statistics &statistics)
{
    QString text;
    for (const QString &target : statistics.targetLanguages) {
        UnitCounts total;
        for (const DocumentStatistics &document : statistics.documents) {
            const UnitCounts counts = document.languages.value(target);
            text += QStringLiteral("%1: %2: %3\n").arg(document.path, target, countsText(counts));
            total.add(counts);
        }
        text += QStringLiteral("%1 from %2, %3 documents: %4\n")
                    .arg(target, statistics.sourceLanguage)
                    .arg(statistics.documents.size())
                    .arg(countsText(total));
    }
    return text;
}

QByteArray jsonStatistics(const Statistics &statistics)
{
    QJsonObject languages;
    for (const QString &target : statistics.targetLanguages) {
        UnitCounts total;
        QJsonArray documents;
        for (const DocumentStatistics &document : statistics.documents) {
            const UnitCounts counts = document.languages.value(target);
            QJsonObject object = countsJson(counts);
            object.insert(QStringLiteral("path"), document.path);
            documents.append(object);
            total.add(counts);
        }
        QJsonObject object = countsJson(total);
        object.insert(QStringLiteral("documents"), documents);
        languages.insert(target, object);
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("source"), statistics.sourceLanguage},
                                     {QStringLiteral("languages"), languages}})
        .toJson();
}

} // namespace ZyHelp::Translate
