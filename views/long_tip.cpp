#include "long_tip.h"

#include <algorithm>

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QStylePainter>
#include <QToolTip>
#include <QtMath>

namespace {

constexpr int mostCellsOfTheToolkits = 80;

// The same as the toolkit's.
constexpr int shortestTime = 10'000; // ms
constexpr int timeOfACharacter = 40; // from the hundredth on
constexpr QPoint besideTheMouse(2, 16);
constexpr QPoint onItsOtherSide(4, 24);

} // namespace

QPointer<LongTip> LongTip::shown;

bool LongTip::isFor(const QString &text)
{
    return text.count(QLatin1String("<td")) > mostCellsOfTheToolkits && Qt::mightBeRichText(text);
}

QString LongTip::shownText()
{
    return shown.isNull() ? QString() : shown->m_html;
}

void LongTip::show(const QPoint &place, const QString &text, QWidget &widget)
{
    QToolTip::hideText();
    if (text == shownText()) {
        return;
    }
    delete shown.data();
    shown = new LongTip(text, widget);
    shown->goTo(place);
    shown->QWidget::show();
}

LongTip::LongTip(const QString &text, QWidget &widget)
    : QWidget(&widget, Qt::ToolTip | Qt::BypassGraphicsProxyWidget), m_html(text),
      m_margin(1 + style()->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth, nullptr, this))
{
    setPalette(QToolTip::palette());
    setFont(QToolTip::font());
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    ensurePolished();
    setWindowOpacity(style()->styleHint(QStyle::SH_ToolTipLabel_Opacity, nullptr, this) / 255.0);
    m_text.setUndoRedoEnabled(false);
    m_text.setDocumentMargin(0);
    m_text.setDefaultFont(font());
    m_text.setHtml(text);
    const QSizeF size = m_text.size();
    resize(qCeil(size.width()) + 2 * m_margin, qCeil(size.height()) + 2 * m_margin);
    connect(&m_end, &QTimer::timeout, this, &QObject::deleteLater);
    m_end.start(shortestTime + timeOfACharacter * std::max(0, text.size() - 100));
    qApp->installEventFilter(this);
}

void LongTip::goTo(const QPoint &place)
{
    const QScreen *screen = QGuiApplication::screenAt(place);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    const QRect room = screen->geometry();
    QPoint corner = place + besideTheMouse;
    if (corner.x() + width() > room.x() + room.width()) {
        corner.rx() -= onItsOtherSide.x() + width();
    }
    if (corner.y() + height() > room.y() + room.height()) {
        corner.ry() -= onItsOtherSide.y() + height();
    }
    // Of one that is larger than the screen the beginning is seen.
    corner.setX(std::max(room.x(), std::min(corner.x(), room.x() + room.width() - width())));
    corner.setY(std::max(room.y(), std::min(corner.y(), room.y() + room.height() - height())));
    move(corner);
}

void LongTip::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionFrame option;
    option.initFrom(this);
    painter.drawPrimitive(QStyle::PE_PanelTipLabel, option);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    painter.translate(m_margin, m_margin);
    m_text.documentLayout()->draw(&painter, context);
}

bool LongTip::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Leave:
        if (watched != parentWidget()) {
            return false;
        }
        break;
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::Close:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
        break;
    default:
        return false;
    }
    if (watched != this) {
        hide();
        deleteLater();
        if (shown == this) {
            shown = nullptr;
        }
    }
    return false;
}
