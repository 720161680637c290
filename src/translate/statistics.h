#pragma once

#include "documentcollector.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace ZyHelp::Translate {

// Units and their source words, counted as pocount counts them.
struct UnitCounts
{
    qint64 translated = 0;
    qint64 translatedWords = 0;
    qint64 untranslated = 0;
    qint64 untranslatedWords = 0;
    qint64 notReady = 0; // the source is empty or still a placeholder
    qint64 notReadyWords = 0;

    void add(const UnitCounts &other);
};

struct DocumentStatistics
{
    QString path; // as printed
    QMap<QString, UnitCounts> languages; // by target language
};

struct Statistics
{
    QString sourceLanguage;
    QStringList targetLanguages; // every language of the run but the source
    QList<DocumentStatistics> documents;
    QStringList errors; // documents not read whole
};

Statistics countUnits(const QList<DocumentEntry> &documents, const QString &source);

QString textStatistics(const Statistics &statistics);
QByteArray jsonStatistics(const Statistics &statistics);

} // namespace ZyHelp::Translate
