#pragma once

#include <QtTest>
#include <QtWidgets>

namespace Test {

// Answers the modal windows and menus that a command opens, in their order: a
// message box button ("Yes", "No", "OK"), an input or file dialog's text, a
// menu entry; "Esc" cancels. `seen` gets what each window showed. A window
// without a reply is cancelled and one still open 5 s after its reply closed,
// so that a test fails instead of hanging.
class DialogDriver
{
public:
    explicit DialogDriver(QStringList replies = {}) : m_replies(std::move(replies))
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            QWidget *window = QApplication::activePopupWidget();
            window = window ? window : QApplication::activeModalWidget();
            if (window && window == m_current && m_since.hasExpired(5000))
                window->close();
            if (window && window != m_current) {
                m_current = window;
                m_since.start();
                // Answered outside this slot: polling goes on in the loops the answer opens.
                QTimer::singleShot(0, window, [this, window] { answer(window); });
            }
        });
        m_timer.start(5);
    }

    QStringList seen;

private:
    void answer(QWidget *window)
    {
        const QString reply = m_replies.isEmpty() ? QString("unexpected") : m_replies.takeFirst();
        auto *box = qobject_cast<QMessageBox *>(window);
        auto *input = qobject_cast<QInputDialog *>(window);
        auto *files = qobject_cast<QFileDialog *>(window);
        auto *menu = qobject_cast<QMenu *>(window);
        QStringList shown{window->windowTitle()};
        if (box)
            shown << box->text() << QString::number(box->icon());
        if (input || files)
            shown << (input ? input->labelText() : files->directory().absolutePath())
                  << (input ? input->textValue() : files->nameFilters().join(u';'));
        for (QAction *action : menu ? menu->actions() : QList<QAction *>())
            shown << (action->isSeparator() ? "-" : action->text());
        seen.append((reply == "unexpected" ? "unexpected " : "") + shown.join(u'|'));
        const auto button = reply == "Yes" ? QMessageBox::Yes : reply == "No" ? QMessageBox::No : QMessageBox::Ok;
        const QList<QAction *> entries = menu ? menu->actions() : QList<QAction *>();
        const auto entry = std::find_if(entries.cbegin(), entries.cend(), [&](QAction *a) { return a->text() == reply; });
        if (box && box->button(button)) {
            box->button(button)->click();
        } else if (entry != entries.cend()) {
            menu->setActiveAction(*entry); // as the user does it: highlighted, then Return
            QTest::keyClick(menu, Qt::Key_Return);
        } else if ((input || files) && reply != "Esc" && reply != "unexpected") {
            window->findChild<QLineEdit *>(input ? QString() : QString("fileNameEdit"))->setText(reply);
            static_cast<QDialog *>(window)->accept();
        } else {
            QTest::keyClick(window, Qt::Key_Escape);
        }
    }

    QStringList m_replies;
    QTimer m_timer;
    QPointer<QWidget> m_current;
    QElapsedTimer m_since;
};

} // namespace Test
