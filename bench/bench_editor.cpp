#include "benchutil.h"

#include "documentcache.h"
#include "helpdata.h"
#include "mainwindow.h"
#include "projectmanager.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QList>
#include <QMenu>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeWidget>

#include <sys/stat.h>

#include <cstdio>
#include <functional>
#include <utility>

namespace {

const int rounds = 3;
const int coldOpensPerRound = 2;

// Registration lines and the offscreen platform's notes would only blur the figures.
QtMessageHandler previousHandler = nullptr;
void quietHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtDebugMsg || message.startsWith(QLatin1String("This plugin does not support"))
        || message.startsWith(QLatin1String("QStandardPaths:"))) {
        return;
    }
    previousHandler(type, context, message);
}

class QuietMessages
{
public:
    QuietMessages() { previousHandler = qInstallMessageHandler(quietHandler); }
    ~QuietMessages() { qInstallMessageHandler(previousHandler); }
};

// Acts on the modal dialogs and popup menus that a command opens, one step per
// window. The steps run from a timer because the command waits in a nested event
// loop; a window that does not come within ten seconds ends the waiting.
class WindowSteps
{
public:
    using Step = std::function<void(QWidget *)>;

    explicit WindowSteps(QList<Step> steps)
        : m_steps(std::move(steps))
    {
        m_timer.setInterval(2);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { poll(); });
        m_timer.start();
        m_waiting.start();
    }

    bool done() const { return m_steps.isEmpty() && !m_failed; }

private:
    void poll()
    {
        QWidget *window = QApplication::activePopupWidget();
        if (!window)
            window = QApplication::activeModalWidget();
        if (m_steps.isEmpty() || m_waiting.elapsed() > 10000) {
            m_failed = m_failed || !m_steps.isEmpty();
            m_timer.stop();
            return;
        }
        if (!window || m_handled.contains(window))
            return;
        m_handled.append(window);
        m_waiting.restart();
        const Step step = m_steps.takeFirst();
        const QPointer<QWidget> guard(window);
        QTimer::singleShot(0, window, [guard, step] {
            if (guard)
                step(guard);
        });
    }

    QTimer m_timer;
    QElapsedTimer m_waiting;
    QList<Step> m_steps;
    QList<QPointer<QWidget>> m_handled;
    bool m_failed = false;
};

// The sample documents and an empty project file, which lets the editor find them.
bool makeProject(const QString &root, const QString &projectFile, int documentCount)
{
    if (Bench::writeProject(root, documentCount).isEmpty())
        return false;
    const QByteArray project =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyproject name=\"Bench\"/>\n";
    QFile file(projectFile);
    return file.open(QIODevice::WriteOnly) && file.write(project) == project.size();
}

int countNodes(QTreeWidgetItem *item)
{
    int count = 1;
    for (int i = 0; i < item->childCount(); ++i)
        count += countNodes(item->child(i));
    return count;
}

// Every time below ends when the window has handled what the command left for
// later: the tree view lays out its rows only when they are next shown.

// Opens the project as the user does, through the menu command and its file
// dialog. Returns the time from the closing of the dialog to the end of the
// command, or -1: the file dialog takes its time to close, project or not.
double openProject(MainWindow &window, const QString &projectFile)
{
    QElapsedTimer fromClose;
    WindowSteps steps({[&](QWidget *w) {
        auto *dialog = qobject_cast<QFileDialog *>(w);
        if (!dialog) {
            w->close();
            return;
        }
        dialog->selectFile(projectFile);
        if (auto *nameEdit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            nameEdit->setText(projectFile);
        QObject::connect(dialog, &QObject::destroyed, [&fromClose] { fromClose.start(); });
        static_cast<QDialog *>(dialog)->accept();
    }});
    window.findChild<QAction *>(QStringLiteral("actionOpenProject"))->trigger();
    QCoreApplication::processEvents(); // the view's own layout and the first paint
    return steps.done() && fromClose.isValid() ? fromClose.nsecsElapsed() / 1e6 : -1.0;
}

// "Sektion hinzufügen..." from the context menu of a language node, timed from
// the OK of its input dialog to the end of the command (writing the document
// and rebuilding the tree). Returns -1 when a window did not come.
double addSection(QTreeWidget *tree, int name)
{
    QTreeWidgetItem *language =
        tree->topLevelItem(tree->topLevelItemCount() / 2)->child(0)->child(0);
    tree->scrollToItem(language);
    const QPoint pos = tree->visualItemRect(language).center();
    QElapsedTimer fromOk;
    WindowSteps steps({[](QWidget *w) {
                           auto *menu = qobject_cast<QMenu *>(w);
                           QAction *entry = menu ? menu->actions().value(0) : nullptr;
                           if (!entry) {
                               w->close();
                               return;
                           }
                           menu->setActiveAction(entry);
                           QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
                           QCoreApplication::sendEvent(menu, &press);
                       },
                       [&](QWidget *w) {
                           auto *input = qobject_cast<QInputDialog *>(w);
                           if (!input) {
                               w->close();
                               return;
                           }
                           input->setTextValue(QStringLiteral("Neu %1").arg(name));
                           fromOk.start();
                           input->accept();
                       }});
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, tree->viewport()->mapToGlobal(pos));
    QCoreApplication::sendEvent(tree->viewport(), &event);
    QCoreApplication::processEvents();
    return steps.done() && fromOk.isValid() ? fromOk.nsecsElapsed() / 1e6 : -1.0;
}

