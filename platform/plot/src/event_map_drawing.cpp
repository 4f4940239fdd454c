#include "event_map_drawing.h"

#include <algorithm>
#include <cmath>

#include <QLocale>

#include "event_view_data.h"
#include "graticule.h"
#include "overlay.h"

static constexpr double border = 26;           // logical pixels around the whole map, for labels
static constexpr double largestScale = 20'000; // logical pixels per degree: one is about five metres
static constexpr double smallestZoom = 0.5;
static constexpr double fineFrom =
    5; // logical pixels per degree from which on the coarse coastline looks coarse

void OvEventMap::Drawing::forgetMap()
{
    m_pendingEvents.cancel();
    m_pendingLand.cancel();
    m_projection.reset();
    m_events.reset();
    m_land.reset();
    m_wantedDetail.reset();
    forgetTiles();
    centre = {};
    zoom = 1;
    m_eventsWanted = true;
}

void OvEventMap::Drawing::forgetEvents()
{
    m_pendingEvents.cancel();
    m_events.reset();
    m_problem.clear();
    m_eventsWanted = true;
    forgetTiles();
}

void OvEventMap::Drawing::select(std::vector<std::int64_t> records)
{
    selection = std::move(records);
    if (m_events)
        m_events->select(selection);
    m_tiles.renew();
    whole = false;
}

MapFrame OvEventMap::Drawing::frame(QSizeF size) const
{
    if (legend) {
        const QSizeF place = Legend::fitting(size, metrics, false).size(metrics);
        if (place.width() > 0)
            size.rwidth() -= place.width() + 8;
    }
    size.rheight() -= metrics.height() + 8; // for what is said below the map
    const double side = std::max(std::min(size.width(), size.height()) - 2 * border, 20.0);
    return {centre, side / (2 * settings.range) * zoom, size};
}

double OvEventMap::Drawing::zoomForScale(double scale, QSizeF size) const
{
    const double one = frame(size).scale / zoom;
    return std::clamp(scale / one, smallestZoom, std::max(largestScale / one, 1.0));
}

void OvEventMap::Drawing::keepInside()
{
    centre.setX(std::clamp(centre.x(), -settings.range, settings.range));
    centre.setY(std::clamp(centre.y(), -settings.range, settings.range));
}

const Projection &OvEventMap::Drawing::projection() const
{
    if (!m_projection)
        m_projection.emplace(settings.latitude, settings.longitude);
    return *m_projection;
}

Detail OvEventMap::Drawing::detailFor(QSizeF size) const
{
    return frame(size).scale < fineFrom ? Detail::Coarse : Detail::Fine;
}

void OvEventMap::Drawing::startWork(QSizeF size)
{
    const double range = settings.range;
    const Detail detail = detailFor(size);
    if (m_wantedDetail != detail) {
        m_wantedDetail = detail;
        m_pendingLand.start([detail, range, projection = projection()](const std::atomic<bool> &cancelled) {
            return projectLand(coastlineRings(detail), projection, range, cancelled);
        });
    }
    if (m_eventsWanted && view) {
        m_eventsWanted = false;
        m_problem.clear();
        m_pendingEvents.start([catalogue = OvEventViewData::catalogue(*view), range,
                               projection = projection()](const std::atomic<bool> &cancelled) {
            return EventLayer(catalogue, projection, range, cancelled);
        });
    }
}

bool OvEventMap::Drawing::proceed(QSizeF size, bool wait)
{
    bool news = false;
    try {
        startWork(size);
        if (auto land = m_pendingLand.take(wait)) {
            m_land = std::move(land);
            news = true;
        }
        if (auto events = m_pendingEvents.take(wait)) {
            m_events.emplace(std::move(*events));
            m_events->select(selection);
            news = true;
        }
    } catch (const std::exception &error) { // no memory, or no thread
        m_problem = OvEventMap::tr("The map can't be drawn: %1").arg(QString::fromUtf8(error.what()));
        news = true;
    }
    if (news) {
        m_tiles.renew();
        whole = false;
    }
    return news;
}

bool OvEventMap::Drawing::isProceeding() const
{
    return m_pendingEvents.isUnderWay() || m_pendingLand.isUnderWay() || (m_eventsWanted && view) ||
           !m_wantedDetail;
}

OvEventMap::Drawing::View OvEventMap::Drawing::viewOf(QSizeF size, double ratio) const
{
    MapFrame device = frame(size);
    device.scale *= ratio;
    const QPoint corner(
        static_cast<int>(std::lround(device.centre.x() * device.scale - device.size.width() * ratio / 2)),
        static_cast<int>(std::lround(-device.centre.y() * device.scale - device.size.height() * ratio / 2)));
    return {device, QRect(corner, QSize(static_cast<int>(std::ceil(size.width() * ratio)),
                                        static_cast<int>(std::ceil(size.height() * ratio))))};
}

TileStore::Draw OvEventMap::Drawing::tileDrawer(const MapFrame &frame) const
{
    return [this, scale = frame.scale](const QRect &place) {
        const QRectF exact(place);
        const MapFrame part{QPointF(exact.center().x() / scale, -exact.center().y() / scale), scale,
                            exact.size()};
        return m_painter->draw(part, {projection(), settings.range, m_land ? &*m_land : nullptr, events()},
                               m_steps);
    };
}

