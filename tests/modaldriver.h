#pragma once

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QList>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <QtTest>

#include <functional>
#include <utility>

// Acts on the modal dialogs and popup menus that a command opens, one step for
// each window in the order in which the windows appear. A command runs them in
// nested event loops, so the steps run from a timer. A window that no step
// expects, or that is still open long after its step, is closed and reported
// instead of hanging the test.
class ModalDriver
{
public:
    using Step = std::function<void(QWidget *)>;

    explicit ModalDriver(int timeoutMs = 5000)
        : m_timeoutMs(timeoutMs)
    {
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { poll(); });
        m_timer.start();
        m_sinceHandled.start();
    }

    // The next window to appear is a modal dialog or message box.
    void onModal(Step step) { m_steps.append({false, std::move(step)}); }
    // The next window to appear is a popup menu.
    void onPopup(Step step) { m_steps.append({true, std::move(step)}); }

    qsizetype pendingSteps() const { return m_steps.size(); }
    // Windows that came unexpected or stayed open, as "what: window" lines.
    QStringList problems() const { return m_problems; }
    // Every step was used and nothing else appeared.
    bool clean() const { return m_steps.isEmpty() && m_problems.isEmpty(); }
    QString report() const
    {
        QStringList lines = m_problems;
        if (!m_steps.isEmpty())
            lines.append(QStringLiteral("%1 expected window(s) never appeared").arg(m_steps.size()));
        return lines.join(QLatin1String("; "));
    }

    static QString describe(QWidget *window)
    {
        QString text = QString::fromLatin1(window->metaObject()->className()) + QLatin1String(" '")
                       + window->windowTitle() + QLatin1Char('\'');
        if (auto *box = qobject_cast<QMessageBox *>(window))
            text += QLatin1String(" '") + box->text() + QLatin1Char('\'');
        if (auto *input = qobject_cast<QInputDialog *>(window))
            text += QLatin1String(" '") + input->labelText() + QLatin1Char('\'');
        return text;
    }

    static void closeWindow(QWidget *window)
    {
        if (auto *dialog = qobject_cast<QDialog *>(window))
            dialog->reject();
        else
            window->close();
    }

private:
    void poll()
    {
        QWidget *popup = QApplication::activePopupWidget();
        QWidget *window = popup ? popup : QApplication::activeModalWidget();
        if (!window)
            return;

        if (isHandled(window)) {
            if (m_sinceHandled.elapsed() > m_timeoutMs) {
                m_problems.append(QLatin1String("left open: ") + describe(window));
                m_sinceHandled.restart();
                closeWindow(window);
            }
            return;
        }
        m_handled.append(window);
        m_sinceHandled.restart();

        if (m_steps.isEmpty() || m_steps.constFirst().first != bool(popup)) {
            m_problems.append(QLatin1String("unexpected: ") + describe(window));
            closeWindow(window);
            return;
        }
        const Step step = m_steps.takeFirst().second;
        // The step may itself open windows: it runs outside this timer's slot,
        // so the timer goes on polling in the nested event loops.
        const QPointer<QWidget> guard(window);
        QTimer::singleShot(0, window, [guard, step] {
            if (guard)
                step(guard);
        });
    }

    bool isHandled(QWidget *window)
    {
        m_handled.removeAll(QPointer<QWidget>());
        for (const QPointer<QWidget> &handled : std::as_const(m_handled)) {
            if (handled == window)
                return true;
        }
        return false;
    }

    QTimer m_timer;
    QElapsedTimer m_sinceHandled;
    const int m_timeoutMs;
    QList<std::pair<bool, Step>> m_steps;
    QList<QPointer<QWidget>> m_handled;
    QStringList m_problems;
};

