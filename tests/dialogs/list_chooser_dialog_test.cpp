#include <qlistchooserdialog.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTranslator>

#include "hands.h"

namespace {

const QStringList fields{"sta", "time", "arid", "chan"};

// A dialog with its parts at hand.
class ListChooserDialog : public testing::Test
{
protected:
    void open(bool *reverse = nullptr, bool *unique = nullptr)
    {
        m_dialog = std::make_unique<QListChooserDialog>(nullptr, fields, reverse, unique, Qt::WindowFlags());
        showAndWait(*m_dialog);
    }
    QListWidget &source() { return *m_dialog->findChild<QListWidget *>("fields"); }
    QListChooserWidget &chosen() { return *m_dialog->findChild<QListChooserWidget *>(); }
    QPushButton &ok() { return *m_dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok); }
    QPushButton *button(const QString &text)
    {
        for (QPushButton *candidate : m_dialog->findChildren<QPushButton *>())
            if (candidate->text() == text)
                return candidate;
        return nullptr;
    }
    void press(const QString &text)
    {
        ASSERT_NE(button(text), nullptr) << text.toStdString();
        QTest::mouseClick(button(text), Qt::LeftButton);
    }
    QString textAt(int row, int column)
    {
        auto *grid = qobject_cast<QGridLayout *>(m_dialog->layout());
        QWidget *widget = grid->itemAtPosition(row, column)->widget();
        return widget->property("text").toString();
    }

    std::unique_ptr<QListChooserDialog> m_dialog;
};

TEST_F(ListChooserDialog, LaysItsPartsOutInAGridOfTwoColumns)
{
    bool reverse = false;
    bool unique = false;
    open(&reverse, &unique);

    auto *grid = qobject_cast<QGridLayout *>(m_dialog->layout());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->columnCount(), 2);
    EXPECT_EQ(grid->rowCount(), 5);
    EXPECT_EQ(textAt(0, 0), "Fields:");
    EXPECT_EQ(textAt(0, 1), "Chosen:");
    EXPECT_EQ(grid->itemAtPosition(1, 0)->widget(), &source());
    EXPECT_EQ(grid->itemAtPosition(1, 1)->widget(), &chosen());
    EXPECT_EQ(textAt(2, 0), "Choose all");
    EXPECT_EQ(textAt(2, 1), "Clear all");
    EXPECT_EQ(textAt(3, 0), "Reverse");
    EXPECT_EQ(textAt(3, 1), "Unique");
    auto *buttons = m_dialog->findChild<QDialogButtonBox *>();
    EXPECT_EQ(grid->itemAtPosition(4, 0)->widget(), buttons);
    EXPECT_EQ(grid->itemAtPosition(4, 1)->widget(), buttons);
    EXPECT_EQ(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    EXPECT_EQ(buttons->orientation(), Qt::Horizontal);
}

TEST_F(ListChooserDialog, SetsItsListsUpForDragging)
{
    open();
    EXPECT_EQ(textsOf(source()), fields);
    EXPECT_EQ(source().dragDropMode(), QAbstractItemView::DragOnly);
    EXPECT_EQ(source().selectionMode(), QAbstractItemView::ExtendedSelection);
    EXPECT_EQ(chosen().count(), 0);
    EXPECT_EQ(chosen().dragDropMode(), QAbstractItemView::DragDrop);
    EXPECT_EQ(chosen().defaultDropAction(), Qt::MoveAction);
    EXPECT_EQ(chosen().selectionMode(), QAbstractItemView::ExtendedSelection);
}

TEST_F(ListChooserDialog, OffersTheOptionsOnlyWhereBothFlagsAreGiven)
{
    bool flag = true;
    struct Case {
        bool *reverse;
        bool *unique;
    };
    for (const Case &given : {Case{nullptr, nullptr}, Case{&flag, nullptr}, Case{nullptr, &flag}}) {
        open(given.reverse, given.unique);
        EXPECT_TRUE(m_dialog->findChildren<QCheckBox *>().isEmpty());
        EXPECT_EQ(qobject_cast<QGridLayout *>(m_dialog->layout())->rowCount(), 4);
        m_dialog->accept();
        EXPECT_TRUE(flag) << "neither flag is written";
    }
}

TEST_F(ListChooserDialog, BeginsWithNothingChosenAndOkDisabled)
{
    bool reverse = true;
    bool unique = true;
    open(&reverse, &unique);
    EXPECT_FALSE(ok().isEnabled());
    for (QCheckBox *box : m_dialog->findChildren<QCheckBox *>())
        EXPECT_FALSE(box->isChecked());
    EXPECT_TRUE(m_dialog->getListValue().isEmpty());
}

