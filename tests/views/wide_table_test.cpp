// A table with many more fields than a screen is wide.
#include <orvanetableview.h>

#include <algorithm>

#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>

#include <gtest/gtest.h>

#include <qlistchooserdialog.h>

#include "database_window.h"
#include "support/user.h"

namespace {

constexpr int fieldCount = 300;

std::string fieldName(int number)
{
    return "f" + std::to_string(number);
}

std::string wideSchema()
{
    std::string attributes;
    std::string fields;
    for (int number = 0; number < fieldCount; ++number) {
        attributes += "  " + fieldName(number) +
                      ": {type: integer, width: 8, format: \"%8d\", null: \"-1\", description: a number}\n";
        fields += fieldName(number) + ", ";
    }
    attributes += "  lddate: {type: time, width: 17, format: \"%17.5f\", null: \"-9999999999.99900\", "
                  "description: load date}\n";
    return "name: wide\ndescription: many fields\ndetail: none\ntimestamp: lddate\nattributes:\n" +
           attributes + "relations:\n  wide:\n    fields: [" + fields +
           "lddate]\n    primary: [f0]\n    description: wide\n    detail: none\n";
}

class WideTable : public testing::Test
{
protected:
    WideTable()
    {
        for (int row = 0; row < 3; ++row) {
            rows.emplace_back();
            for (int number = 0; number < fieldCount; ++number) {
                rows.back().push_back(std::to_string(1000 * row + number));
            }
        }
        files.addTable("wide", rows);
        model = std::make_unique<OrvaneDatabaseModel>(config, QString::fromStdString(files.path()), "r");
        window.resize(900, 400);
        window.setModel(model.get());
        window.show();
        settle();
        for (int number = 0; number < fieldCount; ++number) {
            names.append(QString::fromStdString(fieldName(number)));
        }
    }

    OrvaneTableView &view() { return *window.getCurrentTableView(); }

    TemporaryDatabase files{"wide", wideSchema()};
    std::vector<TemporaryDatabase::Row> rows;
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> model;
    OrvaneDatabaseView window{config};
    QList<QString> names;
};

TEST_F(WideTable, showsAllFieldsThatHoldValues)
{
    EXPECT_EQ(view().getFieldNamesVisible(), names);
}

TEST_F(WideTable, takesAnyOrderOfItsFields)
{
    std::reverse(names.begin(), names.end());
    view().setFieldNamesVisible(names);
    EXPECT_EQ(view().getFieldNamesVisible(), names);
    std::rotate(names.begin(), names.begin() + 101, names.end());
    names.removeAt(7);
    view().setFieldNamesVisible(names);
    EXPECT_EQ(view().getFieldNamesVisible(), names);
    EXPECT_TRUE(view().horizontalHeader()->stretchLastSection());
}

TEST_F(WideTable, canBeArrangedAndSortedFarOutOfSight)
{
    User user;
    user.meets<QListChooserDialog>([](QListChooserDialog &dialog) {
        auto *chosen = dialog.findChild<QListWidget *>("chosen");
        EXPECT_EQ(chosen->count(), fieldCount);
        QTest::keyClick(chosen, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(chosen, Qt::Key_Delete);
        EXPECT_EQ(chosen->count(), 0);
        auto *offered = dialog.findChild<QListWidget *>("fields");
        QTest::keyClick(offered, Qt::Key_End);
        QTest::keyClick(offered, Qt::Key_Up, Qt::ShiftModifier);
        QTest::keyClick(offered, Qt::Key_Up, Qt::ShiftModifier);
        QTest::keyClick(offered, Qt::Key_Return);
        QTest::keyClick(chosen, Qt::Key_Return);
    });
    window.arrange();
    EXPECT_EQ(view().getFieldNamesVisible(), (QList<QString>{"f298", "f299", "lddate"}));
    view().sortByColumn(columnNamed(*view().model(), "f298"), Qt::DescendingOrder);
    EXPECT_EQ(shownValues(*view().model(), "f0"), (QStringList{"2000", "1000", "0"}));
}

} // namespace
