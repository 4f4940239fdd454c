// What the user's mouse and keys do on a map.
#pragma once

#include <optional>

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <orvane/plot.h>

class OvEventMap::Hand
{
public:
    explicit Hand(OvEventMap &map) : m_map(map) {}

    // Each answers whether the event was of use.
    bool turn(const QWheelEvent &wheel);
    bool press(const QMouseEvent &mouse);
    bool move(const QMouseEvent &mouse);
    bool release(const QMouseEvent &mouse);
    bool doubleClick(const QMouseEvent &mouse);
    bool key(const QKeyEvent &key);
    void tell(const QHelpEvent &help) const;

    // Ends what a pressed button has begun.
    void letGo();

private:
    enum class Doing { Nothing, Pressing, Panning, Banding };
    void zoom(double factor, QPointF at);
    void pan(QPointF pixels);
    void click(QPointF at, bool toggle);
    void selectBand(bool add);
    void choose(std::vector<std::int64_t> records);
    QString toolTipAt(QPoint position) const;

    OvEventMap &m_map;
    Doing m_doing = Doing::Nothing;
    bool m_doubleClicked = false;
    QPointF m_start, m_last; // where the button was pressed, where the pointer was last
};
