#include <orvanedatabaseview.h>

#include <QFont>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include <orvane/tr.h>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qdbptr.h>
#include <qovutil.h>

#include "slot_guard.h"

namespace {

enum StackPage { TablesPage = 0, ViewsPage = 1, ProductsPage = 2 };

constexpr int statusSpacing = 24; // pixels between the labels
constexpr int smallestFont = 4;   // points
constexpr int largestFont = 72;
constexpr int defaultFont = 10;

int tabWithText(const QTabWidget &page, const QString &text)
{
    for (int tab = 0; tab < page.count(); ++tab) {
        if (page.tabText(tab) == text) {
            return tab;
        }
    }
    return -1;
}

OrvaneTableView *tableViewAt(const QTabWidget &page, int tab)
{
    return qobject_cast<OrvaneTableView *>(page.widget(tab));
}

// False for a table whose database has been closed: nothing can be asked about it any more.
bool canBeAsked(OrvaneTableModel *table)
{
    return table != nullptr && table->getQDbptr()->isValid(); // also of null
}

} // namespace

OrvaneDatabaseView::OrvaneDatabaseView(OvConfig &config) : m_config(config)
{
    registerDefaults();
    registerFont();
    connect(&m_config, SIGNAL(configurationChanged()), this, SLOT(reconfigure()));
    buildLayout();
    connect(this, SIGNAL(stackItemChanged(int)), this, SLOT(tabbedItemChanged()));

    addPage(m_tablesTabs, "tablesTabs");
    addPage(m_viewsTabs, "viewsTabs");
    m_viewsTabs.setTabsClosable(true);
    connect(&m_viewsTabs, SIGNAL(tabCloseRequested(int)), this, SLOT(closeViewsTab(int)));
    // Tabs of products have no close button: the host offers a command for them.
    addPage(m_productsTabs, "productsTabs");
    connect(&m_productsTabs, SIGNAL(tabCloseRequested(int)), this, SLOT(closeProductsTab(int)));
    buildRowViewer();
}

OrvaneDatabaseView::~OrvaneDatabaseView()
{
    // The pages tell of every tab that goes, when the labels may be gone already.
    for (QTabWidget *page : {&m_tablesTabs, &m_viewsTabs, &m_productsTabs}) {
        page->disconnect(this);
    }
}

void OrvaneDatabaseView::registerDefaults()
{
    const std::pair<const char *, QVariant> defaults[] = {
        {"allow_edits", false},
        {"font_size_points", defaultFont},
        {"request_view_names", true},
        {"saveas_includes_headers", true},
        {"show_readable_times", true},
        {"show_raw_nulls", false},
        {"show_tooltips", true},
        {"show_blanks_background_colored", true},
        {"show_nulls_background_colored", true},
        {"show_empty_columns", false},
        {"background_blank_color", QStringLiteral("light yellow")},
        {"background_null_color", QStringLiteral("light gray")},
        {"time_string_format", QStringLiteral("%D (%j) %H:%M:%S.%u %Z")},
        {"local_time_zone", QString()},
    };
    for (const auto &[key, value] : defaults) {
        m_config.configureIfUnset(key, value);
    }
}

void OrvaneDatabaseView::registerFont()
{
    if (m_config.hasKey("font")) {
        return;
    }
    const int size = m_config["font_size_points"].toInt();
    if (size < smallestFont || size > largestFont) {
        qovutil_showError(
            OvTranslation::tr("Font size must be an integer between 4 and 72") + OvTranslation::tr(" -- ") +
                OvTranslation::tr("ignoring requested size of '%1' and setting to 10").arg(size),
            nullptr);
        m_config.configure("font_size_points", defaultFont);
    }
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(m_config["font_size_points"].toInt());
    m_config.configure("font", font);
}

