// What helps people write expressions in the dialogs that ask for one.
#include <orvanedatabaseview.h>

#include <QAction>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "database_window.h"
#include "support/message_boxes.h"
#include "support/user.h"

namespace {

constexpr int outOfPatience = 3000; // milliseconds

struct Dialog {
    explicit Dialog(QInputDialog &opened)
        : edit(*opened.findChild<QLineEdit *>()), line(*opened.findChild<QLabel *>("expressionLine")),
          proposals(*opened.findChild<QTreeWidget *>("proposals"))
    {
    }

    void types(const QString &text) { QTest::keyClicks(&edit, text); }
    void presses(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&edit, key, modifiers);
    }
    void startsAnew()
    {
        edit.selectAll();
        presses(Qt::Key_Backspace);
    }

    QStringList proposed() const
    {
        QStringList texts;
        for (int row = 0; proposals.isVisible() && row < proposals.topLevelItemCount(); ++row) {
            texts.append(proposals.topLevelItem(row)->text(0));
        }
        return texts;
    }

    QString told() const { return line.isVisible() ? line.text() : QString(); }

    bool comesToTell(const QString &text) const
    {
        return QTest::qWaitFor([&] { return told().contains(text); }, outOfPatience);
    }

    QLineEdit &edit;
    QLabel &line;
    QTreeWidget &proposals;
};

class ExpressionDialog : public DatabaseWindow
{
protected:
    ExpressionDialog()
    {
        database.config.configure("request_view_names", false);
        window.setModel(&database.open());
        window.setFocusTable("site");
        window.resize(800, 500);
        window.show();
    }

    // Asks for an expression about the table shown and answers what came out.
    QString asked(const std::function<void(Dialog &)> &act)
    {
        User user;
        user.meets<QInputDialog>([&](QInputDialog &dialog) {
            Dialog seen(dialog);
            act(seen);
            if (dialog.isVisible()) {
                QTest::keyClick(&seen.edit, Qt::Key_Escape); // closes the proposals, if any
                dialog.reject();
            }
        });
        return window.getExpression("Subset expression");
    }

    MessageBoxes boxes;
};

TEST_F(ExpressionDialog, proposesFieldsThatBeginAsTheWord)
{
    asked([](Dialog &dialog) {
        EXPECT_EQ(dialog.proposed(), QStringList());
        dialog.types("l");
        EXPECT_EQ(dialog.proposed().mid(0, 3), (QStringList{"lat", "lon", "lddate"}));
        dialog.types("a");
        EXPECT_EQ(dialog.proposed().first(), "lat");
        EXPECT_FALSE(dialog.proposed().contains("lon"));
        dialog.types("t");
        EXPECT_EQ(dialog.proposed(), QStringList()) << "it is all there";
        dialog.types(" > 4 && STA");
        EXPECT_EQ(dialog.proposed(), (QStringList{"sta", "staname"})) << "capitals don't matter here";
        EXPECT_EQ(dialog.proposals.topLevelItem(0)->text(1), "station code");
    });
}

TEST_F(ExpressionDialog, takesAProposalByKey)
{
    asked([](Dialog &dialog) {
        dialog.types("la");
        dialog.presses(Qt::Key_Tab);
        EXPECT_EQ(dialog.edit.text(), "lat") << "the first";
        EXPECT_EQ(dialog.proposed(), QStringList());
        dialog.types(" > 4 && st");
        dialog.presses(Qt::Key_Down);
        dialog.presses(Qt::Key_Down);
        dialog.presses(Qt::Key_Return);
        EXPECT_EQ(dialog.edit.text(), "lat > 4 && staname");
        dialog.types(" == 'la");
        EXPECT_EQ(dialog.proposed(), QStringList()) << "not between quotes";
    });
}

TEST_F(ExpressionDialog, takesAProposalInTheMiddleOfTheText)
{
    asked([](Dialog &dialog) {
        dialog.types("ond > 2001001 && lat > 4");
        dialog.edit.setCursorPosition(2);
        EXPECT_EQ(dialog.proposed(), QStringList()) << "moving the cursor is not typing";
        dialog.presses(Qt::Key_Space, Qt::ControlModifier);
        EXPECT_EQ(dialog.proposed(), QStringList{"ondate"});
        dialog.presses(Qt::Key_Tab);
        EXPECT_EQ(dialog.edit.text(), "ondate > 2001001 && lat > 4") << "the whole word is replaced";
        EXPECT_EQ(dialog.edit.cursorPosition(), 6);
    });
}

