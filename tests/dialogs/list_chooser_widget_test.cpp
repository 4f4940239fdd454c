#include <qlistchooserdialog.h>

#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <memory>

#include "hands.h"

namespace {

class ListChooserWidget : public testing::Test
{
protected:
    void SetUp() override
    {
        m_list.setSelectionMode(QAbstractItemView::ExtendedSelection);
        m_list.setDragDropMode(QAbstractItemView::DragDrop);
        m_list.setDefaultDropAction(Qt::MoveAction);
        m_list.resize(200, 300);
        showAndWait(m_list);
    }

    void fill(const QStringList &names) { static_cast<QListWidget &>(m_list).addItems(names); }

    // A drop as it arrives from another list that holds the names.
    void drop(const QStringList &names, QPoint place, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QListWidget other;
        other.addItems(names);
        QModelIndexList indexes;
        for (int row = 0; row < other.count(); ++row)
            indexes << other.model()->index(row, 0);
        const std::unique_ptr<QMimeData> data(other.model()->mimeData(indexes));
        dropData(*data, place, modifiers);
    }

    void dropData(const QMimeData &data, QPoint place, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const Qt::DropActions possible = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(place, possible, &data, Qt::LeftButton, modifiers);
        QApplication::sendEvent(m_list.viewport(), &enter);
        QDragMoveEvent move(place, possible, &data, Qt::LeftButton, modifiers);
        QApplication::sendEvent(m_list.viewport(), &move);
        QDropEvent event(place, possible, &data, Qt::LeftButton, modifiers);
        m_proposedAction = event.proposedAction();
        QApplication::sendEvent(m_list.viewport(), &event);
        m_dropAction = event.dropAction();
    }

