#include "finding.h"

namespace ZyHelp {

namespace {

// A file name or an XML reader's message may hold a line break or another
// control character; each finding stays on one line.
QString oneLine(QString text)
{
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control)
            c = u'?';
    }
    return text;
}

} // namespace

QString Finding::severityName(Severity severity)
{
    return severity == Error ? QStringLiteral("error") : QStringLiteral("warning");
}

QString Finding::toText() const
{
    const QString location =
        line > 0 ? QStringLiteral("%1:%2:%3").arg(path).arg(line).arg(column) : path;
    return oneLine(
        QStringLiteral("%1: %2: %3 [%4]").arg(location, severityName(severity), message, id));
}

} // namespace ZyHelp