struct Figures
{
    int nodes = 0;
    double parseMs = 1e300; // one thread, in this warm process
    double freshParseMs = 1e300; // one thread, in a fresh process: the cold open's floor
    double poolParseMs = 1e300; // all cores, in a fresh process, no nodes: the open's reading
    double coldMs = 1e300;
    double coldMiB = 1e300;
    double reloadMs = 1e300; // F5 with nothing changed
    double floorMs = 1e300; // what any F5 pays: the list found anew, every file looked at
    double editMs = 1e300;
    bool ok = true;
};

// This program again, in a process of its own with a hidden argument: a fresh
// heap and thread pool, as when the editor starts. Returns the numbers it prints,
// or none when it failed.
QList<double> runChild(const QString &argument, const QString &projectFile)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {argument, projectFile});
    if (!child.waitForFinished(120000) || child.exitStatus() != QProcess::NormalExit
        || child.exitCode() != 0) {
        return {};
    }
    QList<double> values;
    for (const QByteArray &value : child.readAllStandardOutput().simplified().split(' '))
        values.append(value.toDouble());
    return values;
}

// A cold open; the child prints its time and its peak memory.
bool coldOpen(const QString &projectFile, Figures &figures)
{
    const QList<double> values = runChild(QStringLiteral("--cold-open"), projectFile);
    if (values.size() != 2)
        return false;
    figures.coldMs = std::min(figures.coldMs, values.at(0));
    figures.coldMiB = std::min(figures.coldMiB, values.at(1));
    return true;
}

// A child that prints one time in ms: best keeps the least of the runs.
bool timedChild(const QString &argument, const QString &projectFile, double *best)
{
    const QList<double> values = runChild(argument, projectFile);
    if (values.size() != 1)
        return false;
    *best = std::min(*best, values.at(0));
    return true;
}

// Every document of the project read on this thread and kept, as the editor keeps them.
QList<ZyHelp::HelpData> parseAll(const ZyHelp::ProjectManager &manager)
{
    ZyHelp::HelpParser parser;
    const QDir root(manager.rootPath());
    const QStringList files = manager.files();
    QList<ZyHelp::HelpData> documents;
    documents.reserve(files.size());
    for (const QString &entry : files)
        documents.append(parser.parse(root.filePath(entry)));
    return documents;
}

Figures measure(int documentCount)
{
    Figures figures;
    QTemporaryDir dir;
    const QString projectFile = dir.filePath(QStringLiteral("Bench.zyproject"));
    if (!dir.isValid() || !makeProject(dir.path(), projectFile, documentCount)) {
        std::printf("  could not write the project\n");
        figures.ok = false;
        return figures;
    }

    ZyHelp::ProjectManager manager;
    manager.openProject(projectFile);
    const auto refreshAndStat = [&] {
        manager.refreshFileList();
        const QDir root(manager.rootPath());
        for (const QString &entry : manager.files()) {
            struct stat info;
            ::stat(QFile::encodeName(root.filePath(entry)).constData(), &info);
        }
    };

    MainWindow window;
    window.show();
    QCoreApplication::processEvents();
    auto *tree = window.findChild<QTreeWidget *>(QStringLiteral("projectTree"));
    auto *reloadAction = window.findChild<QAction *>(QStringLiteral("actionReload"));
    if (openProject(window, projectFile) < 0) {
        std::printf("  the open dialog did not come\n");
        figures.ok = false;
        return figures;
    }
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        figures.nodes += countNodes(tree->topLevelItem(i));

    // The figures take turns in rounds, so that a busy moment of the machine
    // does not fall on one of them only; each is the best of its runs.
    int added = 0;
    for (int round = 0; round < rounds; ++round) {
        figures.parseMs = std::min(figures.parseMs, Bench::bestOfMs(1, [&] { parseAll(manager); }));
        // The floor of the cold open: one thread parsing every document in a fresh
        // process, which pays, as the cold open does, for the first touch of all the
        // memory it takes. A warm process has that memory already.
        figures.ok =
            timedChild(QStringLiteral("--one-thread-parse"), projectFile, &figures.freshParseMs)
            && figures.ok;
        // What the open's reading alone takes: every document read on all cores by the
        // editor's document cache, no node made. The cold open cannot be faster.
        figures.ok = timedChild(QStringLiteral("--pool-parse"), projectFile, &figures.poolParseMs)
            && figures.ok;
        figures.floorMs = std::min(figures.floorMs, Bench::bestOfMs(3, refreshAndStat));
        for (int cold = 0; cold < coldOpensPerRound; ++cold)
            figures.ok = coldOpen(projectFile, figures) && figures.ok;
        const double reloadMs = Bench::bestOfMs(5, [&] {
            reloadAction->trigger();
            QCoreApplication::processEvents();
        });
        figures.reloadMs = std::min(figures.reloadMs, reloadMs);
        for (int edit = 0; edit < 3; ++edit) {
            const double ms = addSection(tree, ++added);
            figures.ok = ms >= 0 && figures.ok;
            if (ms >= 0)
                figures.editMs = std::min(figures.editMs, ms);
        }
    }
    window.close();
    return figures;
}

