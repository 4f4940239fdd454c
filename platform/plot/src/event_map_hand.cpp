#include "event_map_hand.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <QApplication>
#include <QLocale>
#include <QToolTip>

#include "event_map_drawing.h"
#include "event_view_data.h"

void OvEventMap::Hand::zoom(double factor, QPointF at)
{
    Drawing &drawing = *m_map.m_drawing;
    const MapFrame before = drawing.frame(m_map.size());
    const QPointF under = before.toPlane(at);
    drawing.zoom = drawing.zoomForScale(before.scale * factor, m_map.size());
    drawing.centre += under - drawing.frame(m_map.size()).toPlane(at); // it stays where it is
    drawing.keepInside();
    m_map.update();
}

void OvEventMap::Hand::pan(QPointF pixels)
{
    Drawing &drawing = *m_map.m_drawing;
    const double scale = drawing.frame(m_map.size()).scale;
    drawing.centre += QPointF(-pixels.x() / scale, pixels.y() / scale);
    drawing.keepInside();
    m_map.update();
}

bool OvEventMap::Hand::turn(const QWheelEvent &wheel)
{
    if (wheel.angleDelta().y() == 0)
        return false;
    zoom(std::pow(1.25, wheel.angleDelta().y() / 120.0), wheel.position());
    return true;
}

bool OvEventMap::Hand::press(const QMouseEvent &mouse)
{
    if (mouse.button() != Qt::LeftButton)
        return false;
    m_start = m_last = mouse.localPos();
    m_doubleClicked = false;
    m_doing = mouse.modifiers().testFlag(Qt::ShiftModifier) ? Doing::Banding : Doing::Pressing;
    return true;
}

bool OvEventMap::Hand::move(const QMouseEvent &mouse)
{
    const QPointF at = mouse.localPos();
    if (m_doing == Doing::Nothing || !mouse.buttons().testFlag(Qt::LeftButton))
        return false;
    if (m_doing == Doing::Pressing && (at - m_start).manhattanLength() >= QApplication::startDragDistance()) {
        m_doing = Doing::Panning;
        m_map.setCursor(Qt::ClosedHandCursor);
    }
    if (m_doing == Doing::Panning) {
        pan(at - m_last);
        m_last = at;
    } else if (m_doing == Doing::Banding) {
        m_map.m_drawing->band = QRectF(m_start, at).normalized();
        m_map.update();
    }
    return true;
}

bool OvEventMap::Hand::release(const QMouseEvent &mouse)
{
    if (mouse.button() != Qt::LeftButton)
        return false;
    const bool control = mouse.modifiers().testFlag(Qt::ControlModifier);
    const Doing done = m_doing;
    if (done == Doing::Pressing && !m_doubleClicked)
        click(mouse.localPos(), control);
    else if (done == Doing::Banding)
        selectBand(control);
    letGo();
    return true;
}

void OvEventMap::Hand::letGo()
{
    if (m_doing == Doing::Panning)
        m_map.unsetCursor();
    m_doing = Doing::Nothing;
    if (m_map.m_drawing->band) {
        m_map.m_drawing->band.reset();
        m_map.update();
    }
}

bool OvEventMap::Hand::doubleClick(const QMouseEvent &mouse)
{
    if (mouse.button() != Qt::LeftButton)
        return false;
    m_doubleClicked = true; // the button is still to be released, which is no click then
    const EventLayer *events = m_map.m_drawing->events();
    const auto found = events ? events->eventAt(mouse.localPos(), m_map.m_drawing->frame(m_map.size()))
                              : EventLayer::Found();
    if (found.event)
        emit m_map.recordActivated(found.event->record);
    else
        m_map.showAll();
    return true;
}

void OvEventMap::Hand::choose(std::vector<std::int64_t> records)
{
    Drawing &drawing = *m_map.m_drawing;
    if (records == drawing.selection)
        return;
    drawing.select(std::move(records));
    m_map.update();
    emit m_map.recordsSelected(m_map.selectedRecords());
}

