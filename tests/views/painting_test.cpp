// What the table view paints is what the toolkit's own view and delegate would paint in its place, pixel by
// pixel.
#include <orvanetableview.h>

#include <limits>
#include <malloc.h>
#include <memory>
#include <vector>

#include <QApplication>
#include <QFontDatabase>
#include <QHeaderView>
#include <QHoverEvent>
#include <QImage>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStyle>
#include <QStyleFactory>
#include <QStyledItemDelegate>

#include <gtest/gtest.h>

#include "shown_database.h"

namespace {

// A table view that paints as it does, or as the toolkit does.
class EitherWay : public OrvaneTableView
{
public:
    using OrvaneTableView::OrvaneTableView;

    bool byToolkit = false;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        if (byToolkit) {
            QTableView::paintEvent(event);
        } else {
            OrvaneTableView::paintEvent(event);
        }
    }
};

class Painting : public testing::Test
{
protected:
    Painting()
    {
        const char *const names[] = {"Ala Archa",
                                     "Kongsberg",
                                     "fi ffl -> != ===",
                                     "AVATAR To. Wa",
                                     "T\u00fcr\u010dianska \u2014 \u00c5",
                                     "gjpqy_|(@)[]",
                                     "-",
                                     "\u0634\u0645\u0627\u0644 12.5",
                                     "a much longer name of a station"};
        ShownDatabase::Rows rows;
        for (int row = 0; row < 60; ++row) {
            rows.push_back({row % 7 ? "S" + std::to_string(row) : "-", std::to_string(2008001 + row),
                            row % 3 ? "-1" : "2010001", std::to_string(row) + ".5000",
                            row % 5 ? "-" + std::to_string(row) + ".2500" : "-999.0000", "3.0000",
                            names[row % 9]});
        }
        database.files.addTable("site", rows);
        database.setFontPoints(10);
        database.config.configure("show_empty_columns", true);
        view = std::make_unique<EitherWay>(database.config);
        view->setModel(&database.table("site"));
        view->resize(900, 400);
        view->show();
        settle();
    }

    QImage picture(bool byToolkit, qreal ratio = 1, const QRegion &region = {})
    {
        view->byToolkit = byToolkit;
        QWidget &page = *view->viewport();
        QImage image(page.size() * ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::magenta);
        page.render(&image, QPoint(), region);
        view->byToolkit = false;
        return image;
    }

    void expectSame(const char *what, qreal ratio = 1, const QRegion &region = {})
    {
        settle();
        const QImage ours = picture(false, ratio, region);
        const QImage theirs = picture(true, ratio, region);
        if (ours == theirs) {
            return;
        }
        int different = 0;
        QRect where;
        for (int y = 0; y < ours.height(); ++y) {
            for (int x = 0; x < ours.width(); ++x) {
                if (ours.pixel(x, y) != theirs.pixel(x, y)) {
                    ++different;
                    where |= QRect(x, y, 1, 1);
                }
            }
        }
        ADD_FAILURE() << what << ": " << different << " pixels differ, from " << where.left() << ","
                      << where.top() << " to " << where.right() << "," << where.bottom();
        if (!qEnvironmentVariableIsEmpty("ORVANE_KEEP_PICTURES")) {
            ours.save(QString("%1/%2_ours.png").arg(qEnvironmentVariable("ORVANE_KEEP_PICTURES"), what));
            theirs.save(QString("%1/%2_theirs.png").arg(qEnvironmentVariable("ORVANE_KEEP_PICTURES"), what));
        }
    }

    void select(int row, int column, int toRow, int toColumn)
    {
        const OrvaneTableModel &model = database.table("site");
        view->selectionModel()->select(QItemSelection(model.index(row, column), model.index(toRow, toColumn)),
                                       QItemSelectionModel::Select);
    }

    void setFont(const QFont &font) { database.config.configure("font", font); }

    ShownDatabase database;
    std::unique_ptr<EitherWay> view;
};

TEST_F(Painting, isTheToolkitsInAPlainTable)
{
    ASSERT_GT(view->rowAt(200), 5);
    expectSame("plain");
    // And there is something to be seen.
    EXPECT_NE(picture(false).pixel(3, 3), picture(false).pixel(view->columnWidth(1) - 1, 3));
}

TEST_F(Painting, isTheToolkitsWithAnySelection)
{
    select(2, 2, 5, 4);
    expectSame("cells");
    view->selectColumn(3);
    expectSame("column");
    view->selectRow(4);
    expectSame("row");
    view->selectAll();
    expectSame("all");
}

