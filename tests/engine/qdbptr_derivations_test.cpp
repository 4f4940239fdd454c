#include <QSignalSpy>

#include "library_spy.h"
#include "open_database.h"

namespace {

using Handle = std::unique_ptr<QDbptr>;
using Texts = std::vector<std::string>;

TEST(Derivations, ReturnNewHandlesOfTheCaller)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    const Handle view(origin->subset("evid == 8", "eights"));
    EXPECT_TRUE(view->isValid());
    EXPECT_EQ(view->getDbptrType(), DbptrTable);
    EXPECT_EQ(view->parent(), nullptr);
    EXPECT_EQ(view->getConnection(), open.connection.get());
    EXPECT_EQ(view->getName(), QString("eights"));
    EXPECT_EQ(view->getRecordCount(), 2);
    EXPECT_EQ(origin->getIndexTable(), OriginTable);
}

TEST(Derivations, SortTakesAListOrOneField)
{
    const OpenDatabase open;
    LibrarySpy spy;
    const Handle origin = open.at(OriginTable);
    const Handle two(origin->sort(QList<QString>{"evid", "lat"}, "two", false, true));
    const Handle one(origin->sort("lat", "one", true, false));
    EXPECT_EQ(two->getName(), QString("two"));
    EXPECT_EQ(one->getName(), QString("one"));
    ASSERT_EQ(spy.operations.size(), 2u);
    EXPECT_EQ(spy.operations[0].fields, (Texts{"evid", "lat"}));
    EXPECT_EQ(spy.operations[0].number, dbSORT_UNIQUE);
    EXPECT_EQ(spy.operations[1].fields, Texts{"lat"});
    EXPECT_EQ(spy.operations[1].number, dbSORT_REVERSE);
}

TEST(Derivations, SortGroupAndUngroupThatFailReturnInvalidHandles)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    EXPECT_FALSE(Handle(origin->sort("nowhere", "", false, false))->isValid());
    EXPECT_FALSE(Handle(origin->group({"nowhere"}, ""))->isValid());
    EXPECT_FALSE(Handle(origin->ungroup(""))->isValid());
    elog_clear();
}

TEST(Derivations, ACellOfAJoinIsThatCellAlsoWhereAnotherMemberHasAFieldOfItsName)
{
    const OpenDatabase open;
    const Handle view(open.at(OriginTable)->outerJoinTable("event", "both"));
    ASSERT_TRUE(view->isValid());
    QHash<QString, QString> earlier;
    int differing = 0;
    for (int field = 0; field < view->getFieldCount(); ++field) {
        const Dbptr table = view->getDbptr();
        QDbptr cell(open.connection.get(), {table.database, table.table, field, 0});
        if (cell.getFieldType() != dbSTRING && cell.getFieldType() != dbINTEGER)
            continue;
        const QString shown = cell.dbGet(false).trimmed();
        EXPECT_EQ(cell.dbGetv().toString(), shown) << cell.getFieldName().toStdString() << " at " << field;
        differing += earlier.contains(cell.getFieldName()) && earlier[cell.getFieldName()] != shown;
        earlier[cell.getFieldName()] = shown;
    }
    EXPECT_GT(differing, 0) << "no field of both members differs, so nothing was shown";
}

TEST(Derivations, NeedAFieldToSortOrGroupBy)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    const std::string start = "QOvConnection::request: 'process' request to server failed:\n\n";
    EXPECT_EQ(thrownBy([&] { delete origin->sort(QList<QString>(), "", false, false); }),
              start + "No fields listed" + inputPart("sort", origin.get()));
    EXPECT_EQ(thrownBy([&] { delete origin->group({}, ""); }),
              start + "No fields listed" + inputPart("group", origin.get()));
}

TEST(Derivations, GroupAndUngroup)
{
    const OpenDatabase open;
    const Handle groups(open.at(OriginTable)->group({"evid"}, "by_evid"));
    ASSERT_EQ(groups->getRecordCount(), 2);
    const Handle bundles(groups->lookupField("bundle"));
    const Handle bundle(bundles->lookupRecord(1));
    EXPECT_EQ(bundle->getFieldType(), dbDBPTR);
    EXPECT_EQ(bundle->dbGet(false), QString("1-3"));
    EXPECT_EQ(bundle->dbGetv(), QVariant("1-3"));
    const Handle rows(groups->ungroup("rows"));
    EXPECT_EQ(rows->getName(), QString("rows"));
    EXPECT_EQ(rows->getRecordCount(), 3);
}

TEST(Derivations, SendEachJoinItsRequest)
{
    const OpenDatabase open;
    LibrarySpy spy;
    const Handle origin = open.at(OriginTable);
    EXPECT_EQ(Handle(origin->joinTable("remark", "a"))->getName(), QString("a"));
    EXPECT_EQ(Handle(origin->outerJoinTable("remark", "b"))->getName(), QString("b"));
    EXPECT_EQ(Handle(origin->leftJoinTable("remark", "c"))->getName(), QString("c"));
    EXPECT_EQ(Handle(origin->noJoinTable("remark", "d"))->getName(), QString("d"));
    EXPECT_EQ(Handle(origin->thetaJoinTable("remark", "orid > lineno", "e"))->getName(), QString("e"));
    ASSERT_EQ(spy.operations.size(), 5u);
    EXPECT_EQ(spy.operations[0].operation, "dbjoin");
    EXPECT_EQ(spy.operations[0].number, 0);
    EXPECT_EQ(spy.operations[0].left.table, OriginTable);
    EXPECT_EQ(spy.operations[1].number, 1);
    EXPECT_EQ(spy.operations[2].left.table, RemarkTable);
    EXPECT_EQ(spy.operations[3].operation, "dbnojoin");
    EXPECT_EQ(spy.operations[4].operation, "dbtheta");
    EXPECT_EQ(spy.operations[4].text, "orid > lineno");
}

