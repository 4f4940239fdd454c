// A scroll area that asks for the room that its content wants, up to that of a screen.
#ifndef OVQT_VIEWS_FITTING_SCROLL_AREA_H
#define OVQT_VIEWS_FITTING_SCROLL_AREA_H

#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

class FittingScrollArea : public QScrollArea
{
public:
    explicit FittingScrollArea(QWidget *content)
    {
        setWidget(content);
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
    }

    QSize sizeHint() const override
    {
        const QSize wanted = widget()->sizeHint();
        const QSize most = screen()->availableSize() * 4 / 5;
        // A bar on one side takes room from the other.
        const int beside = wanted.height() > most.height() ? verticalScrollBar()->sizeHint().width() : 0;
        const int below = wanted.width() > most.width() ? horizontalScrollBar()->sizeHint().height() : 0;
        return (wanted + QSize(beside, below)).boundedTo(most);
    }
};

#endif
