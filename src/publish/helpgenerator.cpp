#include "helpgenerator.h"

#include <QFileInfo>
#include <QLibraryInfo>
#include <QProcess>
#include <QStandardPaths>

namespace ZyHelp::Publish {

HelpGenerator::HelpGenerator(const QString &program)
    : m_program(program)
{
    if (!m_program.isEmpty())
        return;
    const QString name = QStringLiteral("qhelpgenerator");
    for (const auto location : {QLibraryInfo::LibraryExecutablesPath, QLibraryInfo::BinariesPath}) {
        const QString candidate = QLibraryInfo::path(location) + u'/' + name;
        if (QFileInfo(candidate).isExecutable()) {
            m_program = candidate;
            return;
        }
    }
    m_program = QStandardPaths::findExecutable(name);
}

bool HelpGenerator::run(const QString &qhpFile, const QString &qchFile)
{
    if (m_program.isEmpty() || !QFileInfo(m_program).isExecutable()) {
        m_errorString = m_program.isEmpty()
            ? QStringLiteral("qhelpgenerator not found (package qt6-documentation-tools; "
                             "or give --qhelpgenerator)")
            : QStringLiteral("%1: not an executable program").arg(m_program);
        return false;
    }
    QProcess process;
    // Without a fixed seed the order of what it stores changes from run to run.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(m_program, {qhpFile, QStringLiteral("-o"), qchFile});
    if (!process.waitForFinished(-1)) {
        m_errorString = QStringLiteral("%1: %2").arg(m_program, process.errorString());
        return false;
    }
    const QString output = QString::fromLocal8Bit(process.readAll());
    QStringList warnings;
    for (const QString &line : output.split(u'\n')) {
        if (line.contains(QLatin1StringView("Warning:")))
            warnings.append(line.trimmed());
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0
        || !warnings.isEmpty()) {
        m_errorString =
            QStringLiteral("qhelpgenerator failed on %1 (exit status %2)%3")
                .arg(qhpFile)
                .arg(process.exitCode())
                .arg(warnings.isEmpty() ? QStringLiteral(": ") + output.trimmed()
                                        : QStringLiteral(":\n  ") + warnings.join(u"\n  "));
        return false;
    }
    return true;
}

} // namespace ZyHelp::Publish
