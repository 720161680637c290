#pragma once

#include <QtTest>
#include <QtWidgets>

namespace Test {

// Answers the modal windows and menus that a command opens, in the order they
// come: a message box button ("Yes", "No", "OK"), the text for an input or
// file dialog, a menu entry; "Esc" cancels. `seen` gets a line per window,
// what it showed. A window without a reply is cancelled and marked, and one
// still open 5 s after its reply is closed, so a test fails instead of hanging.
class DialogDriver
{
public:
    explicit DialogDriver(QStringList replies = {})
        : m_replies(std::move(replies))
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { poll(); });
        m_timer.start(5);
    }

    QStringList seen;

private:
    void poll()
    {
        QWidget *window = QApplication::activePopupWidget();
        window = window ? window : QApplication::activeModalWidget();
        if (window && window == m_current && m_since.hasExpired(5000)) {
            seen.append("left open");
            window->close();
        }
        if (!window || window == m_current)
            return;
        m_current = window;
        m_since.start();
        // Answered outside this slot, so that polling goes on in the loops the answer opens.
        QTimer::singleShot(0, window, [this, window] { answer(window); });
    }

    void answer(QWidget *window)
    {
        const bool unexpected = m_replies.isEmpty();
        const QString reply = unexpected ? QString("Esc") : m_replies.takeFirst();
        QStringList shown{window->windowTitle()};
        if (auto *box = qobject_cast<QMessageBox *>(window))
            shown << box->text() << QString::number(box->icon());
        if (auto *input = qobject_cast<QInputDialog *>(window))
            shown << input->labelText() << input->textValue();
        auto *files = qobject_cast<QFileDialog *>(window);
        if (files)
            shown << files->directory().absolutePath() << files->nameFilters().join(u';');
        auto *menu = qobject_cast<QMenu *>(window);
        for (QAction *action : menu ? menu->actions() : QList<QAction *>()) {
            shown << (action->isSeparator() ? "-" : action->text());
            if (action->text() == reply)
                menu->setActiveAction(action);
        }
        seen.append((unexpected ? "unexpected " : "") + shown.join(u'|'));

        auto *box = qobject_cast<QMessageBox *>(window);
        if (reply == "Esc" || (menu && !menu->activeAction())) {
            QTest::keyClick(window, Qt::Key_Escape);
        } else if (box) {
            box->button(reply == "Yes" ? QMessageBox::Yes : reply == "No" ? QMessageBox::No : QMessageBox::Ok)->click();
        } else if (menu) {
            QTest::keyClick(menu, Qt::Key_Return);
        } else if (auto *input = qobject_cast<QInputDialog *>(window)) {
            input->setTextValue(reply);
            input->accept();
        } else if (files) {
            files->selectFile(reply);
            files->findChild<QLineEdit *>("fileNameEdit")->setText(reply);
            static_cast<QDialog *>(files)->accept();
        }
    }

    QStringList m_replies;
    QTimer m_timer;
    QPointer<QWidget> m_current;
    QElapsedTimer m_since;
};

} // namespace Test
