#pragma once

#include "helpdata.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Test {

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

// A cell of a table of cases, written as in C: \n, \r, \t, \\ and \xHH; any other backslash
// stands for itself, as in a regular expression or a PO escape.
inline QByteArray unescaped(const QByteArray &cell)
{
    static const QByteArray simple = "nrt\\";
    QByteArray bytes;
    for (qsizetype i = 0; i < cell.size(); ++i) {
        const char next = cell[i] == '\\' && i + 1 < cell.size() ? cell[i + 1] : '\0';
        if (next == 'x') {
            bytes += char(cell.mid(i + 2, 2).toInt(nullptr, 16));
            i += 3;
        } else if (simple.indexOf(next) >= 0) {
            bytes += "\n\r\t\\"[simple.indexOf(next)];
            ++i;
        } else {
            bytes += cell[i];
        }
    }
    return bytes;
}

// The rows of a table of cases in the file at path, one case a line: its name and its
// cells, tab-separated. The first line names the columns, '#' starts a comment. Cells
// are strings, or bytes where their column is named in bytes. A row with too many or
// too few cells fails the test.
inline void addRows(const QString &path, const QList<QByteArray> &bytes = {})
{
    static QList<QByteArray> names; // QtTest keeps the columns' names, not copies
    QList<QByteArray> lines = readFile(path).split('\n');
    lines.removeIf([](const QByteArray &line) { return line.isEmpty() || line[0] == '#'; });
    QVERIFY2(lines.size() > 1, qPrintable(path));
    const QList<QByteArray> columns = lines.takeFirst().split('\t');
    for (const QByteArray &column : columns.mid(1)) {
        names.append(column);
        if (bytes.contains(column))
            QTest::addColumn<QByteArray>(names.constLast().constData());
        else
            QTest::addColumn<QString>(names.constLast().constData());
    }
    for (const QByteArray &line : std::as_const(lines)) {
        const QList<QByteArray> cells = line.split('\t');
        QTestData &row = QTest::newRow(cells.first().constData());
        for (qsizetype i = 1; i < cells.size(); ++i) {
            if (bytes.contains(columns.value(i)))
                row << unescaped(cells.at(i));
            else
                row << QString::fromUtf8(unescaped(cells.at(i)));
        }
    }
}

// A document in one line, so a failed comparison shows where documents part.
inline QString dump(const ZyHelp::HelpData &d)
{
    QString out = d.version + u'|' + d.author;
    for (auto it = d.languages.cbegin(); it != d.languages.cend(); ++it) {
        out += " [" + it.key() + u':' + it->description;
        for (const ZyHelp::HelpSection &section : it->sections)
            out += " (" + section.name + u':' + section.content + u')';
        out += u']';
    }
    return out + " links:" + d.links.join(u',');
}

// Runs work in a child process and returns its exit code: for faults that only
// a process meets (a file size limit, a kill). With asUser, a child of root
// drops to "nobody", so that file permissions apply to it.
template<typename Work>
int inChild(Work work, bool asUser = false)
{
    const pid_t pid = fork();
    if (pid == 0) {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        _exit(asUser && getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0) ? 99 : work());
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Files of this process may grow to `bytes` at most; a longer write fails.
inline void limitFileSize(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace Test
