#pragma once

#include "checker.h"

#include <QByteArray>
#include <QString>

namespace ZyHelp::Check {

// "N documents, E errors, W warnings"
QString summaryLine(const CheckResult &result);

// One line per finding, "PATH:LINE:COLUMN: SEVERITY: MESSAGE [ID]" (or
// "PATH: SEVERITY: ...") as compilers print them, then the summary line.
// quiet: the summary line only.
QString textReport(const CheckResult &result, bool quiet);

// The same as one JSON object for other tools: the counts, and the findings
// unless quiet, each with path, line and column where known, severity, id
// and message.
QByteArray jsonReport(const CheckResult &result, bool quiet);

} // namespace ZyHelp::Check
