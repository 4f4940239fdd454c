#include "time_zone_dialog.h"

#include <QDateTime>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimeZone>
#include <QVBoxLayout>

namespace {

constexpr int zoneRole = Qt::UserRole;

QString offsetText(int seconds)
{
    const QChar sign = seconds < 0 ? QChar(0x2212) : QChar('+');
    const int minutes = qAbs(seconds) / 60;
    return QString("UTC%1%2:%3")
        .arg(sign)
        .arg(minutes / 60, 2, 10, QChar('0'))
        .arg(minutes % 60, 2, 10, QChar('0'));
}

// As people type it: "new york" finds America/New_York.
QString searchable(QString text)
{
    return text.replace('_', ' ').toCaseFolded();
}

} // namespace

TimeZoneDialog::TimeZoneDialog(const QString &zone, QWidget *parent)
    : QDialog(parent), m_filter(new QLineEdit), m_zones(new QListWidget)
{
    setWindowTitle(tr("Time Zone"));
    resize(420, 480);
    m_filter->setObjectName("zoneFilter");
    m_filter->setPlaceholderText(tr("Type to search, for example \u201cOslo\u201d"));
    m_filter->setClearButtonEnabled(true);
    m_zones->setObjectName("zoneList");
    m_zones->setUniformItemSizes(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_accept = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_filter, &QLineEdit::textChanged, this, &TimeZoneDialog::filter);
    connect(m_zones, &QListWidget::itemActivated, this, &QDialog::accept);

    auto *column = new QVBoxLayout(this);
    column->addWidget(new QLabel(tr("Local times are shown in this zone:")));
    column->addWidget(m_filter);
    column->addWidget(m_zones);
    column->addWidget(buttons);

    fill();
    for (const QString &start : {zone, QStringLiteral("UTC")}) {
        for (int row = 0; row < m_zones->count() && m_zones->currentItem() == nullptr; ++row) {
            if (m_zones->item(row)->data(zoneRole).toString() == start) {
                m_zones->setCurrentRow(row);
            }
        }
    }
    if (m_zones->currentItem() != nullptr) {
        m_zones->scrollToItem(m_zones->currentItem(), QAbstractItemView::PositionAtCenter);
    }
    m_accept->setEnabled(m_zones->currentItem() != nullptr);
    connect(m_zones, &QListWidget::currentItemChanged, this,
            [this](QListWidgetItem *item) { m_accept->setEnabled(item != nullptr); });
}

void TimeZoneDialog::fill()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QByteArray &id : QTimeZone::availableTimeZoneIds()) {
        const QString name = QString::fromUtf8(id);
        auto *item = new QListWidgetItem(
            QString("%1   (%2)").arg(name, offsetText(QTimeZone(id).offsetFromUtc(now))), m_zones);
        item->setData(zoneRole, name);
    }
}

// Hides what doesn't match, and stands on the first that does.
void TimeZoneDialog::filter(const QString &text)
{
    const QString wanted = searchable(text.trimmed());
    QListWidgetItem *first = nullptr;
    for (int row = 0; row < m_zones->count(); ++row) {
        QListWidgetItem *item = m_zones->item(row);
        const bool matches = searchable(item->data(zoneRole).toString()).contains(wanted);
        item->setHidden(!matches);
        first = matches && first == nullptr ? item : first;
    }
    QListWidgetItem *current = m_zones->currentItem();
    if (current == nullptr || current->isHidden()) {
        m_zones->setCurrentItem(first);
    }
    if (m_zones->currentItem() != nullptr) {
        m_zones->scrollToItem(m_zones->currentItem());
    }
}

QString TimeZoneDialog::zone() const
{
    const QListWidgetItem *item = m_zones->currentItem();
    return item == nullptr ? QString() : item->data(zoneRole).toString();
}
