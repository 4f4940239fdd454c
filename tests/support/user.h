#ifndef ORVANE_TESTS_USER_H
#define ORVANE_TESTS_USER_H

#include <deque>
#include <functional>
#include <utility>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

/* Answers the dialogs and menus that open one after the other while a command runs:
 *
 *     User user;
 *     user.types("lat > 50");                          // into an input dialog, and Enter
 *     user.meets<QListChooserDialog>([](QListChooserDialog &dialog) { ... });
 *     window.showSubset();
 *
 * What a step does has to end its dialog or menu. The test fails when a dialog or menu opens that no step is
 * for, and when a step was not needed. Message boxes are left to MessageBoxes, the progress of operations to
 * the test. */
class User
{
public:
    User()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.start(2);
    }

    ~User() { EXPECT_TRUE(m_steps.empty()) << m_steps.size() << " dialogs or menus have not opened"; }

    template <class Widget>
    User &meets(std::function<void(Widget &)> act)
    {
        m_steps.push_back([act = std::move(act)](QWidget *widget) {
            auto *met = qobject_cast<Widget *>(widget);
            if (met != nullptr) {
                EXPECT_TRUE(QTest::qWaitForWindowExposed(met));
                act(*met);
            }
            return met != nullptr;
        });
        return *this;
    }

    User &types(const QString &text)
    {
        return meets<QInputDialog>([text](QInputDialog &dialog) {
            QTest::keyClicks(dialog.focusWidget(), text);
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        });
    }

    User &cancels()
    {
        return meets<QDialog>([](QDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    }

    /* Chooses an entry of a menu by its number, with the keyboard. */
    User &choosesEntry(int entry)
    {
        return meets<QMenu>([entry](QMenu &menu) {
            for (int step = 0; step <= entry; ++step) {
                QTest::keyClick(&menu, Qt::Key_Down);
            }
            QTest::keyClick(&menu, Qt::Key_Return);
        });
    }

private:
    void look()
    {
        QWidget *popup = QApplication::activePopupWidget();
        QWidget *open = popup != nullptr ? popup : QApplication::activeModalWidget();
        if (m_acting || open == nullptr || !open->isVisible() ||
            qobject_cast<QMessageBox *>(open) != nullptr || open->inherits("ProgressDialog")) {
            return;
        }
        m_acting = true;
        bool answered = false;
        if (!m_steps.empty()) {
            const auto step = std::move(m_steps.front());
            m_steps.pop_front();
            answered = step(open);
        }
        if (!answered) {
            ADD_FAILURE() << "nobody expects the " << open->metaObject()->className();
            open->close();
        }
        m_acting = false;
    }

    std::deque<std::function<bool(QWidget *)>> m_steps;
    QTimer m_timer;
    bool m_acting = false;
};

#endif
