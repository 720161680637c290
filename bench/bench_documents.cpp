#include "benchutil.h"

#include "helpdata.h"

#include <QFile>
#include <QList>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdio>

using namespace ZyHelp;

namespace {

const int documentCount = 2000;
const int runs = 7;

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every token, nothing kept: what any reader built on QXmlStreamReader pays.
qsizetype tokenize(const QByteArray &bytes)
{
    QXmlStreamReader xml(bytes);
    qsizetype count = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        ++count;
    }
    return count;
}

} // namespace

void benchDocuments()
{
    QTemporaryDir dir;
    if (!dir.isValid()) {
        std::printf("  no temporary folder: %s\n", qPrintable(dir.errorString()));
        return;
    }

    QList<HelpData> documents;
    QStringList paths;
    for (int i = 0; i < documentCount; ++i) {
        documents.append(Bench::sampleDocument(i, documentCount));
        paths.append(dir.filePath(QStringLiteral("seite%1.zyhelp").arg(i)));
    }

    HelpWriter writer;
    bool written = true;
    const double writeMs = Bench::bestOfMs(runs, [&] {
        for (int i = 0; i < documentCount; ++i)
            written = writer.writeXml(documents.at(i), paths.at(i)) && written;
    });
    if (!written) {
        std::printf("  could not write the documents\n");
        return;
    }

    QList<QByteArray> contents;
    const double readMs = Bench::bestOfMs(runs, [&] {
        contents.clear();
        for (const QString &path : std::as_const(paths))
            contents.append(fileBytes(path));
    });
    qint64 totalBytes = 0;
    for (const QByteArray &bytes : std::as_const(contents))
        totalBytes += bytes.size();

    // Floor and parse take turns, so a busy spell on a shared machine weighs
    // on both alike; each keeps its fastest round.
    HelpParser parser;
    qsizetype tokens = 0;
    qsizetype sections = 0;
    double tokenizeMs = 1e300;
    double parseMs = 1e300;
    for (int round = 0; round < runs; ++round) {
        tokenizeMs = std::min(tokenizeMs, Bench::bestOfMs(1, [&] {
                                  tokens = 0;
                                  for (const QByteArray &bytes : std::as_const(contents))
                                      tokens += tokenize(bytes);
                              }));
        parseMs = std::min(parseMs, Bench::bestOfMs(1, [&] {
                               sections = 0;
                               for (const QString &path : std::as_const(paths)) {
                                   const HelpData data = parser.parse(path);
                                   for (const HelpLanguage &language : data.languages)
                                       sections += language.sections.size();
                               }
                           }));
    }

    // Both loops must have done the work they are timed for.
    const qsizetype expectedSections =
        qsizetype(documentCount) * Bench::languageKeys().size() * Bench::sectionCount;
    if (sections != expectedSections || tokens == 0)
        std::printf("  parse read %lld sections (expected %lld), the floor %lld tokens\n",
                    qlonglong(sections), qlonglong(expectedSections), qlonglong(tokens));

    std::printf("  %d documents, %lld languages and %d sections each, %.2f MiB, best of %d\n",
                documentCount, qlonglong(Bench::languageKeys().size()), Bench::sectionCount,
                totalBytes / (1024.0 * 1024.0), runs);
    Bench::printFigure(QStringLiteral("read all files' bytes"), readMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("tokenize in memory, bare QXmlStreamReader (floor)"),
                       tokenizeMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("HelpParser::parse, all files"), parseMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("HelpWriter::writeXml, all files"), writeMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("parse / (read + tokenize)"), parseMs / (readMs + tokenizeMs),
                       QStringLiteral("x"));
    Bench::printRatio(QStringLiteral("parse / tokenize floor"), parseMs / tokenizeMs, 1.3);
}