// What a step saw of a message box.
struct BoxSeen
{
    QString className;
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

// Answers a message box with one of its buttons.
inline ModalDriver::Step answerBox(QMessageBox::StandardButton answer, BoxSeen *seen = nullptr)
{
    return [answer, seen](QWidget *window) {
        auto *box = qobject_cast<QMessageBox *>(window);
        if (seen) {
            seen->className = QString::fromLatin1(window->metaObject()->className());
            seen->title = window->windowTitle();
        }
        if (!box) {
            ModalDriver::closeWindow(window);
            return;
        }
        if (seen) {
            seen->text = box->text();
            seen->icon = box->icon();
            seen->buttons = box->standardButtons();
            QAbstractButton *defaultButton = box->defaultButton();
            seen->defaultButton = defaultButton ? box->standardButton(defaultButton)
                                                : QMessageBox::NoButton;
        }
        if (QAbstractButton *button = box->button(answer))
            button->click();
        else
            box->reject();
    };
}

// What a step saw of a text input dialog.
struct InputSeen
{
    QString className;
    QString title;
    QString label;
    QString preset;
    QLineEdit::EchoMode echoMode = QLineEdit::Normal;
    QInputDialog::InputMode inputMode = QInputDialog::IntInput;
};

namespace Detail {
enum class InputAnswer { Text, Keep, Cancel };

inline ModalDriver::Step answerInput(InputAnswer answer, const QString &text, InputSeen *seen)
{
    return [answer, text, seen](QWidget *window) {
        auto *input = qobject_cast<QInputDialog *>(window);
        if (seen) {
            seen->className = QString::fromLatin1(window->metaObject()->className());
            seen->title = window->windowTitle();
        }
        if (!input) {
            ModalDriver::closeWindow(window);
            return;
        }
        if (seen) {
            seen->label = input->labelText();
            seen->preset = input->textValue();
            seen->echoMode = input->textEchoMode();
            seen->inputMode = input->inputMode();
        }
        if (answer == InputAnswer::Cancel) {
            input->reject();
            return;
        }
        if (answer == InputAnswer::Text)
            input->setTextValue(text);
        input->accept();
    };
}
} // namespace Detail

// Confirms a text input dialog with the given text.
inline ModalDriver::Step enterText(const QString &text, InputSeen *seen = nullptr)
{
    return Detail::answerInput(Detail::InputAnswer::Text, text, seen);
}

// Confirms a text input dialog with the text it was opened with.
inline ModalDriver::Step acceptInput(InputSeen *seen = nullptr)
{
    return Detail::answerInput(Detail::InputAnswer::Keep, QString(), seen);
}

inline ModalDriver::Step cancelInput(InputSeen *seen = nullptr)
{
    return Detail::answerInput(Detail::InputAnswer::Cancel, QString(), seen);
}

// What a step saw of a file dialog.
struct FileDialogSeen
{
    QString className;
    QString title;
    QString directory;
    QStringList nameFilters;
    QFileDialog::FileMode fileMode = QFileDialog::AnyFile;
    QFileDialog::AcceptMode acceptMode = QFileDialog::AcceptOpen;
    QFileDialog::Options options;
};

// Chooses a file or folder by its absolute path in a file dialog; an empty path
// cancels the dialog.
inline ModalDriver::Step choosePath(const QString &path, FileDialogSeen *seen = nullptr)
{
    return [path, seen](QWidget *window) {
        auto *dialog = qobject_cast<QFileDialog *>(window);
        if (seen) {
            seen->className = QString::fromLatin1(window->metaObject()->className());
            seen->title = window->windowTitle();
        }
        if (!dialog) {
            ModalDriver::closeWindow(window);
            return;
        }
        if (seen) {
            seen->directory = dialog->directory().absolutePath();
            seen->nameFilters = dialog->nameFilters();
            seen->fileMode = dialog->fileMode();
            seen->acceptMode = dialog->acceptMode();
            seen->options = dialog->options();
        }
        if (path.isEmpty()) {
            dialog->reject();
            return;
        }
        // As the user does it: the path typed into the name field, then accepted,
        // which checks the choice as the dialog's button does.
        dialog->selectFile(path);
        if (auto *nameEdit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            nameEdit->setText(path);
        static_cast<QDialog *>(dialog)->accept();
    };
}

// Chooses an entry of a popup menu by its text after noting all entries ("-"
// stands for a separator); an empty text closes the menu without a choice.
inline ModalDriver::Step chooseMenuEntry(const QString &entry, QStringList *entries = nullptr)
{
    return [entry, entries](QWidget *window) {
        auto *menu = qobject_cast<QMenu *>(window);
        if (!menu) {
            ModalDriver::closeWindow(window);
            return;
        }
        QAction *chosen = nullptr;
        for (QAction *action : menu->actions()) {
            if (entries)
                entries->append(action->isSeparator() ? QStringLiteral("-") : action->text());
            if (!entry.isEmpty() && !action->isSeparator() && action->text() == entry)
                chosen = action;
        }
        if (!chosen) {
            menu->close();
            return;
        }
        // As the user does it: the entry is highlighted and Return pressed.
        menu->setActiveAction(chosen);
        QTest::keyClick(menu, Qt::Key_Return);
    };
}
