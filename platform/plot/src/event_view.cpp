#include <orvane/plot.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include <QTimer>

#include "catalogue_reader.h"
#include "event_view_data.h"
#include "guarded.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

static constexpr auto slice = 8ms;       // of reading between two turns of the event loop
static constexpr auto lookInterval = 1s; // between looks for a changed table

struct OvEventView::Private {
    std::unique_ptr<OriginTable> table;
    std::optional<CatalogueReader> reader;
    std::shared_ptr<const EventCatalogue> catalogue = std::make_shared<EventCatalogue>();
    OriginTable::State state; // of the table when the catalogue was read
    Clock::duration reading{};
    Clock::time_point nextLook;
    QTimer sliceTimer, lookTimer;
};

OvEventView::OvEventView(Pf *parameterFile) : m_private(std::make_unique<Private>())
{
    m_private->lookTimer.setInterval(lookInterval);
    connect(&m_private->sliceTimer, &QTimer::timeout, this,
            [this] { guarded("reading events", [this] { readSlice(); }); });
    connect(&m_private->lookTimer, &QTimer::timeout, this,
            [this] { guarded("looking for new events", [this] { lookForChanges(); }); });
    PfValue value{};
    if (parameterFile && pfget(parameterFile, "dbname", &value) == PFSTRING && value.text)
        configure(QStringLiteral("dbname"), QString::fromUtf8(value.text));
}

OvEventView::~OvEventView() = default;

bool OvEventView::configure(const QString &key, const QString &value)
{
    if (key != QLatin1String("dbname"))
        return false;
    m_private->reader.reset();
    m_private->table = std::make_unique<OriginTable>(value);
    m_private->catalogue = std::make_shared<EventCatalogue>();
    startReading();
    emit changed();
    return true;
}

bool OvEventView::configure(const char *key, const char *value)
{
    return configure(QString::fromLocal8Bit(key), QString::fromLocal8Bit(value));
}

void OvEventView::startReading()
{
    m_private->reader.emplace(*m_private->table);
    m_private->reading = {};
    m_private->sliceTimer.start(0);
    m_private->lookTimer.stop();
}

bool OvEventView::isReading() const
{
    return m_private->reader.has_value();
}

double OvEventView::progress() const
{
    return m_private->reader ? m_private->reader->progress() : 1;
}

void OvEventView::readSlice()
{
    if (!m_private->reader)
        return m_private->sliceTimer.stop();
    const auto begin = Clock::now();
    bool atEnd = true; // also when reading fails
    const bool fine = guarded("reading events", [&] { atEnd = m_private->reader->readFor(slice); });
    m_private->reading += Clock::now() - begin;
    if (atEnd)
        endReading(fine);
    else
        emit progressed();
}

void OvEventView::endReading(bool fine)
{
    m_private->sliceTimer.stop();
    EventCatalogue read = m_private->reader->take();
    if (!fine)
        read.error = tr("The events can't be read: the memory doesn't suffice.");
    m_private->state = m_private->reader->state();
    m_private->reader.reset();
    m_private->catalogue = std::make_shared<EventCatalogue>(std::move(read));
    // A table that grows all the time is not read all the time.
    m_private->nextLook = Clock::now() + std::max<Clock::duration>(lookInterval, 4 * m_private->reading);
    m_private->lookTimer.start();
    emit changed();
}

void OvEventView::finishReading()
{
    while (m_private->reader)
        readSlice();
}

void OvEventView::lookForChanges()
{
    if (!m_private->table || m_private->reader || Clock::now() < m_private->nextLook)
        return;
    if (m_private->table->state() != m_private->state) {
        startReading();
        emit progressed();
    }
}

std::shared_ptr<const EventCatalogue> OvEventViewData::catalogue(const OvEventView &view)
{
    return view.m_private->catalogue;
}

QVector<std::pair<QString, QString>> OvEventViewData::fieldsOf(const OvEventView &view, std::int64_t record)
{
    return view.m_private->table ? view.m_private->table->fieldsOf(record)
                                 : QVector<std::pair<QString, QString>>();
}
