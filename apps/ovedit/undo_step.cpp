#include "undo_step.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <orvane/tr.h>
#include <orvane/util.h>

#include "sentences.h"

namespace {

// A name of the database library; a question by name changes nothing in it.
QString nameOf(Dbptr place, int code)
{
    const char *name = nullptr;
    return dbquery(place, code, &name) < 0 || name == nullptr ? QString() : QString::fromUtf8(name);
}

// What the library says while it lives.
class Said
{
public:
    // Takes it out of the error log, which then has what was there before.
    QString take() const
    {
        const LoggedText said(elog_string(m_count), &std::free);
        elog_clear();
        if (*m_before != '\0') {
            elog_log("%s", m_before.get());
        }
        return QString::fromUtf8(said.get()).trimmed();
    }

private:
    using LoggedText = std::unique_ptr<char, decltype(&std::free)>;
    const LoggedText m_before{elog_string(0), &std::free};
    const int64_t m_count = elog_count();
};

bool followOneAnother(const DbChange &change)
{
    return change.count > 0 &&
           change.records[change.count - 1] - change.records[0] == static_cast<int64_t>(change.count) - 1;
}

} // namespace

// ---- Keeping
// -----------------------------------------------------------------------------------------------

void UndoStep::noteNames(const DbChange &change)
{
    Dbptr table = change.place;
    table.field = dbALL;
    const bool isFirst = m_changes.empty();
    const QString tableName = nameOf(table, dbTABLE_NAME);
    const QString fieldName = change.place.field >= 0 ? nameOf(change.place, dbFIELD_NAME) : QString();
    if (isFirst) {
        m_kind = change.kind;
        m_table = tableName;
        m_field = fieldName;
        m_record = change.records[0];
    }
    m_isOneTable = m_isOneTable && tableName == m_table;
    m_isOneField = m_isOneField && fieldName == m_field;
    m_isOneKind = m_isOneKind && change.kind == m_kind;
}

bool UndoStep::add(const DbChange &change)
{
    noteNames(change);
    Change kept;
    kept.told = change;
    kept.told.records = nullptr;
    kept.told.before = nullptr;
    kept.told.after = nullptr;
    kept.offset = m_store.size();
    bool isKept = true;
    if (followOneAnother(change)) {
        kept.firstRecord = change.records[0];
    } else {
        isKept = m_store.append(reinterpret_cast<const char *>(change.records),
                                static_cast<qint64>(change.count * sizeof(int64_t))) >= 0;
    }
    isKept = isKept &&
             m_store.append(change.before, static_cast<qint64>(change.count * change.length)) >= 0 &&
             m_store.append(change.after, static_cast<qint64>(change.length)) >= 0;
    if (!isKept) {
        m_reason = m_store.error();
        setObsolete(true);
        return false;
    }
    m_changes.push_back(kept);
    m_tables.insert(change.place.table);
    m_values += static_cast<qint64>(change.count);
    setText(description());
    return true;
}

QString UndoStep::description() const
{
    const bool isOne = m_values == 1;
    const char *text = OvTranslation::noop("Changes of Several Tables");
    if (m_isOneTable && (!m_isOneKind || (m_kind == dbCHANGED_VALUES && !m_isOneField))) {
        text = OvTranslation::noop("Change of %1 Values of %2");
    } else if (m_isOneTable && m_kind == dbCHANGED_VALUES) {
        text = isOne ? OvTranslation::noop("Change of %2.%3 in record %4")
                     : OvTranslation::noop("Change of %2.%3 in %1 records");
    } else if (m_isOneTable && m_kind == dbCHANGED_MARKS) {
        text = isOne ? OvTranslation::noop("Marking Record %4 of %2")
                     : OvTranslation::noop("Marking %1 Records of %2");
    } else if (m_isOneTable) {
        text = isOne ? OvTranslation::noop("Adding 1 Record to %2")
                     : OvTranslation::noop("Adding %1 Records to %2");
    }
    // Names of tables and fields have no percent sign.
    return OvTranslation::tr(text)
        .replace("%1", counted(m_values))
        .replace("%2", m_table)
        .replace("%3", m_field)
        .replace("%4", QString::number(m_record));
}

