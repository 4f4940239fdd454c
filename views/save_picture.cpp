// The window as a picture.
#include "save_form.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <stdexcept>

#include <orvane/tr.h>

#include "new_file.h"

void savePicture(const SaveRequest &request)
{
    QWidget &window = request.window;
    QImage image(window.width(), window.height(), QImage::Format_RGB32);
    {
        QPainter painter(&image);
        window.render(&painter, QPoint(0, 0), QRegion(window.rect()),
                      QWidget::DrawWindowBackground | QWidget::DrawChildren);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) {
        throw std::runtime_error(OvTranslation::tr("The window could not be drawn").toStdString());
    }
    NewFile file(request.path);
    file.write(bytes);
    file.putInPlace();
}
