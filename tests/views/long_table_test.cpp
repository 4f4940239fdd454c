// Tables with more rows than the header has sections for. A short table is made to count as one, and must
// look and work as it does otherwise; then come hundreds of millions of rows.
#include <orvanetableview.h>

#include <array>
#include <limits>
#include <random>

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QImage>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QtTest>

#include <gtest/gtest.h>

#include "shown_database.h"

namespace {

QImage picture(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    widget.render(&image);
    return image;
}

// The same table twice, once as a short and once as a long one.
class ShortAndLong : public testing::Test
{
protected:
    ShortAndLong()
    {
        ShownDatabase::Rows rows;
        for (int row = 0; row < 500; ++row) {
            rows.push_back({"S" + std::to_string(row), "2008001", "2010001",
                            std::to_string(row % 90) + ".0000", "2.0000", "3.0000",
                            row < 250 ? "name" : "a much longer name"});
        }
        database.files.addTable("site", rows);
        database.setFontPoints(10);
        model = &database.table("site");
        for (OrvaneTableView *view : both()) {
            view->setParent(&window);
            view->setModel(model);
        }
        shorter.setGeometry(0, 0, 400, 230);
        longer.setGeometry(400, 0, 400, 230);
        longer.verticalHeader()->setProperty("mostSections", 100);
        window.resize(800, 230);
        window.show();
        window.activateWindow();
        QApplication::setActiveWindow(&window);
        settle();
        shorter.setFocus(); // which makes the first cell the current one
        longer.setFocus();
    }

    std::array<OrvaneTableView *, 2> both() { return {&shorter, &longer}; }

    static std::vector<std::pair<int, int>> selectedIn(const OrvaneTableView &view)
    {
        std::vector<std::pair<int, int>> cells;
        for (const QModelIndex &cell : view.selectionModel()->selectedIndexes()) {
            cells.emplace_back(cell.row(), cell.column());
        }
        std::sort(cells.begin(), cells.end());
        return cells;
    }

    void expectSame(const std::string &what)
    {
        SCOPED_TRACE(what);
        settle();
        EXPECT_EQ(longer.verticalScrollBar()->value(), shorter.verticalScrollBar()->value());
        EXPECT_EQ(longer.verticalScrollBar()->maximum(), shorter.verticalScrollBar()->maximum());
        EXPECT_EQ(longer.verticalScrollBar()->pageStep(), shorter.verticalScrollBar()->pageStep());
        EXPECT_EQ(longer.horizontalScrollBar()->value(), shorter.horizontalScrollBar()->value());
        EXPECT_EQ(longer.horizontalScrollBar()->maximum(), shorter.horizontalScrollBar()->maximum());
        EXPECT_EQ(longer.viewport()->geometry(), shorter.viewport()->geometry());
        EXPECT_EQ(longer.currentIndex(), shorter.currentIndex());
        EXPECT_EQ(selectedIn(longer), selectedIn(shorter));
        for (int y = -40; y < 300; y += 13) {
            EXPECT_EQ(longer.rowAt(y), shorter.rowAt(y)) << y;
            EXPECT_EQ(longer.indexAt({70, y}), shorter.indexAt({70, y})) << y;
        }
        for (const int row : {0, 1, 17, 250, 499}) {
            EXPECT_EQ(longer.rowViewportPosition(row), shorter.rowViewportPosition(row)) << row;
            EXPECT_EQ(longer.rowHeight(row), shorter.rowHeight(row)) << row;
            EXPECT_EQ(longer.visualRect(model->index(row, 2)), shorter.visualRect(model->index(row, 2)));
        }
        // One after the other, so that both have the focus.
        shorter.setFocus();
        settle();
        const QImage asShort = picture(shorter);
        longer.setFocus();
        settle();
        const QImage asLong = picture(longer);
        EXPECT_TRUE(asShort == asLong) << "they look different";
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        for (OrvaneTableView *view : both()) {
            QKeyEvent event(QEvent::KeyPress, key, modifiers);
            QApplication::sendEvent(view, &event);
            settle();
        }
    }

    void click(QPoint place, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        for (OrvaneTableView *view : both()) {
            QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, place);
        }
    }

    ShownDatabase database;
    QWidget window;
    OrvaneTableModel *model = nullptr;
    OrvaneTableView shorter{database.config};
    OrvaneTableView longer{database.config};
};

