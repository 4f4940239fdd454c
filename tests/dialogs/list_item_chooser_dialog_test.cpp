#include <qlistitemchooserdialog.h>

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "hands.h"

namespace {

const QStringList tables{"arrival", "origin", "site"};

class ListItemChooserDialog : public testing::Test
{
protected:
    void SetUp() override { showAndWait(m_dialog); }
    QListItemChooserWidget &list() { return *m_dialog.findChild<QListItemChooserWidget *>(); }
    QPushButton *button(QDialogButtonBox::StandardButton which)
    {
        return m_dialog.findChild<QDialogButtonBox *>()->button(which);
    }

    QListItemChooserDialog m_dialog{nullptr, tables, "Table & more", Qt::WindowFlags()};
};

TEST_F(ListItemChooserDialog, LaysItsPartsOutInOneColumn)
{
    auto *grid = qobject_cast<QGridLayout *>(m_dialog.layout());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->columnCount(), 1);
    ASSERT_EQ(grid->rowCount(), 3);
    auto *label = qobject_cast<QLabel *>(grid->itemAtPosition(0, 0)->widget());
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), "Table & more:");
    EXPECT_EQ(grid->itemAtPosition(1, 0)->widget(), &list());
    auto *box = qobject_cast<QDialogButtonBox *>(grid->itemAtPosition(2, 0)->widget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    EXPECT_EQ(box->orientation(), Qt::Horizontal);
    EXPECT_EQ(list().selectionMode(), QAbstractItemView::SingleSelection);
    EXPECT_EQ(textsOf(list()), tables);
}

TEST_F(ListItemChooserDialog, GivesTheSelectedName)
{
    EXPECT_EQ(m_dialog.getListItem(), QString());
    click(list(), 1);
    QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog.getListItem(), "origin");
}

TEST_F(ListItemChooserDialog, GivesTheDoubleClickedName)
{
    doubleClick(list(), 2);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog.getListItem(), "site");
}

TEST_F(ListItemChooserDialog, CanBeUsedWithTheKeyboardAlone)
{
    EXPECT_TRUE(list().hasFocus());
    QTest::keyClick(&list(), Qt::Key_Down);
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog.getListItem(), "origin");
}

TEST_F(ListItemChooserDialog, GivesAnEmptyNameWhenNothingIsSelected)
{
    QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog.getListItem(), QString());
}

TEST_F(ListItemChooserDialog, ForgetsTheNameWhenRejected)
{
    click(list(), 1);
    m_dialog.accept();
    m_dialog.show();
    QTest::mouseClick(button(QDialogButtonBox::Cancel), Qt::LeftButton);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
    EXPECT_EQ(m_dialog.getListItem(), QString());
}

TEST_F(ListItemChooserDialog, TakesTheSelectedNameOutOnDeleteAndBackspace)
{
    click(list(), 1);
    QTest::keyClick(&list(), Qt::Key_Delete);
    EXPECT_EQ(textsOf(list()), (QStringList{"arrival", "site"}));
    list().clearSelection();
    QTest::keyClick(&list(), Qt::Key_Delete);
    EXPECT_EQ(list().count(), 2);
    click(list(), 0);
    QTest::keyClick(&list(), Qt::Key_Backspace);
    click(list(), 0);
    QTest::keyClick(&list(), Qt::Key_Backspace);
    EXPECT_EQ(list().count(), 0);
    m_dialog.accept();
    EXPECT_EQ(m_dialog.getListItem(), QString());
}

TEST(ListItemChooserDialogWithoutNames, IsEmpty)
{
    QListItemChooserDialog dialog(nullptr, {}, "Table", Qt::WindowFlags());
    EXPECT_EQ(dialog.layout(), nullptr);
    EXPECT_TRUE(dialog.findChildren<QWidget *>().isEmpty());
    dialog.accept();
    EXPECT_EQ(dialog.getListItem(), QString());
}

TEST(ChooseItem, ReturnsTheChosenName)
{
    bool ok = false;
    QWidget parent;
    ModalDialog<QListItemChooserDialog> user([&](QListItemChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Choose a table");
        EXPECT_EQ(dialog.parentWidget(), &parent);
        EXPECT_TRUE(dialog.isModal());
        EXPECT_EQ(dialog.findChild<QLabel *>()->text(), "Table:");
        click(*dialog.findChild<QListWidget *>(), 0);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    EXPECT_EQ(QListItemChooserDialog::chooseItem(&parent, tables, "Choose a table", "Table", &ok, {}),
              "arrival");
    EXPECT_TRUE(ok);
}

TEST(ChooseItem, ReturnsAnEmptyNameWhenTheUserCancels)
{
    bool ok = true;
    ModalDialog<QListItemChooserDialog> user([](QListItemChooserDialog &dialog) {
        click(*dialog.findChild<QListWidget *>(), 0);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(QListItemChooserDialog::chooseItem(nullptr, tables, "Choose a table", "Table", &ok), QString());
    EXPECT_FALSE(ok);
}

TEST(ChooseItem, TellsAcceptedThoughNothingWasSelected)
{
    bool ok = false;
    ModalDialog<QListItemChooserDialog> user(
        [](QListItemChooserDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
    EXPECT_EQ(QListItemChooserDialog::chooseItem(nullptr, tables, "Choose a table", "Table", &ok), QString());
    EXPECT_TRUE(ok);
}

TEST(ChooseItem, ShowsAnEmptyDialogOverAnEmptyList)
{
    bool ok = true;
    ModalDialog<QListItemChooserDialog> user([](QListItemChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Choose a table");
        EXPECT_TRUE(dialog.findChildren<QWidget *>().isEmpty());
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(QListItemChooserDialog::chooseItem(nullptr, {}, "Choose a table", "Table", &ok), QString());
    EXPECT_FALSE(ok);
}

TEST(ChooseItem, NeedsNoFlag)
{
    ModalDialog<QListItemChooserDialog> user(
        [](QListItemChooserDialog &dialog) { doubleClick(*dialog.findChild<QListWidget *>(), 2); });
    EXPECT_EQ(QListItemChooserDialog::chooseItem(nullptr, tables, "Choose a table", "Table", nullptr),
              "site");
}

} // namespace
