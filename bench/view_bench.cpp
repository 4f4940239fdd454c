// What a table view costs: view_bench [--json] [--frames N] [--font NAME] [--join A,B,C] DATABASE.TABLE
//
// A page of 48 rows and 24 columns at the first row, random rows and the last, split into the model's part
// and the rest; a row of scrolling; the texts of 50,000 × 25 cells, which copying asks for; select all with
// the repaint; N times Page Down with the memory that it leaves behind; menus and tooltips until they are
// painted; a double click on the edge of a column; keys that are typed; the status line of the window;
// opening, beside 1,000 rows. The table as it is, in the order of its second field, and joined to the tables
// named by --join A,B,C; beside them the toolkit's own view and delegate over a model that costs nothing,
// with as many rows and columns.
//
// Times are processor times of this process in milliseconds, medians; a frame's worst is also told by the
// clock on the wall, which other programs can lengthen. With --json every figure is a line of its own.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include <QAbstractTableModel>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolTip>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qdbptr.h>
#include <qovresponse.h>

namespace {

constexpr int pageRows = 48;
constexpr int pageColumns = 24;
constexpr int copiedRows = 50'000;
constexpr int copiedColumns = 25;
constexpr int smallRows = 1000;
constexpr double frameMs = 33;

class FreeModel : public QAbstractTableModel
{
public:
    FreeModel(int rows, int columns) : m_rows(rows), m_columns(columns) {}
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : m_columns;
    }
    QVariant data(const QModelIndex &, int role) const override
    {
        return role == Qt::DisplayRole ? m_text : QVariant();
    }

private:
    int m_rows;
    int m_columns;
    QVariant m_text = QStringLiteral("12345.67890");
};

double processorMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double wallMs()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Taken {
    double processor;
    double wall;
};

Taken taken(const std::function<void()> &work)
{
    const double wall = wallMs(), processor = processorMs();
    work();
    return {processorMs() - processor, wallMs() - wall};
}

struct Times {
    std::vector<double> processor;
    std::vector<double> wall;

    void add(Taken time)
    {
        processor.push_back(time.processor);
        wall.push_back(time.wall);
    }
};

double percentile(std::vector<double> times, double part)
{
    std::sort(times.begin(), times.end());
    return times.at(std::min(times.size() - 1, static_cast<std::size_t>(part * double(times.size()))));
}

double lateOnes(const std::vector<double> &times)
{
    return double(std::count_if(times.begin(), times.end(), [](double ms) { return ms > frameMs; }));
}

// Heap in use, big blocks included; bytes.
double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

bool asJson = false;

void print(const std::string &what, const std::string &name,
           const std::vector<std::pair<const char *, double>> &figures)
{
    if (asJson) {
        std::printf("{\"name\": \"%s: %s\"", name.c_str(), what.c_str());
        for (const auto &[key, value] : figures)
            std::printf(", \"%s\": %.3f", key, value);
        std::printf("}\n");
    } else {
        std::printf("%-22s %-18s", name.c_str(), what.c_str());
        for (const auto &[key, value] : figures)
            std::printf("  %s %.3f", key, value);
        std::printf("\n");
    }
    std::fflush(stdout);
}

// A size in which a page is to be seen and not more.
void showPage(QTableView &view)
{
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QHeaderView &columns = *view.horizontalHeader();
    columns.setStretchLastSection(false);
    int width = 0;
    for (int visual = 0, shown = 0; visual < columns.count() && shown < pageColumns; ++visual) {
        const int column = columns.logicalIndex(visual);
        shown += !columns.isSectionHidden(column);
        width += columns.sectionSize(column);
    }
    view.show();
    for (int pass = 0; pass < 3; ++pass) { // the header's width depends on the rows that are to be seen
        QApplication::processEvents();
        const QSize around = view.size() - view.viewport()->size();
        view.resize(QSize(width, pageRows * view.verticalHeader()->defaultSectionSize()) + around);
    }
    view.activateWindow();
    view.setFocus();
    QApplication::processEvents();
}

