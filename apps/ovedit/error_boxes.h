// Makes the error boxes of the widget library fit to be read.
#ifndef OVEDIT_ERROR_BOXES_H
#define OVEDIT_ERROR_BOXES_H

#include <QObject>

// The library shows the whole text of a failed request, which tells developers through which layers it has
// come. While an object lives, such a box shows the reason alone; the whole text is behind its button for
// details.
class ErrorBoxes : public QObject
{
    Q_OBJECT

public:
    ErrorBoxes();

    bool eventFilter(QObject *watched, QEvent *event) override;
};

#endif
