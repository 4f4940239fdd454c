// The headers of the table view look as the toolkit's do, and cost the same however many rows are selected.
#include <orvanetableview.h>

#include <array>

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QHoverEvent>
#include <QImage>
#include <QItemSelectionModel>
#include <QScrollBar>
#include <QStyleFactory>
#include <QTextDocument>
#include <QToolTip>
#include <QtTest>

#include <gtest/gtest.h>

#include "shown_database.h"

namespace {

ShownDatabase::Rows numberedRows(int count)
{
    ShownDatabase::Rows rows;
    for (int row = 0; row < count; ++row) {
        rows.push_back({"S" + std::to_string(row), "2008001", "-1", "1.5000", "2.5000", "3.0000", "name"});
    }
    return rows;
}

// Ours and the toolkit's table view, side by side over one model and one selection.
class TableHeaders : public testing::Test
{
protected:
    TableHeaders()
    {
        database.files.addTable("site", numberedRows(40));
        database.setFontPoints(10);
        ours = new OrvaneTableView(database.config);
        ours->setParent(&window);
        theirs = new QTableView(&window);
        ours->setModel(&database.table("site"));
        theirs->setFont(ours->font());
        theirs->setModel(&database.table("site"));
        theirs->setSelectionModel(ours->selectionModel());
        ours->setGeometry(0, 0, 500, 300);
        theirs->setGeometry(500, 0, 500, 300);
        window.resize(1000, 300);
        window.show();
        QHeaderView &rows = *theirs->verticalHeader();
        rows.setSectionResizeMode(QHeaderView::Fixed);
        rows.setMinimumSectionSize(ours->verticalHeader()->defaultSectionSize());
        rows.setDefaultSectionSize(ours->verticalHeader()->defaultSectionSize());
        theirs->setSortingEnabled(true);
        settle();
        // As ours, hidden columns included.
        theirs->horizontalHeader()->restoreState(ours->horizontalHeader()->saveState());
        theirs->verticalHeader()->setFixedWidth(ours->verticalHeader()->width());
        settle();
    }

    std::array<QTableView *, 2> both() { return {ours, theirs}; }

    static QImage picture(QWidget &widget)
    {
        QImage image(widget.size(), QImage::Format_RGB32);
        image.fill(Qt::magenta);
        widget.render(&image);
        return image;
    }

    void expectSame(const char *what)
    {
        settle();
        if (!qEnvironmentVariableIsEmpty("ORVANE_KEEP_PICTURES")) {
            picture(window).save(
                QString("%1/headers %2.png").arg(qEnvironmentVariable("ORVANE_KEEP_PICTURES"), what));
        }
        EXPECT_EQ(picture(*ours->horizontalHeader()->viewport()),
                  picture(*theirs->horizontalHeader()->viewport()))
            << what << ", columns";
        EXPECT_EQ(picture(*ours->verticalHeader()->viewport()),
                  picture(*theirs->verticalHeader()->viewport()))
            << what << ", rows";
    }

