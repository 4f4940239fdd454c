// What is on the pages, as an independent reader has it.
#include "printing.h"

#include <QFile>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProcess>

#include <orvane/db.h>

#include "printed_table.h"
#include "running_program.h"
#include "support/user.h"

namespace {

class Printing : public RunningProgram
{
protected:
    Printing()
    {
        for (int i = 0; i < 130; ++i) {
            remarks.push_back({std::to_string(i + 1), "1", "line number " + std::to_string(i)});
        }
        files.addTable("remark", remarks);
        files.addTable("origin", {{"10.0000", "20.0000", "5.0000", "1517961600.00000", "1", "8", "3.50", "me",
                                   "7", "1517961600.00000"}});
    }

    MainWindow &opened(const QString &table)
    {
        MainWindow &window = RunningProgram::opened(table);
        window.resize(800, 600);
        return window;
    }

    static OrvaneTableView &view(MainWindow &window) { return *window.view()->getCurrentTableView(); }

    static QFont fixedFont(double points)
    {
        QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font.setPointSizeF(points);
        return font;
    }

    QString pdf() const { return folder.filePath("printed.pdf"); }

    void prepare(QPrinter &printer) const
    {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf());
        printer.setPageSize(QPageSize(QPageSize::A4));
    }

    // The pages as lines of words.
    QList<QStringList> printedPages() const
    {
        QProcess reader;
        reader.start("pdftotext", {"-layout", pdf(), "-"});
        if (!reader.waitForFinished() || reader.exitCode() != 0) {
            throw std::runtime_error("pdftotext is missing or refuses the file: " +
                                     reader.readAllStandardError().toStdString());
        }
        QList<QStringList> pages;
        for (const QString &page : QString::fromUtf8(reader.readAllStandardOutput()).split('\f')) {
            QStringList lines;
            for (const QString &line : page.split('\n')) {
                if (!line.trimmed().isEmpty()) {
                    lines.append(line.simplified());
                }
            }
            if (!lines.isEmpty()) {
                pages.append(lines);
            }
        }
        return pages;
    }

    QList<QStringList> print(MainWindow &window, const CellGrid &grid, double points = 10)
    {
        PrintedTable table(*view(window).model(), grid, "quakes.remark", "a date");
        EXPECT_TRUE(table.measure());
        {
            QPrinter printer(QPrinter::HighResolution);
            prepare(printer);
            EXPECT_TRUE(printPages(table, fixedFont(points), printer));
        }
        return printedPages();
    }

    static CellGrid grid(MainWindow &window, std::vector<RowRun> rows, const QStringList &fields)
    {
        CellGrid made{std::move(rows), {}};
        for (const QString &field : fields) {
            made.columns.append(view(window).model()->indexForColumn(field).column());
        }
        return made;
    }

    std::vector<TemporaryDatabase::Row> remarks;
};

TEST_F(Printing, PutsEveryRowOnThePagesOnce)
{
    MainWindow &window = opened("remark");
    const QList<QStringList> pages = print(window, grid(window, {{0, 130}}, {"commid", "remark"}));
    ASSERT_GT(pages.size(), 1);
    ASSERT_LT(pages.size(), 5);
    int row = 0;
    for (int page = 0; page < pages.size(); ++page) {
        const QStringList &lines = pages[page];
        ASSERT_GT(lines.size(), 3);
        EXPECT_EQ(lines[0], "quakes.remark a date");
        EXPECT_EQ(lines[1], "commid remark");
        EXPECT_EQ(lines.last(), QString("Page %1 of %2").arg(page + 1).arg(pages.size()));
        for (int line = 2; line < lines.size() - 1; ++line, ++row) {
            EXPECT_EQ(lines[line], QString("%1 %2 line number %1").arg(row).arg(row + 1));
        }
    }
    EXPECT_EQ(row, 130);
}

TEST_F(Printing, TakesSomeRowsAndColumnsInAnyOrder)
{
    MainWindow &window = opened("remark");
    const QList<QStringList> pages = print(window, grid(window, {{3, 5}, {100, 101}}, {"remark", "commid"}));
    ASSERT_EQ(pages.size(), 1);
    EXPECT_EQ(pages[0].mid(1), (QStringList{"remark commid", "3 line number 3 4", "4 line number 4 5",
                                            "100 line number 100 101", "Page 1 of 1"}));
}

TEST_F(Printing, ShowsCellsAsTheTableDoes)
{
    MainWindow &window = opened("origin");
    const QStringList fields{"lat", "depth", "time", "auth"};
    EXPECT_EQ(print(window, grid(window, {{0, 1}}, fields))[0][2],
              "0 10.0000 5.0000 02/07/2018 (038) 00:00:00.000000 UTC me");
    program.config().configure("show_readable_times", false);
    EXPECT_EQ(print(window, grid(window, {{0, 1}}, fields))[0][2], "0 10.0000 5.0000 1517961600.00000 me");
}

TEST_F(Printing, DividesColumnsThatDoNotFitOverSheets)
{
    MainWindow &window = opened("origin");
    const QStringList fields = view(window).model()->getTableFields();
    const QList<QStringList> pages = print(window, grid(window, {{0, 1}}, fields), 24);
    ASSERT_GT(pages.size(), 2);
    QStringList names;
    for (const QStringList &page : pages) {
        names += page[1].split(' ');
        EXPECT_TRUE(page[2].startsWith("0 ")) << "the row is numbered on each sheet";
    }
    EXPECT_EQ(names, fields);
    EXPECT_EQ(print(window, grid(window, {{0, 1}}, fields), 6).size(), 1);
}

