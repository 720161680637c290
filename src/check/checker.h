#pragma once

#include "documentcollector.h"
#include "finding.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ZyHelp::Check {

struct CheckOptions
{
    QStringList languages; // the languages every document must have; empty: every one of the run
    QString reference; // whose section count the others must match; empty: the most common
};

struct CheckResult
{
    qsizetype documentCount = 0;
    QList<Finding> findings; // by path, then line and column, in the same order every run

    qsizetype count(Finding::Severity severity) const;
};

// Reads the documents of a run in parallel and checks them against each other.
class Checker
{
public:
    explicit Checker(const CheckOptions &options = CheckOptions());

    // projectFindings are merged into the sorted result.
    CheckResult check(const QList<DocumentEntry> &documents,
                      const QList<Finding> &projectFindings = {}) const;

private:
    CheckOptions m_options;
};

} // namespace ZyHelp::Check
