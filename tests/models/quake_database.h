#ifndef ORVANE_TESTS_QUAKE_DATABASE_H
#define ORVANE_TESTS_QUAKE_DATABASE_H

#include "open_database.h"

// Three sites, three origins of two events, four arrivals (one of a station that is not there, one of a
// station without an association) and their associations. The other relations of the small schema have no
// file.
struct Quakes {
    TemporaryDatabase files;
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> model;

    Quakes()
    {
        files.addTable("site", siteRows());
        files.addTable("origin", {{"10.0", "20.0", "5.0", "1517961600.0", "1", "8"},
                                  {"-5.5", "30.0", "33.0", "1517961700.0", "2", "9"},
                                  {"10.5", "20.5", "10.0", "1517961800.0", "3", "8"}});
        files.addTable("arrival", {{"KDAK", "1517961650.0", "11", "2018038", "P"},
                                   {"AAK", "1517961660.0", "12", "2018038", "P"},
                                   {"AAK", "1517961690.0", "13", "2018038", "S"},
                                   {"PFO", "1517961700.0", "14", "2018038", "P"}});
        files.addTable("assoc", {{"12", "1", "AAK", "P"}, {"13", "1", "AAK", "S"}, {"14", "2", "PFO", "P"}});
        model = std::make_unique<OrvaneDatabaseModel>(config, QString::fromStdString(files.path()), "r");
        elog_clear();
    }

    OrvaneTableModel *table(const QString &name) const { return model->getTableModel(name); }
};

// The texts that a table shows in the column of a field, row by row, joined by blanks.
inline QString shown(const OrvaneTableModel &table, const QString &field)
{
    QStringList texts;
    const int column = table.getTableFields().indexOf(field) + 1;
    for (int row = 0; row < table.rowCount(); ++row)
        texts.append(column > 0 ? table.data(table.index(row, column)).toString() : QString());
    return texts.join(' ');
}

#endif