TEST_F(ListChooserDialog, TakesANameOverOnceHoweverOftenItIsDoubleClicked)
{
    open();
    doubleClick(source(), 1);
    doubleClick(source(), 1);
    EXPECT_EQ(textsOf(chosen()), QStringList{"time"});
    EXPECT_TRUE(ok().isEnabled());
    EXPECT_EQ(textsOf(source()), fields);
}

TEST_F(ListChooserDialog, TakesTheSelectedNamesOverOnEnterAndAcceptsWhenNoneIsNew)
{
    open();
    source().setFocus();
    QTest::keyClick(&source(), Qt::Key_Down);
    QTest::keyClick(&source(), Qt::Key_Down, Qt::ShiftModifier);
    const QStringList expected{"time", "arid"};
    QTest::keyClick(&source(), Qt::Key_Return);
    EXPECT_EQ(textsOf(chosen()), expected);
    EXPECT_TRUE(m_dialog->isVisible());

    QTest::keyClick(&source(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_FALSE(m_dialog->isVisible());
    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog->getListValue(), QList<QString>(expected));
}

TEST_F(ListChooserDialog, TakesNamesOverFromTopToBottomHoweverTheyWereSelected)
{
    open();
    source().setFocus();
    click(source(), 3);
    click(source(), 0, Qt::ControlModifier);
    click(source(), 2, Qt::ControlModifier);
    QTest::keyClick(&source(), Qt::Key_Return);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"sta", "arid", "chan"}));
}

TEST(ListChooserDialogOfManyNames, TakesThemAllOverAtOnce)
{
    QList<QString> names;
    for (int i = 0; i < 50000; ++i)
        names.append("name" + QString::number(i));
    QListChooserDialog dialog(nullptr, names);
    showAndWait(dialog);
    auto &source = *dialog.findChild<QListWidget *>("fields");
    source.setFocus();
    QElapsedTimer timer;
    timer.start();
    QTest::keyClick(&source, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&source, Qt::Key_Return);
    EXPECT_EQ(textsOf(*dialog.findChild<QListChooserWidget *>()), QStringList(names));
    EXPECT_LT(timer.elapsed(), 20000) << "each name is looked for among all the others";
}

TEST_F(ListChooserDialog, TakesTheCurrentNameOverOnEnterWhereNoneIsSelected)
{
    open();
    source().setFocus();
    ASSERT_TRUE(source().selectedItems().isEmpty());
    QTest::keyClick(&source(), Qt::Key_Return);
    EXPECT_EQ(textsOf(chosen()), QStringList{"sta"});
}

TEST_F(ListChooserDialog, StaysOpenOnEnterWhileNothingIsChosen)
{
    open();
    chosen().setFocus();
    QTest::keyClick(&chosen(), Qt::Key_Return);
    EXPECT_TRUE(m_dialog->isVisible());
    EXPECT_EQ(chosen().count(), 0) << "Enter presses no other button than OK";
}

TEST_F(ListChooserDialog, CanBeWalkedThroughWithTheTabKey)
{
    bool reverse = false;
    bool unique = false;
    open(&reverse, &unique);
    m_dialog->enableOK();
    source().setFocus();
    QStringList order;
    for (int i = 0; i < 8; ++i) {
        QWidget *focus = m_dialog->focusWidget();
        order << (focus->objectName().isEmpty() ? focus->property("text").toString() : focus->objectName());
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    EXPECT_EQ(order.mid(0, 6),
              (QStringList{"fields", "chosen", "chooseAll", "clearAll", "reverse", "unique"}));
    QStringList last = order.mid(6);
    EXPECT_TRUE(last.contains(ok().text()));
    EXPECT_EQ(m_dialog->focusWidget(), &source());
}

TEST_F(ListChooserDialog, ChoosesAllInTheGivenOrderWhateverWasChosen)
{
    open();
    doubleClick(source(), 2);
    press("Choose all");
    EXPECT_EQ(textsOf(chosen()), fields);
    EXPECT_TRUE(ok().isEnabled());
}

TEST_F(ListChooserDialog, ClearsAll)
{
    open();
    press("Choose all");
    press("Clear all");
    EXPECT_EQ(chosen().count(), 0);
    EXPECT_FALSE(ok().isEnabled());
    EXPECT_EQ(textsOf(source()), fields);
}

TEST_F(ListChooserDialog, DisablesOkWhenTheLastChosenNameIsDeleted)
{
    open();
    doubleClick(source(), 0);
    doubleClick(source(), 1);
    click(chosen(), 0);
    QTest::keyClick(&chosen(), Qt::Key_Delete);
    EXPECT_TRUE(ok().isEnabled());
    click(chosen(), 0);
    QTest::keyClick(&chosen(), Qt::Key_Backspace);
    EXPECT_EQ(chosen().count(), 0);
    EXPECT_FALSE(ok().isEnabled());
}

TEST_F(ListChooserDialog, KeepsOkDisabledOnAFilledListUntilItChanges)
{
    open();
    m_dialog->setFiltered({"chan", "sta"});
    EXPECT_EQ(textsOf(chosen()), (QStringList{"chan", "sta"}));
    EXPECT_FALSE(ok().isEnabled());
    doubleClick(source(), 0); // there already: no change
    EXPECT_FALSE(ok().isEnabled());
    doubleClick(source(), 1);
    EXPECT_TRUE(ok().isEnabled());
}

TEST_F(ListChooserDialog, EnablesOkWhenAFilledListIsShortened)
{
    open();
    m_dialog->setFiltered({"chan", "sta"});
    click(chosen(), 1);
    QTest::keyClick(&chosen(), Qt::Key_Delete);
    EXPECT_EQ(textsOf(chosen()), QStringList{"chan"});
    EXPECT_TRUE(ok().isEnabled());
}

TEST_F(ListChooserDialog, EnablesOkWhenAFilledListIsReordered)
{
    open();
    m_dialog->setFiltered({"chan", "sta"});
    drag(chosen(), 1, chosen(), 0, Spot::NearTop);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"sta", "chan"}));
    EXPECT_TRUE(ok().isEnabled());
}