    void sendToBoth(QEvent::Type type, Qt::Orientation orientation, QPoint place)
    {
        for (QTableView *view : both()) {
            QHeaderView &header =
                orientation == Qt::Horizontal ? *view->horizontalHeader() : *view->verticalHeader();
            if (type == QEvent::HoverMove || type == QEvent::HoverLeave) {
                QHoverEvent event(type, place, QPoint(-1, -1));
                QApplication::sendEvent(&header, &event);
            } else {
                QMouseEvent event(type, place, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
                QApplication::sendEvent(header.viewport(), &event);
            }
        }
    }

    ShownDatabase database;
    QWidget window;
    OrvaneTableView *ours;
    QTableView *theirs;
};

TEST_F(TableHeaders, lookAsTheToolkitsWithAnySelection)
{
    expectSame("nothing selected");
    ours->selectRow(3);
    expectSame("a row");
    ours->selectColumn(2);
    expectSame("a column");
    ours->selectAll();
    expectSame("all");
    ours->clearSelection();
    const OrvaneTableModel &model = database.table("site");
    ours->selectionModel()->select(QItemSelection(model.index(2, 2), model.index(6, 3)),
                                   QItemSelectionModel::Select);
    expectSame("cells");
    ours->selectionModel()->select(QItemSelection(model.index(0, 4), model.index(20, 4)),
                                   QItemSelectionModel::Select);
    ours->selectionModel()->select(QItemSelection(model.index(21, 4), model.index(39, 5)),
                                   QItemSelectionModel::Select);
    expectSame("a column in parts");
    ours->selectionModel()->select(model.index(30, 4), QItemSelectionModel::Deselect);
    expectSame("all but one of a column");
}

TEST_F(TableHeaders, lookAsTheToolkitsInEveryStyle)
{
    for (const QString &name : QStyleFactory::keys()) {
        const std::unique_ptr<QStyle> style(QStyleFactory::create(name));
        for (QTableView *view : both()) {
            view->horizontalHeader()->setStyle(style.get());
            view->verticalHeader()->setStyle(style.get());
        }
        ours->selectRow(4);
        expectSame(qPrintable(name));
        for (QTableView *view : both()) {
            view->horizontalHeader()->setStyle(nullptr);
            view->verticalHeader()->setStyle(nullptr);
        }
    }
}

TEST_F(TableHeaders, lookAsTheToolkitsWhenSortedMovedNarrowMirroredAndInactive)
{
    for (QTableView *view : both()) {
        view->horizontalHeader()->setSortIndicator(2, Qt::DescendingOrder);
    }
    expectSame("sorted");
    for (QTableView *view : both()) {
        view->horizontalHeader()->moveSection(2, 4);
        view->setColumnWidth(4, 60);
        view->horizontalHeader()->setTextElideMode(Qt::ElideRight);
    }
    ours->selectColumn(2);
    expectSame("moved");
    for (QTableView *view : both()) {
        view->setLayoutDirection(Qt::RightToLeft);
    }
    expectSame("mirrored");
    for (QTableView *view : both()) {
        view->horizontalHeader()->setHighlightSections(false);
        view->verticalScrollBar()->setValue(11);
    }
    expectSame("not highlighted, scrolled");
    window.setEnabled(false);
    expectSame("disabled");
}

TEST_F(TableHeaders, lookAsTheToolkitsUnderTheMouse)
{
    for (QTableView *view : both()) {
        view->setStyleSheet("QHeaderView::section:hover { background: red; } "
                            "QHeaderView::section:pressed { background: blue; }");
    }
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        const QPoint place = orientation == Qt::Horizontal ? QPoint(70, 5) : QPoint(5, 70);
        const auto header = [&] {
            return picture(
                *(orientation == Qt::Horizontal ? ours->horizontalHeader() : ours->verticalHeader())
                     ->viewport());
        };
        const QImage before = header();
        sendToBoth(QEvent::HoverMove, orientation, place);
        expectSame("hovered");
        EXPECT_NE(header(), before);
        sendToBoth(QEvent::HoverLeave, orientation, QPoint(-1, -1));
        expectSame("left");
        ours->horizontalHeader()->setSectionsClickable(orientation == Qt::Vertical);
        theirs->horizontalHeader()->setSectionsClickable(orientation == Qt::Vertical);
        sendToBoth(QEvent::MouseButtonPress, orientation, place);
        expectSame("pressed");
        sendToBoth(QEvent::MouseButtonRelease, orientation, place);
        expectSame("released");
    }
}

TEST_F(TableHeaders, selectRowsAndColumnsWhereTheyAreClicked)
{
    const QHeaderView &rows = *ours->verticalHeader();
    QTest::mouseClick(rows.viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(4, rows.sectionViewportPosition(3) + rows.sectionSize(0) / 2));
    EXPECT_TRUE(ours->selectionModel()->isRowSelected(3, {}));
    EXPECT_EQ(ours->selectedRowCount(), 1);
    QTest::mouseClick(rows.viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      QPoint(4, rows.sectionViewportPosition(6) + rows.sectionSize(0) / 2));
    EXPECT_EQ(ours->selectedRowCount(), 4);
    QTest::mousePress(rows.viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(4, rows.sectionViewportPosition(1) + rows.sectionSize(0) / 2));
    QMouseEvent drag(QEvent::MouseMove, QPoint(4, rows.sectionViewportPosition(2) + rows.sectionSize(0) / 2),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(rows.viewport(), &drag);
    QTest::mouseRelease(rows.viewport(), Qt::LeftButton, Qt::NoModifier,
                        QPoint(4, rows.sectionViewportPosition(2) + rows.sectionSize(0) / 2));
    EXPECT_EQ(ours->selectedRowCount(), 2);
}

// Asked for its flags, a table counts.
class CountingModel : public OrvaneTableModel
{
public:
    using OrvaneTableModel::OrvaneTableModel;

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 900'000; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 6; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(QString::number(index.row())) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation, int role) const override
    {
        return role == Qt::DisplayRole    ? QVariant(QString::number(section))
               : role == Qt::SizeHintRole ? QVariant(QSize(80, 16))
                                          : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        ++flagsAsked;
        return OrvaneTableModel::flags(index);
    }

    mutable int flagsAsked = 0;
};

TEST_F(TableHeaders, doNotAskAboutEveryCellThatIsSelected)
{
    OrvaneDatabaseModel &opened = *database.model;
    CountingModel model(&opened, nullptr, database.config);
    ours->setModel(&model);
    for (int column = 1; column < 6; ++column) {
        ours->showColumn(column);
    }
    settle();
    model.flagsAsked = 0;
    ours->selectAll();
    picture(*ours);
    settle();
    EXPECT_EQ(ours->selectedRowCount(), 900'000);
    EXPECT_LT(model.flagsAsked, 1000);
    EXPECT_GT(model.flagsAsked, 0); // the cells in sight
    ours->setModel(&database.table("site"));
}

// The tooltip of many lines that is to be seen; null where there is none.
QWidget *longTip()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->inherits("LongTip")) {
            return widget;
        }
    }
    return nullptr;
}

