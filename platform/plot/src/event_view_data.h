// What the map takes from a view beyond its public face.
#pragma once

#include <memory>
#include <utility>

#include <QString>
#include <QVector>

#include <orvane/plot.h>

#include "event_catalogue.h"

struct OvEventViewData {
    // As last read to the end; never null.
    static std::shared_ptr<const EventCatalogue> catalogue(const OvEventView &view);

    // Name and text of the fields of a record that hold a value; none when it can't be read.
    static QVector<std::pair<QString, QString>> fieldsOf(const OvEventView &view, std::int64_t record);
};
