#ifndef ORVANE_TESTS_OPEN_DATABASE_H
#define ORVANE_TESTS_OPEN_DATABASE_H

#include <QString>
#include <fcntl.h>
#include <memory>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <temporary_database.h>

#include <orvane/util.h>
#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qdbptr.h>

inline const std::vector<TemporaryDatabase::Row> &siteRows()
{
    static const std::vector<TemporaryDatabase::Row> rows = {
        {"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6450", "Ala Archa, Kyrgyzstan", "1517961600.00000"},
        {"ANMO", "1989241", "-1", "34.9459", "-106.4572", "1.8500", "Albuquerque, New Mexico, USA"},
        {"KDAK", "1997160", "2012366", "57.7828", "-152.5835"},
    };
    return rows;
}

// For the messages of failed tests.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

// Three sites; origin, arrival and the other relations of the small schema have no file.
struct Sites : TemporaryDatabase {
    Sites()
    {
        addTable("site", siteRows());
        setModificationTime("site", std_now() - 5 * 86400); // an age that reads the same for a while
    }

    QString name() const { return QString::fromStdString(path()); }

    void setModificationTime(const std::string &table, double epoch) const
    {
        timespec time{};
        time.tv_sec = static_cast<time_t>(epoch);
        time.tv_nsec = static_cast<long>((epoch - static_cast<double>(time.tv_sec)) * 1e9);
        const timespec times[2] = {time, time};
        if (utimensat(AT_FDCWD, tablePath(table).c_str(), times, 0) != 0)
            throw std::runtime_error("can't set the time of " + table);
    }
};

// The sites, opened in a database model.
struct OpenSites {
    Sites files;
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> model;

    OpenSites() { model = std::make_unique<OrvaneDatabaseModel>(config, files.name(), "r"); }

    OrvaneTableModel *table(const QString &name = "site") const { return model->getTableModel(name); }
};

#endif
