// The commands of the database window that change rows, and its row viewer.
#include <orvanedatabaseview.h>

#include <QMainWindow>

#include <orvane/db.h>

#include <orvanedatabasemodel.h>
#include <orvanerowview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "slot_guard.h"

void OrvaneDatabaseView::buildRowViewer()
{
    m_rowViewWindow = new QMainWindow(this);
    m_rowViewWindow->setObjectName("rowViewWindow");
    m_rowViewWindow->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    m_rowView = new OrvaneRowView(m_config, m_rowViewWindow);
    m_rowViewWindow->setCentralWidget(m_rowView);
    m_rowViewWindow->hide();
}

void OrvaneDatabaseView::createNewTable(QString newTableName)
{
    showingErrors([&] {
        if (newTableName.isEmpty() || m_model == nullptr) {
            return;
        }
        OrvaneTableModel *table = m_model->getTableModel(newTableName);
        if (table == nullptr) {
            return;
        }
        addTable(table);
        setFocusTable(newTableName);
        addRows();
    });
}

void OrvaneDatabaseView::runOnTableView(void (OrvaneTableView::*command)())
{
    showingErrors([&] {
        if (currentTable() != nullptr) {
            (getCurrentTableView()->*command)();
        }
    });
}

void OrvaneDatabaseView::markSelected()
{
    runOnTableView(&OrvaneTableView::markSelected);
}

void OrvaneDatabaseView::deleteSelectedViewRows()
{
    runOnTableView(&OrvaneTableView::deleteSelectedViewRows);
}

void OrvaneDatabaseView::deleteOtherVisibleViewRows()
{
    runOnTableView(&OrvaneTableView::deleteOtherVisibleViewRows);
}

void OrvaneDatabaseView::deleteAllOtherViewRows()
{
    runOnTableView(&OrvaneTableView::deleteAllOtherViewRows);
}

void OrvaneDatabaseView::addRows()
{
    showingErrors([this] {
        if (OrvaneTableModel *table = currentTable()) {
            m_rowView->setModel(table, dbSCRATCH);
            m_rowViewWindow->show();
            m_rowViewWindow->raise();
            m_rowViewWindow->activateWindow();
        }
    });
}

void OrvaneDatabaseView::crunch()
{
    showingErrors([this] {
        if (OrvaneTableModel *table = currentTable()) {
            table->crunch();
        }
    });
}
