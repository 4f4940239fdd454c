// Changing the records of a table.

#include <stdexcept>

#include <orvane/db.h>
#include <orvane/tr.h>

#include "library_reason.h"
#include "orvanetablemodel_p.h"

namespace {

// What the user is told of a failed change: the library's reason, or where it has none, the request's
// message.
QString reasonOf(const QString &errorText)
{
    const QString reason = libraryReason(errorText).trimmed();
    if (!reason.isEmpty())
        return reason;
    const QString message = errorText.section(QStringLiteral(":\n\n"), 1);
    return message.section(QStringLiteral("\n\n"), 0, 0);
}

} // namespace

bool OrvaneTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (index.column() <= 0)
        return false;
    if (role != Qt::EditRole)
        return true;
    d->editError.clear();
    const std::optional<Dbptr> place = d->place(index.column(), index.row());
    if (!place) {
        d->editError = OvTranslation::tr("the table is not there any more");
        return false;
    }
    if (index.row() >= 0 && !isCurrent()) {
        // The row may have another record by now than the one that the user looks at.
        d->editError = OvTranslation::tr("another program replaced the table since it was shown, and it is "
                                         "read anew. Look whether this is "
                                         "still the record that you mean, and store the value again");
        queueRefresh({});
        return false;
    }
    try {
        // A handle of its own: those of indexes may have listeners who reset the model.
        QDbptr cell(d->display->getConnection(), *place);
        cell.dbPutv(d->column(index.column())->name, value);
    } catch (const std::exception &error) {
        d->editError = reasonOf(QString::fromUtf8(error.what()));
        if (index.row() >= 0 && !isCurrent())
            queueRefresh({});
        return false;
    }
    emit dataChanged(index, index);
    letOthersShowChange();
    return true;
}

QString OrvaneTableModel::editError() const
{
    return d->editError;
}

int OrvaneTableModel::addScratchRow()
{
    const int added = d->own->dbAddchk(QString());
    emit modelReset();
    return added;
}

void OrvaneTableModel::copyToScratchRow(int row)
{
    Dbptr place = d->own->getDbptr();
    place.record = row; // made directly: a lookup takes no negative numbers, which the null record has
    QDbptr record(d->own->getConnection(), place);
    record.dbGet(true);
}

void OrvaneTableModel::crunch()
{
    if (!d->own->isValid())
        return;
    d->own->dbCrunch();
    emit modelReset();
    letOthersCatchUp();
}