void OrvaneDatabaseView::buildLayout()
{
    m_stack.setObjectName("stack");
    m_rowCountLabel = new QLabel;
    m_rowCountLabel->setObjectName("rowCountLabel");
    m_modificationLabel = new QLabel;
    m_modificationLabel->setObjectName("modificationLabel");
    m_updateLabel = new QLabel;
    m_updateLabel->setObjectName("updateLabel");
    updateStatusLabels();
    connect(this, SIGNAL(focusTableChanged(QString)), this, SLOT(updateStatusLabels()));

    auto *grid = new QGridLayout;
    auto *status = new QHBoxLayout;
    status->setSpacing(statusSpacing);
    grid->addWidget(&m_stack, 0, 0);
    grid->addLayout(status, 1, 0);
    for (QLabel *label : {m_modificationLabel, m_updateLabel}) {
        label->setMinimumWidth(1); // or a long text would keep the window from being narrower than it
    }
    status->addWidget(m_rowCountLabel);
    status->addWidget(m_modificationLabel);
    status->addWidget(m_updateLabel, 0, Qt::AlignRight);
    setLayout(grid);
}

void OrvaneDatabaseView::addPage(QTabWidget &page, const char *objectName)
{
    page.setObjectName(objectName);
    page.setUsesScrollButtons(true);
    page.setMovable(true);
    page.setElideMode(Qt::ElideNone);
    m_stack.addWidget(&page);
    connect(&page, SIGNAL(currentChanged(int)), this, SLOT(tabbedItemChanged()));
}

// ---- The database shown
// ------------------------------------------------------------------------------------------

void OrvaneDatabaseView::setModel(OrvaneDatabaseModel *model)
{
    if (m_model != nullptr) {
        m_model->disconnect(this);
    }
    m_model = model;
    if (m_model != nullptr) {
        connect(m_model, SIGNAL(destroyed()), this, SLOT(modelDestroyed())); // a closed model may go, too
    }
    clearTabs();
    showingErrors([this] {
        if (m_model == nullptr || !m_model->isOpen()) {
            return;
        }
        initFocusTable();
        for (const QString &name : m_model->getTableNames()) {
            addTable(m_model->getTableModel(name));
        }
        for (const QString &name : m_model->getViewNamesSkipFacades()) {
            addTable(m_model->getTableModel(name));
        }
        setFocusTable(m_focusTableName);
        connect(m_model, SIGNAL(tableAdded(OrvaneTableModel *)), this, SLOT(addTable(OrvaneTableModel *)));
        connect(m_model, SIGNAL(tableRemoved(QString)), this, SLOT(removeTable(QString)));
        connect(m_model, SIGNAL(databaseChecked()), this, SLOT(updateStatusLabels()));
    });
}

OrvaneDatabaseModel *OrvaneDatabaseView::model()
{
    return m_model;
}

void OrvaneDatabaseView::modelDestroyed()
{
    clearTabs();
    m_model = nullptr;
}

void OrvaneDatabaseView::initFocusTable()
{
    showingErrors([this] {
        m_focusTableName.clear();
        if (m_model == nullptr) {
            return;
        }
        m_focusTableName = m_model->getInitialTableName();
        if (!m_focusTableName.isEmpty()) {
            return;
        }
        const QVariantMap bySchema = m_config["default_table"].toMap();
        const QString schema = m_model->getSchemaName();
        if (bySchema.contains(schema)) {
            m_focusTableName = bySchema[schema].toString();
            return;
        }
        const QList<QString> tables = m_model->getTableNames();
        m_focusTableName = tables.isEmpty() ? QString() : tables.first();
    });
}

QString OrvaneDatabaseView::getFocusTableName()
{
    return m_focusTableName;
}