TEST_F(ExpressionDialog, takesAProposalByMouse)
{
    asked([](Dialog &dialog) {
        dialog.types("st");
        const QRect row = dialog.proposals.visualItemRect(dialog.proposals.topLevelItem(1));
        QTest::mouseClick(dialog.proposals.viewport(), Qt::LeftButton, Qt::NoModifier, row.center());
        EXPECT_EQ(dialog.edit.text(), "staname");
    });
}

TEST_F(ExpressionDialog, proposesFunctionsWithTheirSignatures)
{
    asked([](Dialog &dialog) {
        dialog.types("subs");
        ASSERT_EQ(dialog.proposed().size(), 1);
        EXPECT_TRUE(dialog.proposed().first().startsWith("substr(s: text, start: integer"));
        dialog.presses(Qt::Key_Tab);
        EXPECT_EQ(dialog.edit.text(), "substr(");
        EXPECT_TRUE(dialog.told().startsWith("substr(s: text")) << "what it takes";
        dialog.types("sta, 1) == 'A'");
        EXPECT_EQ(dialog.told(), "");
        dialog.startsAnew();
        dialog.types("time > no");
        dialog.presses(Qt::Key_Tab);
        EXPECT_EQ(dialog.edit.text(), "time > now()");
    });
}

TEST_F(ExpressionDialog, leavesEnterToTheDialogWhereNothingIsSelected)
{
    const QString expression = asked([](Dialog &dialog) {
        dialog.types("la");
        EXPECT_FALSE(dialog.proposed().isEmpty());
        dialog.presses(Qt::Key_Return);
    });
    EXPECT_EQ(expression, "la");
}

TEST_F(ExpressionDialog, closesProposalsBeforeItselfAtEsc)
{
    const QString expression = asked([](Dialog &dialog) {
        dialog.types("la");
        dialog.presses(Qt::Key_Escape);
        EXPECT_EQ(dialog.proposed(), QStringList());
        EXPECT_TRUE(dialog.edit.isVisible());
        dialog.presses(Qt::Key_Escape);
        EXPECT_FALSE(dialog.edit.isVisible());
    });
    EXPECT_EQ(expression, "");
}

TEST_F(ExpressionDialog, tellsWhatIsWrongAndUnderlinesIt)
{
    asked([](Dialog &dialog) {
        dialog.types("lat > 4 && stb == 'AAK'");
        const QImage before = dialog.edit.grab().toImage();
        EXPECT_EQ(dialog.told(), "") << "not yet";
        EXPECT_TRUE(dialog.comesToTell("Unknown field 'stb'")) << dialog.told().toStdString();
        EXPECT_TRUE(dialog.told().contains("sta")) << "names that are near";
        EXPECT_NE(dialog.edit.grab().toImage(), before) << "a wave under the place";
        EXPECT_EQ(dialog.edit.text(), "lat > 4 && stb == 'AAK'");
        dialog.edit.setCursorPosition(14);
        dialog.presses(Qt::Key_Backspace);
        dialog.types("a");
        EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.told().isEmpty(); }, outOfPatience));
    });
}

TEST_F(ExpressionDialog, hasRoomForReasonsOfSeveralLines)
{
    asked([](Dialog &dialog) {
        dialog.types("stb == 'A'");
        EXPECT_TRUE(dialog.comesToTell("Unknown field"));
        const int oneLine = dialog.line.height();
        dialog.startsAnew();
        dialog.types("ondate > epoch('2000-1-1, which is not how a day of a year is written') && lat > 0");
        EXPECT_TRUE(dialog.comesToTell("2000-1-1"));
        QCoreApplication::processEvents();
        EXPECT_GE(dialog.line.height(), dialog.line.heightForWidth(dialog.line.width()));
        EXPECT_GT(dialog.line.height(), oneLine) << dialog.told().toStdString();
    });
}