TEST_F(ShortAndLong, hasSectionsForTheRowsInSightOnly)
{
    EXPECT_EQ(shorter.verticalHeader()->count(), 500);
    EXPECT_LT(longer.verticalHeader()->count(), 40);
    expectSame("at the head");
}

TEST_F(ShortAndLong, looksTheSameAtEveryRow)
{
    for (const int row : {1, 2, 99, 100, 101, 480, 499, 10000, 3, 0}) {
        for (OrvaneTableView *view : both()) {
            view->verticalScrollBar()->setValue(row);
            view->horizontalScrollBar()->setValue(row % 3);
        }
        expectSame("row " + std::to_string(row));
    }
}

TEST_F(ShortAndLong, looksTheSameInEverySize)
{
    for (const QSize size :
         {QSize(400, 60), QSize(200, 230), QSize(380, 221), QSize(400, 25), QSize(390, 230)}) {
        for (OrvaneTableView *view : both()) {
            view->resize(size);
            view->verticalScrollBar()->setValue(489);
        }
        expectSame(std::to_string(size.width()) + " x " + std::to_string(size.height()));
    }
}

TEST_F(ShortAndLong, scrollsToCells)
{
    using View = QAbstractItemView;
    for (const View::ScrollHint hint :
         {View::EnsureVisible, View::PositionAtTop, View::PositionAtBottom, View::PositionAtCenter}) {
        for (const int row : {300, 305, 295, 0, 499, 250}) {
            for (OrvaneTableView *view : both()) {
                view->scrollTo(model->index(row, 1 + row % 5), hint);
            }
            expectSame("hint " + std::to_string(hint) + ", row " + std::to_string(row));
        }
    }
    for (OrvaneTableView *view : both()) {
        view->scrollToCell(123, "lat");
    }
    expectSame("cell");
    for (OrvaneTableView *view : both()) {
        view->scrollToRow(77);
    }
    expectSame("row");
}