TEST(LongTips, showRowsOfJoinsUntilTheMouseGoesAway)
{
    ShownDatabase database;
    database.files.addTable("assoc", {{"1", "7", "AAK", "P"}});
    database.files.addTable("origin", {{"10.0", "20.0", "5.0", "1517875000.0", "7", "3"}});
    database.setFontPoints(10);
    OrvaneTableModel *joined = &database.table("arrival");
    for (const char *other : {"assoc", "origin", "site"}) {
        joined = joined->joinTo(other, QString());
    }
    ASSERT_EQ(joined->rowCount(), 1);
    OrvaneTableView view(database.config);
    view.setModel(joined);
    view.resize(500, 300);
    view.show();
    settle();
    QWidget &rows = *view.verticalHeader()->viewport();
    const auto rest = [](QWidget &header) {
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), header.mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(&header, &event);
        settle();
    };
    const auto send = [](QWidget &to, QEvent::Type type) {
        QEvent event(type);
        QApplication::sendEvent(&to, &event);
        settle();
    };
    rest(rows);
    QPointer<QWidget> tip = longTip();
    ASSERT_NE(tip, nullptr);
    EXPECT_FALSE(QToolTip::isVisible());
    QTextDocument text;
    text.setHtml(joined->headerData(0, Qt::Vertical, Qt::ToolTipRole).toString());
    text.setDefaultFont(QToolTip::font());
    text.setDocumentMargin(0);
    EXPECT_GE(tip->width(), text.size().width());
    EXPECT_GE(tip->height(), text.size().height());
    const QImage shown = tip->grab().toImage();
    EXPECT_EQ(shown.pixelColor(shown.width() / 2, 3), QToolTip::palette().color(QPalette::ToolTipBase));
    bool isWritten = false;
    for (int x = 0; x < shown.width(); ++x) {
        isWritten = isWritten || shown.pixelColor(x, 12).lightness() < 100;
    }
    EXPECT_TRUE(isWritten);

    rest(rows);
    EXPECT_EQ(longTip(), tip) << "the same once more";
    send(*view.viewport(), QEvent::Leave);
    EXPECT_EQ(longTip(), tip) << "it is another's";
    send(rows, QEvent::Leave);
    EXPECT_EQ(longTip(), nullptr);
    EXPECT_TRUE(tip.isNull());

    rest(rows);
    EXPECT_NE(longTip(), nullptr);
    QTest::mouseClick(view.viewport(), Qt::LeftButton);
    settle();
    EXPECT_EQ(longTip(), nullptr);

    rest(*view.horizontalHeader()->viewport());
    EXPECT_EQ(longTip(), nullptr) << "a short one is the toolkit's";
    EXPECT_TRUE(QToolTip::isVisible());
    QToolTip::hideText();
    rest(rows);
    database.config.configure("show_tooltips", false);
    send(rows, QEvent::Leave);
    rest(rows);
    EXPECT_EQ(longTip(), nullptr);
}

} // namespace
