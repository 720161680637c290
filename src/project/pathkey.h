#pragma once

#include <QDir>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

// Path helpers of the project manager, kept apart so that the tests can hold
// them against the QString and QDir functions whose results they must match.
namespace ZyHelp::Internal {

// A key under which two strings are equal exactly when
// QString::compare(a, b, Qt::CaseInsensitive) == 0, so that a hash of keys
// finds the same duplicates as a scan with that comparison.
QString caseKey(const QString &text);

// caseKey(QDir::cleanPath(path)), in one pass for paths that are clean already.
QString cleanCaseKey(QStringView path);

// True only where QDir::cleanPath(path) returns path unchanged. It may say
// false for some clean paths; those are merely cleaned the slow way.
bool isCleanPath(QStringView path);

// QDir::cleanPath(path), without its work for paths that are clean already.
QString cleanPath(const QString &path);

// QDir(root).relativeFilePath(path) for many paths below one root: a path
// that is the clean absolute root, a "/" and a clean relative rest is cut
// to that rest; every other path goes through QDir.
class RelativePaths
{
public:
    explicit RelativePaths(const QString &root);

    QString relativeFilePath(const QString &path) const;

private:
    QDir m_root;
    QString m_prefix; // the root with a final "/", or empty where cutting is not safe
};

// The candidates of one registration, looked up by the lines of the list file.
class CandidateSet
{
public:
    explicit CandidateSet(const QStringList &candidates);

    // The index of the first candidate that equals QDir::cleanPath(entry)
    // ignoring case, as QString::compare sees it, or -1.
    qsizetype indexOf(QStringView entry) const;
    // The index of the first candidate that equals candidate `index`.
    qsizetype firstEqual(qsizetype index) const { return m_firstEqual.at(index); }

private:
    QHash<QString, qsizetype> m_firstIndex; // by caseKey()
    QList<qsizetype> m_firstEqual;
    QString m_prefix; // the longest start that all keys share
    bool m_plainPrefix = false; // m_prefix holds no "\\", ":" or "//"
};

} // namespace ZyHelp::Internal
