// The status labels of the database window.
#include <orvanedatabaseview.h>

#include <cstdlib>
#include <memory>

#include <QLabel>

#include <orvane/numbers.h>
#include <orvane/tr.h>
#include <orvane/util.h>

#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qdbptr.h>

#include "slot_guard.h"

namespace {

constexpr int firstPageWithoutTables = 2;

struct Free {
    void operator()(char *text) const { std::free(text); }
};
using OwnedText = std::unique_ptr<char, Free>;

QString timeText(double epoch, OvConfig &config)
{
    if (!config["show_readable_times"].toBool()) {
        const OwnedText text(epoch2str(epoch, "%E"));
        return QString::fromUtf8(text.get());
    }
    const QByteArray format = config["time_string_format"].toString().toUtf8();
    const QByteArray zone = config["local_time_zone"].toString().toLocal8Bit();
    const bool inZone = config["show_times_in_local_zone"].toBool();
    const OwnedText text(zepoch2str(epoch, format.constData(), inZone ? zone.constData() : nullptr));
    return QString::fromUtf8(text.get());
}

QString ageText(double epoch)
{
    const OwnedText text(strtdelta(std_now() - epoch));
    const QString age = QString::fromUtf8(strtrim(text.get()));
    const int unit =
        age.indexOf(' ') + 1; // one of those that the tooltip of a table names for the catalogues
    return age.left(unit) + OvTranslation::tr(age.mid(unit).toUtf8().constData());
}

} // namespace

void OrvaneDatabaseView::updateStatusLabels()
{
    if (m_rowCountLabel == nullptr || m_modificationLabel == nullptr || m_updateLabel == nullptr) {
        return;
    }
    // Before the model is looked at: a page of products has none, and must not show the count of the last
    // table.
    if (getCurrentStackIndex() >= firstPageWithoutTables) {
        m_rowCountLabel->setText(QString());
        return;
    }
    OrvaneTableModel *table = currentTable();
    if (table == nullptr) {
        return;
    }
    loggingErrors("OrvaneDatabaseView::updateStatusLabels", [&] { showStatusOf(*table); });
}

void OrvaneDatabaseView::showStatusOf(OrvaneTableModel &table)
{
    const int rows = table.rowCount();
    m_rowCountLabel->setText(rows == 1 ? OvTranslation::tr("%1 Row").arg(1)
                                       : OvTranslation::tr("%1 Rows").arg(OvNumbers::counted(rows)));

    const bool tracking = m_config["update_interval_sec"].toDouble() > 0;
    QString modification;
    if (!table.tableIsView()) {
        const double changed = table.getQDbptr()->getTableModTime();
        modification = OvTranslation::tr("Table '%1' updated").arg(table.getTableName()) +
                       OvTranslation::tr(":") + " " + timeText(changed, m_config);
        if (tracking) {
            modification += " (" + OvTranslation::tr("%1 ago").arg(ageText(changed)) + ")";
        }
    }
    m_modificationLabel->setText(modification);

    if (!tracking) {
        m_updateLabel->setTextFormat(Qt::RichText);
        m_updateLabel->setText("<i>" + OvTranslation::tr("<Update tracking disabled>").toHtmlEscaped() +
                               "</i>");
        return;
    }
    m_updateLabel->setTextFormat(Qt::PlainText);
    // The name is left out on purpose, and so the text begins with a blank.
    m_updateLabel->setText(OvTranslation::tr("%1 updated").arg(QString()) + OvTranslation::tr(":") + " " +
                           timeText(std_now(), m_config));
}