// The columns in sight, from left to right.
std::vector<int> columnsInSight(const QHeaderView &columns)
{
    std::vector<int> shown;
    for (int visual = 0; visual < columns.count(); ++visual) {
        const int column = columns.logicalIndex(visual), x = columns.sectionViewportPosition(column);
        if (!columns.isSectionHidden(column) && x < columns.viewport()->width() &&
            x + columns.sectionSize(column) > 0)
            shown.push_back(column);
    }
    return shown;
}

// What painting asks of the model, by cell.
void askPage(const QAbstractItemModel &model, const std::vector<int> &columns, int first)
{
    for (int row = first; row < first + pageRows && row < model.rowCount(); ++row) {
        for (const int column : columns) {
            const QModelIndex index = model.index(row, column);
            for (int role : {Qt::FontRole, Qt::ForegroundRole, Qt::CheckStateRole, Qt::DecorationRole,
                             Qt::TextAlignmentRole, Qt::DisplayRole, Qt::BackgroundRole})
                (void)model.data(index, role);
        }
    }
}

void press(QWidget &widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), true);
    QApplication::sendEvent(&widget, &event);
}

void paint(QTableView &view)
{
    QApplication::processEvents(); // what scrolling puts off
    view.viewport()->repaint();
}

// A place in the table; random rows are those of a seed.
using Place = std::function<int()>;

// Pages at places of the table. "fresh" is the first time that a page is painted, or asked for, in its place:
// from the scroll bar's change until it is painted, with the blocks of the file read that are not in the
// library's cache. The others are painted again where they are.
void measurePages(const std::string &what, const std::string &name, QTableView &view,
                  const QAbstractItemModel &model, int pages, const Place &place)
{
    QScrollBar &bar = *view.verticalScrollBar();
    const std::vector<int> columns = columnsInSight(*view.horizontalHeader());
    Times fresh, again, freshModel, models;
    for (int i = 0; i < pages; ++i) {
        const int row = place();
        fresh.add(taken([&] {
            bar.setValue(row);
            QApplication::processEvents(); // which paints
        }));
        again.add(taken([&] { view.viewport()->repaint(); }));
        models.add(taken([&] { askPage(model, columns, row); }));
    }
    for (int i = 0; i < pages; ++i) {
        const int row = place();
        freshModel.add(taken([&] { askPage(model, columns, row); }));
    }
    print(what, name,
          {{"ms", percentile(again.processor, 0.5)},
           {"model_ms", percentile(models.processor, 0.5)},
           {"worst_ms", percentile(again.processor, 1)},
           {"fresh_ms", percentile(fresh.processor, 0.5)},
           {"fresh_model_ms", percentile(freshModel.processor, 0.5)},
           {"fresh_worst_ms", percentile(fresh.processor, 1)},
           {"rows", double(pageRows)},
           {"columns", double(columns.size())}});
}

