#include "schema_window.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QSplitter>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <orvanedatabasemodel.h>
#include <qdbptr.h>
#include <qovconnection.h>
#include <qovutil.h>

namespace {

enum Level { DatabaseItem, TableItem, FieldItem };

enum Column { NameColumn, DescriptionColumn };

Level levelOf(const QTreeWidgetItem &item)
{
    int depth = 0;
    for (const QTreeWidgetItem *above = item.parent(); above != nullptr; above = above->parent()) {
        ++depth;
    }
    return static_cast<Level>(depth);
}

bool matches(const QTreeWidgetItem &item, const QString &wanted)
{
    return item.text(NameColumn).contains(wanted, Qt::CaseInsensitive) ||
           item.text(DescriptionColumn).contains(wanted, Qt::CaseInsensitive);
}

using Handle = std::unique_ptr<QDbptr>;

} // namespace

SchemaWindow::SchemaWindow(OrvaneDatabaseModel &model, QWidget *parent)
    : QDialog(parent), m_model(model), m_filter(new QLineEdit), m_tree(new QTreeWidget),
      m_text(new QTextBrowser)
{
    setWindowFlags(Qt::Window);
    setWindowTitle(tr("Schema %1").arg(model.getSchemaName()));
    resize(1120, 680);
    m_filter->setObjectName("schemaFilter");
    m_filter->setPlaceholderText(tr("Search names and descriptions"));
    m_filter->setClearButtonEnabled(true);
    m_tree->setObjectName("schemaTree");
    m_tree->setHeaderLabels({tr("Name"), tr("Description")});
    m_tree->setUniformRowHeights(true);
    m_text->setObjectName("schemaText");
    m_text->document()->setDefaultStyleSheet("pre { white-space: pre-wrap; }");
    m_text->document()->setDocumentMargin(10);
    connect(m_filter, &QLineEdit::textChanged, this, &SchemaWindow::filter);
    connect(m_tree, &QTreeWidget::currentItemChanged, this, &SchemaWindow::describe);

    auto *left = new QWidget;
    auto *column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_filter);
    column->addWidget(m_tree);
    auto *splitter = new QSplitter;
    splitter->addWidget(left);
    splitter->addWidget(m_text);
    splitter->setSizes({420, 700});
    splitter->setChildrenCollapsible(false);
    auto *whole = new QVBoxLayout(this);
    whole->addWidget(splitter);

    try {
        fill();
    } catch (const std::exception &error) {
        m_text->setPlainText(QString::fromUtf8(error.what()));
    }
    m_tree->header()->setSectionResizeMode(NameColumn, QHeaderView::ResizeToContents);
    m_tree->header()->setStretchLastSection(true);
    m_tree->setFocus();
}

void SchemaWindow::fill()
{
    QDbptr &database = *m_model.getQDbptr();
    auto *root = new QTreeWidgetItem(m_tree, {m_model.getSchemaName(), database.getSchemaDescription()});
    for (const QString &name : database.getSchemaTables()) {
        addTable(*root, name);
    }
    root->setExpanded(true);
    m_tree->setCurrentItem(root);
}

void SchemaWindow::addTable(QTreeWidgetItem &database, const QString &name)
{
    const Handle table(m_model.getQDbptr()->lookupTable(name));
    if (table->tableIsView()) {
        return;
    }
    auto *item = new QTreeWidgetItem(&database, {name, table->getTableDescription()});
    if (table->tableIsPresent()) {
        QFont bold = m_tree->font();
        bold.setBold(true);
        item->setFont(NameColumn, bold);
        item->setToolTip(NameColumn, tr("This table is in the database"));
    }
    for (const QString &fieldName : table->getTableFields()) {
        const Handle field(table->lookupField(fieldName));
        new QTreeWidgetItem(item, {fieldName, field->getFieldDescription()});
    }
}

void SchemaWindow::describe(QTreeWidgetItem *item)
{
    if (item == nullptr) {
        return;
    }
    try {
        m_text->setHtml(description(*item));
    } catch (const std::exception &error) {
        m_text->setPlainText(QString::fromUtf8(error.what()));
    }
}

QString SchemaWindow::description(const QTreeWidgetItem &item) const
{
    QDbptr &database = *m_model.getQDbptr();
    switch (levelOf(item)) {
    case DatabaseItem: {
        const Handle whole(database.getConnection()->getQDbptr());
        return qovutil_getToolTipString(whole.get(), nullptr);
    }
    case TableItem: {
        const Handle table(database.lookupTable(item.text(NameColumn)));
        return qovutil_getToolTipString(table.get(), nullptr);
    }
    case FieldItem: {
        const Handle table(database.lookupTable(item.parent()->text(NameColumn)));
        const Handle field(table->lookupField(item.text(NameColumn)));
        return qovutil_getToolTipString(field.get(), nullptr);
    }
    }
    return {};
}

// A table is kept with all its fields when it matches itself, else with those fields that do.
void SchemaWindow::filter(const QString &text)
{
    const QString wanted = text.trimmed();
    QTreeWidgetItem *root = m_tree->topLevelItem(0);
    if (root == nullptr) {
        return;
    }
    for (int row = 0; row < root->childCount(); ++row) {
        QTreeWidgetItem *table = root->child(row);
        const bool whole = matches(*table, wanted);
        bool anyField = false;
        for (int place = 0; place < table->childCount(); ++place) {
            QTreeWidgetItem *field = table->child(place);
            const bool kept = matches(*field, wanted);
            field->setHidden(!whole && !kept);
            anyField = anyField || kept;
        }
        table->setHidden(!whole && !anyField);
        table->setExpanded(!wanted.isEmpty() && !whole && anyField);
    }
}

void SchemaWindow::showTable(const QString &name)
{
    QTreeWidgetItem *root = m_tree->topLevelItem(0);
    for (int row = 0; root != nullptr && row < root->childCount(); ++row) {
        if (root->child(row)->text(NameColumn) == name) {
            m_tree->setCurrentItem(root->child(row));
            m_tree->scrollToItem(root->child(row), QAbstractItemView::PositionAtCenter);
        }
    }
}
