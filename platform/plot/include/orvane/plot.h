// Maps of seismic events: a widget and where its events come from.
//
// How a host puts a map beside its tables. The map knows no table: it speaks of events by the number of their
// record in the table "origin", counted from 0. A host that shows that table joins the two by three
// connections:
//
//     connect(map, &OvEventMap::recordsSelected, ...);   // select these rows, and scroll to them
//     connect(map, &OvEventMap::recordActivated, ...);   // double click: bring the table to the front
//     connect(selectionModel, &QItemSelectionModel::selectionChanged, ..., [=] {
//         map->setSelectedRecords(recordsOfTheSelectedRows());
//     });
//
// The map emits recordsSelected() when the user selects events on it and not when it is told what is
// selected, so that the two don't answer each other.
#ifndef ORVANE_PLOT_H
#define ORVANE_PLOT_H

#include <memory>

#include <QImage>
#include <QObject>
#include <QPointF>
#include <QSize>
#include <QString>
#include <QVector>
#include <QWidget>

#include <orvane/plot_export.h>
#include <orvane/util.h>

// The events of a database. It reads them through a connection of its own, which stays open, on the thread
// that it lives in: a slice at each turn of the event loop, and again when the table "origin" has grown, has
// changed or has come back. It looks for that every second, or less often where reading takes longer than
// that.
class ORVANE_PLOT_EXPORT OvEventView : public QObject
{
    Q_OBJECT

public:
    // With a parameter file, every key of it that configure() knows is configured. The file isn't kept.
    explicit OvEventView(Pf *parameterFile = nullptr);
    ~OvEventView() override;

    // "dbname": the path of the database, whose table "origin" is opened at once. False for an unknown key,
    // with nothing changed. A database that can't be read is no wrong value: its map says why it is empty.
    bool configure(const QString &key, const QString &value);
    bool configure(const char *key, const char *value); // in the locale's encoding

    bool isReading() const;
    double progress() const; // of reading, 0 to 1

    // Reads what remains, without going back to the event loop.
    void finishReading();

signals:
    void progressed();
    void changed(); // there are other events, or there is another reason why there are none

private:
    friend struct OvEventViewData;
    void startReading();
    void readSlice();
    void endReading(bool fine);
    void lookForChanges();

    struct Private;
    std::unique_ptr<Private> m_private;
};

// A map on an azimuthal equidistant projection: coastlines, a graticule, and the events of one view. The
// colours are those of the palette's Base and Text.
//
// No handler lets an exception out: a failure is a line in the error log.
class ORVANE_PLOT_EXPORT OvEventMap : public QWidget
{
    Q_OBJECT

public:
    // A child of `page`, which it fills if the page has no layout yet. On an interactive map
    //   - the wheel, + and - zoom; dragging and the arrow keys pan; Home shows the whole map again;
    //   - a click selects an event, with Ctrl adds it or takes it away; dragging with Shift selects the
    //   events of
    //     a rectangle, with Ctrl and Shift adds them; Ctrl+A selects all, Escape none;
    //   - a double click on an event activates it, elsewhere it shows the whole map again;
    //   - the event under the pointer tells its fields.
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

    // The records selected, ascending: those of the last setSelectedRecords() or recordsSelected().
    QVector<qint64> selectedRecords() const;

    // Whether all that the window shows is read, placed and drawn.
    bool isComplete() const;

    // Reads, places and draws what remains, without going back to the event loop.
    void complete();

    // The map as it stands, complete, as a picture of `size` logical pixels with `ratio` device pixels each.
    // It needs no window; as any widget it needs a QApplication, for which the platform "offscreen" will do.
    QImage picture(const QSize &size, double ratio = 1);

    QSize sizeHint() const override;

public slots:
    // Marks these records' events, in any order. Records that have no event on the map count as selected,
    // too.
    void setSelectedRecords(const QVector<qint64> &records);

    // Pans to the record's event unless it is visible. A record without an event on the map changes nothing.
    void showRecord(qint64 record);

    // The whole map, as before any zooming and panning.
    void showAll();

signals:
    // The user has selected these records' events, ascending, and no others.
    void recordsSelected(const QVector<qint64> &records);

    // The user has double-clicked an event.
    void recordActivated(qint64 record);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    void scheduleWork();

    class Hand;
    friend class Hand;
    class Drawing;
    std::unique_ptr<Drawing> m_drawing;
    std::unique_ptr<Hand> m_hand;
};

#endif
