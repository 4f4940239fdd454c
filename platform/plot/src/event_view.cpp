#include <orvane/plot.h>

#include "event_catalogue.h"

OvEventView::OvEventView(Pf *parameterFile) : m_catalogue(std::make_unique<EventCatalogue>())
{
    PfValue value{};
    if (parameterFile && pfget(parameterFile, "dbname", &value) == PFSTRING && value.text)
        configure(QStringLiteral("dbname"), QString::fromUtf8(value.text));
}

OvEventView::~OvEventView() = default;

bool OvEventView::configure(const QString &key, const QString &value)
{
    if (key != QLatin1String("dbname"))
        return false;
    *m_catalogue = readEvents(value);
    if (m_changed)
        m_changed();
    return true;
}

bool OvEventView::configure(const char *key, const char *value)
{
    return configure(QString::fromLocal8Bit(key), QString::fromLocal8Bit(value));
}

const EventCatalogue &OvEventView::catalogue() const
{
    return *m_catalogue;
}