void measure(const std::string &name, QTableView &view, const QAbstractItemModel &model, int frames)
{
    showPage(view);
    QScrollBar &bar = *view.verticalScrollBar();
    std::mt19937 random(1);
    const int last = std::max(0, model.rowCount() - pageRows);
    const auto anyRow = [&] { return std::uniform_int_distribution<int>(0, last)(random); };
    // Away and back again, so that the page is painted anew.
    const auto comingBackTo = [&view, &anyRow](int row) {
        return [&view, &anyRow, row] {
            view.verticalScrollBar()->setValue(anyRow());
            QApplication::processEvents();
            return row;
        };
    };
    measurePages("page", name, view, model, 60, anyRow);
    measurePages("page at the first row", name, view, model, 20, comingBackTo(0));
    measurePages("page at the last row", name, view, model, 20, comingBackTo(last));

    Times rows, selecting, downs;
    bar.setValue(model.rowCount() / 2);
    paint(view);
    for (int i = 0; i < 100; ++i)
        rows.add(taken([&] {
            bar.setValue(bar.value() + 1);
            QApplication::processEvents();
        }));
    print("scroll one row", name,
          {{"ms", percentile(rows.processor, 0.5)}, {"worst_ms", percentile(rows.processor, 1)}});

    if (const auto *table = qobject_cast<const OrvaneTableModel *>(&model)) {
        Times texts;
        QVector<int> columns;
        for (int column = 1; column < model.columnCount() && columns.size() < copiedColumns; ++column)
            columns.append(column);
        const int copied = std::min(model.rowCount(), copiedRows);
        for (int i = 0; i < 5; ++i)
            texts.add(taken([&] {
                for (int row = 0; row < copied; row += 512)
                    (void)table->displayedTexts(columns, row, std::min(row + 512, copied));
            }));
        print("texts of rows", name,
              {{"ms", percentile(texts.processor, 0.5)},
               {"worst_ms", percentile(texts.processor, 1)},
               {"rows", double(copied)},
               {"columns", double(columns.size())}});
    }

    for (int i = 0; i < 5; ++i) {
        view.clearSelection();
        paint(view);
        selecting.add(taken([&] {
            view.selectAll();
            view.repaint();
            QApplication::processEvents();
        }));
    }
    print("select all", name,
          {{"ms", percentile(selecting.processor, 0.5)}, {"worst_ms", percentile(selecting.processor, 1)}});
    view.clearSelection();

    int column = 0;
    while (view.isColumnHidden(column))
        ++column;
    view.setCurrentIndex(model.index(0, column));
    const auto down = [&] {
        press(view, Qt::Key_PageDown);
        QApplication::processEvents();
    };
    for (int i = 0; i < frames; ++i)
        downs.add(taken(down));
    // Once more over the same pages, whose blocks are in the cache now.
    view.setCurrentIndex(model.index(0, column));
    QApplication::processEvents();
    malloc_trim(0);
    const double before = heapInUse();
    for (int i = 0; i < frames; ++i)
        down();
    const double grown = heapInUse() - before;
    print("Page Down", name,
          {{"ms", percentile(downs.processor, 0.5)},
           {"ms_95", percentile(downs.processor, 0.95)},
           {"ms_99", percentile(downs.processor, 0.99)},
           {"worst_ms", percentile(downs.processor, 1)},
           {"worst_wall_ms", percentile(downs.wall, 1)},
           {"late", lateOnes(downs.wall)},
           {"late_processor", lateOnes(downs.processor)},
           {"frames", double(frames)},
           {"grown_bytes", grown},
           {"grown_bytes_a_frame", grown / double(frames)}});
}

struct Options {
    std::string table;
    QStringList joins;
    QString font = "monospace";
    int frames = 1800; // a minute of them
    std::string only;  // one of the tables that are shown
};

Options parsed(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (argument == "--json")
            asJson = true;
        else if (argument == "--frames" && hasValue)
            options.frames = std::stoi(argv[++i]);
        else if (argument == "--font" && hasValue)
            options.font = QString::fromLocal8Bit(argv[++i]);
        else if (argument == "--join" && hasValue)
            options.joins = QString::fromLocal8Bit(argv[++i]).split(',');
        else if (argument == "--only" && hasValue)
            options.only = argv[++i];
        else
            options.table = argument;
    }
    if (options.table.empty())
        throw std::runtime_error("usage: view_bench [--json] [--frames N] [--font NAME] [--join A,B,C] "
                                 "[--only opening|toolkit|base|joined|sorted] DATABASE.TABLE");
    return options;
}

// Sees whether popups have been painted.
class PaintedPopups : public QObject
{
public:
    bool painted = false;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && watched == QApplication::activePopupWidget())
            painted = true; // is so when the event loop comes round again
        return false;
    }
};

// From the request for a menu until it is painted.
void measureMenus(const std::string &name, OrvaneTableView &view)
{
    PaintedPopups popups;
    qApp->installEventFilter(&popups);
    const auto measured = [&](const char *what, const std::function<void()> &ask) {
        Times times;
        for (int i = 0; i < 20; ++i) {
            Taken shown{};
            popups.painted = false;
            const double wall = wallMs(), processor = processorMs();
            QTimer look;
            QObject::connect(&look, &QTimer::timeout, &view, [&] {
                QWidget *menu = QApplication::activePopupWidget();
                if (menu == nullptr || !popups.painted)
                    return;
                shown = {processorMs() - processor, wallMs() - wall};
                look.stop();
                menu->close();
            });
            look.start(0);
            ask();
            QApplication::processEvents();
            if (shown.processor == 0)
                throw std::runtime_error(std::string("no ") + what);
            times.add(shown);
        }
        print(what, name,
              {{"ms", percentile(times.processor, 0.5)}, {"worst_ms", percentile(times.processor, 1)}});
    };
    const QPoint cell(view.viewport()->width() / 2, view.viewport()->height() / 2);
    measured("menu of a cell", [&] { view.showCellContextMenu(cell); });
    measured("menu of a row", [&] { view.showRowContextMenu(cell); });
    measured("menu of a column", [&] { view.showColumnContextMenu(cell); });
}

