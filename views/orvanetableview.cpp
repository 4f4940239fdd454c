#include <orvanetableview.h>

#include <algorithm>
#include <map>

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QSignalBlocker>

#include <orvanerowview.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>

#include "cell_delegate.h"
#include "cell_painter.h"
#include "row_header.h"
#include "slot_guard.h"

namespace {

constexpr int minimumColumnWidth = 60; // pixels

struct Default {
    const char *key;
    QVariant value;
};

void registerDefaults(OvConfig &config)
{
    const Default defaults[] = {
        {"allow_edits", false},
        {"alternate_row_colors", true},
        {"show_empty_columns", false},
        {"show_readable_times", true},
        {"show_raw_nulls", false},
        {"show_tooltips", true},
        {"show_blanks_background_colored", true},
        {"show_nulls_background_colored", true},
        {"background_blank_color", QStringLiteral("light yellow")},
        {"background_null_color", QStringLiteral("light gray")},
        {"time_string_format", QStringLiteral("%D (%j) %H:%M:%S.%u %Z")},
        {"local_time_zone", QString()},
    };
    for (const Default &entry : defaults) {
        config.configureIfUnset(entry.key, entry.value);
    }
}

} // namespace

OrvaneTableView::~OrvaneTableView() = default;

OrvaneTableView::OrvaneTableView(OvConfig &config)
    : m_config(config), m_painter(std::make_unique<CellPainter>(*this))
{
    registerDefaults(config);
    makeHeaders();
    setAlternatingRowColors(m_config["alternate_row_colors"].toBool());
    setWordWrap(false); // a row is one line high: a longer text is cut with dots, not broken out of sight
    horizontalHeader()->setSectionsMovable(true);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    applyFont();
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showCellContextMenu(QPoint)));
    horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(horizontalHeader(), SIGNAL(customContextMenuRequested(QPoint)), this,
            SLOT(showColumnContextMenu(QPoint)));
    verticalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(verticalHeader(), SIGNAL(customContextMenuRequested(QPoint)), this,
            SLOT(showRowContextMenu(QPoint)));
    setItemDelegate(new CellDelegate(this));
    connect(&m_config, SIGNAL(configurationChanged()), this, SLOT(reconfigure()));
}

void OrvaneTableView::makeHeaders()
{
    setHorizontalHeader(new TableHeader(Qt::Horizontal, this));
    m_rows = new RowHeader(this);
    setVerticalHeader(m_rows);
    // Sections of a window are not the rows of the same number.
    disconnect(m_rows, SIGNAL(sectionPressed(int)), this, SLOT(selectRow(int)));
    disconnect(m_rows, SIGNAL(sectionEntered(int)), this, SLOT(_q_selectRow(int)));
    connect(m_rows, SIGNAL(rowPressed(int)), this, SLOT(selectRow(int)));
    connect(m_rows, SIGNAL(rowEntered(int)), this, SLOT(_q_selectRow(int)));
    connect(m_rows, SIGNAL(rowsChanged()), this, SLOT(followRows()));
}

void OrvaneTableView::reconfigure()
{
    loggingErrors("OrvaneTableView::reconfigure", [this] {
        setAlternatingRowColors(m_config["alternate_row_colors"].toBool());
        applyFont();
        resizeColumns();
    });
}

void OrvaneTableView::applyFont()
{
    const QFont wanted = m_config["font"].value<QFont>();
    if (font() != wanted) {
        setFont(wanted);
    }
    setRowHeight(QFontMetrics(font()).height());
}

void OrvaneTableView::setRowHeight(int pixels)
{
    QHeaderView &rows = *verticalHeader();
    if (rows.defaultSectionSize() == pixels) {
        return;
    }
    {
        // A header tells the change of every section one by one, and a table may have ten million of them.
        const QSignalBlocker quiet(&rows);
        // The style's own minimum may be larger than a line of small text, and bounds the default. Raised
        // first, it would resize the sections singly.
        const bool shrinks = pixels < rows.minimumSectionSize();
        if (shrinks) {
            rows.setMinimumSectionSize(pixels);
        }
        rows.setDefaultSectionSize(pixels);
        if (!shrinks) {
            rows.setMinimumSectionSize(pixels);
        }
    }
    rows.viewport()->update();
    scheduleDelayedItemsLayout();
}

void OrvaneTableView::setModel(OrvaneTableModel *model)
{
    if (m_model != nullptr && m_model != model) {
        disconnect(m_model, nullptr, this, SLOT(modelDestroyed()));
        disconnect(m_model, nullptr, this, SLOT(holdPlace()));
        disconnect(m_model, nullptr, this, SLOT(keepPlace()));
        disconnect(m_model, &QAbstractItemModel::modelReset, this, nullptr);
        m_model->noteRows(this, {});
        disconnect(m_model, nullptr, this, SLOT(checkSortIndicator()));
    }
    m_model = model;
    if (model == nullptr) {
        return;
    }
    startWithoutOrder();
    QTableView::setModel(model);
    hearInheritedReset();
    connect(model, SIGNAL(destroyed()), this, SLOT(modelDestroyed()), Qt::UniqueConnection);
    if (!m_config["show_empty_columns"].toBool()) {
        setFieldNamesVisible(model->getNonNullTableFields());
    }
    resizeColumns();
    horizontalHeader()->setMinimumSectionSize(minimumColumnWidth);
    connect(model, SIGNAL(layoutAboutToBeChanged()), this, SLOT(holdPlace()), Qt::UniqueConnection);
    connect(model, SIGNAL(layoutChanged()), this, SLOT(keepPlace()), Qt::UniqueConnection);
    connect(model, SIGNAL(modelReset()), this, SLOT(checkSortIndicator()), Qt::UniqueConnection);
}

