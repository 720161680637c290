#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdio>

class QCommandLineParser;

namespace ZyHelp {

class DocumentCollector;

// What the command-line programs do alike: their exit statuses, their usage
// errors and the PATHs that name a run's documents.
namespace CommandLine {

enum ExitStatus { Passed = 0, Failed = 1, UsageError = 2 };

void write(std::FILE *stream, const QByteArray &bytes);
void printLines(std::FILE *stream, const QStringList &lines);

// Reads the program's arguments. --help and --version are answered here and end
// the program; false after a usage error, which is printed.
bool parseArguments(QCommandLineParser *parser);

// status, or Failed for a run whose standard output could not be written whole
// (a full disk), which is said on stderr: a report cut short is no report.
int finish(int status);

// Prints "PROGRAM: MESSAGE" on stderr and returns UsageError.
int usageError(const QString &message);

// The keys of a list such as "de, en,de": trimmed, without empty ones and repeats.
QStringList keyList(const QString &list);

// Adds every path to collector. Every path is looked at before anything is
// done, so that one run names every path that is wrong; false if one was.
bool addPaths(const QStringList &paths, DocumentCollector *collector);

} // namespace CommandLine
} // namespace ZyHelp
