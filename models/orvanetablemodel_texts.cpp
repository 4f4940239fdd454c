// The texts of many cells at once.

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

// Reads whole records, by way of the library itself: requests answer texts, in which bytes can't be counted.
class RecordText
{
public:
    explicit RecordText(Dbptr table) : m_place(table) { m_place.field = dbALL; }

    // False where the record can't be read.
    bool read(int record)
    {
        m_place.record = record;
        m_length = dbget(m_place, m_room.data(), m_room.size());
        if (m_length >= static_cast<int64_t>(m_room.size())) {
            m_room.resize(static_cast<std::size_t>(m_length) + 1);
            m_length = dbget(m_place, m_room.data(), m_room.size());
        }
        return m_length >= 0 && m_length < static_cast<int64_t>(m_room.size());
    }

    bool has(const RecordPart &part) const
    {
        return part.offset >= 0 && part.offset + part.width <= m_length;
    }
    QString text(const RecordPart &part) const
    {
        return QString::fromUtf8(m_room.data() + part.offset, static_cast<int>(part.width)).trimmed();
    }

private:
    Dbptr m_place;
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
    RecordText record(d->display->getDbptr());
    for (int row = first; row < end; ++row) {
        const bool isRead = record.read(row);
        for (const RecordPart &part : parts) {
            if (isRead && part.column != nullptr && record.has(part)) {
                texts.append(displayedText(record.text(part), *part.column, settings));
            } else {
                // Also of a view's row that has lost one of its records: the others are there.
                texts.append(data(index(row, part.number), Qt::DisplayRole).toString());
            }
        }
    }
    return texts;
}
