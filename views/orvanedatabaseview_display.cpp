// The commands of the database window that change what the current table view shows.
#include <orvanedatabaseview.h>

#include <QInputDialog>
#include <QPointer>

#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qlistchooserdialog.h>

#include "slot_guard.h"

void OrvaneDatabaseView::arrange()
{
    showingErrors([this] {
        OrvaneTableModel *table = currentTable();
        const QPointer<OrvaneTableView> view = getCurrentTableView();
        if (table == nullptr || view == nullptr) {
            return;
        }
        bool accepted = false;
        const QList<QString> fields =
            QListChooserDialog::modifyList(this, table->getTableFields(), view->getFieldNamesVisible(),
                                           OvTranslation::tr("Show fields"), &accepted, nullptr, nullptr);
        if (accepted && view != nullptr) {
            view->setFieldNamesVisible(fields);
        }
    });
}

void OrvaneDatabaseView::goToRow()
{
    showingErrors([this] {
        OrvaneTableModel *table = currentTable();
        const QPointer<OrvaneTableView> view = getCurrentTableView();
        if (table == nullptr || view == nullptr) {
            return;
        }
        bool accepted = false;
        const int row = QInputDialog::getInt(this, OvTranslation::tr("Row Number"),
                                             OvTranslation::tr("Row Number") + OvTranslation::tr(":"), 0, 0,
                                             table->rowCount() - 1, 1, &accepted);
        if (accepted && view != nullptr) {
            view->scrollToRow(row);
        }
    });
}
