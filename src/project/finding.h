#pragma once

#include <QString>

namespace ZyHelp {

// One thing an author should look at, located the way compilers report it.
struct Finding
{
    enum Severity { Error, Warning };

    QString path; // as printed
    qint64 line = 0; // from 1; 0 where no position is known
    qint64 column = 0; // from 1
    Severity severity = Error;
    QString id; // the check that found it, e.g. "placeholder"
    QString message;

    static QString severityName(Severity severity);
    // "PATH:LINE:COLUMN: SEVERITY: MESSAGE [ID]" (or "PATH: SEVERITY: ...") as
    // compilers print it, always on one line.
    QString toText() const;
};

} // namespace ZyHelp