// To be called before the view gets its model. Sorting a model by column 0 changes no order, but the headers
// look at every row of ten million when it is announced.
void OrvaneTableView::startWithoutOrder()
{
    // Or the column by which an earlier model was sorted would sort the next.
    horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    setSortingEnabled(true);
    sortByColumn(0, Qt::AscendingOrder);
    // Behind the connection that sorts.
    connect(horizontalHeader(), SIGNAL(sortIndicatorChanged(int, Qt::SortOrder)), this,
            SLOT(checkSortIndicator()), Qt::UniqueConnection);
}

void OrvaneTableView::checkSortIndicator()
{
    if (m_model == nullptr || horizontalHeader()->sortIndicatorSection() == 0) {
        return;
    }
    const bool isSorted =
        m_model->columnCount() > 0 && m_model->getFacadeDbptr().table != m_model->getDbptr().table;
    if (!isSorted) {
        horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    }
}

OrvaneTableModel *OrvaneTableView::model() const
{
    return m_model;
}

void OrvaneTableView::modelDestroyed()
{
    m_model = nullptr;
    emit modelUnset(this);
}

QList<QString> OrvaneTableView::getFieldNamesVisible()
{
    if (m_model == nullptr) {
        return {};
    }
    std::map<int, QString> byPlace;
    const QHeaderView &columns = *horizontalHeader();
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (!isColumnHidden(column)) {
            byPlace[columns.visualIndex(column)] = m_model->fieldNameForColumnIndex(column);
        }
    }
    QList<QString> names;
    for (const auto &[place, name] : byPlace) {
        names.append(name);
    }
    return names;
}

void OrvaneTableView::setFieldNamesVisible(QList<QString> names)
{
    if (m_model == nullptr) {
        return;
    }
    QHeaderView &columns = *horizontalHeader();
    columns.setStretchLastSection(
        false); // or every step would stretch another; resizeColumns() sets it again
    for (int column = 0; column < m_model->columnCount(); ++column) {
        hideColumn(column);
    }
    for (int place = 0; place < names.size(); ++place) {
        const int column = m_model->indexForColumn(names.at(place)).column();
        showColumn(column); // column 0, which stands for an unknown name, is hidden again below
        columns.moveSection(columns.visualIndex(column), place);
    }
    resizeColumns();
}

void OrvaneTableView::resizeColumns()
{
    if (m_model == nullptr) {
        return;
    }
    loggingErrors("OrvaneTableView::resizeColumns", [this] {
        QHeaderView &columns = *horizontalHeader();
        // A stretched last section would take back each width it is given.
        columns.setStretchLastSection(false);
        hideColumn(0);
        for (int column = 1; column < m_model->columnCount(); ++column) {
            setColumnWidth(column,
                           m_model->headerData(column, Qt::Horizontal, Qt::SizeHintRole).toSize().width());
        }
        columns.setStretchLastSection(true);
    });
}

// Of the rows in sight, and of those around them until they are as many as the header is to look at, as the
// toolkit has it. But rows whose records lie all over their files can take a millisecond each: those around
// are looked at as long as there is time. The toolkit would also take the header's sections for the rows.
int OrvaneTableView::sizeHintForColumn(int column) const
{
    const QHeaderView &rows = *verticalHeader();
    if (m_model == nullptr || rows.sectionsHidden() || rows.sectionsMoved()) {
        return QTableView::sizeHintForColumn(column);
    }
    ensurePolished();
    const QStyleOptionViewItem option = viewOptions();
    int width = 0, looked = 0;
    const auto look = [&](int row) {
        const QModelIndex index = m_model->index(row, column);
        width = std::max(width, itemDelegate(index)->sizeHint(option, index).width());
        if (const QWidget *editor = indexWidget(index)) {
            width = std::max(width, editor->sizeHint().width());
        }
        ++looked;
    };
    const int end = m_model->rowCount();
    int above = std::max(0, rowAt(0));
    int below = rowAt(viewport()->height() - 1) + 1;
    below = below > 0 ? below : end;
    const int precision = horizontalHeader()->resizeContentsPrecision(); // negative: all rows
    QElapsedTimer time;
    time.start();
    for (int row = above; row < below && (isVisible() || time.elapsed() < m_msForRowsAround); ++row) {
        look(row);
    }
    while ((precision < 0 || looked < precision) && (above > 0 || below < end) &&
           time.elapsed() < m_msForRowsAround) {
        if (below < end) {
            look(below++);
        }
        if (above > 0 && looked != precision) {
            look(--above);
        }
    }
    return width + (showGrid() ? 1 : 0);
}

void OrvaneTableView::scrollToColumn(QString fieldname)
{
    showingErrors([&] {
        if (m_model != nullptr) {
            scrollTo(m_model->indexForColumn(fieldname), QAbstractItemView::EnsureVisible);
        }
    });
}

void OrvaneTableView::scrollToRow(int row)
{
    showingErrors([&] {
        const QList<QString> visible = getFieldNamesVisible();
        if (!visible.isEmpty()) {
            scrollTo(m_model->indexForCell(row, visible.first()), QAbstractItemView::EnsureVisible);
        }
    });
}

void OrvaneTableView::scrollToCell(int row, QString fieldname)
{
    showingErrors([&] {
        if (m_model == nullptr) {
            return;
        }
        clearSelection();
        const QModelIndex cell = m_model->indexForCell(row, fieldname);
        scrollTo(cell, QAbstractItemView::EnsureVisible);
        selectionModel()->select(cell, QItemSelectionModel::Select);
        // The keyboard, too, goes on from here.
        selectionModel()->setCurrentIndex(cell, QItemSelectionModel::NoUpdate);
    });
}
