#include "screenshot.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPixmap>
#include <QWidget>

namespace {

constexpr int settleFor = 300; // milliseconds: delayed layouts and the answers of a window manager

} // namespace

QString writeScreenshot(QWidget &window, const QString &file)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < settleFor) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, settleFor);
    }
    const QImage picture = window.grab().toImage();
    const QByteArray format = QFileInfo(file).suffix().isEmpty() ? QByteArray("png") : QByteArray();
    QImageWriter writer(file, format);
    if (!writer.write(picture)) {
        return QCoreApplication::translate("ovedit", "%1: the picture can't be written: %2")
            .arg(file, writer.errorString());
    }
    return {};
}
