// A small database of a test, opened by a model.
#ifndef ORVANE_TESTS_VIEWS_SHOWN_DATABASE_H
#define ORVANE_TESTS_VIEWS_SHOWN_DATABASE_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QEvent>
#include <QFont>
#include <QStringList>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>

#include "support/temporary_database.h"

class ShownDatabase
{
public:
    using Rows = std::vector<TemporaryDatabase::Row>;

    // Site has values in sta, ondate, lat, lon and staname only; arrival in all but auth and commid.
    ShownDatabase()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940", "-999.0000", "Ala Archa"},
                                {"KONO", "2001001", "-1", "59.6491", "9.5982", "-999.0000", "Kongsberg"}});
        files.addTable("arrival", {{"AAK", "1517875201.50000", "1", "2018037", "P"}});
        files.addTable("event", {});
    }

    OrvaneDatabaseModel &open(const QString &table = QString())
    {
        QString name = QString::fromStdString(files.path());
        if (!table.isEmpty()) {
            name += "." + table;
        }
        model = std::make_unique<OrvaneDatabaseModel>(config, name, permissions);
        if (!model->isOpen()) {
            throw std::runtime_error(model->openError().toStdString());
        }
        return *model;
    }

    OrvaneTableModel &table(const QString &name)
    {
        OrvaneTableModel *found = (model ? *model : open()).getTableModel(name);
        if (found == nullptr) {
            throw std::runtime_error("no table " + name.toStdString());
        }
        return *found;
    }

    void setFontPoints(int points)
    {
        QFont font("monospace");
        font.setPointSize(points);
        config.configure("font", font);
    }

    TemporaryDatabase files;
    QString permissions = "r"; // "r+" to change records
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> model;
};

// The first column of the field, which may be named with its table, as in views; 0 when there is none.
inline int columnNamed(const OrvaneTableModel &table, const QString &field)
{
    for (int column = 1; column < table.columnCount(); ++column) {
        const QString name = table.fieldNameForColumnIndex(column);
        if (name == field || name.endsWith("." + field)) {
            return column;
        }
    }
    return 0;
}

// The values of a field as shown, from top to bottom.
inline QStringList shownValues(const OrvaneTableModel &table, const QString &field)
{
    QStringList values;
    const int column = columnNamed(table, field);
    for (int row = 0; row < table.rowCount(); ++row) {
        values.append(table.index(row, column).data().toString());
    }
    return values;
}

// What the event loop would do when it is next idle, deferred deletions included.
inline void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

#endif