TEST_F(Painting, isTheToolkitsInActiveAndInactiveWindows)
{
    select(1, 1, 6, 3);
    view->activateWindow();
    QApplication::setActiveWindow(view.get());
    view->setFocus();
    view->setCurrentIndex(database.table("site").index(3, 2));
    settle();
    ASSERT_TRUE(view->hasFocus());
    expectSame("focus");
    view->setCurrentIndex(database.table("site").index(7, 4));
    select(1, 1, 6, 3);
    expectSame("focus outside of the selection");
    view->clearFocus();
    expectSame("without focus");
    QApplication::setActiveWindow(nullptr);
    expectSame("inactive");
    view->setEnabled(false);
    expectSame("disabled");
}

TEST_F(Painting, isTheToolkitsWithAndWithoutLinesAndRowColours)
{
    for (const bool alternate : {true, false}) {
        database.config.configure("alternate_row_colors", alternate);
        for (const Qt::PenStyle style : {Qt::SolidLine, Qt::DotLine, Qt::NoPen}) {
            view->setShowGrid(style != Qt::NoPen);
            view->setGridStyle(style == Qt::NoPen ? Qt::SolidLine : style);
            expectSame("lines");
            view->selectRow(3);
            expectSame("lines with a selection");
            view->clearSelection();
        }
    }
}

TEST_F(Painting, isTheToolkitsInEveryStyleThereIs)
{
    const QStringList names = QStyleFactory::keys();
    ASSERT_FALSE(names.isEmpty());
    for (const QString &name : names) {
        const std::unique_ptr<QStyle> style(QStyleFactory::create(name));
        view->setStyle(style.get());
        select(2, 2, 5, 4);
        expectSame(qPrintable(name));
        view->setStyle(nullptr);
    }
}

TEST_F(Painting, isTheToolkitsWithStyleSheets)
{
    for (const char *sheet :
         {"QTableView { color: darkgreen; background: lightyellow; selection-background-color: orange; }",
          "QTableView::item { padding: 4px; border: 1px solid red; }",
          "QTableView::item:selected { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 red, "
          "stop:1 "
          "blue); color: yellow; }",
          "QTableView { gridline-color: red; alternate-background-color: cyan; }"}) {
        view->setStyleSheet(sheet);
        select(2, 2, 5, 4);
        expectSame(sheet);
        view->setStyleSheet(QString());
    }
}

TEST_F(Painting, isTheToolkitsWithAnyPalette)
{
    QPalette palette = view->palette();
    palette.setColor(QPalette::Base, QColor("black"));
    palette.setColor(QPalette::AlternateBase, QColor("#202020"));
    palette.setColor(QPalette::Text, QColor("lime"));
    palette.setColor(QPalette::Inactive, QPalette::Highlight, QColor("purple"));
    view->setPalette(palette);
    select(2, 2, 5, 4);
    expectSame("dark");
    palette.setColor(QPalette::Highlight, QColor(255, 0, 0, 100));
    palette.setBrush(QPalette::AlternateBase, QBrush(Qt::red, Qt::Dense4Pattern));
    view->setPalette(palette);
    expectSame("translucent and patterned");
}

TEST_F(Painting, isTheToolkitsInEveryFont)
{
    std::vector<QFont> fonts;
    for (const char *family : {"monospace", "sans", "serif", "Nimbus Sans Narrow", "Nimbus Mono PS"}) {
        for (const int points : {6, 10, 13, 20}) {
            fonts.emplace_back(family, points);
        }
    }
    fonts.emplace_back("monospace", 10).setBold(true);
    fonts.emplace_back("monospace", 10).setItalic(true);
    fonts.emplace_back("monospace", 10).setUnderline(true);
    fonts.emplace_back("monospace", 10).setStrikeOut(true);
    fonts.emplace_back("monospace", 10).setLetterSpacing(QFont::AbsoluteSpacing, 1.5);
    fonts.emplace_back("monospace", 10).setCapitalization(QFont::SmallCaps);
    fonts.emplace_back("sans", 10).setKerning(false);
    for (const QFont &font : fonts) {
        setFont(font);
        view->selectRow(2);
        expectSame(qPrintable(font.toString()));
    }
}

