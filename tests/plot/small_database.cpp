#include "small_database.h"

#include <orvane/plot.h>

#include <gtest/gtest.h>

#include <QFile>

QByteArray originLine(double latitude, double longitude, double depth, int orid, double mb)
{
    return QString::asprintf(
               "%9.4f %9.4f %9.4f %17.5f %8d %8d %8d %4d %4d %4d %8d %8d %-7s %9.4f %-1s %7.2f %8d %7.2f "
               "%8d %7.2f %8d %-15s %-15s %8d %17.5f\n",
               latitude, longitude, depth, 1517363399.65, orid, orid, 2018031, -1, -1, -1, -1, -1, "qt",
               -999.0, "-", mb, -1, -999.0, -1, -999.0, -1, "-", "<b>&amp;", -1, 1517942380.2)
        .toUtf8();
}

static void write(const QString &path, const QByteArray &text, QIODevice::OpenMode mode)
{
    QFile file(path);
    ASSERT_TRUE(file.open(mode)) << path.toStdString();
    ASSERT_EQ(file.write(text), text.size());
}

SmallDatabase::SmallDatabase(const QByteArray &origins)
{
    write(path(), "schema: css3.0\ndbpath: [.]\nlocks: local\n", QIODevice::WriteOnly);
    replace(origins);
}

QString SmallDatabase::path() const
{
    return m_folder.filePath(QStringLiteral("small"));
}

QString SmallDatabase::tableFile() const
{
    return path() + QStringLiteral(".origin");
}

void SmallDatabase::replace(const QByteArray &origins)
{
    QFile::remove(tableFile());
    write(tableFile(), origins, QIODevice::WriteOnly);
}

void SmallDatabase::append(const QByteArray &origins)
{
    write(tableFile(), origins, QIODevice::Append);
}

void SmallDatabase::removeTable()
{
    ASSERT_TRUE(QFile::remove(tableFile()));
}

void showEvents(OvEventMap &map, const QString &path)
{
    auto *view = new OvEventView;
    EXPECT_TRUE(view->configure(QStringLiteral("dbname"), path));
    map.attach(view);
    map.complete();
}
