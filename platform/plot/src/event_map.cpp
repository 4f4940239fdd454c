#include <orvane/plot.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include <QBasicTimer>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

#include "event_map_drawing.h"
#include "event_map_hand.h"
#include "guarded.h"

using namespace std::chrono_literals;

static constexpr auto frameTime = 10ms;      // for drawing tiles in a repaint, so that 30 a second are kept
static constexpr auto waitInterval = 20;     // ms between looks whether something is placed
static constexpr auto progressInterval = 50; // ms between repaints while events are read

OvEventMap::OvEventMap(QWidget *page, bool interactive, bool legend)
    : QWidget(page), m_drawing(std::make_unique<Drawing>()), m_hand(std::make_unique<Hand>(*this))
{
    m_drawing->interactive = interactive;
    m_drawing->legend = legend;
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    setFont(small);
    m_drawing->metrics = QFontMetricsF(font());
    setMinimumSize(120, 120);
    setMouseTracking(interactive);
    setFocusPolicy(interactive ? Qt::StrongFocus : Qt::NoFocus);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Event map"));
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
    if (view) {
        view->setParent(nullptr); // one owner
        connect(view, &OvEventView::progressed, this, [this] {
            if (!m_drawing->progressShown.isValid() ||
                m_drawing->progressShown.elapsed() > progressInterval) {
                m_drawing->progressShown.start();
                update();
            }
        });
        connect(view, &OvEventView::changed, this, [this] {
            m_drawing->placeEvents();
            update();
        });
    }
    m_drawing->view.reset(view);
    m_drawing->forgetEvents();
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

QVector<qint64> OvEventMap::selectedRecords() const
{
    return {m_drawing->selection.begin(), m_drawing->selection.end()};
}

void OvEventMap::setSelectedRecords(const QVector<qint64> &records)
{
    guarded("selecting", [&] {
        std::vector<std::int64_t> sorted(records.begin(), records.end());
        std::sort(sorted.begin(), sorted.end());
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        if (sorted == m_drawing->selection)
            return;
        m_drawing->select(std::move(sorted));
        update();
    });
}

void OvEventMap::showRecord(qint64 record)
{
    guarded("showing a record", [&] {
        const EventLayer *events = m_drawing->events();
        const auto place = events ? events->placeOf(record) : std::nullopt;
        const MapFrame frame = m_drawing->frame(size());
        if (!place || QRectF({0, 0}, frame.size).contains(frame.toPixel(*place)))
            return;
        m_drawing->centre = *place;
        update();
    });
}

void OvEventMap::showAll()
{
    m_drawing->centre = {};
    m_drawing->zoom = 1;
    update();
}

bool OvEventMap::isComplete() const
{
    return m_drawing->whole && !m_drawing->isProceeding() &&
           !(m_drawing->view && m_drawing->view->isReading());
}

void OvEventMap::complete()
{
    if (m_drawing->view)
        m_drawing->view->finishReading();
    m_drawing->proceed(size(), true);
    QImage unused(1, 1, QImage::Format_RGB32);
    unused.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&unused);
    painter.setFont(font());
    m_drawing->paint(painter, size(), devicePixelRatioF(), palette(), TileStore::Clock::time_point::max());
    update();
}

QImage OvEventMap::picture(const QSize &pictureSize, double ratio)
{
    if (m_drawing->view)
        m_drawing->view->finishReading();
    m_drawing->proceed(pictureSize, true);
    QImage image((QSizeF(pictureSize) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    painter.setFont(font());
    m_drawing->paint(painter, pictureSize, ratio, palette(), TileStore::Clock::time_point::max());
    painter.end();
    m_drawing->forgetTiles(); // the window's are of another size
    update();
    return image;
}

// ---- Events
// --------------------------------------------------------------------------------------------------------

bool OvEventMap::event(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        m_drawing->metrics = QFontMetricsF(font());
    if (event->type() != QEvent::ToolTip || !m_drawing->interactive)
        return QWidget::event(event);
    guarded("telling of an event", [&] { m_hand->tell(*static_cast<QHelpEvent *>(event)); });
    return true;
}

void OvEventMap::paintEvent(QPaintEvent *)
{
    guarded("painting", [&] {
        m_drawing->proceed(size(), false);
        QPainter painter(this);
        m_drawing->paint(painter, size(), devicePixelRatioF(), palette(),
                         TileStore::Clock::now() + frameTime);
    });
    guarded("painting", [&] { scheduleWork(); });
}

// What remains to be done comes at the next turns of the event loop.
void OvEventMap::scheduleWork()
{
    const bool waits = m_drawing->whole && m_drawing->isProceeding();
    m_drawing->timer.start(waits ? waitInterval : 0, this);
}

void OvEventMap::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_drawing->timer.timerId())
        return QWidget::timerEvent(event);
    m_drawing->timer.stop();
    guarded("drawing", [&] {
        if (m_drawing->proceed(size(), false) || !m_drawing->whole)
            update();
        else if (m_drawing->isProceeding())
            m_drawing->timer.start(waitInterval, this);
        else if (m_drawing->drawAhead(size(), devicePixelRatioF()))
            m_drawing->timer.start(0, this);
    });
}

void OvEventMap::wheelEvent(QWheelEvent *event)
{
    bool used = false;
    guarded("zooming", [&] { used = m_drawing->interactive && m_hand->turn(*event); });
    event->setAccepted(used);
}

void OvEventMap::mousePressEvent(QMouseEvent *event)
{
    bool used = false;
    guarded("pressing", [&] { used = m_drawing->interactive && m_hand->press(*event); });
    event->setAccepted(used);
}

void OvEventMap::mouseMoveEvent(QMouseEvent *event)
{
    bool used = false;
    guarded("dragging", [&] { used = m_drawing->interactive && m_hand->move(*event); });
    event->setAccepted(used);
}

void OvEventMap::mouseReleaseEvent(QMouseEvent *event)
{
    bool used = false;
    guarded("selecting", [&] { used = m_drawing->interactive && m_hand->release(*event); });
    event->setAccepted(used);
}

void OvEventMap::mouseDoubleClickEvent(QMouseEvent *event)
{
    bool used = false;
    guarded("double-clicking", [&] { used = m_drawing->interactive && m_hand->doubleClick(*event); });
    event->setAccepted(used);
}

void OvEventMap::keyPressEvent(QKeyEvent *event)
{
    bool used = false;
    guarded("pressing a key", [&] { used = m_drawing->interactive && m_hand->key(*event); });
    event->setAccepted(used);
    if (!used)
        QWidget::keyPressEvent(event);
}

void OvEventMap::focusOutEvent(QFocusEvent *event)
{
    guarded("letting go", [&] { m_hand->letGo(); });
    QWidget::focusOutEvent(event);
}