TEST_F(Painting, isTheToolkitsInNarrowColumns)
{
    for (const Qt::TextElideMode mode : {Qt::ElideRight, Qt::ElideLeft, Qt::ElideMiddle, Qt::ElideNone}) {
        view->setTextElideMode(mode);
        for (const char *family : {"monospace", "sans"}) {
            setFont(QFont(family, 10));
            view->horizontalHeader()->setMinimumSectionSize(4);
            for (int column = 1; column < view->model()->columnCount(); ++column) {
                view->setColumnWidth(column, 12 + 9 * column);
            }
            expectSame("narrow");
        }
    }
    view->setColumnWidth(2, 5);
    view->setColumnWidth(3, 8);
    expectSame("narrower than the margins");
    view->setColumnWidth(3, 1000);
    expectSame("wider than the page");
}

TEST_F(Painting, isTheToolkitsFromRightToLeft)
{
    view->setLayoutDirection(Qt::RightToLeft);
    expectSame("right to left");
    view->selectColumn(2);
    expectSame("right to left, selected");
    view->resize(350, 300);
    settle();
    view->horizontalScrollBar()->setValue(2);
    expectSame("right to left, scrolled");
}

TEST_F(Painting, isTheToolkitsAtAnyPlaceOfTheTable)
{
    view->resize(300, 200);
    settle();
    for (const int row : {1, 2, 7, 40, 1000}) {
        view->verticalScrollBar()->setValue(row);
        view->horizontalScrollBar()->setValue(row % 4);
        expectSame("scrolled");
    }
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->verticalScrollBar()->setValue(37);
    view->horizontalScrollBar()->setValue(41);
    expectSame("scrolled by pixels");
}

TEST_F(Painting, isTheToolkitsWhereTheTableEnds)
{
    view->resize(2000, 2000);
    expectSame("larger than the table");
    view->horizontalHeader()->setStretchLastSection(false);
    expectSame("larger than the table, not stretched");
    view->horizontalHeader()->hide();
    view->verticalHeader()->hide();
    expectSame("without headers");
    view->setLayoutDirection(Qt::RightToLeft);
    expectSame("without headers, right to left");
}

TEST_F(Painting, isTheToolkitsWithMovedAndHiddenColumnsAndRows)
{
    view->horizontalHeader()->moveSection(2, 5);
    view->hideColumn(3);
    expectSame("moved and hidden columns");
    view->verticalHeader()->moveSection(2, 5);
    expectSame("moved rows");
    view->hideRow(4);
    expectSame("hidden rows");
}

TEST_F(Painting, isTheToolkitsWithEverySettingOfCells)
{
    for (const char *key :
         {"show_raw_nulls", "show_nulls_background_colored", "show_blanks_background_colored"}) {
        database.config.configure(key, !database.config[key].toBool());
        expectSame(key);
    }
    database.config.configure("show_nulls_background_colored", true);
    database.config.configure("background_null_color", "#80ff0000");
    select(1, 1, 9, 5);
    expectSame("translucent nulls");
}

TEST_F(Painting, dimsTheGroundsOfCellsInADarkPalette)
{
    database.config.configure("alternate_row_colors", false);
    const int column = columnNamed(database.table("site"), "lon");
    const auto ground = [&](int row) { // beside the text
        const QRect cell = view->visualRect(database.table("site").index(row, column));
        return picture(false).pixelColor(cell.right() - 3, cell.top() + 1);
    };
    const QPalette light = view->palette();
    settle();
    EXPECT_EQ(ground(5), QColor("light gray")) << "a null";
    EXPECT_EQ(ground(6), light.color(QPalette::Base));

    QPalette dark(QColor(50, 50, 50), QColor(30, 30, 30));
    view->setPalette(dark);
    database.config.configure("show_raw_nulls", true);
    select(3, 3, 8, 4);
    expectSame("dark");
    const QColor base = dark.color(QPalette::Base), text = dark.color(QPalette::Text);
    EXPECT_EQ(ground(6), base);
    EXPECT_GT(ground(5).lightness(), base.lightness() + 20) << "still told apart";
    EXPECT_GT(text.lightness() - ground(5).lightness(), 120) << "and its text is read";

    database.config.configure("background_null_color", "light yellow");
    settle();
    EXPECT_GT(ground(5).red(), ground(5).blue() + 20) << "in its hue";
    EXPECT_GT(text.lightness() - ground(5).lightness(), 120);
    database.config.configure("background_null_color", "#102030");
    settle();
    EXPECT_EQ(ground(5), QColor("#102030")) << "chosen for a dark palette";
    view->setPalette(light);
    database.config.configure("background_null_color", "light gray");
    settle();
    EXPECT_EQ(ground(5), QColor("light gray"));
}

