#include "commands.h"

#include "failure.h"
#include "library.h"

#include <memory>

#include <QApplication>
#include <QImageWriter>
#include <QPalette>
#include <QWidget>

#include <orvane/plot.h>

namespace ovdb_qt {

namespace {

struct Place { // in the arguments
    enum { File, Database, Width, Height, Ratio, Latitude, Longitude, Range, Legend, Colours };
};

QPalette palette_of(bool dark)
{
    QPalette palette;
    palette.setColor(QPalette::Base, dark ? QColor(30, 30, 32) : QColor(Qt::white));
    palette.setColor(QPalette::Text, dark ? QColor(230, 230, 230) : QColor(20, 20, 20));
    return palette;
}

} // namespace

void draw_map(const QStringList &arguments)
{
    QWidget page;
    page.setPalette(palette_of(arguments[Place::Colours] == QLatin1String("dark")));
    OvEventMap map(&page, false, arguments[Place::Legend] == QLatin1String("legend"));
    map.setDefaults(0);
    map.configure(QStringLiteral("latr"), arguments[Place::Latitude]);
    map.configure(QStringLiteral("lonr"), arguments[Place::Longitude]);
    map.configure(QStringLiteral("range"), arguments[Place::Range]);
    auto events = std::make_unique<OvEventView>();
    events->configure(QStringLiteral("dbname"), arguments[Place::Database]);
    map.attach(events.release());
    const QImage picture =
        map.picture(QSize(arguments[Place::Width].toInt(), arguments[Place::Height].toInt()),
                    arguments[Place::Ratio].toDouble());
    QImageWriter writer(arguments[Place::File], "png");
    if (picture.isNull() || !writer.write(picture))
        throw ovdb::Failure(ovdb::ExitCode::Failed, picture.isNull() ? "the picture is too large"
                                                                     : writer.errorString().toStdString());
    ovdb::note(map.statusText().toStdString());
}

} // namespace ovdb_qt