// A page at a random row, which takes the place of others in the library's cache.
void goAnywhere(OrvaneTableView &view, std::mt19937 &random)
{
    const int last = std::max(0, view.model()->rowCount() - pageRows);
    for (int i = 0; i < 5; ++i) {
        view.verticalScrollBar()->setValue(std::uniform_int_distribution<int>(0, last)(random));
        paint(view);
    }
}

// As the mouse asks for them where it rests: the text, its layout and the picture on the screen.
void measureTooltips(const std::string &name, OrvaneTableView &view)
{
    std::mt19937 random(3);
    view.setAttribute(Qt::WA_AlwaysShowToolTips); // also where no window manager makes the window active
    const auto measured = [&](const char *what, const std::function<std::pair<QWidget *, QPoint>()> &place) {
        Times times;
        for (int i = 0; i < 40; ++i) {
            goAnywhere(view, random);
            const auto [widget, point] = place();
            times.add(taken([&] {
                QHelpEvent help(QEvent::ToolTip, point, widget->mapToGlobal(point));
                QApplication::sendEvent(widget, &help);
                QApplication::processEvents();
            }));
            QToolTip::hideText();
            QEvent leave(QEvent::Leave);
            QApplication::sendEvent(widget, &leave);
            QApplication::processEvents();
        }
        print(what, name,
              {{"ms", percentile(times.processor, 0.5)}, {"worst_ms", percentile(times.processor, 1)}});
    };
    const auto anyOf = [&random](int size) {
        return std::uniform_int_distribution<int>(0, std::max(0, size - 1))(random);
    };
    measured("tooltip of a column, shown", [&] {
        QWidget *header = view.horizontalHeader()->viewport();
        return std::pair(header, QPoint(anyOf(header->width()), header->height() / 2));
    });
    measured("tooltip of a row, shown", [&] {
        QWidget *header = view.verticalHeader()->viewport();
        return std::pair(header, QPoint(header->width() / 2, anyOf(header->height())));
    });
    measured("tooltip of a cell, shown", [&] {
        QWidget *cells = view.viewport();
        return std::pair(cells, QPoint(anyOf(cells->width()), anyOf(cells->height())));
    });
}

// Two presses on the edge between two columns, which gives the left one the width of its texts.
void measureDoubleClicks(const std::string &name, OrvaneTableView &view)
{
    std::mt19937 random(4);
    Times times;
    for (int i = 0; i < 40; ++i) {
        goAnywhere(view, random);
        const std::vector<int> columns = columnsInSight(*view.horizontalHeader());
        const QHeaderView &header = *view.horizontalHeader();
        const int column = columns[static_cast<std::size_t>(i) % (columns.size() - 1)];
        const int width = header.sectionSize(column);
        const QPoint edge(header.sectionViewportPosition(column) + width - 1, header.height() / 2);
        times.add(taken([&] {
            for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                            QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
                QMouseEvent event(type, edge, header.viewport()->mapToGlobal(edge), Qt::LeftButton,
                                  type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                                  Qt::NoModifier);
                QApplication::sendEvent(header.viewport(), &event);
            }
            QApplication::processEvents();
        }));
        view.setColumnWidth(column, width);
    }
    print("double click on an edge", name,
          {{"ms", percentile(times.processor, 0.5)}, {"worst_ms", percentile(times.processor, 1)}});
}

