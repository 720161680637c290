#include "commandline.h"
#include "documentcollector.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ZyHelp::CommandLine {

void write(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
}

void printLines(std::FILE *stream, const QStringList &lines)
{
    for (const QString &line : lines)
        write(stream, (line + u'\n').toUtf8());
}

int finish(int status)
{
    errno = 0;
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    const QString reason = errno != 0 ? QString::fromLocal8Bit(std::strerror(errno))
                                      : QStringLiteral("a write failed");
    write(stderr, QStringLiteral("stdout: error: cannot write: %1\n").arg(reason).toUtf8());
    return std::max(status, int(Failed));
}

bool parseArguments(QCommandLineParser *parser)
{
    if (!parser->parse(QCoreApplication::arguments())) {
        usageError(parser->errorText());
        return false;
    }
    if (parser->isSet(QStringLiteral("help")))
        parser->showHelp(Passed);
    if (parser->isSet(QStringLiteral("version")))
        parser->showVersion();
    return true;
}

int usageError(const QString &message)
{
    write(stderr,
          QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), message).toUtf8());
    return UsageError;
}

QStringList keyList(const QString &list)
{
    QStringList keys;
    for (const QString &part : list.split(u',')) {
        const QString key = part.trimmed();
        if (!key.isEmpty() && !keys.contains(key))
            keys.append(key);
    }
    return keys;
}

bool addPaths(const QStringList &paths, DocumentCollector *collector)
{
    if (paths.isEmpty()) {
        usageError(QStringLiteral("no PATH given (see --help)"));
        return false;
    }
    bool usable = true;
    for (const QString &path : paths) {
        if (!collector->addPath(path)) {
            usageError(collector->errorString());
            usable = false;
        }
    }
    return usable;
}

} // namespace ZyHelp::CommandLine
