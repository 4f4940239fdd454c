// What a map shows and how it is put together.
#pragma once

#include <optional>
#include <vector>

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>

#include <orvane/plot.h>

#include "coastline.h"
#include "event_layer.h"
#include "legend.h"
#include "map_frame.h"
#include "pending.h"
#include "tile_painter.h"
#include "tile_store.h"

// Land and events are projected in threads of their own, and drawn in tiles that are kept.
class OvEventMap::Drawing
{
public:
    struct Settings {
        double latitude = 0, longitude = 0, range = 180; // degrees
    };
    Settings settings;
    std::unique_ptr<OvEventView> view;
    bool interactive = false, legend = false;
    QPointF centre;                      // the plane's point in the map's middle
    double zoom = 1;                     // 1: the whole map fills the window
    std::vector<std::int64_t> selection; // records, ascending
    std::optional<QRectF> band;          // the rectangle that is being dragged, logical pixels
    QFontMetricsF metrics{QFont()};      // of the texts
    bool whole = false;                  // nothing was missing when it was painted last
    QBasicTimer timer;                   // for what remains to be done
    QElapsedTimer progressShown;         // since that was told last

    // Another centre or range.
    void forgetMap();

    // The view has other events. Those drawn before stay until these are placed.
    void placeEvents() { m_eventsWanted = true; }

    // There is another view, or none.
    void forgetEvents();

    // What is drawn is of no use for the window.
    void forgetTiles() { m_tiles.clear(), whole = false; }

    void select(std::vector<std::int64_t> records);

    // Starts what is needed for a window of that size, and takes over what is ready. True when there is
    // something new to paint.
    bool proceed(QSizeF size, bool wait);
    bool isProceeding() const;

    // The map in a window: which part of the plane, in logical pixels.
    MapFrame frame(QSizeF size) const;
    double zoomForScale(double scale, QSizeF size) const;
    void keepInside();

    const Projection &projection() const;
    const EventLayer *events() const { return m_events ? &*m_events : nullptr; }

    // Paints what there is, and notes in `whole` whether anything was missing.
    void paint(QPainter &painter, QSizeF size, double ratio, const QPalette &palette,
               TileStore::Clock::time_point end);

    // Draws a tile that panning would need soon; false when there is none.
    bool drawAhead(QSizeF size, double ratio);

    QString status() const;

private:
    struct View {
        MapFrame frame; // device pixels
        QRect seen;     // in device pixels from the plane's origin, y down
    };
    View viewOf(QSizeF size, double ratio) const;
    Detail detailFor(QSizeF size) const;
    TileStore::Draw tileDrawer(const MapFrame &frame) const;
    void startWork(QSizeF size);
    void updateSteps(double scale, QSizeF size);
    void paintTexts(QPainter &painter, QSizeF size) const;
    std::optional<double> progress() const;

    mutable std::optional<Projection> m_projection;
    std::optional<EventLayer> m_events;
    std::optional<ProjectedLand> m_land;
    std::optional<Detail> m_wantedDetail;
    bool m_eventsWanted = false; // those of the view are not yet being placed
    Pending<EventLayer> m_pendingEvents;
    Pending<ProjectedLand> m_pendingLand;
    QString m_problem;
    std::optional<TilePainter> m_painter;
    TileStore m_tiles;
    GraticuleSteps m_steps;
};