TEST_F(ShortAndLong, followsTheKeyboard)
{
    const int keys[] = {Qt::Key_Up,  Qt::Key_Down,   Qt::Key_Left,     Qt::Key_Right, Qt::Key_Home,
                        Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Tab,   Qt::Key_Backtab};
    const Qt::KeyboardModifiers modifiers[] = {Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier,
                                               Qt::ControlModifier, Qt::ControlModifier | Qt::ShiftModifier};
    std::mt19937 random(7);
    const auto any = [&random](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    for (int i = 0; i < 150; ++i) {
        const int key = keys[any(std::size(keys))];
        Qt::KeyboardModifiers with = modifiers[any(std::size(modifiers))];
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            with = Qt::NoModifier;
        }
        press(key, with);
        expectSame("key " + std::to_string(i) + ": " + QKeySequence(key | with).toString().toStdString());
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(ShortAndLong, followsTheMouse)
{
    const int height = shorter.rowHeight(0);
    click({30, 30});
    expectSame("clicked");
    for (OrvaneTableView *view : both()) {
        view->verticalScrollBar()->setValue(200);
    }
    click({130, 90}, Qt::ShiftModifier);
    expectSame("selected up to here");
    click({30, 60}, Qt::ControlModifier);
    expectSame("and another");
    for (OrvaneTableView *view : both()) {
        QWidget *page = view->viewport();
        QTest::mousePress(page, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        view->verticalScrollBar()->setValue(230);
        QMouseEvent drag(QEvent::MouseMove, QPoint(150, 100), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page, &drag);
        QTest::mouseRelease(page, Qt::LeftButton, Qt::NoModifier, QPoint(150, 100));
    }
    expectSame("dragged while it scrolled");
    for (OrvaneTableView *view : both()) {
        QTest::mouseClick(view->verticalHeader()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(5, 3 * height + height / 2));
    }
    expectSame("row clicked");
    for (OrvaneTableView *view : both()) {
        view->verticalScrollBar()->setValue(400);
        QTest::mouseClick(view->verticalHeader()->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                          QPoint(5, 70));
    }
    expectSame("rows selected up to here");
    for (OrvaneTableView *view : both()) {
        view->selectAll();
    }
    expectSame("all");
}

TEST_F(ShortAndLong, makesColumnsAsWideAsTheRowsAroundNeed)
{
    const int column = columnNamed(*model, "staname"); // whose texts are longer from row 250 on
    const auto widened = [&](int row) {
        for (OrvaneTableView *view : both()) {
            view->verticalScrollBar()->setValue(row);
            emit view->horizontalHeader()->sectionHandleDoubleClicked(column);
        }
        expectSame("row " + std::to_string(row));
        return longer.columnWidth(column);
    };
    for (OrvaneTableView *view : both()) {
        view->horizontalHeader()->setStretchLastSection(false);
        view->setProperty("msForRowsAround", 60'000);
    }
    const int wide = widened(0); // a thousand rows are looked at
    for (OrvaneTableView *view : both()) {
        view->horizontalHeader()->setResizeContentsPrecision(30);
    }
    const int narrow = widened(0);
    EXPECT_LT(narrow, wide);
    EXPECT_EQ(widened(200), narrow);
    EXPECT_EQ(widened(300), wide);
    EXPECT_EQ(widened(499), wide);
    EXPECT_EQ(widened(0), narrow);
}

// A record that is read from far away in its file, say.
class SlowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        ++asked;
        QTest::qSleep(1);
        return QStyledItemDelegate::sizeHint(option, index);
    }
    mutable int asked = 0;
};

TEST_F(ShortAndLong, looksAtRowsOutOfSightForAShortTimeOnly)
{
    SlowDelegate slow;
    for (OrvaneTableView *view : both()) {
        view->verticalScrollBar()->setValue(200);
        settle();
        view->setItemDelegateForColumn(2, &slow);
        slow.asked = 0;
        emit view->horizontalHeader()->sectionHandleDoubleClicked(2);
        const int inSight = view->rowAt(view->viewport()->height() - 1) - view->rowAt(0) + 1;
        EXPECT_GE(slow.asked, inSight);
        EXPECT_LE(slow.asked, inSight + 16);
        view->setItemDelegateForColumn(2, nullptr);
    }
}

TEST_F(ShortAndLong, followsChangesOfTheTable)
{
    for (OrvaneTableView *view : both()) {
        view->verticalScrollBar()->setValue(450);
    }
    emit model->modelReset();
    expectSame("reset");
    for (OrvaneTableView *view : both()) {
        view->horizontalHeader()->setSortIndicator(4, Qt::DescendingOrder);
    }
    expectSame("sorted");
    database.setFontPoints(14);
    expectSame("larger font");
    for (OrvaneTableView *view : both()) {
        view->setFieldNamesVisible({"lon", "sta"});
    }
    expectSame("other columns");
    longer.verticalHeader()->setProperty("mostSections", 1000);
    EXPECT_EQ(longer.verticalHeader()->count(), 500);
    expectSame("short again");
    longer.verticalHeader()->setProperty("mostSections", 10);
    expectSame("long again");
}

TEST_F(ShortAndLong, edits)
{
    database.config.configure("allow_edits", true);
    longer.verticalScrollBar()->setValue(300);
    settle();
    const QModelIndex cell = model->index(305, 1);
    longer.edit(cell);
    settle();
    auto *editor = longer.viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "S305");
    EXPECT_TRUE(longer.visualRect(cell).contains(editor->geometry().center()));
    longer.verticalScrollBar()->setValue(302);
    settle();
    EXPECT_TRUE(longer.visualRect(cell).contains(editor->geometry().center()));
}

// Rows whose texts are their numbers, as many as wanted.
class Numbers : public OrvaneTableModel
{
public:
    Numbers(OrvaneDatabaseModel *parent, OvConfig &config, int rows)
        : OrvaneTableModel(parent, nullptr, config), m_rows(rows)
    {
    }

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 4; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(QString::number(index.row())) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation, int role) const override
    {
        return role == Qt::DisplayRole    ? QVariant(QString::number(section))
               : role == Qt::SizeHintRole ? QVariant(QSize(100, 16))
                                          : QVariant();
    }

private:
    int m_rows;
};

class ManyRows : public testing::TestWithParam<int>
{
protected:
    ManyRows()
    {
        database.setFontPoints(10);
        view = std::make_unique<OrvaneTableView>(database.config);
        model = std::make_unique<Numbers>(&database.open(), database.config, GetParam());
        view->setModel(model.get());
        for (int column = 1; column < 4; ++column) {
            view->showColumn(column);
        }
        view->resize(500, 400);
        view->show();
        settle();
    }
    ~ManyRows() override { view.reset(); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QApplication::sendEvent(view.get(), &event);
        settle();
    }

    ShownDatabase database;
    std::unique_ptr<Numbers> model;
    std::unique_ptr<OrvaneTableView> view;
};

