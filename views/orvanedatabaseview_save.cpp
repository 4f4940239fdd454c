// Saving the table shown, and the map of the database's events.
#include <orvanedatabaseview.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include <memory>
#include <stdexcept>

#include <orvane/plot.h>
#include <orvane/tr.h>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qdbptr.h>
#include <qovutil.h>

#include "save_form.h"
#include "slot_guard.h"

namespace {

constexpr int productsPage = 2;

} // namespace

void OrvaneDatabaseView::saveAs()
{
    showingErrors([this] {
        const QPointer<OrvaneTableModel> table = currentTable();
        const QPointer<OrvaneTableView> view = getCurrentTableView();
        if (table == nullptr || view == nullptr || m_model == nullptr) {
            return;
        }
        const QFileInfo database(m_model->getDatabaseFileName());
        const QString defaultName = database.fileName() + "." + table->getFacadeTableName();
        const QString defaultPath = database.absolutePath() + "/" + defaultName;
        QString filter = firstSaveFilter();
        const QString path =
            QFileDialog::getSaveFileName(this, OvTranslation::tr("Save As") + OvTranslation::tr("..."),
                                         defaultPath, saveFilters().join(QStringLiteral(";;")), &filter);
        if (path.isEmpty() || table == nullptr || view == nullptr) {
            return;
        }
        saveInForm(filter,
                   {*this, *table, *view, path, defaultName, m_config["saveas_includes_headers"].toBool()});
    });
}

// ---- Event map -----------------------------------------------------------------------------------------

namespace {

QString notMapping(const char *what, OrvaneDatabaseModel &database)
{
    return OvTranslation::tr(what) + database.getDatabaseName() +
           OvTranslation::tr("' -- not making an event map");
}

// A page with the map of a database's events.
std::unique_ptr<QWidget> newMapPage(const QString &databaseName)
{
    auto page = std::make_unique<QWidget>();
    auto *map = new OvEventMap(page.get(), true, true);
    map->setDefaults(0);
    map->configure("latr", "40");
    map->configure("lonr", "-100");
    map->configure("range", "120");
    auto events = std::make_unique<OvEventView>(nullptr);
    events->configure("dbname", databaseName.toLocal8Bit().constData());
    map->attach(events.release());
    return page;
}

} // namespace

void OrvaneDatabaseView::mapCurrent()
{
    showingErrors([this] {
        if (m_productsTabs.count() > 0) {
            if (getCurrentStackIndex() != productsPage) {
                showStackItem(productsPage);
            } else {
                qovutil_showError(OvTranslation::tr("ovedit currently supports only one map at a time"),
                                  nullptr);
            }
            return;
        }
        if (m_model == nullptr || m_model->getQDbptr() == nullptr) {
            return;
        }
        bool isPresent = false;
        try {
            const std::unique_ptr<QDbptr> origin(m_model->getQDbptr()->lookupTable("origin"));
            isPresent = origin->tableIsPresent();
        } catch (const std::runtime_error &) {
            qovutil_showError(
                notMapping(OvTranslation::noop("Failed to lookup 'origin' table in database '"), *m_model),
                nullptr);
            return;
        }
        if (!isPresent) {
            qovutil_showError(
                notMapping(OvTranslation::noop("No 'origin' table found in database '"), *m_model), nullptr);
            return;
        }
        QWidget *page = newMapPage(m_model->getDatabaseName()).release();
        m_productsTabs.setCurrentIndex(m_productsTabs.addTab(page, OvTranslation::tr("Events Map")));
        showStackItem(productsPage);
    });
}
