#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <functional>

namespace ZyHelp {
struct HelpData;
}

namespace Bench {

// The generated documents: every one has these languages, each with
// sectionCount sections of a few hundred characters, and up to three links.
const int sectionCount = 10;
const QStringList &languageKeys();
ZyHelp::HelpData sampleDocument(int index, int documentCount);

// Writes documentCount sample documents below root, documentsPerFolder to a
// folder, as kapitel000/seite0.zyhelp ...: named by their running number, so
// that their links ("seite<N>") name documents of the project. Returns their
// paths in document order, nothing if one could not be written; bytes, if
// given, gets the size of their files.
const int documentsPerFolder = 100;
QStringList writeProject(const QString &root, int documentCount, qint64 *bytes = nullptr);

// Runs fn `runs` times and returns the fastest run in milliseconds: the
// least disturbed figure on a shared machine.
double bestOfMs(int runs, const std::function<void()> &fn);

// Peak resident memory of this process so far, in MiB (VmHWM).
double peakMemoryMiB();

// The global path list lies beside this executable. It is moved aside for the
// run and put back afterwards, so the benchmark leaves no "Path" file behind.
class PathFileGuard
{
public:
    PathFileGuard();
    ~PathFileGuard();

    QString path() const { return m_path; }

private:
    QString m_path;
    QString m_backup;
    bool m_hadFile = false;
};

void printFigure(const QString &name, double value, const QString &unit);
void printRatio(const QString &name, double ratio, double target);
void printRange(const QString &name, double ratio, double low, double high);

} // namespace Bench

void benchDocuments();
void benchProject();
void benchEditor();
void benchCheck();
void benchPublish();
void benchTranslate();
// The child process of the editor part: opens the project file and prints the
// time and the peak memory. Returns the exit code.
int benchColdOpen(const QString &projectFile);
// The child process that parses every document of the project on one thread
// and prints the time.
int benchFreshParse(const QString &projectFile);
// The same on all cores through the editor's document cache, no node made.
int benchPoolParse(const QString &projectFile);