void OrvaneDatabaseView::setFocusTable(QString name)
{
    int tab = tabWithText(m_tablesTabs, name);
    const bool isBaseTable = tab >= 0;
    QTabWidget &page = isBaseTable ? m_tablesTabs : m_viewsTabs;
    if (!isBaseTable) {
        tab = tabWithText(m_viewsTabs, name);
    }
    if (tab < 0) {
        return;
    }
    showingErrors([&] {
        page.setCurrentIndex(tab);
        showStackItem(isBaseTable ? TablesPage : ViewsPage);
        m_focusTableName = name;
        applyRequestedFields();
        OrvaneTableModel *table = getCurrentTableModel();
        if (isBaseTable && table != nullptr) {
            connect(table, SIGNAL(modelReset()), this, SLOT(updateStatusLabels()), Qt::UniqueConnection);
        }
        emit focusTableChanged(name);
    });
}

// The key `fields` chooses the columns of the first table that is focused after it was set, once.
void OrvaneDatabaseView::applyRequestedFields()
{
    const QString fields = m_config["fields"].toString();
    OrvaneTableView *view = getCurrentTableView();
    if (fields.isEmpty() || view == nullptr) {
        return;
    }
    view->setFieldNamesVisible(fields.split(',', Qt::SkipEmptyParts));
    m_config.configure("fields", QString());
}

// ---- Pages
// -------------------------------------------------------------------------------------------------------

QTabWidget *OrvaneDatabaseView::currentPage()
{
    return qobject_cast<QTabWidget *>(m_stack.currentWidget());
}

OrvaneTableView *OrvaneDatabaseView::getCurrentTableView()
{
    QTabWidget *page = currentPage();
    return page == nullptr ? nullptr : qobject_cast<OrvaneTableView *>(page->currentWidget());
}

OrvaneTableModel *OrvaneDatabaseView::getCurrentTableModel()
{
    if (getCurrentStackIndex() >= ProductsPage) {
        return nullptr;
    }
    OrvaneTableView *view = getCurrentTableView();
    return view == nullptr ? nullptr : view->model();
}

// What a command works on: null also where the database of the table shown has been closed.
OrvaneTableModel *OrvaneDatabaseView::currentTable()
{
    OrvaneTableModel *table = getCurrentTableModel();
    return canBeAsked(table) ? table : nullptr;
}

int OrvaneDatabaseView::getCurrentTabIndex()
{
    QTabWidget *page = currentPage();
    return page == nullptr ? -1 : page->currentIndex();
}

void OrvaneDatabaseView::setCurrentTabIndex(int index)
{
    if (QTabWidget *page = currentPage()) {
        page->setCurrentIndex(index);
    }
}

int OrvaneDatabaseView::getCurrentStackIndex()
{
    return m_stack.currentIndex();
}

void OrvaneDatabaseView::setCurrentStackIndex(int index)
{
    m_stack.setCurrentIndex(index);
    emit stackItemChanged(index);
}

void OrvaneDatabaseView::showStackItem(int index)
{
    if (index >= TablesPage && index <= ProductsPage) {
        m_stack.setCurrentIndex(index);
    }
    emit stackItemChanged(index);
}

void OrvaneDatabaseView::tabbedItemChanged()
{
    QString name;
    try {
        OrvaneTableView *view = getCurrentTableView();
        if (view != nullptr && canBeAsked(view->model())) {
            name = view->model()->getTableName();
        }
    } catch (const std::exception &) {
        name.clear();
    }
    emit focusTableChanged(name);
}

// ---- Tabs
// --------------------------------------------------------------------------------------------------------

void OrvaneDatabaseView::addTable(OrvaneTableModel *dtm)
{
    showingErrors([&] {
        const bool isUnwanted =
            dtm == nullptr || (dtm->tableIsView() && (dtm->tableIsFacade() || m_isDeriving));
        if (!isUnwanted) {
            addTableTab(*dtm);
        }
    });
}

void OrvaneDatabaseView::addTableTab(OrvaneTableModel &table)
{
    QTabWidget &page = table.tableIsView() ? m_viewsTabs : m_tablesTabs;
    const QString name = table.getTableName();
    if (tabWithText(page, name) >= 0) {
        return;
    }
    discardDetachedViews(&table);
    auto *view = new OrvaneTableView(m_config);
    connect(view, SIGNAL(subsetRequested(QString, QString)), this, SLOT(showContextSubset(QString, QString)));
    connect(view, SIGNAL(modelUnset(OrvaneTableView *)), this, SLOT(tableModelUnset(OrvaneTableView *)));
    view->setModel(&table);
    view->resizeColumns();
    view->setOrvaneRowView(m_rowView);
    const int tab = page.addTab(view, name);
    page.setTabToolTip(tab, tabToolTip(table));
}