TEST_F(Painting, isTheToolkitsInParts)
{
    expectSame("a corner", 1, QRegion(0, 0, 33, 33));
    expectSame("inside", 1, QRegion(77, 51, 300, 101));
    expectSame("two places", 1, QRegion(5, 5, 50, 20) + QRegion(300, 200, 120, 90));
    expectSame("a line", 1, QRegion(0, 100, 900, 1));
}

TEST_F(Painting, isTheToolkitsOnFineScreens)
{
    select(2, 2, 5, 4);
    expectSame("twice as fine", 2);
    expectSame("half as fine again", 1.5);
}

TEST_F(Painting, isTheToolkitsUnderTheMouse)
{
    const std::unique_ptr<QStyle> windows(QStyleFactory::create("windows"));
    for (QStyle *style : {windows.get(), QApplication::style()}) {
        view->setStyle(style);
        view->setStyleSheet("QTableView::item:hover { background: red; }");
        view->viewport()->setAttribute(Qt::WA_Hover);
        const QPoint place = view->visualRect(database.table("site").index(3, 2)).center();
        QHoverEvent over(QEvent::HoverMove, place, QPoint());
        QApplication::sendEvent(view->viewport(), &over);
        expectSame("hovered");
        const QImage hovered = picture(false);
        QHoverEvent away(QEvent::HoverLeave, QPoint(-1, -1), place);
        QApplication::sendEvent(view->viewport(), &away);
        expectSame("no longer hovered");
        EXPECT_NE(picture(false), hovered);
        view->setStyleSheet(QString());
    }
    view->setStyle(nullptr);
}

class RedDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        painter->fillRect(option.rect, Qt::red);
    }
};

TEST_F(Painting, leavesCellsToOtherDelegates)
{
    RedDelegate red;
    view->setItemDelegateForColumn(2, &red);
    expectSame("a column");
    EXPECT_EQ(picture(false).pixelColor(view->visualRect(database.table("site").index(3, 2)).center()),
              QColor(Qt::red));
    view->setItemDelegateForColumn(2, nullptr);
    view->setItemDelegate(&red);
    expectSame("all");
    view->setItemDelegate(nullptr);
}

// Bytes of the heap in use.
double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

TEST_F(Painting, keepsNothingOfThePagesThatWere)
{
    view->resize(500, 200);
    view->setCurrentIndex(database.table("site").index(0, 1));
    const auto page = [this](int key) {
        for (int press = 0; press < 10; ++press) {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(view.get(), &event);
            picture(false);
            settle();
        }
    };
    const auto throughTheTable = [&page] {
        page(Qt::Key_PageDown);
        page(Qt::Key_PageUp);
    };
    throughTheTable(); // glyphs and looks are learned
    throughTheTable();
    // What is kept is kept of every page. A round of 400 may make a bounded store of the toolkit's larger.
    double least = std::numeric_limits<double>::max();
    for (int round = 0; round < 4; ++round) {
        const double before = heapInUse();
        for (int i = 0; i < 20; ++i) {
            throughTheTable();
        }
        least = std::min(least, heapInUse() - before);
    }
    EXPECT_LT(least, 400);
}

// How many cells the delegate's own way through the style is taken for.
class CountingStyle : public QProxyStyle
{
public:
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        items += element == CE_ItemViewItem;
        QProxyStyle::drawControl(element, option, painter, widget);
    }

    mutable int items = 0;
};

TEST_F(Painting, asksTheStyleForSamplesAndNotForEveryCell)
{
    CountingStyle style;
    view->setStyle(&style);
    const auto itemsOf = [&](bool byToolkit) {
        settle();
        picture(byToolkit); // samples included
        style.items = 0;
        picture(byToolkit);
        return style.items;
    };
    for (const QFont &font :
         {QFont("monospace", 10), QFont("sans", 10), QFontDatabase::systemFont(QFontDatabase::FixedFont)}) {
        SCOPED_TRACE(font.toString().toStdString());
        setFont(font);
        EXPECT_LE(itemsOf(false), 8)
            << "inactive"; // cells of several lines, and with signs that lines may end at
        QApplication::setActiveWindow(view.get());
        EXPECT_LE(itemsOf(false), 8) << "active";
        view->selectAll();
        EXPECT_LE(itemsOf(false), 8) << "selected";
        view->clearSelection();
        QApplication::setActiveWindow(nullptr);
    }
    EXPECT_GT(itemsOf(true), 100); // or nothing would have been counted
    view->setStyle(nullptr);
}

} // namespace
