#ifndef OVQT_MODELS_TABLE_COLUMNS_H
#define OVQT_MODELS_TABLE_COLUMNS_H

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include <orvane/db.h>

class QDbptr;

// What a look at the first records of a field says about it.
struct ColumnSample {
    bool probablyNull;
    int widthChars;
};

// One field of the table that is shown, and what does not change while the table lives.
struct TableColumn {
    QString name;     // without the member table that a view's list of fields puts before it
    Dbptr field;      // all records; invalid when the field can't be looked up
    int type = 0;     // a field type of <orvane/db.h>
    QString nullText; // as stored

    bool known() const { return field.field >= 0; }
};

// The fields of a table, asked once.
class TableColumns
{
public:
    // No columns.
    TableColumns() = default;

    // The fields of a valid table handle. A field that can't be looked up is in the list and not known;
    // throws when there is no list.
    explicit TableColumns(QDbptr &table);

    int count() const { return static_cast<int>(m_columns.size()); }
    const QStringList &names() const
    {
        return m_names;
    } // as the table lists them: of a view as "table.field"

    // By position, from 0; null outside.
    const TableColumn *at(int position) const;

    // The sample of a column, taken when it is first asked for. `cell` is moved to the field. Throws when the
    // request fails.
    const ColumnSample &sample(int position, QDbptr &cell);

    // Samples are taken anew when they are next asked for.
    void dropSamples();

private:
    QStringList m_names;
    std::vector<TableColumn> m_columns;
    std::vector<std::optional<ColumnSample>> m_samples;
};

#endif