TEST_P(ManyRows, areReachedByEveryWay)
{
    const int last = GetParam() - 1;
    EXPECT_EQ(view->rowAt(1), 0);
    view->setCurrentIndex(model->index(0, 1));
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view->currentIndex(), model->index(last, 3));
    EXPECT_TRUE(view->viewport()->rect().contains(view->visualRect(view->currentIndex())));
    EXPECT_EQ(view->rowAt(view->visualRect(view->currentIndex()).center().y()), last);
    EXPECT_EQ(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
    for (const double part : {0.1, 0.45, 0.77, 0.9999}) {
        const int row = static_cast<int>(part * last);
        view->verticalScrollBar()->setValue(row);
        EXPECT_EQ(view->rowAt(1), row);
        EXPECT_EQ(view->indexAt({20, 1}).row(), row);
        view->scrollTo(model->index(row / 2, 2));
        EXPECT_TRUE(view->viewport()->rect().contains(view->visualRect(model->index(row / 2, 2))));
    }
    press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(view->currentIndex(), model->index(0, 1));
    EXPECT_EQ(view->rowAt(1), 0);
}

TEST_P(ManyRows, areSelectedFromEndToEnd)
{
    const int last = GetParam() - 1;
    for (const bool assisted : {false, true}) {
        QAccessible::setActive(assisted); // programs that read the screen are told
        view->selectAll();
        EXPECT_EQ(view->selectedRowCount(), last + 1);
        view->clearSelection();
    }
    QAccessible::setActive(false);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
    view->verticalScrollBar()->setValue(last);
    settle();
    const QPoint place = view->visualRect(model->index(last, 2)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, place);
    EXPECT_EQ(view->selectedRowCount(), last + 1);
    press(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view->selectedRowCount(), last);
    press(Qt::Key_Home, Qt::ControlModifier); // the cell moves, the selection does not
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view->selectedRowCount(), 2);
    QTest::mouseClick(view->verticalHeader()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 8));
    view->verticalScrollBar()->setValue(last / 2);
    QTest::mouseClick(view->verticalHeader()->viewport(), Qt::LeftButton, Qt::ShiftModifier, QPoint(5, 8));
    EXPECT_EQ(view->selectedRowCount(), last / 2 + 1);
}

TEST_P(ManyRows, arePaintedWithTheirNumbers)
{
    const int row = GetParam() - 1000;
    view->verticalScrollBar()->setValue(row);
    settle();
    const QImage there = picture(*view);
    view->verticalScrollBar()->setValue(row + 2);
    settle();
    EXPECT_NE(picture(*view), there);
    view->verticalScrollBar()->setValue(row);
    settle();
    EXPECT_EQ(picture(*view), there);
}

INSTANTIATE_TEST_SUITE_P(Rows, ManyRows,
                         testing::Values(1'500'000, 150'000'000, 300'000'000,
                                         std::numeric_limits<int>::max()));

// A table of 200 million records, of which the file system keeps only those that were written.
TEST(HugeTable, isShownFromItsFirstRecordToItsLast)
{
    ShownDatabase database;
    const std::string path = database.files.tablePath("site");
    std::string record = database.files.record("site", {"AAK", "2008001", "-1", "42.6390", "74.4940"}) + "\n";
    const qint64 records = 200'000'000;
    {
        QFile file(QString::fromStdString(path));
        ASSERT_TRUE(file.resize(0) && file.open(QIODevice::ReadWrite));
        file.write(record.data(), static_cast<qint64>(record.size()));
        if (!file.resize(records * static_cast<qint64>(record.size()))) {
            GTEST_SKIP() << "no sparse files here";
        }
        file.seek((records - 1) * static_cast<qint64>(record.size()));
        file.write(record.data(), static_cast<qint64>(record.size()));
    }
    database.setFontPoints(10);
    OrvaneTableView view(database.config);
    OrvaneTableModel &model = database.table("site");
    ASSERT_EQ(model.rowCount(), records);
    view.setModel(&model);
    view.resize(500, 400);
    view.show();
    settle();
    view.scrollToRow(static_cast<int>(records) - 1);
    settle();
    const QModelIndex last = model.indexForCell(static_cast<int>(records) - 1, "sta");
    EXPECT_EQ(last.data().toString(), "AAK");
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(last)));
    view.setCurrentIndex(last);
    EXPECT_EQ(view.rowAt(view.visualRect(last).center().y()), records - 1);
}

} // namespace