TEST_F(ListChooserDialog, TakesDraggedNamesOverAndKeepsThemOnOffer)
{
    open();
    drag(source(), 2, chosen(), 0);
    drag(source(), 0, chosen(), 0, Spot::NearTop);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"sta", "arid"}));
    EXPECT_TRUE(ok().isEnabled());

    drag(source(), 2, chosen(), 2); // there already
    EXPECT_EQ(textsOf(chosen()), (QStringList{"sta", "arid"}));
    drag(source(), 1, chosen(), 2, Spot::Middle, Qt::ShiftModifier);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"sta", "arid", "time"}));
    EXPECT_EQ(textsOf(source()), fields);
}

TEST_F(ListChooserDialog, TakesSeveralDraggedNamesOverInTheirOrder)
{
    open();
    click(source(), 3);
    click(source(), 1, Qt::ControlModifier);
    drag(source(), 3, chosen(), 0);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"time", "chan"}));
}

TEST_F(ListChooserDialog, GivesTheOfferedNamesNothingThatIsDraggedToThem)
{
    open();
    m_dialog->setFiltered({"chan", "sta"});
    drag(chosen(), 0, source(), 0);
    EXPECT_EQ(textsOf(source()), fields);
    EXPECT_EQ(textsOf(chosen()), (QStringList{"chan", "sta"}));
}

TEST_F(ListChooserDialog, GivesTheChosenNamesAndFlagsWhenAccepted)
{
    bool reverse = true;
    bool unique = false;
    open(&reverse, &unique);
    doubleClick(source(), 3);
    doubleClick(source(), 0);
    m_dialog->findChild<QCheckBox *>("unique")->click();
    EXPECT_TRUE(reverse) << "written only when accepted";
    press(ok().text());

    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog->getListValue(), (QList<QString>{"chan", "sta"}));
    EXPECT_FALSE(reverse);
    EXPECT_TRUE(unique);
}

TEST_F(ListChooserDialog, CountsAPartlyCheckedOptionAsSet)
{
    bool reverse = false;
    bool unique = false;
    open(&reverse, &unique);
    m_dialog->findChild<QCheckBox *>("reverse")->setCheckState(Qt::PartiallyChecked);
    m_dialog->accept();
    EXPECT_TRUE(reverse);
    EXPECT_FALSE(unique);
}

TEST_F(ListChooserDialog, ForgetsTheResultWhenRejectedOrCleared)
{
    bool reverse = true;
    bool unique = true;
    open(&reverse, &unique);
    m_dialog->selectAll();
    QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
    EXPECT_EQ(m_dialog->result(), QDialog::Rejected);
    EXPECT_TRUE(m_dialog->getListValue().isEmpty());
    EXPECT_TRUE(reverse && unique);

    m_dialog->accept();
    EXPECT_EQ(m_dialog->getListValue(), QList<QString>(fields));
    m_dialog->clearAll();
    EXPECT_TRUE(m_dialog->getListValue().isEmpty());
}

