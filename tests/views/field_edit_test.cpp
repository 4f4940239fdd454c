// One field of a record, with its name and an editor of its value.
#include <qfieldedit.h>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include "shown_database.h"

namespace {

constexpr int labelWidth = 90;

class FieldEdit : public testing::Test
{
protected:
    FieldEdit()
    {
        database.permissions = "r+";
        database.setFontPoints(10);
    }

    QFieldEdit &edit(const char *name, int row)
    {
        field = std::make_unique<QFieldEdit>(database.config, name, true, false, false, labelWidth,
                                             &database.table("site"));
        field->setRow(row);
        field->show();
        QApplication::setActiveWindow(field.get());
        return *field;
    }
    QLineEdit &editor() { return *field->findChild<QLineEdit *>(); }
    QLabel &label() { return *field->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly); }
    void type(const QString &text)
    {
        editor().setFocus();
        editor().setText(text);
        QTest::keyClick(&editor(), Qt::Key_Return);
    }
    std::string file() const { return TemporaryDatabase::readFile(database.files.tablePath("site")); }

    ShownDatabase database;
    std::unique_ptr<QFieldEdit> field;
};

} // namespace

TEST_F(FieldEdit, laysItsNameAndItsEditorOut)
{
    EXPECT_FALSE(database.config["fieldedit_width_chars"].isValid());
    edit("lat", 0);
    EXPECT_EQ(database.config["fieldedit_width_chars"].toInt(), 40);
    EXPECT_EQ(label().text(), "lat:");
    EXPECT_EQ(label().width(), labelWidth + label().fontMetrics().horizontalAdvance(':'));
    EXPECT_EQ(editor().minimumWidth(), editor().fontMetrics().horizontalAdvance('x') * 40);
    const auto *grid = qobject_cast<QGridLayout *>(field->layout());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->itemAtPosition(0, 0)->widget(), &label());
    EXPECT_EQ(grid->itemAtPosition(0, 1)->widget(), &editor());
    EXPECT_EQ(grid->contentsMargins(), QMargins(5, 5, 1, 0));
    EXPECT_EQ(field->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    EXPECT_EQ(field->sizePolicy().verticalPolicy(), QSizePolicy::Minimum);
}

TEST_F(FieldEdit, isAsWideAsTheConfigurationSays)
{
    database.config.configure("fieldedit_width_chars", 7);
    edit("lat", 0);
    EXPECT_EQ(editor().minimumWidth(), editor().fontMetrics().horizontalAdvance('x') * 7);
}

TEST_F(FieldEdit, isReadOnlyUntilEditsAreAllowedWhenItIsMade)
{
    EXPECT_TRUE(edit("lat", 0).findChild<QLineEdit *>()->isReadOnly());
    database.config.configure("allow_edits", true);
    EXPECT_FALSE(edit("lat", 0).findChild<QLineEdit *>()->isReadOnly());
    field->setReadOnly(true);
    EXPECT_TRUE(editor().isReadOnly());
}

TEST_F(FieldEdit, storesNothingWhereEditsAreNotAllowed)
{
    edit("lat", 0);
    field->setReadOnly(false); // as on the scratch record
    const std::string before = file();
    type("12");
    EXPECT_EQ(editor().text(), "42.6390") << "what is stored is shown again";
    EXPECT_EQ(file(), before);
}

TEST_F(FieldEdit, storesNothingWhereTheTextIsWhatIsShown)
{
    database.config.configure("allow_edits", true);
    edit("lat", 0);
    const std::string before = file();
    type("42.6390");
    EXPECT_EQ(file(), before) << "the timestamp, too";
    type("42.639"); // the same number, written in another way
    EXPECT_NE(file(), before);
    EXPECT_EQ(editor().text(), "42.6390");
}

TEST_F(FieldEdit, showsWhatTheModelAndTheConfigurationTell)
{
    database.config.configure("allow_edits", true);
    OrvaneTableModel &site = database.table("site");
    edit("elev", 0);
    EXPECT_EQ(editor().text(), "");
    EXPECT_EQ(editor().palette().color(QPalette::Base), QColor("light gray"));
    ASSERT_TRUE(site.setData(site.indexForCell(0, "elev"), "1.5"));
    EXPECT_EQ(editor().text(), "1.5000");
    EXPECT_EQ(editor().palette().brush(QPalette::Base).style(), Qt::NoBrush);
    field->setRow(1);
    EXPECT_EQ(editor().text(), "");
    database.config.configure("show_raw_nulls", true);
    EXPECT_EQ(editor().text(), "-999.0000");
}

TEST_F(FieldEdit, takesAValueAndAColour)
{
    edit("lat", 0);
    field->setValue("anything");
    EXPECT_EQ(editor().text(), "anything");
    field->setValueBackgroundColor(QBrush(Qt::yellow));
    EXPECT_EQ(editor().palette().brush(QPalette::Base), QBrush(Qt::yellow));
    field->updateCell();
    EXPECT_EQ(editor().text(), "42.6390");
}
