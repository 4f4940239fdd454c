#include "readable_rows.h"

#include <stdexcept>

#include <orvane/db.h>
#include <orvane/tr.h>
#include <orvane/util.h>

#include <orvanetablemodel.h>

void checkReadable(const OrvaneTableModel *table, int first, int end)
{
    Dbptr place = table == nullptr ? dbinvalid() : table->getFacadeDbptr();
    place.field = dbALL;
    if (first < end) {
        dbread_ahead(dbrow_range(place, first, end)); // what can't be read shows below
    }
    char unused = 0;
    for (place.record = first; place.record < end; ++place.record) {
        // With no room for it the record is looked at and not copied.
        if (dbget(place, &unused, 0) < 0) {
            elog_clear(); // what is told here need not be told again
            throw std::runtime_error(OvTranslation::tr("Row %1 can't be read any more: the table has "
                                                       "changed. A view of it has to be made again.")
                                         .arg(place.record)
                                         .toStdString());
        }
    }
}
