#include "screenshot.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QImageWriter>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <orvane/tr.h>

namespace {

constexpr int settleFor = 300; // milliseconds: delayed layouts and the answers of a window manager

} // namespace

QString writeScreenshot(QWidget &window, const QString &file)
{
    QEventLoop settling;
    QTimer::singleShot(settleFor, &settling, &QEventLoop::quit);
    settling.exec();
    const QImage picture = window.grab().toImage();
    const QByteArray format = QFileInfo(file).suffix().isEmpty() ? QByteArray("png") : QByteArray();
    QImageWriter writer(file, format);
    if (!writer.write(picture)) {
        return OvTranslation::tr("%1: the picture can't be written: %2").arg(file, writer.errorString());
    }
    return {};
}
