#include "report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ZyHelp::Check {

namespace {

QString counted(qsizetype count, const QString &noun)
{
    const QString plural = count == 1 ? QString() : QStringLiteral("s");
    return QStringLiteral("%1 %2%3").arg(count).arg(noun, plural);
}

} // namespace

QString summaryLine(const CheckResult &result)
{
    return QStringLiteral("%1, %2, %3")
        .arg(counted(result.documentCount, QStringLiteral("document")),
             counted(result.count(Finding::Error), QStringLiteral("error")),
             counted(result.count(Finding::Warning), QStringLiteral("warning")));
}

QString textReport(const CheckResult &result, bool quiet)
{
    QString text;
    if (!quiet) {
        for (const Finding &f : result.findings)
            text += f.toText() + u'\n';
    }
    return text + summaryLine(result) + u'\n';
}

QByteArray jsonReport(const CheckResult &result, bool quiet)
{
    QJsonObject report;
    report.insert(QStringLiteral("documents"), qint64(result.documentCount));
    report.insert(QStringLiteral("errors"), qint64(result.count(Finding::Error)));
    report.insert(QStringLiteral("warnings"), qint64(result.count(Finding::Warning)));
    if (!quiet) {
        QJsonArray findings;
        for (const Finding &f : result.findings) {
            QJsonObject finding;
            finding.insert(QStringLiteral("path"), f.path);
            if (f.line > 0) {
                finding.insert(QStringLiteral("line"), f.line);
                finding.insert(QStringLiteral("column"), f.column);
            }
            finding.insert(QStringLiteral("severity"), Finding::severityName(f.severity));
            finding.insert(QStringLiteral("id"), f.id);
            finding.insert(QStringLiteral("message"), f.message);
            findings.append(finding);
        }
        report.insert(QStringLiteral("findings"), findings);
    }
    return QJsonDocument(report).toJson(QJsonDocument::Indented);
}

} // namespace ZyHelp::Check