void OvEventMap::Drawing::updateSteps(double scale, QSizeF size)
{
    const double shown = std::min(std::min(size.width(), size.height()) / scale, 2 * settings.range);
    // Of the whole map the place in its middle says nothing.
    const bool isPart = shown < settings.range;
    const double latitude = isPart ? projection().inverse(centre).latitude : settings.latitude;
    const GraticuleSteps steps = graticuleSteps(shown, latitude);
    if (steps == m_steps)
        return;
    m_steps = steps;
    m_tiles.renew();
}

void OvEventMap::Drawing::paint(QPainter &painter, QSizeF size, double ratio, const QPalette &palette,
                                TileStore::Clock::time_point end)
{
    const MapColours colours(palette);
    if (!m_painter || m_painter->colours() != colours || m_painter->devicePixelRatio() != ratio) {
        m_painter.emplace(colours, ratio);
        m_tiles.clear();
    }
    const View now = viewOf(size, ratio);
    updateSteps(now.frame.scale / ratio, size);
    m_tiles.setScale(now.frame.scale);
    whole = m_tiles.drawMissing(now.seen, tileDrawer(now.frame), end);
    painter.fillRect(QRectF({0, 0}, size), colours.page);
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    m_tiles.paint(painter, now.seen);
    painter.restore();
    m_tiles.trim(now.seen);
    paintTexts(painter, size);
}

bool OvEventMap::Drawing::drawAhead(QSizeF size, double ratio)
{
    if (!m_painter || m_painter->devicePixelRatio() != ratio)
        return false;
    const View now = viewOf(size, ratio);
    const int ahead = TileStore::side;
    return !m_tiles.drawMissing(now.seen.adjusted(-ahead, -ahead, ahead, ahead), tileDrawer(now.frame),
                                TileStore::Clock::now());
}

void OvEventMap::Drawing::paintTexts(QPainter &painter, QSizeF size) const
{
    const MapColours &colours = m_painter->colours();
    const MapFrame now = frame(size);
    if (band) {
        QColor fill = colours.selection;
        fill.setAlpha(45);
        painter.setPen(QPen(colours.selection, 1));
        painter.setBrush(fill);
        painter.drawRect(*band);
        painter.setBrush(Qt::NoBrush);
    }
    std::vector<QRectF> taken;
    if (legend) {
        const bool unknownDepths = m_events && m_events->hasUnknownDepths();
        const Legend shown = Legend::fitting(size, metrics, unknownDepths);
        const QSizeF place = shown.size(metrics);
        const QPointF corner(size.width() - place.width() - 8, 8);
        shown.draw(painter, corner, colours);
        taken.push_back(QRectF(corner, place));
    }
    const QRectF scale =
        drawDistanceScale(painter, now, QPointF(size.width() - 8, size.height() - 8), colours);
    taken.push_back(scale);
    const QRectF page(10, 10, std::max(scale.left() - 24, 60.0), size.height() - 20);
    taken.push_back(drawStatus(painter, page, status(), progress(), colours));
    // A label gives way to events, as far as their usual size reaches.
    constexpr double reach = 8;
    auto isTaken = [&](const QRectF &place) {
        return std::any_of(taken.begin(), taken.end(),
                           [&](const QRectF &other) { return other.intersects(place); }) ||
               (m_events && m_events->anyWithin(now.toPlane(place.adjusted(-reach, -reach, reach, reach))));
    };
    drawGraticuleLabels(painter, now, projection(), settings.range, m_steps, colours, isTaken);
}

std::optional<double> OvEventMap::Drawing::progress() const
{
    if (view && view->isReading())
        return view->progress();
    return std::nullopt;
}

QString OvEventMap::Drawing::status() const
{
    if (!view)
        return OvEventMap::tr("No events.");
    const EventCatalogue &events = *OvEventViewData::catalogue(*view);
    const QLocale locale;
    QStringList lines;
    auto number = [&](std::int64_t count) { return locale.toString(static_cast<qlonglong>(count)); };
    auto add = [&](const QString &what, std::int64_t count) {
        if (count > 0)
            lines << what.arg(number(count));
    };
    if (!m_problem.isEmpty())
        lines << m_problem;
    if (!events.error.isEmpty())
        lines << QString(events.error).replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (view->isReading())
        lines << OvEventMap::tr("Reading events: %1 %").arg(std::floor(view->progress() * 100));
    else if (isProceeding())
        lines << OvEventMap::tr("Placing events");
    // While others are read, those before are still shown.
    if (m_events &&
        (m_events->size() > 0 || (events.error.isEmpty() && !isProceeding() && !view->isReading()))) {
        const EventCatalogue &shown = m_events->catalogue();
        const auto drawn = static_cast<std::int64_t>(m_events->size());
        lines << OvEventMap::tr("Events: %1").arg(number(drawn));
        add(OvEventMap::tr("selected: %1"), static_cast<std::int64_t>(selection.size()));
        add(OvEventMap::tr("beyond the map's range: %1"),
            static_cast<std::int64_t>(shown.events.size()) - drawn);
        add(OvEventMap::tr("of unknown magnitude (smallest): %1"), m_events->unknownMagnitudes());
    }
    add(OvEventMap::tr("without coordinates: %1"), events.withoutCoordinates);
    add(OvEventMap::tr("with impossible coordinates: %1"), events.impossibleCoordinates);
    add(OvEventMap::tr("unreadable: %1"), events.unreadable);
    return lines.join(QStringLiteral(" \u00b7 "));
}