// ---- There and back
// ----------------------------------------------------------------------------------------

bool UndoStep::load(const Change &change, QByteArray &bytes, std::vector<int64_t> &numbers, DbChange &told)
{
    const auto count = static_cast<qint64>(change.told.count);
    const auto length = static_cast<qint64>(change.told.length);
    const qint64 ofNumbers = change.firstRecord >= 0 ? 0 : count * static_cast<qint64>(sizeof(int64_t));
    bytes = m_store.read(change.offset, ofNumbers + (count + 1) * length);
    if (bytes.size() != ofNumbers + (count + 1) * length) {
        m_reason = OvTranslation::tr("what was there before can't be read back");
        return false;
    }
    numbers.resize(static_cast<std::size_t>(count));
    if (change.firstRecord >= 0) {
        for (qint64 i = 0; i < count; ++i) {
            numbers[static_cast<std::size_t>(i)] = change.firstRecord + i;
        }
    } else {
        std::copy_n(bytes.constData(), ofNumbers, reinterpret_cast<char *>(numbers.data()));
    }
    told = change.told;
    told.records = numbers.data();
    told.before = bytes.constData() + ofNumbers;
    told.after = told.before + count * length;
    return true;
}

// Backwards the last change first, so that each record goes the way back that it came.
UndoStep::Outcome UndoStep::exchange(bool back)
{
    m_leftAlone = 0;
    m_reason.clear();
    QByteArray bytes;
    std::vector<int64_t> numbers;
    for (std::size_t i = 0; i < m_changes.size(); ++i) {
        const Change &change = m_changes[back ? m_changes.size() - 1 - i : i];
        DbChange told;
        if (!load(change, bytes, numbers, told)) {
            return Outcome::Failed;
        }
        const Said said;
        int64_t left = 0;
        const int code = back ? dbtake_back(&told, &left) : dbdo_again(&told, &left);
        m_leftAlone += left;
        if (code < 0) {
            m_reason = said.take();
            return code == dbERROR_CANCELLED ? Outcome::Cancelled
                   : code == dbERROR_STALE   ? Outcome::Outdated
                                             : Outcome::Failed;
        }
        const double fraction = static_cast<double>(i + 1) / static_cast<double>(m_changes.size());
        if (i + 1 < m_changes.size() &&
            dbreport_progress(back ? "dbtake_back" : "dbdo_again", fraction) < 0) {
            return Outcome::Cancelled;
        }
    }
    return m_leftAlone < m_values ? Outcome::Done : Outcome::Nothing;
}

// ---- Tables that are gone
// ----------------------------------------------------------------------------------

void UndoStep::dropChanges(bool (*isGone)(const Change &, qint64, qint64), qint64 table, qint64 numbering)
{
    m_changes.erase(std::remove_if(m_changes.begin(), m_changes.end(),
                                   [&](const Change &change) { return isGone(change, table, numbering); }),
                    m_changes.end());
    m_tables.clear();
    m_values = 0;
    for (const Change &change : m_changes) {
        m_tables.insert(change.told.place.table);
        m_values += static_cast<qint64>(change.told.count);
    }
    if (m_changes.empty()) {
        setObsolete(true);
    }
}

void UndoStep::dropTable(qint64 table, qint64 numbering)
{
    dropChanges([](const Change &change, qint64 of,
                   qint64 now) { return change.told.place.table == of && change.told.numbering != now; },
                table, numbering);
}

void UndoStep::dropTable(qint64 table)
{
    dropChanges([](const Change &change, qint64 of, qint64) { return change.told.place.table == of; }, table,
                0);
}
