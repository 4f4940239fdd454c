// The texts of many cells at once.

#include <optional>
#include <vector>

#include <orvane/db.h>

#include "orvanetablemodel_p.h"

namespace {

// A column, and where its field stands in the text of a record.
struct RecordPart {
    const TableColumn *column = nullptr; // null where there is no such column
    int number = 0;
    int64_t offset = -1; // negative: the cell is asked for by itself
    int64_t width = 0;
};

RecordPart partOf(int number, const TableColumn *column)
{
    RecordPart part{column, number};
    // What a bundle shows is not what stands in its record.
    if (column == nullptr || column->type == dbDBPTR)
        return part;
    const bool isKnown = dbquery(column->field, dbFIELD_INDEX, &part.offset) == 0 &&
                         dbquery(column->field, dbFIELD_SIZE, &part.width) == 0;
    if (!isKnown)
        part.offset = -1;
    return part;
}

// Reads records, by way of the library itself: requests answer texts, in which bytes can't be counted. Of a
// view of several tables it reads fields: the records of the other tables may lie anywhere in their files.
class RecordText
{
public:
    RecordText(Dbptr table, bool byField) : m_place(table), m_byField(byField) { m_place.field = dbALL; }

    void goTo(int record)
    {
        m_place.record = record;
        m_isRead = !m_byField && read(m_place);
    }

    // None where the cell has to be asked for by itself.
    std::optional<QString> text(const RecordPart &part)
    {
        if (part.column == nullptr || part.offset < 0)
            return std::nullopt;
        if (!m_byField) {
            const bool has = m_isRead && part.offset + part.width <= m_length;
            return has ? std::optional(trimmed(part.offset, part.width)) : std::nullopt;
        }
        Dbptr cell = part.column->field;
        cell.record = m_place.record;
        return read(cell) ? std::optional(trimmed(0, m_length)) : std::nullopt;
    }

private:
    // False where there is nothing to be read.
    bool read(const Dbptr &place)
    {
        m_length = dbget(place, m_room.data(), m_room.size());
        if (m_length >= static_cast<int64_t>(m_room.size())) {
            m_room.resize(static_cast<std::size_t>(m_length) + 1);
            m_length = dbget(place, m_room.data(), m_room.size());
        }
        return m_length >= 0 && m_length < static_cast<int64_t>(m_room.size());
    }
    QString trimmed(int64_t offset, int64_t width) const
    {
        return QString::fromUtf8(m_room.data() + offset, static_cast<int>(width)).trimmed();
    }

    Dbptr m_place;
    const bool m_byField;
    bool m_isRead = false;
    std::vector<char> m_room = std::vector<char>(1024);
    int64_t m_length = -1;
};

QString displayedText(const QString &text, const TableColumn &column, const DisplaySettings &settings)
{
    if (text == column.nullText && !settings.showRawNulls)
        return {};
    if (column.type == dbTIME && settings.showReadableTimes)
        return settings.readableTime(text.toDouble());
    return text.isEmpty() ? QString(QLatin1String("")) : text;
}

} // namespace

void OrvaneTableModel::readAhead(int first, int end) const
{
    if (!d->display->isValid() || first < 0 || end <= first)
        return;
    const Dbptr rows = dbrow_range(d->display->getDbptr(), first, end);
    if (rows.table >= 0)
        dbread_ahead(rows);
}

QStringList OrvaneTableModel::displayedTexts(const QVector<int> &columns, int first, int end) const
{
    QStringList texts;
    if (!d->display->isValid() || first < 0 || end <= first)
        return texts;
    std::vector<RecordPart> parts;
    for (const int number : columns)
        parts.push_back(partOf(number, d->column(number)));
    texts.reserve(columns.size() * (end - first));
    const DisplaySettings &settings = d->settings();
    const Dbptr table = d->display->getDbptr();
    readAhead(first, end);
    RecordText record(table, d->memberTables().size() > 1);
    for (int row = first; row < end; ++row) {
        record.goTo(row);
        for (const RecordPart &part : parts) {
            if (const std::optional<QString> text = record.text(part)) {
                texts.append(displayedText(*text, *part.column, settings));
            } else {
                // Also of a view's row that has lost one of its records: the others are there.
                texts.append(data(index(row, part.number), Qt::DisplayRole).toString());
            }
        }
    }
    return texts;
}
