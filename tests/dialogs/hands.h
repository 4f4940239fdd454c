// What the hands of a user do to a list or a dialog, as events that take the toolkit's own road.
#ifndef ORVANE_TESTS_DIALOGS_HANDS_H
#define ORVANE_TESTS_DIALOGS_HANDS_H

#include <functional>

#include <QApplication>
#include <QDialog>
#include <QListWidget>
#include <QStringList>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <gtest/gtest.h>

inline QStringList textsOf(const QListWidget &list)
{
    QStringList texts;
    for (int row = 0; row < list.count(); ++row)
        texts << list.item(row)->text();
    return texts;
}

inline void showAndWait(QWidget &widget)
{
    widget.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
    QApplication::setActiveWindow(&widget);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&widget));
}

// Places within a row, as fractions of its height.
enum class Spot { NearTop, Middle, NearBottom };

// The place of a row in the list's viewport; of a row behind the last, the empty area below.
inline QPoint placeOf(QListWidget &list, int row, Spot spot = Spot::Middle)
{
    if (row >= list.count())
        return {20, list.viewport()->height() - 4};
    const QRect rect = list.visualItemRect(list.item(row));
    const int y = spot == Spot::NearTop      ? rect.top() + 1
                  : spot == Spot::NearBottom ? rect.bottom() - 1
                                             : rect.center().y();
    return {20, y};
}

inline void click(QListWidget &list, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, placeOf(list, row));
}

// A list heeds a double click only in the row that was pressed before.
inline void doubleClick(QListWidget &list, int row)
{
    click(list, row);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(list, row));
}

// Drags with the left button from a row of one list to a row of another (or the same) in the same window: the
// press, the way and the release pass through the window and, once the list has begun the drag, through the
// toolkit's drag loop. The modifiers are held from then on.
inline void drag(QListWidget &from, int fromRow, QListWidget &to, int toRow, Spot spot = Spot::Middle,
                 Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWindow *window = from.window()->windowHandle();
    const QPoint start = from.viewport()->mapTo(from.window(), placeOf(from, fromRow));
    const QPoint end = to.viewport()->mapTo(to.window(), placeOf(to, toRow, spot));
    const QPoint off = start + QPoint(2 * QApplication::startDragDistance(), 0);

    bool dropped = false;
    QTimer::singleShot(20, window, [&] {
        QTest::mouseEvent(QTest::MouseMove, window, Qt::LeftButton, modifiers, end - QPoint(1, 0));
        QTest::mouseEvent(QTest::MouseMove, window, Qt::LeftButton, modifiers, end);
        QTest::mouseRelease(window, Qt::LeftButton, modifiers, end);
        dropped = true;
    });
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, start);
    QTest::mouseMove(window, off);
    QTest::mouseMove(window, off + QPoint(2, 0)); // comes back when the drag is over
    ASSERT_TRUE(dropped) << "no drag began";
}

// Calls `act` with the modal dialog that the code run next opens, and fails the test unless one opens.
// `act` has to end the dialog.
template <class Dialog>
class ModalDialog
{
public:
    explicit ModalDialog(std::function<void(Dialog &)> act)
    {
        QTimer::singleShot(50, &m_context, [this, act = std::move(act)] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            m_seen = true;
            EXPECT_TRUE(QTest::qWaitForWindowExposed(dialog));
            act(*dialog);
        });
    }
    ~ModalDialog() { EXPECT_TRUE(m_seen) << "no such dialog was opened"; }

private:
    QObject m_context;
    bool m_seen = false;
};

#endif
