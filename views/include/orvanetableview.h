#ifndef ORVANETABLEVIEW_H
#define ORVANETABLEVIEW_H

#include <QElapsedTimer>
#include <QList>
#include <QPersistentModelIndex>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTableView>
#include <functional>
#include <memory>
#include <vector>

#include <ovqt_export.h>

class CellPainter;
class OrvaneRowView;
class OrvaneTableModel;
class OvConfig;
class RecordKeys;
class RowHeader;
class WholeChange;
struct Page;

// A table or view of a database as a grid: decides which columns are visible, in what order, and how wide
// they are. A click on a header sorts, and a menu over a cell finds or asks for more of its kind.
//
// The view owns neither its configuration nor its model. When the model is destroyed the view emits
// modelUnset() and shows nothing; its owner drops or replaces it then. No slot lets an exception out.
//
// Tables of any length: of one with more than a million rows the vertical header has sections for the rows in
// sight only, and the row functions of this class take its place. They hide the toolkit's, which are not
// virtual. In such a table rows can't be hidden, moved or given heights one by one.
//
// The view paints its cells itself, as its style and delegate would: cells with another delegate, and cells
// of which the model says more than a text, an alignment and a background, are painted by the delegate.
class OVQT_EXPORT OrvaneTableView : public QTableView
{
    Q_OBJECT

    // For how long rows out of sight are looked at when a column is given the width of its texts.
    Q_PROPERTY(int msForRowsAround MEMBER m_msForRowsAround)

public:
    // Registers the defaults of the keys it depends on; `config` must outlive the view.
    explicit OrvaneTableView(OvConfig &config);
    ~OrvaneTableView() override;

    // Shows `model`, with all columns or only those that hold values (key show_empty_columns), sized to the
    // model's hints. A null model is only remembered: what was shown stays.
    void setModel(OrvaneTableModel *model);

    // The model as last set; null when none was, or when it has been destroyed.
    OrvaneTableModel *model() const;

    // Where "Show Row" shows a row; null: the entry is not offered. It must outlive the view or be unset.
    void setOrvaneRowView(OrvaneRowView *rowView);

    // Of a host that keeps what changes have replaced, for all views of the process; null: there is none.
    //
    // It is called before a command that changes many rows. What it answers puts back what the command has
    // changed by then, tells the user that all is as it was, and answers nothing, or why it is not. (An empty
    // function: this database is not kept.) The command then changes all of its rows or none, and none where
    // records would get the same primary key. Without it what was changed before a failure stays.
    using PutBack = std::function<QString()>;
    using ChangeKeeper = std::function<PutBack(OrvaneTableModel &table)>;
    static void setChangeKeeper(ChangeKeeper keeper);

    // Rows and places of the viewport, as the toolkit's; -1 where there is no row.
    int rowAt(int y) const;
    int rowViewportPosition(int row) const;
    int rowHeight(int row) const;

    QModelIndex indexAt(const QPoint &place) const override;
    QRect visualRect(const QModelIndex &index) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;
    void doItemsLayout() override;

    // Goes to the next row whose text in the current column begins with what is typed, as the toolkit's does,
    // and tells the progress hook of the process, which may stop it.
    void keyboardSearch(const QString &search) override;

    // How many rows have a selected cell.
    int selectedRowCount() const;

    // The names of the columns shown, from left to right as they stand on the screen.
    QList<QString> getFieldNamesVisible();

    // Shows exactly the named columns, in the order of the list. Unknown names are passed over.
    void setFieldNamesVisible(QList<QString> names);

signals:
    // The user asks for the rows in which the field has the value.
    void subsetRequested(QString fieldName, QString fieldVal);

    // The model of `dtv` is gone.
    void modelUnset(OrvaneTableView *dtv);

public slots:
    // Takes font and row colours from the configuration anew.
    void reconfigure();

    // Gives every column the width of the model's hint; the record number (column 0) is never shown.
    void resizeColumns();

    void scrollToColumn(QString fieldname);
    void scrollToRow(int row);

    // Scrolls to a cell and makes it the only one selected.
    void scrollToCell(int row, QString fieldname);

    // Marks the records of the selected cells, of a view its rows; of a table that is shown sorted those of
    // the table.
    void markSelected();

    // These take rows out of a view; its records stay. Visible rows are those between the upper and the lower
    // edge.
    void deleteSelectedViewRows();
    void deleteOtherVisibleViewRows();
    void deleteAllOtherViewRows();

