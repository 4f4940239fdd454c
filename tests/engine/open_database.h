#ifndef ORVANE_TESTS_OPEN_DATABASE_H
#define ORVANE_TESTS_OPEN_DATABASE_H

#include <memory>
#include <stdexcept>
#include <string>

#include <QString>

#include <gtest/gtest.h>

#include <orvane/util.h>
#include <qdbptr.h>
#include <qovconnection.h>
#include <qovresponse.h>
#include <qovserver.h>

#include "temporary_database.h"

/* Tables of the small schema, by index. */
enum SmallTable { SiteTable, OriginTable, ArrivalTable, AssocTable, EventTable, RemarkTable, KindsTable };

/* Fields of the origin table that tests use, by index. */
enum OriginField { LatField = 0, DepthField = 2, TimeField = 3, OridField = 4, AuthField = 7 };

/* Fills the small schema's tables: site, origin, remark and kinds have records, assoc is empty, arrival and
 * event have no file. */
inline void fill(const TemporaryDatabase &files)
{
    files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6450", "Ala Archa"},
                            {"NIL", "1994343", "-1", "33.6506", "73.2686", "0.6290", "Nilore"}});
    files.addTable(
        "origin",
        {{"35.1000", "-120.5000", "10.0000", "1262304000.12345", "1", "7", "4.50", "USGS", "-1"},
         {"-10.2500", "161.0000", "-999.0000", "1262390400.00000", "2", "8", "-999.00", "USGS", "5"},
         {"0.0000", "0.0000", "0.0000", "0.00000", "33", "8", "6.00", "longest_author", "-1"}});
    files.addTable("assoc", {});
    files.addTable("remark", {{"5", "1",
                               "Gr\xc3\xb6\xc3\x9f"
                               "e unbekannt"},
                              {"5", "2", "byte \xff here"}});
    files.addTable("kinds", {{"1", "3", "1.5000", "86400.50000", "2010001", "AAK"}, {"0", "4"}});
}

/* A small database that is open through a connection. */
struct OpenDatabase {
    explicit OpenDatabase(const char *permissions = "r")
    {
        elog_clear();
        fill(files);
        connection = std::make_unique<QOvConnection>("/");
        handle.reset(connection->openDatabase(QString::fromStdString(files.path()), permissions));
    }

    /* A handle on any four indexes of the open database. */
    std::unique_ptr<QDbptr> at(int64_t table, int64_t field = dbALL, int64_t record = dbALL) const
    {
        return std::make_unique<QDbptr>(connection.get(),
                                        Dbptr{handle->getIndexDatabase(), table, field, record});
    }

    std::string databaseLabel() const
    {
        return std::to_string(handle->getIndexDatabase()) + " = '" + files.path() + "'";
    }

    TemporaryDatabase files;
    std::unique_ptr<QOvConnection> connection;
    std::unique_ptr<QDbptr> handle;
};

/* The answer of a dispatcher, errors included. */
inline std::shared_ptr<QOvResponse> process(QDbptr *handle, const char *request,
                                            const QList<QVariant> &arguments = {})
{
    return QOvServer().process(handle, request, arguments);
}

/* The error text that ends with the input part. */
inline std::string inputPart(const std::string &request, QDbptr *handle)
{
    return "\n\nQOvServer::process: request '" + request + "': input " +
           (handle ? handle->toString().toStdString() : "NULL QDbptr");
}

/* The request fails with just this message and no log. */
inline void expectError(QDbptr *handle, const char *request, const QList<QVariant> &arguments,
                        const std::string &message)
{
    const auto response = process(handle, request, arguments);
    EXPECT_TRUE(response->errorOccurred());
    EXPECT_EQ(response->errorString().toStdString(), message + inputPart(request, handle));
}

/* The request fails with this message and a log that isn't empty; it is taken out of the library's. Returns
 * it. */
inline std::string expectErrorWithLog(QDbptr *handle, const char *request, const QList<QVariant> &arguments,
                                      const std::string &message)
{
    elog_clear();
    const auto response = process(handle, request, arguments);
    const std::string text = response->errorString().toStdString();
    const std::string start = message + ":\n\n";
    EXPECT_TRUE(response->errorOccurred());
    EXPECT_EQ(elog_count(), 0);
    const std::string end = inputPart(request, handle);
    EXPECT_TRUE(text.starts_with(start)) << text;
    EXPECT_TRUE(text.ends_with(end)) << text;
    if (text.size() <= start.size() + end.size()) {
        ADD_FAILURE() << "no log in: " << text;
        return {};
    }
    return text.substr(start.size(), text.size() - start.size() - end.size());
}

/* The text of the runtime error that `run` throws. */
template <class Run>
std::string thrownBy(Run run)
{
    try {
        run();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "(nothing thrown)";
}

#endif
