#include <orvane/plot.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include <QHelpEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QVBoxLayout>

#include "background.h"
#include "event_catalogue.h"
#include "event_layer.h"
#include "legend.h"

// What a map shows and how it is drawn. The drawings of the background and of the events are kept; both are
// larger than the widget by a margin, so that dragging mostly moves what is there.
class OvEventMap::Drawing
{
public:
    struct Settings {
        double latitude = 0, longitude = 0, range = 180; // degrees
    };
    Settings settings;
    std::unique_ptr<OvEventView> view;
    bool interactive = false, legend = false;
    double legendWidth = 0; // logical pixels kept free beside the map, where there is room
    QPointF centre;         // the plane's point in the map's middle
    double zoom = 1;
    std::optional<QPoint> dragged; // where the pointer was

    void forgetMap();
    void forgetEvents() { m_layer.reset(), forgetPicture(); }
    void forgetPicture() { m_picture = QPixmap(); }
    MapFrame frame(QSizeF size) const;
    const Projection &projection() const;
    const EventLayer &layer() const;
    void paint(QWidget &map, QPainter &painter);
    QString status() const;

private:
    void paintPicture(const QWidget &map);
    void paintTexts(const QWidget &map, QPainter &painter, const MapColours &colours) const;

    mutable std::optional<Projection> m_projection;
    mutable std::optional<ProjectedLand> m_land;
    mutable std::optional<EventLayer> m_layer;
    QPainterPath m_graticule;
    double m_graticuleStep = 0;
    std::optional<EventSymbols> m_symbols;
    QPixmap m_picture;
    MapFrame m_pictureFrame;
};

void OvEventMap::Drawing::forgetMap()
{
    m_projection.reset();
    m_land.reset();
    m_graticuleStep = 0;
    centre = {};
    zoom = 1;
    forgetEvents();
}

MapFrame OvEventMap::Drawing::frame(QSizeF size) const
{
    constexpr double border = 12;
    if (size.width() > 3 * legendWidth)
        size.rwidth() -= legendWidth;
    const double side = std::max(std::min(size.width(), size.height()) - 2 * border, 20.0);
    return {centre, side / (2 * settings.range) * zoom, size};
}

const Projection &OvEventMap::Drawing::projection() const
{
    if (!m_projection)
        m_projection.emplace(settings.latitude, settings.longitude);
    return *m_projection;
}

const EventLayer &OvEventMap::Drawing::layer() const
{
    static const std::vector<Event> none;
    if (!m_layer)
        m_layer.emplace(view ? view->catalogue().events : none, projection(), settings.range);
    return *m_layer;
}

static double graticuleStep(double shownDegrees)
{
    for (const double step : {30.0, 15.0, 10.0, 5.0, 2.0})
        if (shownDegrees / step >= 4)
            return step;
    return 1;
}

void OvEventMap::Drawing::paintPicture(const QWidget &map)
{
    const double ratio = map.devicePixelRatioF();
    const QSizeF size = QSizeF(map.size()) * 1.5;
    m_pictureFrame = frame(map.size());
    m_pictureFrame.size = size;
    m_picture = QPixmap((size * ratio).toSize());
    m_picture.setDevicePixelRatio(ratio);
    const MapColours colours(map.palette());
    m_picture.fill(colours.page);
    if (!m_land)
        m_land = projectLand(coastlineRings(), projection(), settings.range);
    const double step = graticuleStep(std::min(map.width(), map.height()) / m_pictureFrame.scale);
    if (step != m_graticuleStep)
        m_graticule = graticule(projection(), settings.range, m_graticuleStep = step);
    if (!m_symbols || m_symbols->devicePixelRatio() != ratio || m_symbols->outline() != colours.outline)
        m_symbols.emplace(ratio, colours.outline);
    QPainter painter(&m_picture);
    drawBackground(painter, m_pictureFrame, *m_land, m_graticule, settings.range, colours);
    layer().draw(painter, m_pictureFrame, *m_symbols);
}