TEST_F(ListChooserDialog, EnablesAndDisablesTheFirstButtonOfItsBox)
{
    open();
    auto *box = m_dialog->findChild<QDialogButtonBox *>();
    EXPECT_EQ(box->buttons().at(0), &ok());
    m_dialog->enableOK();
    EXPECT_TRUE(ok().isEnabled());
    m_dialog->disableOK();
    EXPECT_FALSE(ok().isEnabled());
    EXPECT_TRUE(box->button(QDialogButtonBox::Cancel)->isEnabled());
}

TEST_F(ListChooserDialog, OpensLargerForMoreNamesButWithinTheScreen)
{
    const auto sizeFor = [](int count, const QString &name) {
        QList<QString> names;
        for (int i = 0; i < count; ++i)
            names << name + QString::number(i);
        QListChooserDialog dialog(nullptr, names);
        showAndWait(dialog);
        return dialog.size();
    };
    const QSize few = sizeFor(2, "a");
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    const QSize many = sizeFor(5000, QString(200, 'x'));
    EXPECT_GT(few.height(), 100);
    EXPECT_LE(few.height(), many.height());
    EXPECT_LE(many.height(), qMax(few.height(), screen.height()));
    EXPECT_LE(many.width(), qMax(few.width(), screen.width()));
}

TEST_F(ListChooserDialog, TellsItsTextsInTheInstalledLanguage)
{
    struct UpperCase : QTranslator {
        bool isEmpty() const override { return false; }
        QString translate(const char *context, const char *text, const char *, int) const override
        {
            return QString(context) == "OvTranslation" ? QString(text).toUpper() : QString();
        }
    } translator;
    QApplication::installTranslator(&translator);
    bool flag = false;
    QListChooserDialog dialog(nullptr, fields, &flag, &flag);
    QApplication::removeTranslator(&translator);

    QStringList texts;
    for (QLabel *label : dialog.findChildren<QLabel *>())
        texts << label->text();
    for (const char *name : {"chooseAll", "clearAll"})
        texts << dialog.findChild<QPushButton *>(name)->text();
    for (const char *name : {"reverse", "unique"})
        texts << dialog.findChild<QCheckBox *>(name)->text();
    EXPECT_EQ(texts, (QStringList{"FIELDS:", "CHOSEN:", "CHOOSE ALL", "CLEAR ALL", "REVERSE", "UNIQUE"}));
}

TEST(ModifyList, ReturnsWhatTheUserChoseAndWritesTheFlags)
{
    bool ok = false;
    bool reverse = false;
    bool unique = true;
    QWidget parent;
    ModalDialog<QListChooserDialog> user([&](QListChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Sort fields");
        EXPECT_EQ(dialog.parentWidget(), &parent);
        EXPECT_TRUE(dialog.isModal());
        EXPECT_EQ(dialog.findChild<QListChooserWidget *>()->count(), 0);
        doubleClick(*dialog.findChild<QListWidget *>("fields"), 1);
        QTest::mouseClick(dialog.findChild<QCheckBox *>("reverse"), Qt::LeftButton, Qt::NoModifier, {8, 8});
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    const QList<QString> chosen =
        QListChooserDialog::modifyList(&parent, fields, {}, "Sort fields", &ok, &reverse, &unique, {});

    EXPECT_EQ(chosen, QList<QString>{"time"});
    EXPECT_TRUE(ok);
    EXPECT_TRUE(reverse);
    EXPECT_FALSE(unique);
}

TEST(ModifyList, ReturnsTheCurrentNamesWhenTheUserCancels)
{
    bool ok = true;
    bool reverse = true;
    bool unique = false;
    ModalDialog<QListChooserDialog> user([](QListChooserDialog &dialog) {
        EXPECT_EQ(textsOf(*dialog.findChild<QListChooserWidget *>()), (QStringList{"arid", "sta"}));
        dialog.selectAll();
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    const QList<QString> chosen = QListChooserDialog::modifyList(nullptr, fields, {"arid", "sta"},
                                                                 "Show fields", &ok, &reverse, &unique);

    EXPECT_EQ(chosen, (QList<QString>{"arid", "sta"}));
    EXPECT_FALSE(ok);
    EXPECT_TRUE(reverse);
    EXPECT_FALSE(unique);
}

TEST(ModifyList, WorksWithoutAnyFlagAndWithNamesThatAreNotOnOffer)
{
    ModalDialog<QListChooserDialog> user([](QListChooserDialog &dialog) {
        doubleClick(*dialog.findChild<QListWidget *>("fields"), 0);
        dialog.accept();
    });
    EXPECT_EQ(QListChooserDialog::modifyList(nullptr, fields, {"gone", "gone"}, "Group fields", nullptr),
              (QList<QString>{"gone", "gone", "sta"}));
}

} // namespace