void printFigures(int documentCount, const Figures &figures)
{
    std::printf("  %d documents, %d tree nodes, best of %d rounds (cold opens: %d)%s\n",
                documentCount, figures.nodes, rounds, rounds * coldOpensPerRound,
                figures.ok ? "" : " (A RUN FAILED)");
    Bench::printFigure(QStringLiteral("parse every document, one thread, this process"),
                       figures.parseMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("parse every document, one thread, fresh process (floor)"),
                       figures.freshParseMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("read every document, all cores, fresh process, no nodes"),
                       figures.poolParseMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("cold open, fresh process (from the file dialog's close)"),
                       figures.coldMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("F5, nothing changed"), figures.reloadMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("  its floor: find the files, stat each, one thread"),
                       figures.floorMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("add a section (from the dialog's OK)"), figures.editMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("peak memory of the cold open"), figures.coldMiB,
                       QStringLiteral("MiB"));
    Bench::printRatio(QStringLiteral("cold open / one-thread parse in a fresh process"),
                      figures.coldMs / figures.freshParseMs, 0.6);
    Bench::printFigure(QStringLiteral("  reading alone, all cores / one-thread parse, fresh"),
                       figures.poolParseMs / figures.freshParseMs, QStringLiteral("x"));
    Bench::printFigure(QStringLiteral("  cold open / one-thread parse in this process"),
                       figures.coldMs / figures.parseMs, QStringLiteral("x"));
    Bench::printRatio(QStringLiteral("F5 / cold open"), figures.reloadMs / figures.coldMs, 0.3);
    Bench::printRatio(QStringLiteral("add a section / cold open"), figures.editMs / figures.coldMs,
                      0.25);
}

} // namespace

int benchColdOpen(const QString &projectFile)
{
    const QuietMessages quiet;
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    MainWindow window;
    window.show();
    QCoreApplication::processEvents();
    const double ms = openProject(window, projectFile);
    // Not getrusage's ru_maxrss: Linux carries the parent's peak over fork and exec.
    std::printf("%.3f %.3f\n", ms, Bench::peakMemoryMiB());
    return ms < 0 ? 1 : 0;
}

int benchFreshParse(const QString &projectFile)
{
    const QuietMessages quiet;
    ZyHelp::ProjectManager manager;
    if (!manager.openProject(projectFile))
        return 1;
    QElapsedTimer timer;
    timer.start();
    const QList<ZyHelp::HelpData> documents = parseAll(manager);
    std::printf("%.3f\n", timer.nsecsElapsed() / 1e6);
    return documents.size() == manager.files().size() ? 0 : 1;
}

int benchPoolParse(const QString &projectFile)
{
    const QuietMessages quiet;
    ZyHelp::ProjectManager manager;
    if (!manager.openProject(projectFile))
        return 1;
    const QDir root(manager.rootPath());
    QStringList filePaths;
    for (const QString &entry : manager.files())
        filePaths.append(root.filePath(entry));
    QElapsedTimer timer;
    timer.start();
    ZyHelp::DocumentCache cache;
    qsizetype received = 0;
    cache.read(filePaths, [&](qsizetype, const ZyHelp::DocumentCache::Document &) { ++received; });
    std::printf("%.3f\n", timer.nsecsElapsed() / 1e6);
    return received == filePaths.size() ? 0 : 1;
}

void benchEditor()
{
    Bench::PathFileGuard pathFile;
    const QuietMessages quiet;
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    std::printf("  %d cores\n", QThread::idealThreadCount());

    const Figures small = measure(2000);
    printFigures(2000, small);
    // No more than before the nodes were made on the reading threads.
    Bench::printRatio(QStringLiteral("peak memory of the cold open in MiB"), small.coldMiB, 105);
    const Figures large = measure(10000);
    printFigures(10000, large);
    Bench::printRatio(QStringLiteral("peak memory of the cold open in MiB"), large.coldMiB, 394);

    // Five times the documents, five times the cost, within a tenth.
    const auto printGrowth = [](const QString &name, double ratio) {
        Bench::printRange(QStringLiteral("10,000 / 2,000 documents: ") + name, ratio, 4.5, 5.5);
    };
    printGrowth(QStringLiteral("one-thread parse, fresh process"),
                large.freshParseMs / small.freshParseMs);
    printGrowth(QStringLiteral("cold open"), large.coldMs / small.coldMs);
    printGrowth(QStringLiteral("F5"), large.reloadMs / small.reloadMs);
    Bench::printFigure(QStringLiteral("10,000 / 2,000 documents:   F5's floor, for comparison"),
                       large.floorMs / small.floorMs, QStringLiteral("x"));
    printGrowth(QStringLiteral("add a section"), large.editMs / small.editMs);
}