void OvEventMap::Drawing::paint(QWidget &map, QPainter &painter)
{
    const MapColours colours(map.palette());
    const MapFrame now = frame(map.size());
    QRectF part;
    auto place = [&] {
        const QPointF corner = m_pictureFrame.toPixel(now.toPlane({0, 0}));
        part = QRectF(corner, QSizeF(map.size()));
    };
    place();
    if (m_picture.isNull() || m_picture.devicePixelRatio() != map.devicePixelRatioF() ||
        m_pictureFrame.scale != now.scale || !QRectF({0, 0}, m_pictureFrame.size).contains(part)) {
        paintPicture(map);
        place();
    }
    painter.drawPixmap(-part.topLeft(), m_picture);
    paintTexts(map, painter, colours);
}

void OvEventMap::Drawing::paintTexts(const QWidget &map, QPainter &painter, const MapColours &colours) const
{
    if (legend) {
        const QSizeF size = legendSize(QFontMetricsF(painter.font()));
        drawLegend(painter, QPointF(map.width() - size.width() - 8, 8), colours);
    }
    const QRect page = map.rect().adjusted(8, 8, -8, -8);
    QRect place;
    const int flags = Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap;
    place = painter.boundingRect(page, flags, status());
    QColor ground = colours.page;
    ground.setAlpha(215);
    painter.fillRect(place.adjusted(-4, -3, 4, 3), ground);
    painter.setPen(colours.text);
    painter.drawText(place, flags, status());
}

QString OvEventMap::Drawing::status() const
{
    if (!view)
        return OvEventMap::tr("No events.");
    const EventCatalogue &events = view->catalogue();
    const QLocale locale;
    QStringList lines;
    auto add = [&](const QString &what, std::int64_t count) {
        if (count > 0)
            lines << what.arg(locale.toString(static_cast<qlonglong>(count)));
    };
    if (!events.error.isEmpty())
        lines << events.error;
    const auto drawn = static_cast<std::int64_t>(layer().size());
    if (events.error.isEmpty() || drawn > 0)
        lines << OvEventMap::tr("Events: %1").arg(locale.toString(static_cast<qlonglong>(drawn)));
    add(OvEventMap::tr("Beyond the map's range: %1"),
        static_cast<std::int64_t>(events.events.size()) - drawn);
    add(OvEventMap::tr("Without coordinates: %1"), events.withoutCoordinates);
    add(OvEventMap::tr("With impossible coordinates: %1"), events.impossibleCoordinates);
    add(OvEventMap::tr("Unreadable: %1"), events.unreadable);
    return lines.join(QLatin1Char('\n'));
}

OvEventMap::OvEventMap(QWidget *page, bool interactive, bool legend)
    : QWidget(page), m_drawing(std::make_unique<Drawing>())
{
    m_drawing->interactive = interactive;
    m_drawing->legend = legend;
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    setFont(small);
    if (legend)
        m_drawing->legendWidth = legendSize(QFontMetricsF(small)).width() + 8;
    setMinimumSize(120, 120);
    setMouseTracking(interactive);
    setAutoFillBackground(false);
    if (page && !page->layout()) {
        auto *layout = new QVBoxLayout(page);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(this);
    }
}

OvEventMap::~OvEventMap() = default;

QSize OvEventMap::sizeHint() const
{
    return {720, 560};
}

void OvEventMap::setDefaults(int)
{
    m_drawing->settings = {};
    m_drawing->forgetMap();
    update();
}

bool OvEventMap::configure(const QString &key, const QString &value)
{
    struct Parameter {
        QLatin1String key;
        double Drawing::Settings::*setting;
        double lowest, highest;
        bool lowestIncluded;
    };
    static const Parameter parameters[] = {
        {QLatin1String("latr"), &Drawing::Settings::latitude, -90, 90, true},
        {QLatin1String("lonr"), &Drawing::Settings::longitude, -180, 360, true},
        {QLatin1String("range"), &Drawing::Settings::range, 0, 180, false},
    };
    bool isNumber = false;
    const double number = value.trimmed().toDouble(&isNumber);
    for (const Parameter &parameter : parameters) {
        if (key != parameter.key)
            continue;
        if (!isNumber || !(number >= parameter.lowest && number <= parameter.highest) ||
            (number == parameter.lowest && !parameter.lowestIncluded))
            return false;
        m_drawing->settings.*parameter.setting = number;
        m_drawing->forgetMap();
        update();
        return true;
    }
    return false;
}