    void modelDestroyed();

    // Runs the menu of the row, or of the column, at a place of its header.
    void showRowContextMenu(QPoint pos);
    void showColumnContextMenu(QPoint pos);

    // Runs the menu of the cell at a place of the viewport. Below its own commands stand the actions that a
    // host has given the view (QWidget::addAction).
    void showCellContextMenu(QPoint pos);

protected:
    // Says so where there is nothing to show.
    void paintEvent(QPaintEvent *event) override;

    bool viewportEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    QRegion visualRegionForSelection(const QItemSelection &selection) const override;
    bool isIndexHidden(const QModelIndex &index) const override;
    int verticalOffset() const override;
    int sizeHintForColumn(int column) const override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private slots:
    // Takes the arrow back from a column by which the model could not sort.
    void checkSortIndicator();
    void holdPlace();
    void keepPlace();
    void standWhereTheRecordWas();
    void noteSelectionLater();
    void noteSelection();

    // Takes in that the table has another number of rows.
    void followRows();

private:
    struct CellCommand;
    struct RowRange {
        int first;
        int last;
    };
    struct ColumnRows; // rows of one column
    struct Stored;

    std::vector<RowRange> selectedRows() const;
    static std::vector<RowRange> rowsBetween(const std::vector<RowRange> &ranges, int first, int last);
    void markRows(const std::vector<RowRange> &ranges);
    template <typename Choose>
    void deleteRows(Choose choose);
    void runRowCommand(int entry, const QModelIndex &row);
    void showInRowView(int row);
    void runColumnCommand(int entry, int column);
    bool askForValue(const QString &field, QString &value);
    std::vector<ColumnRows> selectedCells() const;
    bool isChangeWanted(const QString &question) const;
    void changeSelected(const QString &value);
    void changeAll(int column, const QString &value);
    QString refusal(const QString &value, const std::vector<ColumnRows> &cells, RecordKeys &keys) const;
    void store(const QString &value, const std::vector<ColumnRows> &cells);
    static void lookForSameKeys(const RecordKeys &keys, const OrvaneTableModel &model, Stored &done);
    static void tellNotStored(const QString &value, const Stored &done, const WholeChange &change);

    bool isLong() const;
    int rowsInView() const;
    qint64 pixelsAbove(int row) const;
    void placeRows();

    bool goToTyped(bool leavesRow);

    bool paintsByItself() const;
    void paintPage(const QRegion &region);
    Page pageWithin(const QRect &area) const;
    void paintGrid(QPainter &painter, const Page &page, const QStyleOptionViewItem &option);
    void paintWhatIsMissing();

    void makeHeaders();
    void setRowHeight(int pixels);
    void applyFont();
    void startWithoutOrder();
    void runCellCommand(const CellCommand &command, const QModelIndex &cell);
    void findEqualCell(const QModelIndex &cell, bool backward);
    void findBackward(const QModelIndex &cell);
    void findForward(const QModelIndex &cell);
    void requestSubset(const QModelIndex &cell);

    void tellOutdated();
    void hearInheritedReset();
    bool isStillThere();

    // Where one is in a table that is sorted anew or crunched.
    struct Place {
        QPersistentModelIndex anchor; // a row to be seen in the same place
        int offset = 0;               // rows from the top
        QPoint current{-1, -1};       // column and row
    };

    // What is typed to go to a row.
    struct Typed {
        QString text;
        QElapsedTimer since; // the last key
        bool nowhere = false;
        bool searching = false;
    };

    OvConfig &m_config;
    Place m_place;
    Typed m_typed;
    bool m_noting = false; // when the event loop is next idle
    OrvaneTableModel *m_model = nullptr;
    QPointer<OrvaneRowView> m_rowView;
    std::unique_ptr<CellPainter> m_painter;
    QPersistentModelIndex m_hovered;

    // Of tables with more rows than sections in the header.
    QPointer<RowHeader> m_rows;
    bool m_updatingGeometries = false;
    int m_msForRowsAround = 15;
    qint64 m_topPixel = 0;         // of the table, at the upper edge
    qint64 m_pressedAt = 0;        // the same when the mouse was pressed
    mutable int m_rowFarAbove = 0; // the rows last asked for that are too far away for pixels
    mutable int m_rowFarBelow = 0;
};

#endif
