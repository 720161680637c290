#include "benchutil.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

#include <cstdio>

namespace Bench {

double bestOfMs(int runs, const std::function<void()> &fn)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        fn();
        best = std::min(best, timer.nsecsElapsed() / 1e6);
    }
    return best;
}

double peakMemoryMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly | QIODevice::Text))
        return 0;
    QTextStream in(&status);
    QString line;
    while (in.readLineInto(&line)) {
        if (line.startsWith(QLatin1String("VmHWM:")))
            return line.mid(6).trimmed().section(QLatin1Char(' '), 0, 0).toDouble() / 1024.0;
    }
    return 0;
}

PathFileGuard::PathFileGuard()
    : m_path(QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("Path")))
    , m_backup(m_path + QStringLiteral(".zyhelpbench-backup"))
{
    if (QFile::exists(m_path)) {
        QFile::remove(m_backup);
        m_hadFile = QFile::rename(m_path, m_backup);
    }
}

PathFileGuard::~PathFileGuard()
{
    QFile::remove(m_path);
    if (m_hadFile)
        QFile::rename(m_backup, m_path);
}

void printFigure(const QString &name, double value, const QString &unit)
{
    std::printf("  %-58s %10.2f %s\n", qPrintable(name), value, qPrintable(unit));
    std::fflush(stdout);
}

void printRatio(const QString &name, double ratio, double target)
{
    std::printf("  %-58s %10.2f   (target <= %.2f: %s)\n", qPrintable(name), ratio, target,
                ratio <= target ? "met" : "MISSED");
    std::fflush(stdout);
}

} // namespace Bench
