// Databases made for a test, whose table "origin" is what the test writes.
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

class OvEventMap;

// A record of the origin table with this place, depth, id and mb; -999 for a null.
QByteArray originLine(double latitude, double longitude, double depth, int orid, double mb);

class SmallDatabase
{
public:
    explicit SmallDatabase(const QByteArray &origins);

    QString path() const;
    QString tableFile() const;

    // Writes the table anew, or adds to it.
    void replace(const QByteArray &origins);
    void append(const QByteArray &origins);
    void removeTable();

private:
    QTemporaryDir m_folder;
};

// Shows the database's events on the map and reads, places and draws them.
void showEvents(OvEventMap &map, const QString &path);