QString OrvaneDatabaseView::tabToolTip(OrvaneTableModel &table)
{
    return m_config["show_tooltips"].toBool() ? table.getTableToolTipString() : QString();
}

void OrvaneDatabaseView::discardDetachedViews(const OrvaneTableModel *table)
{
    QList<QPointer<OrvaneTableView>> kept;
    for (const QPointer<OrvaneTableView> &view : m_detachedViews) {
        if (view != nullptr && view->model() == table) {
            view->deleteLater();
        } else if (view != nullptr) {
            kept.append(view);
        }
    }
    m_detachedViews = kept;
}

void OrvaneDatabaseView::removeTable(QString tableName)
{
    for (QTabWidget *page : {&m_tablesTabs, &m_viewsTabs}) {
        const int tab = tabWithText(*page, tableName);
        if (tab >= 0) {
            // Not deleted: this may be called from a signal that the widget itself is on the way of.
            m_detachedViews.append(tableViewAt(*page, tab));
            page->removeTab(tab);
            return;
        }
    }
}

void OrvaneDatabaseView::closeViewsTab(int tabIndex)
{
    const QPointer<OrvaneTableView> view = tableViewAt(m_viewsTabs, tabIndex);
    if (view == nullptr) {
        return;
    }
    showingErrors([&] {
        m_viewsTabs.removeTab(tabIndex);
        view->deleteLater(); // for a view whose model is not the database's to delete
        OrvaneTableModel *table = view->model();
        OrvaneDatabaseModel *database = table == nullptr ? nullptr : table->getParent();
        if (database == nullptr) {
            return;
        }
        database->deleteView(table->getTableName()); // by way of tableModelUnset() this deletes `view`, too
        if (m_viewsTabs.count() == 0) {
            showStackItem(TablesPage);
        }
    });
}

void OrvaneDatabaseView::closeProductsTab(int tabIndex)
{
    delete m_productsTabs.widget(tabIndex);
    if (m_productsTabs.count() == 0) {
        showStackItem(TablesPage);
    }
}

void OrvaneDatabaseView::tableModelUnset(OrvaneTableView *dtv)
{
    const int tab = m_viewsTabs.indexOf(dtv);
    if (tab >= 0) {
        m_viewsTabs.removeTab(tab);
        if (m_viewsTabs.count() == 0) {
            showStackItem(TablesPage);
        }
    }
    delete dtv;
}

void OrvaneDatabaseView::clearTabs()
{
    for (QTabWidget *page : {&m_tablesTabs, &m_viewsTabs, &m_productsTabs}) {
        QList<QWidget *> shown;
        for (int tab = 0; tab < page->count(); ++tab) {
            shown.append(page->widget(tab));
        }
        page->clear(); // takes the widgets out and keeps them
        for (QWidget *widget : shown) {
            widget->deleteLater();
        }
    }
    for (const QPointer<OrvaneTableView> &view : m_detachedViews) {
        if (view != nullptr) {
            view->deleteLater();
        }
    }
    m_detachedViews.clear();
}

void OrvaneDatabaseView::reconfigure()
{
    for (QTabWidget *page : {&m_tablesTabs, &m_viewsTabs}) {
        for (int tab = 0; tab < page->count(); ++tab) {
            OrvaneTableView *view = tableViewAt(*page, tab);
            page->setTabToolTip(tab, QString());
            showingErrors([&] {
                if (view != nullptr && canBeAsked(view->model())) {
                    page->setTabToolTip(tab, tabToolTip(*view->model()));
                }
            });
        }
    }
    updateStatusLabels();
}
