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
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZyHelp;
using namespace ZyHelp::Publish;

namespace {

const int documentsPerFolder = 100;

// The generated documents, named by their running number so that their links
// ("seite<N>") name documents of the project. Returns the files' bytes.
qint64 makeProject(const QString &root, int documentCount, QStringList *paths)
{
    HelpWriter writer;
    qint64 bytes = 0;
    for (int index = 0; index < documentCount; ++index) {
        const QString folder =
            QStringLiteral("kapitel%1").arg(index / documentsPerFolder, 3, 10, QLatin1Char('0'));
        QDir(root).mkpath(folder);
        paths->append(QDir(root).filePath(folder + QStringLiteral("/seite%1.zyhelp").arg(index)));
        if (!writer.writeXml(Bench::sampleDocument(index, documentCount), paths->last()))
            return -1;
        bytes += QFileInfo(paths->last()).size();
    }
    return bytes;
}

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

void benchSize(int documentCount, int runs)
{
    QTemporaryDir dir;
    const QString root = dir.filePath(QStringLiteral("Projekt"));
    QStringList paths;
    const qint64 projectBytes = makeProject(root, documentCount, &paths);
    if (!dir.isValid() || projectBytes < 0) {
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
    options.out = dir.filePath(QStringLiteral("site"));
    qint64 outBytes = 0;
    qsizetype outFiles = 0;
    int status = -1;
    double publishMs = 1e300;
    double floorMs = 1e300;
    // Publish and floor take turns, so a busy spell on a shared machine weighs
    // on both alike; each keeps its fastest round.
    // Each round publishes into a new OUT: replacing an old site would time
    // the removal of its files too, which the floor does not do.
    for (int round = 0; round < runs; ++round) {
        QDir(options.out).removeRecursively();
        publishMs = std::min(publishMs, Bench::bestOfMs(1, [&] {
            status = Publisher(options, QStringLiteral("Projekt")).publish(documents);
        }));
        if (round == 0) {
            QDirIterator it(options.out, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                it.next();
                outBytes += it.fileInfo().size();
                ++outFiles;
            }
        }
        const QString floorDir = dir.filePath(QStringLiteral("floor"));
        QDir(floorDir).removeRecursively();
        QDir().mkpath(floorDir);
        const QByteArray chunk(outBytes / std::max<qsizetype>(outFiles, 1), 'x');
        floorMs = std::min(floorMs, Bench::bestOfMs(1, [&] {
            HelpParser parser;
            for (const QString &path : std::as_const(paths)) {
                ParseStatus parsed;
                parser.parse(path, &parsed);
            }
            for (qsizetype i = 0; i < outFiles; ++i) {
                QFile file(floorDir + QStringLiteral("/%1.html").arg(i));
                if (file.open(QIODevice::WriteOnly))
                    file.write(chunk);
            }
        }));
    }
    const double peakMiB = publishPeakMiB(root, dir.filePath(QStringLiteral("child")));

    std::printf("  %d documents in %d folders, %lld files of %.1f MiB written, %d threads, "
                "best of %d%s\n",
                documentCount, documentCount / documentsPerFolder, qlonglong(outFiles),
                outBytes / 1048576.0, QThreadPool::globalInstance()->maxThreadCount(), runs,
                status == 0 ? "" : " (PUBLISH FAILED)");
    Bench::printFigure(QStringLiteral("publish the HTML site"), publishMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("one-thread parse + QFile write of the same bytes"), floorMs,
                       QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("publish / floor"), publishMs / floorMs, 1.0);
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
    benchSize(2000, 3);
    benchSize(10000, 2);
}