// What asks about rows without painting them: tooltips, the width of a column, a key that is typed.
void measureQuestions(const std::string &name, OrvaneTableView &view, OrvaneTableModel &model)
{
    std::mt19937 random(2);
    Times ofRows, tooltips, widths, found;
    for (int i = 0; i < 20; ++i) {
        const int row = std::uniform_int_distribution<int>(0, model.rowCount() - 1)(random);
        ofRows.add(taken([&] { (void)model.headerData(row, Qt::Vertical, Qt::ToolTipRole); }));
    }
    print("tooltip of a row", name,
          {{"ms", percentile(ofRows.processor, 0.5)}, {"worst_ms", percentile(ofRows.processor, 1)}});
    const int columns = model.columnCount();
    for (int column = 1; column < columns; ++column) {
        tooltips.add(taken([&] { (void)model.headerData(column, Qt::Horizontal, Qt::ToolTipRole); }));
        widths.add(taken([&] { view.resizeColumnToContents(column); }));
    }
    print("tooltip of a column", name,
          {{"ms", percentile(tooltips.processor, 0.5)}, {"worst_ms", percentile(tooltips.processor, 1)}});
    print("tooltip of the table", name,
          {{"ms", taken([&] { (void)model.getTableToolTipString(); }).processor}});
    print("width of a column", name,
          {{"ms", percentile(widths.processor, 0.5)}, {"worst_ms", percentile(widths.processor, 1)}});
    const QModelIndex start = model.index(model.rowCount() / 2, std::min(3, columns - 1));
    const auto typed = [&](const QString &text) {
        view.setCurrentIndex(start);
        view.keyboardSearch({}); // a new word
        return taken([&] { view.keyboardSearch(text); });
    };
    for (int i = 0; i < 20; ++i)
        found.add(typed(model.index(model.rowCount() / 2 + 100, start.column()).data().toString()));
    print("typed, 100 rows away", name,
          {{"ms", percentile(found.processor, 0.5)}, {"worst_ms", percentile(found.processor, 1)}});
    if (model.tableIsView() || model.getFacadeDbptr().table != model.getDbptr().table)
        return; // minutes, in which every record is read in an order that is not the file's
    const Taken nowhere = typed("\u00e9");
    print("typed, nowhere", name, {{"ms", nowhere.processor}, {"rows", double(model.rowCount())}});
}

// A table view of its own, from the database's name to the painted page, processor time; median of seven.
double openingMs(OvConfig &config, const QString &path)
{
    Times times;
    for (int i = 0; i < 7; ++i)
        times.add(taken([&] {
            OrvaneDatabaseModel database(config, path, "r");
            OrvaneTableView view(config);
            view.setModel(database.getTableModel(database.getInitialTableName()));
            view.resize(1280, 800);
            view.show();
            paint(view);
        }));
    return percentile(times.processor, 0.5);
}

// The same of the toolkit's own view over a model that costs nothing, which is what its headers cost.
double toolkitOpeningMs(const QFont &font, int rows)
{
    Times times;
    for (int i = 0; i < 7; ++i)
        times.add(taken([&] {
            FreeModel model(rows, pageColumns + 1);
            QTableView view;
            view.setFont(font);
            view.setModel(&model);
            view.resize(1280, 800);
            view.show();
            paint(view);
        }));
    return percentile(times.processor, 0.5);
}

// The first records of a table, with the descriptor of its database.
class HeadOfTable
{
public:
    HeadOfTable(OvConfig &config, const std::string &path)
    {
        const QString whole = QString::fromStdString(path);
        const int dot = whole.lastIndexOf('.');
        const QString head = m_folder.filePath("head");
        m_path = head + whole.mid(dot);
        QFile records(whole), first(m_path);
        if (!QFile::copy(whole.left(dot), head) || !records.open(QIODevice::ReadOnly) ||
            !first.open(QIODevice::WriteOnly))
            throw std::runtime_error("no copy of the head of " + path);
        OrvaneDatabaseModel database(config, whole, "r");
        QDbptr &table = *database.getTableModel(database.getInitialTableName())->getQDbptr();
        m_rowsOfWhole = table.getRecordCount();
        first.write(records.read(table.request("record_size")->toLongLong() * smallRows));
    }
    const QString &path() const { return m_path; }
    int rowsOfWhole() const { return m_rowsOfWhole; }

private:
    QTemporaryDir m_folder;
    QString m_path;
    int m_rowsOfWhole = 0;
};