bool OvEventMap::configure(const char *key, const char *value)
{
    return configure(QString::fromLocal8Bit(key), QString::fromLocal8Bit(value));
}

void OvEventMap::attach(OvEventView *view)
{
    if (view == m_drawing->view.get())
        return;
    m_drawing->forgetEvents();
    m_drawing->view.reset(view);
    if (view)
        view->m_changed = [this] {
            m_drawing->forgetEvents();
            update();
        };
    update();
}

QPointF OvEventMap::positionOf(double latitude, double longitude) const
{
    return m_drawing->frame(size()).toPixel(m_drawing->projection().forward(latitude, longitude));
}

QString OvEventMap::statusText() const
{
    return m_drawing->status();
}

static QString toolTipText(const Event &event)
{
    const std::unique_ptr<char, void (*)(void *)> time(
        std::isnan(event.time) ? nullptr : epoch2str(event.time, "%Y-%m-%d (%j) %T.%s UTC"), std::free);
    QStringList lines;
    auto add = [&](const QString &name, double value, int decimals) {
        lines << name + QLatin1String(": ") +
                     (std::isnan(value) ? OvEventMap::tr("unknown") : QString::number(value, 'f', decimals));
    };
    if (event.origin >= 0)
        lines << QStringLiteral("orid: %1").arg(event.origin);
    lines << QStringLiteral("time: ") + (time ? QString::fromUtf8(time.get()) : OvEventMap::tr("unknown"));
    add(QStringLiteral("lat"), event.latitude, 4);
    add(QStringLiteral("lon"), event.longitude, 4);
    add(QStringLiteral("depth"), event.depth, 1);
    add(OvEventMap::tr("magnitude"), event.magnitude, 2);
    return lines.join(QLatin1Char('\n'));
}

bool OvEventMap::event(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        m_drawing->forgetPicture();
    if (event->type() != QEvent::ToolTip || !m_drawing->interactive)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const Event *found = m_drawing->layer().eventAt(help->pos(), m_drawing->frame(size()));
    QToolTip::showText(help->globalPos(), found ? toolTipText(*found) : QString(), this);
    return true;
}

void OvEventMap::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    m_drawing->paint(*this, painter);
}

void OvEventMap::wheelEvent(QWheelEvent *event)
{
    if (!m_drawing->interactive || event->angleDelta().y() == 0)
        return event->ignore();
    const QPointF under = m_drawing->frame(size()).toPlane(event->position());
    m_drawing->zoom =
        std::clamp(m_drawing->zoom * std::pow(1.25, event->angleDelta().y() / 120.0), 0.5, 400.0);
    m_drawing->centre +=
        under - m_drawing->frame(size()).toPlane(event->position()); // it stays under the pointer
    update();
    event->accept();
}

void OvEventMap::mousePressEvent(QMouseEvent *event)
{
    if (!m_drawing->interactive || event->button() != Qt::LeftButton)
        return event->ignore();
    m_drawing->dragged = event->pos();
    setCursor(Qt::ClosedHandCursor);
}

void OvEventMap::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drawing->dragged)
        return;
    const QPointF moved = event->pos() - *m_drawing->dragged;
    const double scale = m_drawing->frame(size()).scale, range = m_drawing->settings.range;
    QPointF &centre = m_drawing->centre;
    centre.setX(std::clamp(centre.x() - moved.x() / scale, -range, range));
    centre.setY(std::clamp(centre.y() + moved.y() / scale, -range, range));
    m_drawing->dragged = event->pos();
    update();
}

void OvEventMap::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    m_drawing->dragged.reset();
    unsetCursor();
}

void OvEventMap::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!m_drawing->interactive || event->button() != Qt::LeftButton)
        return event->ignore();
    m_drawing->centre = {};
    m_drawing->zoom = 1;
    update();
}