void OvEventMap::Hand::click(QPointF at, bool toggle)
{
    const Drawing &drawing = *m_map.m_drawing;
    const EventLayer *events = drawing.events();
    const auto found = events ? events->eventAt(at, drawing.frame(m_map.size())) : EventLayer::Found();
    if (!found.event) {
        if (!toggle)
            choose({});
        return;
    }
    if (!toggle)
        return choose({found.event->record});
    std::vector<std::int64_t> records = drawing.selection;
    const auto place = std::lower_bound(records.begin(), records.end(), found.event->record);
    if (place != records.end() && *place == found.event->record)
        records.erase(place);
    else
        records.insert(place, found.event->record);
    choose(std::move(records));
}

void OvEventMap::Hand::selectBand(bool add)
{
    const Drawing &drawing = *m_map.m_drawing;
    if (!drawing.events() || !drawing.band)
        return;
    std::vector<std::int64_t> records =
        drawing.events()->recordsWithin(drawing.frame(m_map.size()).toPlane(*drawing.band));
    if (add) {
        std::vector<std::int64_t> both;
        std::set_union(records.begin(), records.end(), drawing.selection.begin(), drawing.selection.end(),
                       std::back_inserter(both));
        records = std::move(both);
    }
    choose(std::move(records));
}

bool OvEventMap::Hand::key(const QKeyEvent &key)
{
    const Drawing &drawing = *m_map.m_drawing;
    const QSizeF size = drawing.frame(m_map.size()).size;
    const QPointF middle(size.width() / 2, size.height() / 2);
    const double stepX = size.width() / 8, stepY = size.height() / 8;
    if (key.matches(QKeySequence::SelectAll)) {
        if (const EventLayer *events = drawing.events())
            choose(events->recordsWithin(QRectF(-200, -200, 400, 400)));
        return true;
    }
    switch (key.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoom(1.25, middle);
        return true;
    case Qt::Key_Minus:
        zoom(1 / 1.25, middle);
        return true;
    case Qt::Key_Left:
        pan({stepX, 0});
        return true;
    case Qt::Key_Right:
        pan({-stepX, 0});
        return true;
    case Qt::Key_Up:
        pan({0, stepY});
        return true;
    case Qt::Key_Down:
        pan({0, -stepY});
        return true;
    case Qt::Key_Home:
        m_map.showAll();
        return true;
    case Qt::Key_Escape:
        if (m_doing != Doing::Nothing)
            letGo();
        else if (drawing.selection.empty())
            return false; // then it may close a dialog
        else
            choose({});
        return true;
    default:
        return false;
    }
}

QString OvEventMap::Hand::toolTipAt(QPoint position) const
{
    const Drawing &drawing = *m_map.m_drawing;
    const EventLayer *events = drawing.events();
    const auto found = events ? events->eventAt(position, drawing.frame(m_map.size())) : EventLayer::Found();
    if (!found.event)
        return {};
    const QLocale locale;
    QString text = QStringLiteral("<p style='white-space:pre'><b>%1</b></p>")
                       .arg(OvEventMap::tr("Record %1").arg(static_cast<qlonglong>(found.event->record)));
    const auto fields = OvEventViewData::fieldsOf(*drawing.view, found.event->record);
    if (fields.isEmpty())
        text += OvEventMap::tr("The record can't be read any more.").toHtmlEscaped();
    text += QLatin1String("<table cellspacing='0'>");
    for (const auto &[name, value] : fields)
        text += QStringLiteral("<tr><td style='padding-right:10px'>%1</td><td "
                               "style='white-space:pre'>%2</td></tr>")
                    .arg(name.toHtmlEscaped(), value.toHtmlEscaped());
    text += QLatin1String("</table>");
    if (found.count > 1)
        text += QStringLiteral("<p>%1</p>")
                    .arg(OvEventMap::tr("and %n more here", nullptr, static_cast<int>(found.count - 1))
                             .toHtmlEscaped());
    return text;
}

void OvEventMap::Hand::tell(const QHelpEvent &help) const
{
    QToolTip::showText(help.globalPos(), toolTipAt(help.pos()), &m_map);
}