// To be called while the database is not open otherwise.
void measureOpening(OvConfig &config, const std::string &path)
{
    const HeadOfTable head(config, path);
    const auto font = config["font"].value<QFont>();
    const double small = openingMs(config, head.path()),
                 large = openingMs(config, QString::fromStdString(path));
    const double smallHeaders = toolkitOpeningMs(font, smallRows),
                 largeHeaders = toolkitOpeningMs(font, head.rowsOfWhole());
    print("opening", "window",
          {{"ms", large},
           {"ms_of_1000_rows", small},
           {"ratio", large / small},
           {"toolkit_headers_ms", largeHeaders - smallHeaders},
           {"rows", double(head.rowsOfWhole())}});
}

void measureStatusLine(OvConfig &config, OrvaneDatabaseModel &database)
{
    OrvaneDatabaseView window(config);
    const Taken shown = taken([&] {
        window.setModel(&database);
        window.resize(1280, 800);
        window.show();
        QApplication::processEvents();
    });
    print("open, show", "window", {{"ms", shown.processor}});
    Times times;
    for (int i = 0; i < 100; ++i)
        times.add(taken([&] {
            window.updateStatusLabels();
            QApplication::processEvents();
        }));
    print("status line", "window",
          {{"ms", percentile(times.processor, 0.5)}, {"worst_ms", percentile(times.processor, 1)}});
}

void measureView(const std::string &name, OvConfig &config, OrvaneTableModel &model, int frames)
{
    OrvaneTableView view(config);
    const Taken shown = taken([&] {
        view.setModel(&model);
        view.resize(1280, 800);
        view.show();
        QApplication::processEvents();
    });
    print("set model, show", name, {{"ms", shown.processor}, {"rows", double(model.rowCount())}});
    measure(name, view, model, frames);
    measureMenus(name, view);
    measureTooltips(name, view);
    measureDoubleClicks(name, view);
    measureQuestions(name, view, model);
}

int run(int argc, char **argv)
{
    const Options options = parsed(argc, argv);
    OvConfig config;
    const QFont font(options.font, 10);
    config.configure("font", font);
    config.configure("show_empty_columns", true);
    const auto wanted = [&options](const char *name) { return options.only.empty() || options.only == name; };
    if (wanted("opening"))
        measureOpening(config, options.table);
    OrvaneDatabaseModel database(config, QString::fromStdString(options.table), "r");
    OrvaneTableModel *table = database.getTableModel(database.getInitialTableName());
    if (!table || table->rowCount() == 0)
        throw std::runtime_error("no table " + options.table + ": " + database.openError().toStdString());

    if (wanted("toolkit")) {
        FreeModel free(table->rowCount(), pageColumns + 1);
        QTableView view;
        view.setFont(font);
        view.setAlternatingRowColors(true);
        view.setWordWrap(false);
        view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        view.verticalHeader()->setMinimumSectionSize(view.fontMetrics().height());
        view.verticalHeader()->setDefaultSectionSize(view.fontMetrics().height());
        view.setModel(&free);
        measure("toolkit, free model", view, free, std::min(options.frames, 100));
    }
    if (wanted("base")) {
        measureView("base table", config, *table, options.frames);
        measureStatusLine(config, database);
    }
    if (!options.joins.isEmpty() && wanted("joined")) {
        OrvaneTableModel *joined = table;
        for (const QString &other : options.joins)
            joined = joined->joinTo(other, QString());
        measureView("joined", config, *joined, options.frames);
    }
    if (wanted("sorted")) {
        table->sort(2, Qt::AscendingOrder);
        measureView("sorted", config, *table, options.frames);
    }
    return 0;
}

} // namespace

// Without what platforms without a screen say of each menu that they show.
static void say(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.startsWith("This plugin does not support"))
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

int main(int argc, char **argv)
{
    qInstallMessageHandler(say);
    QApplication application(argc, argv);
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "view_bench: %s\n", error.what());
        return 1;
    }
}
