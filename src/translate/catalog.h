#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <utility>

namespace ZyHelp::Translate {

// One text to translate: a description, a section's name or a section's text.
struct TranslationUnit
{
    QString id; // "kapitel/b.zyhelp#2/content": the document and the unit's place in it
    QString source;
    QString target; // empty: not translated
    QString previousSource; // of a fuzzy unit: the source its target was made from
    QString document; // the document's path relative to the project folder
    QString note; // for the translator
    bool fuzzy = false;
    qint64 line = 0; // where a reader found it, from 1
};

// A unit as a reader found it, its texts still in UTF-8 and in one array: a
// unit costs the reading thread one allocation, and the thread that applies
// it decodes it.
struct EncodedUnit
{
    QByteArray texts; // the id, source, target and previous source, one after another
    qsizetype sourceAt = 0;
    qsizetype targetAt = 0;
    qsizetype previousAt = 0;
    bool fuzzy = false;
    qint64 line = 0;

    static EncodedUnit encode(const TranslationUnit &unit);
    QByteArrayView id() const { return QByteArrayView(texts).first(sourceAt); }
    bool hasTarget() const { return previousAt > targetAt; }
    TranslationUnit decoded() const;
};

// The units of one language pair, in the order of the documents and their texts.
struct Catalog
{
    QString sourceLanguage;
    QString targetLanguage; // empty: a template
    QString projectName;
    // Header fields a translator's tool keeps up (Last-Translator, ...), as
    // read from an earlier file, so that a new export keeps them.
    QList<std::pair<QString, QString>> translatorFields;
    QList<TranslationUnit> units;
};

// Where a reader stopped on a file that is not of its format.
struct ReadError
{
    qint64 line = 0;
    qint64 column = 0;
    QString message;
};

} // namespace ZyHelp::Translate
