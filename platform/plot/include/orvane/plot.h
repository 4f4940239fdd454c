// Maps of seismic events: a widget and where its events come from.
#ifndef ORVANE_PLOT_H
#define ORVANE_PLOT_H

#include <functional>
#include <memory>

#include <QPointF>
#include <QString>
#include <QWidget>

#include <orvane/plot_export.h>
#include <orvane/util.h>

struct EventCatalogue;

// The events of a database. It reads them through a connection of its own, which it closes again.
class ORVANE_PLOT_EXPORT OvEventView
{
public:
    // With a parameter file, every key of it that configure() knows is configured. The file isn't kept.
    explicit OvEventView(Pf *parameterFile = nullptr);
    ~OvEventView();
    OvEventView(const OvEventView &) = delete;
    OvEventView &operator=(const OvEventView &) = delete;

    // "dbname": the path of the database, whose table "origin" is read at once. False for an unknown key,
    // with nothing changed. A database that can't be read is no wrong value: its map says why it is empty.
    bool configure(const QString &key, const QString &value);
    bool configure(const char *key, const char *value); // in the locale's encoding

    const EventCatalogue &catalogue() const;

private:
    friend class OvEventMap;
    std::unique_ptr<EventCatalogue> m_catalogue;
    std::function<void()> m_changed; // the map that shows these events
};

// A map on an azimuthal equidistant projection: coastlines, a graticule, and the events of one view.
class ORVANE_PLOT_EXPORT OvEventMap : public QWidget
{
    Q_OBJECT

public:
    // A child of `page`, which it fills if the page has no layout yet. An interactive map zooms with the
    // wheel, pans by dragging, goes back on a double click and tells about the event under the pointer.
    OvEventMap(QWidget *page, bool interactive, bool legend);
    ~OvEventMap() override;

    // The whole world around 0, 0, as after construction. The argument names a set of defaults; there is one,
    // 0, which any other number stands for, too.
    void setDefaults(int set);

    // "latr", "lonr": the centre in degrees, -90 to 90 and -180 to 360. "range": the map's radius in degrees,
    // above 0 and up to 180. False for another key or a value that is none of these, with nothing changed.
    bool configure(const QString &key, const QString &value);
    bool configure(const char *key, const char *value); // in the locale's encoding

    // Shows these events in place of those before. The map owns the view from then on; null shows none.
    void attach(OvEventView *view);

    // Where a place lies in the widget, whether or not it is visible.
    QPointF positionOf(double latitude, double longitude) const;

    // What the map says of its events: how many there are, how many can't be drawn and why, or what went
    // wrong.
    QString statusText() const;

    QSize sizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    class Drawing;
    std::unique_ptr<Drawing> m_drawing;
};

#endif
