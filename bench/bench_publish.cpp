#include "benchutil.h"

#include "documentcollector.h"
#include "helpdata.h"
#include "publisher.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QThreadPool>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZyHelp;
using namespace ZyHelp::Publish;

namespace {

// Peak resident memory of the program publishing the project, in MiB: run as
// a child of its own, so that nothing of this process counts.
double publishPeakMiB(const QString &project, const QString &out)
{
    const QByteArray program = ZY_PUBLISH_BINARY;
    const QByteArray outArg = QFile::encodeName(out);
    const QByteArray projectArg = QFile::encodeName(project);
    const pid_t pid = fork();
    if (pid == 0) {
        execl(program.constData(), program.constData(), "-o", outArg.constData(),
              projectArg.constData(), static_cast<char *>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return usage.ru_maxrss / 1024.0;
}

// dir is removed only after every size: ext4 makes new files slower for a
// while after many were removed, which would weigh on the next size's parts.
void benchSize(const QTemporaryDir &dir, int documentCount, int runs)
{
    const QString sizeFolder = QStringLiteral("%1/").arg(documentCount);
    const QString root = dir.filePath(sizeFolder + QStringLiteral("Projekt"));
    qint64 projectBytes = 0;
    const QStringList paths = Bench::writeProject(root, documentCount, &projectBytes);
    if (!dir.isValid() || paths.isEmpty()) {
        std::printf("  could not write the project\n");
        return;
    }
    QList<DocumentEntry> documents;
    {
        DocumentCollector collector;
        collector.addPath(root);
        documents = collector.documents();
    }

    PublishOptions options;
    QList<QPair<QString, qint64>> outFiles; // below OUT, with their sizes
    qint64 outBytes = 0;
    int status = -1;
    double publishMs = 1e300;
    double floorMs = 1e300;
    // Publish and floor take turns, so a busy spell on a shared machine weighs
    // on both alike; each keeps its fastest round. Each timed part writes into
    // a new folder and starts with every dirty page written back: otherwise one
    // part pays for the writeback of the other's pages. Nothing is removed
    // between the parts, as ext4 makes new files slower while it skips the
    // inodes of files removed moments before.
    double publishCpu[2] = {0, 0};
    double floorCpu[2] = {0, 0};
    const auto cpuSeconds = [](double *out, const std::function<void()> &fn) {
        rusage before{};
        rusage after{};
        getrusage(RUSAGE_SELF, &before);
        fn();
        getrusage(RUSAGE_SELF, &after);
        const auto seconds = [](const timeval &a, const timeval &b) {
            return (b.tv_sec - a.tv_sec) + (b.tv_usec - a.tv_usec) / 1e6;
        };
        out[0] = seconds(before.ru_utime, after.ru_utime);
        out[1] = seconds(before.ru_stime, after.ru_stime);
    };
    const auto publishRound = [&](int round) {
        options.out = dir.filePath(sizeFolder + QStringLiteral("site%1").arg(round));
        ::sync();
        cpuSeconds(publishCpu, [&] {
            publishMs =
                std::min(publishMs, Bench::bestOfMs(1, [&] {
                             status =
                                 Publisher(options, QStringLiteral("Projekt")).publish(documents);
                         }));
        });
        if (round == 0) {
            QDirIterator it(options.out, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                it.next();
                outFiles.append(
                    {QDir(options.out).relativeFilePath(it.filePath()), it.fileInfo().size()});
                outBytes += outFiles.last().second;
            }
            std::sort(outFiles.begin(), outFiles.end());
        }
    };
    // The same files in the same folders as the site: the file system's
    // work of creating them depends on the folders.
    const auto floorRound = [&](int round) {
        const QString floorDir = dir.filePath(sizeFolder + QStringLiteral("floor%1").arg(round));
        ::sync();
        cpuSeconds(floorCpu, [&] {
            floorMs = std::min(floorMs, Bench::bestOfMs(1, [&] {
                                   HelpParser parser;
                                   for (const QString &path : std::as_const(paths)) {
                                       ParseStatus parsed;
                                       parser.parse(path, &parsed);
                                   }
                                   qint64 largest = 0;
                                   for (const auto &file : std::as_const(outFiles))
                                       largest = std::max(largest, file.second);
                                   const QByteArray bytes(largest, 'x');
                                   QString madeFolder;
                                   for (const auto &[relative, size] : std::as_const(outFiles)) {
                                       const QString path = floorDir + u'/' + relative;
                                       const QString folder = path.left(path.lastIndexOf(u'/'));
                                       if (folder != madeFolder) {
                                           QDir().mkpath(folder);
                                           madeFolder = folder;
                                       }
                                       QFile file(path);
                                       if (file.open(QIODevice::WriteOnly))
                                           file.write(bytes.constData(), size);
                                   }
                               }));
        });
    };
    // They also go first in turn (the floor needs the first site's files): ext4's
    // cost of creating files changes from one moment to the next, while it skips
    // inodes removed shortly before, and a fixed order gives one part the same moments.
    for (int round = 0; round < runs; ++round) {
        if (round % 2 == 0) {
            publishRound(round);
            floorRound(round);
        } else {
            floorRound(round);
            publishRound(round);
        }
    }
    const double peakMiB = publishPeakMiB(root, dir.filePath(sizeFolder + QStringLiteral("child")));

    std::printf("  %d documents in %d folders, %lld files of %.1f MiB written, %d threads, "
                "best of %d%s\n",
                documentCount, documentCount / Bench::documentsPerFolder,
                qlonglong(outFiles.size()), outBytes / 1048576.0,
                QThreadPool::globalInstance()->maxThreadCount(), runs,
                status == 0 ? "" : " (PUBLISH FAILED)");
    Bench::printFigure(QStringLiteral("publish the HTML site"), publishMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("one-thread parse + QFile write of the same bytes"), floorMs,
                       QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("publish / floor"), publishMs / floorMs, 1.0);
    std::printf("  CPU seconds of the last round: publish %.2f user + %.2f system, "
                "floor %.2f user + %.2f system\n",
                publishCpu[0], publishCpu[1], floorCpu[0], floorCpu[1]);
    Bench::printFigure(QStringLiteral("project's files"), projectBytes / 1048576.0,
                       QStringLiteral("MiB"));
    Bench::printFigure(QStringLiteral("peak memory of zyhelppublish"), peakMiB,
                       QStringLiteral("MiB"));
    Bench::printRatio(QStringLiteral("peak memory / project's files"),
                      peakMiB / (projectBytes / 1048576.0), 1.5);
}

} // namespace

void benchPublish()
{
    const QTemporaryDir dir;
    benchSize(dir, 2000, 3);
    benchSize(dir, 10000, 2);
}
