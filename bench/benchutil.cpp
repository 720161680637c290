#include "benchutil.h"

#include "helpdata.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <cstdio>

namespace Bench {

const QStringList &languageKeys()
{
    static const QStringList keys{QStringLiteral("de"), QStringLiteral("en"), QStringLiteral("fr")};
    return keys;
}

// A few hundred characters over several lines, with characters the writer
// escapes and some beyond ASCII, as a real help text has.
QString sectionText(int document, int section)
{
    return QStringLiteral("Abschnitt %1 von Seite %2 erklärt einen Arbeitsschritt.\n"
                          "Zuerst öffnen Sie das Menü \"Datei\" & wählen einen Eintrag; "
                          "die Größe der Ansicht passt sich an.\n"
                          "Werte < 0 sind nicht erlaubt, Werte > 100 werden gekürzt.\n"
                          "Weitere Hinweise stehen auf den verlinkten Seiten, "
                          "die am Ende dieser Hilfe aufgeführt sind.")
        .arg(section)
        .arg(document);
}

QStringList writeProject(const QString &root, int documentCount, qint64 *bytes)
{
    ZyHelp::HelpWriter writer;
    QStringList paths;
    qint64 total = 0;
    for (int index = 0; index < documentCount; ++index) {
        const QString folder = QStringLiteral("%1/kapitel%2")
                                   .arg(root)
                                   .arg(index / documentsPerFolder, 3, 10, QLatin1Char('0'));
        if (index % documentsPerFolder == 0)
            QDir().mkpath(folder);
        paths.append(QStringLiteral("%1/seite%2.zyhelp").arg(folder).arg(index));
        if (!writer.writeXml(sampleDocument(index, documentCount), paths.last()))
            return {};
        total += QFileInfo(paths.last()).size();
    }
    if (bytes)
        *bytes = total;
    return paths;
}

ZyHelp::HelpData sampleDocument(int index, int documentCount)
{
    ZyHelp::HelpData data;
    data.version = QStringLiteral("1.%1").arg(index % 10);
    data.author = QStringLiteral("Autorin %1").arg(index % 7);
    for (const QString &key : languageKeys()) {
        ZyHelp::HelpLanguage &language = data.languages[key];
        language.description = QStringLiteral("Hilfeseite %1 (%2)").arg(index).arg(key);
        for (int s = 0; s < sectionCount; ++s)
            language.sections.append(
                ZyHelp::HelpSection{QStringLiteral("Schritt %1").arg(s), sectionText(index, s)});
    }
    for (int l = 0; l < index % 4; ++l)
        data.links.append(QStringLiteral("seite%1").arg((index + l + 1) % documentCount));
    return data;
}

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

void printRange(const QString &name, double ratio, double low, double high)
{
    std::printf("  %-58s %10.2f   (target %.2f..%.2f: %s)\n", qPrintable(name), ratio, low, high,
                ratio >= low && ratio <= high ? "met" : "MISSED");
    std::fflush(stdout);
}

} // namespace Bench