TEST(Derivations, SeverAndSeparate)
{
    const OpenDatabase open;
    const Handle joined(open.at(OriginTable)->joinTable("remark", "joined"));
    const Handle severed(joined->severTable("remark", "severed"));
    EXPECT_EQ(severed->getName(), QString("severed"));
    EXPECT_EQ(severed->getViewTables(), QList<QString>{"origin"});
    const Handle separated(joined->separateTable("remark", "separated"));
    EXPECT_NE(separated->getName(), QString("separated"));
    EXPECT_EQ(separated->getViewTables(), QList<QString>{"remark"});
}

TEST(Derivations, ThatFailThrowAndMakeNothing)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    const int tables = open.handle->getTableCount();
    const auto startsWith = [](const std::string &text, const std::string &start) {
        EXPECT_TRUE(text.starts_with("QOvConnection::request: 'process' request to server failed:\n\n" +
                                     start + ":\n\n"))
            << text;
    };
    startsWith(thrownBy([&] { delete origin->subset("(", ""); }), "Subset failed for expression '('");
    startsWith(thrownBy([&] { delete origin->joinTable("nowhere", ""); }),
               "Failed to lookup table 'nowhere'");
    startsWith(thrownBy([&] { delete origin->severTable("origin", ""); }), "Sever failed");
    startsWith(thrownBy([&] { delete origin->separateTable("nowhere", ""); }), "Separate failed");
    EXPECT_EQ(open.handle->getTableCount(), tables);
}

TEST(Finding, AnswersTheRecordOrANegativeNumber)
{
    const OpenDatabase open;
    EXPECT_EQ(open.at(OriginTable)->dbFind("evid == 8", false), 1);
    EXPECT_EQ(open.at(OriginTable)->dbFind("evid == 8", true), 2);
    EXPECT_EQ(open.at(OriginTable, dbALL, 1)->dbFind("evid == 8", false), 2);
    EXPECT_LT(open.at(OriginTable)->dbFind("evid == 99", false), 0);
}

TEST(Finding, TellsWhereRowsAreInAView)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    const Handle sorted(origin->sort("lat", "by_lat", true, false));
    EXPECT_EQ(origin->findRows("by_lat", {0, 1, 2}), (QVector<qint64>{0, 2, 1}));
    EXPECT_EQ(sorted->findRows("origin", {2, 0, 7, -3}), (QVector<qint64>{1, 0, -1, -1}));
    EXPECT_EQ(origin->findRows("by_lat", {}), QVector<qint64>());
    const auto fails = [&](const char *table) {
        return thrownBy([&] { origin->findRows(table, {0}); }).find("\n\ndbfind_rows error:\n\n");
    };
    EXPECT_NE(fails("site"), std::string::npos); // of other records
    EXPECT_NE(fails("nowhere"), std::string::npos);
}

TEST(Records, AreFollowedThroughACrunch)
{
    const OpenDatabase open("r+");
    const Handle origin = open.at(OriginTable);
    const QDbptr::TableState before = origin->getTableState();
    const Handle first(origin->lookupRecord(0));
    first->dbMark();
    EXPECT_EQ(origin->getTableState().numbering, before.numbering);
    EXPECT_EQ(origin->movedRecords(before.numbering, {0, 2}), (QVector<qint64>{0, 2}));
    origin->dbCrunch();
    EXPECT_NE(origin->getTableState().numbering, before.numbering);
    EXPECT_EQ(origin->movedRecords(before.numbering, {0, 2, -3}), (QVector<qint64>{-1, 1, -1}));
    EXPECT_EQ(origin->movedRecords(before.numbering - 7, {0, 2}), QVector<qint64>()) << "nobody knows";
}

TEST(Freeing, AnnouncesAChange)
{
    const OpenDatabase open;
    const Handle view(open.at(OriginTable)->subset("evid == 8", "eights"));
    QSignalSpy changed(view.get(), &QDbptr::dataChanged);
    view->dbFree();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_FALSE(open.handle->getViewsPresent().contains("eights"));
}

TEST(Freeing, ThatFailsAnnouncesNothing)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    QSignalSpy changed(origin.get(), &QDbptr::dataChanged);
    EXPECT_NE(thrownBy([&] { origin->dbFree(); }).find("\n\ndbfree error:\n\n"), std::string::npos);
    EXPECT_EQ(changed.count(), 0);
}

TEST(Derivations, AnnounceNoChange)
{
    const OpenDatabase open;
    const Handle origin = open.at(OriginTable);
    QSignalSpy changed(origin.get(), &QDbptr::dataChanged);
    delete origin->subset("evid == 8", "");
    origin->dbFind("evid == 8", false);
    EXPECT_EQ(changed.count(), 0);
}

TEST(Derivations, WithoutAnOpenDatabaseThrow)
{
    QDbptr unbound;
    EXPECT_EQ(thrownBy([&] { delete unbound.subset("true", ""); }),
              "QDbptr::request: No open database connection for request 'subset'");
    EXPECT_EQ(thrownBy([&] { unbound.dbFree(); }),
              "QDbptr::request: No open database connection for request 'dbfree'");
}

} // namespace
