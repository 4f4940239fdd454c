// A picture of a window, taken without a user.
#ifndef OVEDIT_SCREENSHOT_H
#define OVEDIT_SCREENSHOT_H

#include <QString>

class QWidget;

// Lets the window lay itself out and paint, and writes what it shows, in the format that the file's name ends
// with (PNG where it ends with none). Returns an empty text, or why there is no picture.
QString writeScreenshot(QWidget &window, const QString &file);

#endif
