#include "benchutil.h"

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
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <functional>
#include <utility>

namespace {

const int folderCount = 20;
const int documentsPerFolder = 100; // 2,000 documents
// Three languages of ten sections: 34 nodes per document, about 68,000 in all.


// Registration lines and the offscreen platform's notes would only blur the figures.
QtMessageHandler previousHandler = nullptr;
void quietHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtDebugMsg || message.startsWith(QLatin1String("This plugin does not support")))
        return;
    previousHandler(type, context, message);
}

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

QString documentPath(const QString &root, int folder, int document)
{
    return QDir(root).filePath(QStringLiteral("kapitel%1/seite%2.zyhelp")
                                   .arg(folder, 2, 10, QLatin1Char('0'))
                                   .arg(document, 3, 10, QLatin1Char('0')));
}

bool makeProject(const QString &root, const QString &projectFile)
{
    ZyHelp::HelpWriter writer;
    for (int folder = 0; folder < folderCount; ++folder) {
        QDir(root).mkpath(QStringLiteral("kapitel%1").arg(folder, 2, 10, QLatin1Char('0')));
        for (int document = 0; document < documentsPerFolder; ++document) {
            const ZyHelp::HelpData data =
                Bench::sampleDocument(folder * documentsPerFolder + document,
                                      folderCount * documentsPerFolder);
            if (!writer.writeXml(data, documentPath(root, folder, document)))
                return false;
        }
    }
    QFile file(projectFile);
    return file.open(QIODevice::WriteOnly)
           && file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<zyproject name=\"Bench\"/>\n") > 0;
}

int countNodes(QTreeWidgetItem *item)
{
    int count = 1;
    for (int i = 0; i < item->childCount(); ++i)
        count += countNodes(item->child(i));
    return count;
}

} // namespace

void benchEditor()
{
    Bench::PathFileGuard pathFile;
    previousHandler = qInstallMessageHandler(quietHandler);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    QTemporaryDir dir;
    const QString projectFile = dir.filePath(QStringLiteral("Bench.zyproject"));
    if (!dir.isValid() || !makeProject(dir.path(), projectFile)) {
        std::printf("  could not write the project\n");
        qInstallMessageHandler(previousHandler);
        return;
    }

    MainWindow window;
    window.show();
    QCoreApplication::processEvents();
    auto *tree = window.findChild<QTreeWidget *>(QStringLiteral("projectTree"));
    auto *openAction = window.findChild<QAction *>(QStringLiteral("actionOpenProject"));
    auto *reloadAction = window.findChild<QAction *>(QStringLiteral("actionReload"));

    // Opened as the user does it, through the menu command and its file dialog.
    QElapsedTimer openTimer;
    openTimer.start();
    {
        WindowSteps steps({[&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            if (!dialog) {
                w->close();
                return;
            }
            dialog->selectFile(projectFile);
            if (auto *nameEdit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
                nameEdit->setText(projectFile);
            static_cast<QDialog *>(dialog)->accept();
        }});
        openAction->trigger();
        if (!steps.done()) {
            std::printf("  the open dialog did not come\n");
            qInstallMessageHandler(previousHandler);
            return;
        }
    }
    const double openMs = openTimer.nsecsElapsed() / 1e6;
    int nodes = 0;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        nodes += countNodes(tree->topLevelItem(i));

    // The same project in a manager of its own: the refresh that reload runs
    // before the rebuild, and the list of documents to parse for the floor.
    ZyHelp::ProjectManager manager;
    manager.openProject(projectFile);
    const QStringList files = manager.files();

    // Each is run a few times in a row, as reloading is: a rebuild right after a
    // large parse of its own would meet a heap churned by it. The three take
    // turns in rounds, so that a busy moment of the machine does not fall on one
    // of them only; each figure is the best of its runs.
    const auto parseAll = [&] {
        ZyHelp::HelpParser parser;
        const QDir root(manager.rootPath());
        QList<ZyHelp::HelpData> documents;
        documents.reserve(files.size());
        for (const QString &entry : files)
            documents.append(parser.parse(root.filePath(entry)));
    };
    double reloadMs = 1e300;
    double refreshMs = 1e300;
    double parseMs = 1e300;
    for (int round = 0; round < 3; ++round) {
        reloadMs = std::min(reloadMs, Bench::bestOfMs(3, [&] { reloadAction->trigger(); }));
        refreshMs = std::min(refreshMs, Bench::bestOfMs(3, [&] { manager.refreshFileList(); }));
        parseMs = std::min(parseMs, Bench::bestOfMs(3, parseAll));
    }
    const double rebuildMs = reloadMs - refreshMs;

    // A structural edit: "Sektion hinzufügen..." from the context menu of a
    // language node, timed from the OK of its input dialog to the end of the
    // command (writing the document and rebuilding the tree).
    int added = 0;
    const auto addSection = [&] {
        QTreeWidgetItem *language = tree->topLevelItem(folderCount / 2)->child(0)->child(0);
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
                               input->setTextValue(QStringLiteral("Neu %1").arg(++added));
                               fromOk.start();
                               input->accept();
                           }});
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, tree->viewport()->mapToGlobal(pos));
        QCoreApplication::sendEvent(tree->viewport(), &event);
        return steps.done() && fromOk.isValid() ? fromOk.nsecsElapsed() / 1e6 : -1.0;
    };
    // Edits and rebuilds take turns, so that both meet the same load of the machine.
    double editMs = 1e300;
    double editRebuildMs = 1e300;
    for (int run = 0; run < 5; ++run) {
        editMs = std::min(editMs, addSection());
        const double reload = Bench::bestOfMs(1, [&] { reloadAction->trigger(); });
        editRebuildMs = std::min(editRebuildMs, reload - refreshMs);
    }

    std::printf("  project: %lld documents, %d tree nodes\n", qlonglong(files.size()), nodes);
    Bench::printFigure(QStringLiteral("open project (dialog, registration, first rebuild)"), openMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("reload (refresh file list + rebuild)"), reloadMs,
                       QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("refresh file list alone"), refreshMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("rebuild (loadProjectView)"), rebuildMs, QStringLiteral("ms"));
    Bench::printFigure(QStringLiteral("parse the same documents alone (floor)"), parseMs,
                       QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("rebuild / parse"), rebuildMs / parseMs, 1.5);
    Bench::printRatio(QStringLiteral("rebuild in seconds"), rebuildMs / 1000.0, 1.0);
    Bench::printFigure(QStringLiteral("add a section (from the dialog's OK)"), editMs,
                       QStringLiteral("ms"));
    Bench::printRatio(QStringLiteral("add a section / rebuild"), editMs / editRebuildMs, 1.1);
    Bench::printFigure(QStringLiteral("peak memory"), Bench::peakMemoryMiB(), QStringLiteral("MiB"));

    window.close();
    qInstallMessageHandler(previousHandler);
}
