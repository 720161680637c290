#pragma once

#include "helpdata.h"

#include <QDir>
#include <QFile>

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
