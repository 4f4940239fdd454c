// The tab of the event map.
#include <orvanedatabaseview.h>

#include <gtest/gtest.h>

#include <orvane/plot.h>

#include "database_window.h"
#include "support/message_boxes.h"

namespace {

class EventMapTab : public DatabaseWindow
{
protected:
    void openWithEvents()
    {
        database.files.addTable("origin", {{"10.0000", "20.0000", "5.0000", "100.00000", "1", "1", "4.50"}});
        window.setModel(&database.open());
    }
};

TEST_F(EventMapTab, ShowsTheEventsOfTheDatabase)
{
    openWithEvents();
    window.mapCurrent();
    ASSERT_EQ(products().count(), 1);
    EXPECT_EQ(products().tabText(0), "Events Map");
    EXPECT_EQ(window.getCurrentStackIndex(), 2);
    auto *map = products().widget(0)->findChild<OvEventMap *>();
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(products().widget(0)->parent()->parent(), &products());
}

TEST_F(EventMapTab, IsShownAgainOrRefusedWhileThereIsOne)
{
    openWithEvents();
    window.mapCurrent();
    window.showStackItem(0);
    {
        const MessageBoxes boxes;
        window.mapCurrent();
        EXPECT_EQ(boxes.texts(), QStringList());
    }
    EXPECT_EQ(window.getCurrentStackIndex(), 2);
    const MessageBoxes boxes;
    window.mapCurrent();
    EXPECT_EQ(boxes.texts(), QStringList("ovedit currently supports only one map at a time"));
    EXPECT_EQ(products().count(), 1);
    window.closeProductsTab(0);
    EXPECT_EQ(products().count(), 0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
    window.mapCurrent();
    EXPECT_EQ(products().count(), 1);
}

TEST_F(EventMapTab, NeedsATableOfOrigins)
{
    window.setModel(&database.open());
    const MessageBoxes boxes;
    window.mapCurrent();
    EXPECT_EQ(boxes.texts(), QStringList("No 'origin' table found in database '" +
                                         database.model->getDatabaseName() + "' -- not making an event map"));
    EXPECT_EQ(products().count(), 0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
}

TEST(EventMapTabOfAnotherSchema, IsNotMade)
{
    TemporaryDatabase files("other",
                            "name: other\nattributes: {a: {type: integer, width: 8, format: \"%8d\", null: "
                            "\"-1\"}}\nrelations: {t: {fields: [a]}}\n");
    files.addTable("t", {{"1"}});
    OvConfig config;
    OrvaneDatabaseModel model(config, QString::fromStdString(files.path()), "r");
    OrvaneDatabaseView window(config);
    window.setModel(&model);
    const MessageBoxes boxes;
    window.mapCurrent();
    EXPECT_EQ(boxes.texts(), QStringList("Failed to lookup 'origin' table in database '" +
                                         model.getDatabaseName() + "' -- not making an event map"));
}

} // namespace
