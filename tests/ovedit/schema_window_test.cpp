#include "schema_window.h"

#include <QLineEdit>
#include <QTextBrowser>
#include <QTreeWidget>

#include "running_program.h"

namespace {

class SchemaDocumentation : public RunningProgram
{
protected:
    SchemaDocumentation()
    {
        MainWindow &owner = opened();
        owner.showSchema();
        schema = owner.findChild<SchemaWindow *>();
        tree = schema->findChild<QTreeWidget *>("schemaTree");
        text = schema->findChild<QTextBrowser *>("schemaText");
    }

    QTreeWidgetItem *item(const QString &table, const QString &field = QString())
    {
        for (QTreeWidgetItem *found :
             tree->findItems(field.isEmpty() ? table : field, Qt::MatchExactly | Qt::MatchRecursive)) {
            if (field.isEmpty() ? found->childCount() > 0 : found->parent()->text(0) == table) {
                return found;
            }
        }
        throw std::runtime_error("no item " + table.toStdString());
    }

    SchemaWindow *schema;
    QTreeWidget *tree;
    QTextBrowser *text;
};

TEST_F(SchemaDocumentation, hasEveryTableAndFieldOfTheSchema)
{
    QTreeWidgetItem *root = tree->topLevelItem(0);
    QStringList tables;
    for (int row = 0; row < root->childCount(); ++row) {
        tables.append(root->child(row)->text(0));
    }
    EXPECT_EQ(tables, (QStringList{"site", "origin", "arrival", "assoc", "event", "remark", "kinds"}));
    EXPECT_EQ(root->text(1), "a small schema");
    EXPECT_EQ(item("origin")->childCount(), 10);
    EXPECT_EQ(item("origin")->text(1), "locations of events");
    EXPECT_EQ(item("site", "lat")->text(1), "latitude");
}

TEST_F(SchemaDocumentation, beginsWithTheTableThatIsShown)
{
    EXPECT_EQ(tree->currentItem(), item("site"));
    EXPECT_TRUE(text->toPlainText().contains("Where stations stand."));
}

TEST_F(SchemaDocumentation, describesWhatIsChosen)
{
    tree->setCurrentItem(item("origin", "lat"));
    EXPECT_TRUE(text->toPlainText().contains("Geographic latitude, north positive."));
    tree->setCurrentItem(tree->topLevelItem(0));
    EXPECT_TRUE(text->toPlainText().contains("every type, every kind of key."));
    EXPECT_TRUE(text->toPlainText().contains("Database name"));
}

TEST_F(SchemaDocumentation, marksTheTablesThatAreInTheDatabase)
{
    EXPECT_TRUE(item("site")->font(0).bold());
    EXPECT_FALSE(item("origin")->font(0).bold());
}

TEST_F(SchemaDocumentation, showsWhatIsSearchedFor)
{
    auto *filter = schema->findChild<QLineEdit *>("schemaFilter");
    filter->setText("magnitude");
    EXPECT_FALSE(item("origin")->isHidden());
    EXPECT_TRUE(item("origin")->isExpanded());
    EXPECT_FALSE(item("origin", "mb")->isHidden());
    EXPECT_TRUE(item("origin", "lat")->isHidden());
    EXPECT_TRUE(item("site")->isHidden());
    filter->setText("site");
    EXPECT_FALSE(item("site")->isHidden());
    EXPECT_FALSE(item("site", "lat")->isHidden()) << "the table itself matches";
    filter->clear();
    EXPECT_FALSE(item("origin", "lat")->isHidden());
    EXPECT_FALSE(item("kinds")->isHidden());
}

} // namespace