TEST_F(ExpressionDialog, waitsLongerWhereTheWordIsStillBeingTyped)
{
    asked([](Dialog &dialog) {
        dialog.types("lat > 4 && st");
        EXPECT_FALSE(dialog.proposed().isEmpty());
        QTest::qWait(1500);
        EXPECT_EQ(dialog.told(), "") << "while names are proposed";
        dialog.types("x");
        EXPECT_TRUE(dialog.proposed().isEmpty());
        QTest::qWait(500);
        EXPECT_EQ(dialog.told(), "");
        EXPECT_TRUE(dialog.comesToTell("'stx'"));
        dialog.startsAnew();
        dialog.types("lat >");
        QTest::qWait(500);
        EXPECT_EQ(dialog.told(), "");
        EXPECT_TRUE(dialog.comesToTell("xpected"));
    });
}

TEST_F(ExpressionDialog, keepsAHistory)
{
    EXPECT_EQ(asked([](Dialog &dialog) {
                  dialog.types("lat > 4");
                  dialog.presses(Qt::Key_Return);
              }),
              "lat > 4");
    asked([](Dialog &dialog) {
        dialog.types("lon > 9");
        dialog.presses(Qt::Key_Return);
    });
    asked([](Dialog &dialog) { dialog.types("elev > 0"); }); // cancelled
    EXPECT_EQ(database.config["expression_history"].toStringList(), (QStringList{"lon > 9", "lat > 4"}));
    asked([](Dialog &dialog) {
        dialog.types("elev ");
        dialog.presses(Qt::Key_Up);
        EXPECT_EQ(dialog.edit.text(), "lon > 9");
        dialog.presses(Qt::Key_Up);
        dialog.presses(Qt::Key_Up);
        EXPECT_EQ(dialog.edit.text(), "lat > 4") << "there are no older ones";
        dialog.presses(Qt::Key_Down);
        dialog.presses(Qt::Key_Down);
        EXPECT_EQ(dialog.edit.text(), "elev ") << "what was begun comes back";
        dialog.presses(Qt::Key_Down, Qt::AltModifier);
        EXPECT_EQ(dialog.proposed(), (QStringList{"lon > 9", "lat > 4"}));
        dialog.presses(Qt::Key_Down);
        dialog.presses(Qt::Key_Down);
        dialog.presses(Qt::Key_Return);
        EXPECT_EQ(dialog.edit.text(), "lat > 4");
        dialog.presses(Qt::Key_Return);
    });
    EXPECT_EQ(database.config["expression_history"].toStringList(), (QStringList{"lat > 4", "lon > 9"}))
        << "none twice";
}

TEST_F(ExpressionDialog, isATextDialogOfTheSizeItShouldHave)
{
    User user;
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        EXPECT_EQ(dialog.inputMode(), QInputDialog::TextInput);
        EXPECT_EQ(dialog.labelText(), "Subset expression:");
        QInputDialog plain;
        plain.setLabelText("Subset expression:");
        plain.resize(500, 100);
        plain.show();
        EXPECT_EQ(dialog.size(), plain.size());
        EXPECT_EQ(dialog.findChild<QAction *>("expressionHistory"), nullptr) << "there is none yet";
        dialog.setTextValue("lat > 0");
        dialog.accept();
    });
    EXPECT_EQ(window.getExpression("Subset expression"), "lat > 0");
}

TEST_F(ExpressionDialog, knowsBothSidesOfAThetaJoin)
{
    User user;
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        Dialog seen(dialog);
        seen.types("s");
        EXPECT_TRUE(seen.proposed().contains("site.sta")) << seen.proposed().join(" ").toStdString();
        EXPECT_TRUE(seen.proposed().contains("arrival.sta")) << "both have one";
        EXPECT_TRUE(seen.proposed().contains("staname")) << "only one has it";
        seen.startsAnew();
        seen.types("site.sta == arrival.sta && ar");
        EXPECT_TRUE(seen.proposed().contains("arid"));
        EXPECT_TRUE(seen.proposed().contains("arrival.time")) << "names of tables count, too";
        seen.types("id > 0");
        QTest::qWait(500);
        EXPECT_EQ(seen.told(), "");
        seen.presses(Qt::Key_Return);
    });
    QAction action;
    action.setData("arrival");
    window.showThetaJoin(&action);
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(window.getCurrentTableModel()->rowCount(), 1);
}

TEST_F(ExpressionDialog, leavesFailuresToTheCommand)
{
    User user;
    user.types("lat > 'x'");
    const int tabs = views().count();
    window.showSubset();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().contains("dbsubset")) << boxes.texts().first().toStdString();
    EXPECT_EQ(views().count(), tabs);
    EXPECT_EQ(window.getCurrentTableModel()->getTableName(), "site");
}

} // namespace
