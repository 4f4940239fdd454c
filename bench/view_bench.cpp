// What a table view costs: view_bench [--json] [--frames N] [--font NAME] [--join A,B,C] DATABASE.TABLE
//
// A page of 48 rows and 24 columns at random rows, split into the model's part and the rest; a row of
// scrolling; a row's tooltip; the texts of 50,000 rows, which copying asks for; select all with the repaint;
// N times Page Down with the memory that it leaves behind; menus until they are painted; what asks about rows
// besides: tooltips, the width of a column, keys that are typed; the status line of the window. The table as
// it is, in the order of its second field, and joined to the tables named by --join A,B,C; beside them the
// toolkit's own view and delegate over a model that costs nothing, with as many rows and columns.
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
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTableView>
#include <QTimer>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>

namespace {

constexpr int pageRows = 48;
constexpr int pageColumns = 24;

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

// What painting asks of the model, by cell.
void askPage(const QAbstractItemModel &model, const QHeaderView &columns, int first)
{
    for (int row = first; row < first + pageRows && row < model.rowCount(); ++row) {
        for (int visual = 0; visual < columns.count(); ++visual) {
            const int column = columns.logicalIndex(visual);
            if (columns.isSectionHidden(column))
                continue;
            const QModelIndex index = model.index(row, column);
            for (int role : {Qt::FontRole, Qt::TextAlignmentRole, Qt::ForegroundRole, Qt::CheckStateRole,
                             Qt::DecorationRole, Qt::DisplayRole, Qt::BackgroundRole})
                (void)model.data(index, role);
        }
    }
}

void press(QWidget &widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), true);
    QApplication::sendEvent(&widget, &event);
}

void measure(const std::string &name, QTableView &view, const QAbstractItemModel &model, int frames)
{
    showPage(view);
    QScrollBar &bar = *view.verticalScrollBar();
    std::mt19937 random(1);
    Times pages, models, rows, selecting, downs;
    const auto paint = [&view] {
        QApplication::processEvents(); // what scrolling puts off
        view.viewport()->repaint();
    };
    for (int i = 0; i < 60; ++i) {
        const int row =
            std::uniform_int_distribution<int>(0, std::max(0, model.rowCount() - pageRows))(random);
        bar.setValue(row);
        paint(); // the block of the file is read
        pages.add(taken([&] { view.viewport()->repaint(); }));
        models.add(taken([&] { askPage(model, *view.horizontalHeader(), row); }));
    }
    print("page", name,
          {{"ms", percentile(pages.processor, 0.5)},
           {"model_ms", percentile(models.processor, 0.5)},
           {"worst_ms", percentile(pages.processor, 1)},
           {"rows", double(pageRows)},
           {"columns", double(pageColumns)}});

    bar.setValue(model.rowCount() / 2);
    paint();
    for (int i = 0; i < 100; ++i)
        rows.add(taken([&] {
            bar.setValue(bar.value() + 1);
            QApplication::processEvents();
        }));
    print("scroll one row", name, {{"ms", percentile(rows.processor, 0.5)}});

    Times tooltips, texts;
    for (int i = 0; i < 20; ++i) {
        const int row = std::uniform_int_distribution<int>(0, model.rowCount() - 1)(random);
        tooltips.add(taken([&] { (void)model.headerData(row, Qt::Vertical, Qt::ToolTipRole); }));
    }
    print("tooltip of a row", name,
          {{"ms", percentile(tooltips.processor, 0.5)}, {"worst_ms", percentile(tooltips.processor, 1)}});
    if (const auto *table = qobject_cast<const OrvaneTableModel *>(&model)) {
        QVector<int> columns;
        for (int column = 1; column < model.columnCount(); ++column)
            columns.append(column);
        const int copied = std::min(model.rowCount(), 50'000);
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
        paint();
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
    print("Page Down", name,
          {{"ms", percentile(downs.processor, 0.5)},
           {"ms_95", percentile(downs.processor, 0.95)},
           {"ms_99", percentile(downs.processor, 0.99)},
           {"worst_ms", percentile(downs.processor, 1)},
           {"worst_wall_ms", percentile(downs.wall, 1)},
           {"late", double(std::count_if(downs.wall.begin(), downs.wall.end(),
                                         [](double ms) { return ms > 1000.0 / 30; }))},
           {"frames", double(frames)},
           {"grown_bytes", heapInUse() - before}});
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
                                 "[--only toolkit|base|joined|sorted] DATABASE.TABLE");
    return options;
}

// From the request for a menu until it is painted.
void measureMenus(const std::string &name, OrvaneTableView &view)
{
    const auto measured = [&](const char *what, const std::function<void()> &ask) {
        Times times;
        for (int i = 0; i < 20; ++i) {
            Taken shown{};
            const double wall = wallMs(), processor = processorMs();
            QTimer::singleShot(0, [&] {
                if (QWidget *menu = QApplication::activePopupWidget()) {
                    menu->repaint();
                    shown = {processorMs() - processor, wallMs() - wall};
                    menu->close();
                }
            });
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

// What asks about rows without painting them: tooltips, the width of a column, a key that is typed.
void measureQuestions(const std::string &name, OrvaneTableView &view, OrvaneTableModel &model)
{
    std::mt19937 random(2);
    Times tooltips, widths, found;
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
    const Taken nowhere = typed("\u00e9");
    print("typed, nowhere", name, {{"ms", nowhere.processor}, {"rows", double(model.rowCount())}});
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
    measureQuestions(name, view, model);
}

int run(int argc, char **argv)
{
    const Options options = parsed(argc, argv);
    OvConfig config;
    const QFont font(options.font, 10);
    config.configure("font", font);
    config.configure("show_empty_columns", true);
    OrvaneDatabaseModel database(config, QString::fromStdString(options.table), "r");
    OrvaneTableModel *table = database.getTableModel(database.getInitialTableName());
    if (!table || table->rowCount() == 0)
        throw std::runtime_error("no table " + options.table + ": " + database.openError().toStdString());

    const auto wanted = [&options](const char *name) { return options.only.empty() || options.only == name; };
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
        measure("toolkit, free model", view, free, std::min(options.frames, 300));
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

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "view_bench: %s\n", error.what());
        return 1;
    }
}
