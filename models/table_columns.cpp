#include "table_columns.h"

#include <QVariant>
#include <memory>

#include "answered.h"
#include <qdbptr.h>
#include <qovresponse.h>

namespace {

TableColumn askColumn(QDbptr &table, const QString &name)
{
    TableColumn unknown;
    unknown.field = dbinvalid();
    return answered(unknown, [&] {
        const std::unique_ptr<QDbptr> field(table.lookupField(name));
        TableColumn found;
        found.name = field->getFieldName();
        found.type = field->getFieldType();
        found.nullText = field->getFieldNull();
        found.field = field->getDbptr();
        return found;
    });
}

} // namespace

TableColumns::TableColumns(QDbptr &table) : m_names(table.getTableFields())
{
    m_columns.reserve(static_cast<std::size_t>(m_names.size()));
    for (const QString &name : qAsConst(m_names))
        m_columns.push_back(askColumn(table, name));
    m_samples.resize(m_columns.size());
}

const TableColumn *TableColumns::at(int position) const
{
    return position >= 0 && position < count() ? &m_columns[static_cast<std::size_t>(position)] : nullptr;
}

const ColumnSample &TableColumns::sample(int position, QDbptr &cell)
{
    const auto place = static_cast<std::size_t>(position);
    std::optional<ColumnSample> &known = m_samples.at(place);
    if (!known) {
        cell.moveTo(m_columns[place].field);
        const QVariantList answer = cell.request(QStringLiteral("dbsample"))->toList();
        known = ColumnSample{answer.value(0).toBool(), answer.value(1).toInt()};
    }
    return *known;
}

void TableColumns::dropSamples()
{
    m_samples.assign(m_columns.size(), std::nullopt);
}