    QListChooserWidget m_list;
    QSignalSpy m_added{&m_list, SIGNAL(itemAdded())};
    QSignalSpy m_emptied{&m_list, SIGNAL(lastItemRemoved())};
    Qt::DropAction m_proposedAction = Qt::IgnoreAction;
    Qt::DropAction m_dropAction = Qt::IgnoreAction;
};

TEST_F(ListChooserWidget, AddsANewItemWithTheTextAndLeavesTheGivenOneAlone)
{
    QListWidgetItem item("sta");
    m_list.addItem(&item);

    EXPECT_EQ(textsOf(m_list), QStringList{"sta"});
    EXPECT_NE(m_list.item(0), &item);
    EXPECT_EQ(item.listWidget(), nullptr);
    EXPECT_EQ(m_added.count(), 1);
}

TEST_F(ListChooserWidget, PassesOverATextThatIsThereAndSaysNothing)
{
    QListWidgetItem item("sta");
    m_list.addItem(&item);
    m_list.addItem(&item);

    EXPECT_EQ(textsOf(m_list), QStringList{"sta"});
    EXPECT_EQ(m_added.count(), 1);
}

TEST_F(ListChooserWidget, TellsNamesApartByCaseAndTakesPatternsForPlainText)
{
    for (const char *text : {"sta", "STA", "s*", "s.a", "st"}) {
        QListWidgetItem item(text);
        m_list.addItem(&item);
    }
    EXPECT_EQ(textsOf(m_list), (QStringList{"sta", "STA", "s*", "s.a", "st"}));
}

TEST_F(ListChooserWidget, PassesOverNoItemAtAll)
{
    m_list.addItem(nullptr);
    EXPECT_EQ(m_list.count(), 0);
    EXPECT_EQ(m_added.count(), 0);
}

TEST_F(ListChooserWidget, AddsManyNamesAtOnceAndTellsOfEachNewOne)
{
    fill({"b"});
    m_list.addNames({"a", "b", "c", "a"});
    EXPECT_EQ(textsOf(m_list), (QStringList{"b", "a", "c"}));
    EXPECT_EQ(m_added.count(), 2);
    m_list.addNames({"c"});
    m_list.addNames({});
    EXPECT_EQ(m_added.count(), 2);
}

TEST_F(ListChooserWidget, TakesEverySelectedItemOutOnDelete)
{
    fill({"a", "b", "c", "d"});
    click(m_list, 0);
    click(m_list, 2, Qt::ControlModifier);
    QTest::keyClick(&m_list, Qt::Key_Delete);

    EXPECT_EQ(textsOf(m_list), (QStringList{"b", "d"}));
    EXPECT_EQ(m_emptied.count(), 0);
}

TEST_F(ListChooserWidget, TakesEverySelectedItemOutOnBackspaceAndTellsWhenNoneIsLeft)
{
    fill({"a", "b"});
    click(m_list, 0);
    click(m_list, 1, Qt::ShiftModifier);
    QTest::keyClick(&m_list, Qt::Key_Backspace);

    EXPECT_EQ(m_list.count(), 0);
    EXPECT_EQ(m_emptied.count(), 1);
}

TEST_F(ListChooserWidget, DeleteWithoutASelectionTakesNothing)
{
    fill({"a"});
    m_list.clearSelection();
    QTest::keyClick(&m_list, Qt::Key_Delete);
    EXPECT_EQ(textsOf(m_list), QStringList{"a"});
    EXPECT_EQ(m_emptied.count(), 0);
}

TEST_F(ListChooserWidget, LeavesOtherKeysToTheList)
{
    fill({"a", "b"});
    click(m_list, 0);
    QTest::keyClick(&m_list, Qt::Key_Down);
    EXPECT_EQ(m_list.currentRow(), 1);
    QTest::keyClick(&m_list, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(m_list.selectedItems().size(), 2);
    EXPECT_EQ(m_list.count(), 2);
}

TEST_F(ListChooserWidget, TakesADroppedNameAndAnnouncesEveryNameItHolds)
{
    fill({"a", "b"});
    drop({"c"}, placeOf(m_list, 2));

    EXPECT_EQ(textsOf(m_list), (QStringList{"a", "b", "c"}));
    EXPECT_EQ(m_added.count(), 3);
}

TEST_F(ListChooserWidget, KeepsTheTopmostOfEqualNamesAfterADrop)
{
    fill({"a", "b", "c"});
    drop({"c"}, placeOf(m_list, 0, Spot::NearTop));
    EXPECT_EQ(textsOf(m_list), (QStringList{"c", "a", "b"}));
    EXPECT_EQ(m_added.count(), 3);

    drop({"c", "d", "d"}, placeOf(m_list, 3));
    EXPECT_EQ(textsOf(m_list), (QStringList{"c", "a", "b", "d"}));
    EXPECT_EQ(m_added.count(), 3 + 4);
}

TEST_F(ListChooserWidget, NeverReplacesTheNameThatSomethingIsDroppedOn)
{
    fill({"a", "b"});
    drop({"c"}, placeOf(m_list, 0));
    EXPECT_EQ(m_list.count(), 3);
    drop({"d"}, placeOf(m_list, 1)); // onto the name that itself came by a drop
    drop({"a"}, placeOf(m_list, 3)); // onto another name, from a list that has it too

    QStringList names = textsOf(m_list);
    names.sort();
    EXPECT_EQ(names, (QStringList{"a", "b", "c", "d"}));
}

TEST_F(ListChooserWidget, LetsTheListItTookNamesFromKeepThem)
{
    drop({"a"}, placeOf(m_list, 0), Qt::ShiftModifier);
    ASSERT_EQ(m_proposedAction, Qt::MoveAction);
    EXPECT_EQ(textsOf(m_list), QStringList{"a"});
    EXPECT_EQ(m_dropAction, Qt::CopyAction);
}

TEST_F(ListChooserWidget, TakesNothingFromADropOfAnotherKind)
{
    fill({"a"});
    QMimeData data;
    data.setText("plain text");
    dropData(data, placeOf(m_list, 1));
    EXPECT_EQ(textsOf(m_list), QStringList{"a"});
}

TEST_F(ListChooserWidget, ReordersWhatIsDraggedWithinIt)
{
    fill({"a", "b", "c", "d"});
    drag(m_list, 0, m_list, 2, Spot::NearBottom);
    EXPECT_EQ(textsOf(m_list), (QStringList{"b", "c", "a", "d"}));
    EXPECT_EQ(m_added.count(), 4);

    drag(m_list, 3, m_list, 0, Spot::NearTop);
    EXPECT_EQ(textsOf(m_list), (QStringList{"d", "b", "c", "a"}));

    drag(m_list, 1, m_list, 4); // into the empty area
    EXPECT_EQ(textsOf(m_list), (QStringList{"d", "c", "a", "b"}));
    EXPECT_EQ(m_emptied.count(), 0);
}

TEST_F(ListChooserWidget, LosesNothingWhenANameIsDraggedOntoAnother)
{
    fill({"a", "b", "c"});
    drag(m_list, 0, m_list, 1);
    QStringList names = textsOf(m_list);
    names.sort();
    EXPECT_EQ(names, (QStringList{"a", "b", "c"}));

    fill({"d"});
    drag(m_list, 2, m_list, 2); // onto itself
    EXPECT_EQ(m_list.count(), 4);
}

TEST_F(ListChooserWidget, KeepsOneCopyOfWhatIsDraggedAsACopyWithinIt)
{
    fill({"a", "b", "c"});
    drag(m_list, 2, m_list, 0, Spot::NearTop, Qt::ControlModifier);
    EXPECT_EQ(textsOf(m_list), (QStringList{"c", "a", "b"}));
    drag(m_list, 0, m_list, 3, Spot::Middle, Qt::ControlModifier);
    EXPECT_EQ(textsOf(m_list), (QStringList{"c", "a", "b"})); // the first of two stays
}

} // namespace
