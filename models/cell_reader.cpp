#include "cell_reader.h"

#include "table_columns.h"
#include <qdbptr.h>
#include <qovresponse.h>

CellReader::CellReader() = default;
CellReader::~CellReader() = default;

void CellReader::setTable(const QDbptr &table)
{
    forget();
    m_handle = std::make_unique<QDbptr>(table.getConnection(), table.getDbptr());
}

QDbptr &CellReader::cell(const TableColumn &column, qint64 record)
{
    Dbptr place = column.field;
    place.record = record;
    m_handle->moveTo(place);
    return *m_handle;
}

const CellText &CellReader::text(const TableColumn &column, qint64 record, Use use)
{
    const auto now = std::chrono::steady_clock::now();
    const bool remembered = m_field == column.field.field && m_record == record && !(m_servedUses & use) &&
                            now - m_readAt < lifetime;
    if (!remembered) {
        forget();
        m_cell.text = cell(column, record).request(m_getRequest, m_getArguments)->toString().trimmed();
        m_cell.null = m_cell.text == column.nullText;
        m_field = column.field.field;
        m_record = record;
        m_readAt = now;
        m_servedUses = 0;
    }
    m_servedUses |= use;
    return m_cell;
}

QVariant CellReader::value(const TableColumn &column, qint64 record)
{
    return cell(column, record).dbGetv();
}
