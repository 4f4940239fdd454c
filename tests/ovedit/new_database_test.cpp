#include "new_database_dialog.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include <orvanedatabasemodel.h>
#include <orvanerowview.h>

#include "running_program.h"
#include "support/user.h"

namespace {

class NewDatabase : public RunningProgram
{
protected:
    NewDatabase() { settings.setLastFolder(folderOfFiles()); }

    QString folderOfFiles() const { return QString::fromStdString(files.folder()); }
    QString placeOf(const QString &name) const { return folderOfFiles() + "/" + name; }

    template <class Widget>
    static Widget &part(QDialog &dialog, const char *name)
    {
        auto *found = dialog.findChild<Widget *>(name);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no ") + name);
        }
        return *found;
    }

    static QPushButton &create(QDialog &dialog)
    {
        for (QPushButton *button : dialog.findChildren<QPushButton *>()) {
            if (button->text().remove('&') == "Create") {
                return *button;
            }
        }
        throw std::runtime_error("no button to create");
    }

    static void fill(QDialog &dialog, const QString &name, const QString &schema)
    {
        part<QLineEdit>(dialog, "newName").setText(name);
        auto &schemas = part<QComboBox>(dialog, "newSchema");
        ASSERT_GE(schemas.findText(schema), 0) << schema.toStdString();
        schemas.setCurrentIndex(schemas.findText(schema));
    }

    static QString hindrance(QDialog &dialog) { return part<QLabel>(dialog, "newHindrance").text(); }

    static QStringList tables(QDialog &dialog)
    {
        QStringList names;
        auto &list = part<QTreeWidget>(dialog, "newTables");
        for (int i = 0; i < list.topLevelItemCount(); ++i) {
            names.append(list.topLevelItem(i)->text(0));
        }
        return names;
    }
};

TEST_F(NewDatabase, isMadeAndOpenedToBeWritten)
{
    MainWindow *start = program.showStartPage();
    User user;
    user.meets<NewDatabaseDialog>([&](NewDatabaseDialog &dialog) {
        fill(dialog, "mine", "small");
        EXPECT_EQ(tables(dialog).mid(0, 3), (QStringList{"site", "origin", "arrival"}));
        part<QLineEdit>(dialog, "newDescription").setText(QString::fromUtf8("What I \"found\": ä"));
        EXPECT_EQ(hindrance(dialog), "");
        create(dialog).click();
    });
    action(*start, "newDatabase").trigger();
    ASSERT_TRUE(start->hasDatabase());
    EXPECT_EQ(start->databaseFile(), placeOf("mine"));
    EXPECT_EQ(start->mode(), "r+");
    EXPECT_TRUE(boxes.texts().isEmpty());
    const std::string text = TemporaryDatabase::readFile(placeOf("mine").toStdString());
    EXPECT_NE(text.find("schema: \"small\""), std::string::npos) << text;
    EXPECT_NE(text.find("What I \\\"found\\\": ä"), std::string::npos) << text;
    // And its tables can be filled.
    OrvaneTableModel *site = start->view()->model()->getTableModel("site");
    ASSERT_NE(site, nullptr);
    EXPECT_EQ(site->rowCount(), 0);
    start->view()->createNewTable("site");
    settle();
    EXPECT_EQ(start->view()->getFocusTableName(), "site");
}

TEST_F(NewDatabase, saysWhatIsMissing)
{
    NewDatabaseDialog dialog(settings, nullptr);
    EXPECT_EQ(hindrance(dialog), "Give the database a name.");
    EXPECT_FALSE(create(dialog).isEnabled());
    fill(dialog, "a/b", "small");
    EXPECT_EQ(hindrance(dialog), "A name has no slash in it; the folder stands below.");
    fill(dialog, "quakes", "small");
    EXPECT_EQ(hindrance(dialog), "There is a file of that name already.");
    part<QLineEdit>(dialog, "newFolder").setText(placeOf("nowhere"));
    EXPECT_EQ(hindrance(dialog), "There is no such folder.");
    EXPECT_FALSE(create(dialog).isEnabled());
    part<QLineEdit>(dialog, "newFolder").setText(folderOfFiles());
    fill(dialog, "other", "small");
    EXPECT_EQ(hindrance(dialog), "");
    EXPECT_TRUE(create(dialog).isEnabled());
}

TEST_F(NewDatabase, listsSchemasOfItsFolderAndTheInstalledOnes)
{
    files.writeFile("notes.yaml", "just: text\n");
    files.writeFile("broken.yaml", "name: broken\nrelations: 3\n");
    NewDatabaseDialog dialog(settings, nullptr);
    auto &schemas = part<QComboBox>(dialog, "newSchema");
    EXPECT_GE(schemas.findText("small"), 0);
    EXPECT_GE(schemas.findText("css3.0"), 0);
    EXPECT_EQ(schemas.findText("notes"), -1);
    EXPECT_EQ(schemas.findText("broken"), -1);
    QTemporaryDir elsewhere;
    part<QLineEdit>(dialog, "newFolder").setText(elsewhere.path());
    emit part<QLineEdit>(dialog, "newFolder").editingFinished();
    EXPECT_EQ(schemas.findText("small"), -1);
    EXPECT_GE(schemas.findText("css3.0"), 0);
}

TEST_F(NewDatabase, thatCameInBetweenStaysAsItIs)
{
    NewDatabaseDialog dialog(settings, nullptr);
    fill(dialog, "late", "small");
    files.writeFile("late", "not ours");
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(hindrance(dialog), "There is a file of that name already.");
    EXPECT_EQ(TemporaryDatabase::readFile(placeOf("late").toStdString()), "not ours");
}

} // namespace
