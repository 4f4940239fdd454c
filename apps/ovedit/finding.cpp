#include "finding.h"

#include <QApplication>
#include <QPointer>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qdbptr.h>

#include "application.h"
#include "error_text.h"
#include "main_window.h"
#include "problem_log.h"
#include "sentences.h"

namespace {

// The place of a row in what is shown, or that of all rows for -1.
Dbptr placeOf(const OrvaneTableModel &table, int row)
{
    const QModelIndex cell = table.addQdbptrToIndex(table.index(qMax(row, 0), 1)); // 0 is no field
    Dbptr place = static_cast<QDbptr *>(cell.internalPointer())->getDbptr();
    if (row < 0) {
        place.record = dbALL;
    }
    return place;
}

} // namespace

void Finding::ask()
{
    const QString expression = m_window.view()->getExpression(OvTranslation::tr("Find rows for which"));
    if (!expression.trimmed().isEmpty()) {
        m_expression = expression;
        find(false, From::CurrentRow);
    }
}

void Finding::next()
{
    goOn(false);
}

void Finding::previous()
{
    goOn(true);
}

void Finding::goOn(bool backwards)
{
    if (m_expression.isEmpty()) {
        ask();
    } else {
        find(backwards, From::Neighbour);
    }
}

void Finding::find(bool backwards, From from)
{
    const QPointer<OrvaneTableView> view = m_window.view()->getCurrentTableView();
    const OrvaneTableModel &table = *view->model();
    if (table.rowCount() == 0) {
        QApplication::beep();
        return;
    }
    const QModelIndex current = view->currentIndex();
    const int row = current.isValid() ? current.row() - (from == From::CurrentRow ? 1 : 0) : -1;
    const QByteArray expression = m_expression.toUtf8();
    m_window.application().problems().collect(); // what is there by now is not about this
    int64_t found = dbfind(placeOf(table, row), expression.constData(), backwards, nullptr);
    const bool goesRound = found == dbERROR_NOT_FOUND && row >= 0;
    if (goesRound) {
        found = dbfind(placeOf(table, -1), expression.constData(), backwards, nullptr);
    }
    if (found == dbERROR_CANCELLED || view == nullptr) {
        return; // as who stopped it knows; a long search lets events through
    }
    if (found == dbERROR_NOT_FOUND) {
        QApplication::beep();
        m_window.showMessage(
            OvTranslation::tr("No row of %1 fits: %2").arg(table.getTableName(), m_expression));
        return;
    }
    if (found < 0) {
        const QString refusal = OvTranslation::tr("Rows can't be searched by '%1'.").arg(m_expression);
        m_expression.clear(); // what is looked for next is asked for again
        fail(refusal + "\n\n" + withoutCall(takeErrorLog().value(0)));
    }
    const QStringList fields = view->getFieldNamesVisible();
    const QString field =
        current.isValid() ? table.fieldNameForColumnIndex(current.column()) : fields.value(0);
    view->scrollToCell(static_cast<int>(found), field);
    if (goesRound) {
        m_window.showMessage(backwards ? OvTranslation::tr("Searched on from the last row.")
                                       : OvTranslation::tr("Searched on from the first row."));
    }
}