TEST_F(Printing, PrintsATableWithoutRows)
{
    MainWindow &window = opened("event");
    const QList<QStringList> pages = print(window, grid(window, {{0, 0}}, {"evid"}));
    ASSERT_EQ(pages.size(), 1);
    EXPECT_EQ(pages[0], (QStringList{"quakes.remark a date", "evid", "Page 1 of 1"}));
}

TEST_F(Printing, SaysWhereItCantBeWritten)
{
    MainWindow &window = opened("remark");
    PrintedTable table(*view(window).model(), grid(window, {{0, 5}}, {"remark"}), "t", "d");
    ASSERT_TRUE(table.measure());
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer);
    printer.setOutputFileName(folder.filePath("no/such/folder.pdf"));
    try {
        printPages(table, fixedFont(10), printer);
        FAIL() << "it was printed";
    } catch (const std::runtime_error &error) {
        EXPECT_NE(std::string(error.what()).find("folder.pdf: "), std::string::npos) << error.what();
    }
}

TEST_F(Printing, SaysWhenTheTableHasBecomeShorter)
{
    MainWindow &window = opened("remark");
    PrintedTable table(*view(window).model(), grid(window, {{0, 130}}, {"remark"}), "t", "d");
    ASSERT_TRUE(table.measure());
    remarks.resize(4);
    files.addTable("remark", remarks);
    QTest::qWait(200); // until then what was read just now stands for the file
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer);
    EXPECT_THROW(printPages(table, fixedFont(10), printer), std::runtime_error);
}

TEST_F(Printing, CanBeCancelled)
{
    MainWindow &window = opened("remark");
    PrintedTable table(*view(window).model(), grid(window, {{0, 130}}, {"remark"}), "t", "d");
    ASSERT_TRUE(table.measure());
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer);
    QTest::qWait(150); // the hook is asked at most every 100 ms
    dbset_progress_hook([](double, void *) { return 1; }, nullptr);
    EXPECT_FALSE(printPages(table, fixedFont(10), printer));
    dbset_progress_hook(nullptr, nullptr);
}

TEST_F(Printing, ShowsAPreview)
{
    MainWindow &window = opened("remark");
    User user;
    user.meets<QPrintPreviewDialog>([&](QPrintPreviewDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Print quakes.remark");
        EXPECT_GT(dialog.findChild<QPrintPreviewWidget *>()->pageCount(), 1);
        prepare(*dialog.printer());
        dialog.findChild<QPrintPreviewWidget *>()->print();
        dialog.reject();
    });
    action(window, "print").trigger();
    const QList<QStringList> pages = printedPages();
    ASSERT_GT(pages.size(), 1);
    EXPECT_TRUE(pages[0][0].startsWith("quakes.remark "));
    EXPECT_TRUE(pages.last().last().startsWith(QString("Page %1 of ").arg(pages.size())));
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Printing, ClosesAPreviewWhosePagesAreCancelled)
{
    MainWindow &window = opened("remark");
    User user;
    int closed = 0;
    user.meets<QPrintPreviewDialog>([&](QPrintPreviewDialog &dialog) {
        QObject::connect(&dialog, &QDialog::rejected, [&closed] { ++closed; });
        QTest::qWait(150); // the hook is asked at most every 100 ms
        dbset_progress_hook([](double, void *) { return 1; }, nullptr);
        dialog.findChild<QPrintPreviewWidget *>()->updatePreview();
        EXPECT_EQ(closed, 0) << "not while the toolkit is at its pages";
    });
    action(window, "print").trigger();
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Printing, AsksWhetherTheSelectedRowsAreMeant)
{
    MainWindow &window = opened("remark");
    view(window).selectionModel()->select(
        QItemSelection(view(window).model()->index(2, 1), view(window).model()->index(4, 1)),
        QItemSelectionModel::ClearAndSelect);
    action(window, "print").trigger(); // the box is cancelled
    EXPECT_EQ(boxes.texts(), QStringList{"3 rows are selected. Print only these, or all 130?"});
}

TEST_F(Printing, AsksOrRefusesWhereThatIsManyPages)
{
    remarks.resize(20000);
    for (std::size_t i = 0; i < remarks.size(); ++i) {
        remarks[i] = {std::to_string(i + 1), "1"};
    }
    files.addTable("remark", remarks);
    MainWindow &window = opened("remark");
    action(window, "print").trigger();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(QRegExp("Printed, these rows are [0-9]{3} pages. Show them\\?").exactMatch(boxes.texts()[0]))
        << boxes.texts()[0].toStdString();
    remarks.resize(200000, {"1", "1"});
    files.addTable("remark", remarks);
    view(window).model()->rowCount();
    settle();
    action(window, "lookForChanges").trigger();
    settle();
    action(window, "print").trigger();
    ASSERT_EQ(boxes.texts().size(), 2);
    EXPECT_TRUE(boxes.texts()[1].contains("no more than 2,000 can be shown"))
        << boxes.texts()[1].toStdString();
}

} // namespace
