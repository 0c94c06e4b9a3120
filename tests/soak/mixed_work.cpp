#include "tests/soak/mixed_work.h"

#include "host/file.h"
#include "tests/matrix/editor.h"
#include "tests/matrix/values.h"
#include "tests/support/environment.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {

namespace {

constexpr const char* area = "STOCK:1:1234:here";
constexpr const char* other_area = "STOCK:2:5678:there";

Value stock_structure() {
    return structure(
        {{"NAME", "C", 30, 0}, {"PRICE", "N", 10, 2}, {"SINCE", "D", 8, 0}, {"ACTIVE", "L", 1, 0}});
}

DbfBuilder small_dbf() {
    return DbfBuilder().field("NAME", 'C', 300).field("PRICE", 'N', 10, 2).field("SINCE", 'D', 8);
}

// The handle that the runtime gave out last.
double newest_handle() {
    const Value handle = host::fopen("/dev/null");
    host::fclose(handle);
    return handle.number();
}

}  // namespace

MixedWork::MixedWork() : here_(folder()) {
    yes("createtable", "STOCK", stock_structure());
    execute("create index STOCK_NAME on STOCK (NAME)");
    execute("create table NOTES (ID integer, NOTE blob sub_type text)");
    BareClient client(database());
    for (int i = 0; i < 40; ++i) {
        client.execute("insert into STOCK values ('a thing of some kind', " + std::to_string(i) +
                       ".25, '2007-03-01', 'T', null, 0)");
    }
    client.execute("insert into NOTES values (1, '" + std::string(5000, 'x') + "')");
    write_files();
    last_handle_ = newest_handle();
    calls_ = 0;
}

void MixedWork::write_files() {
    DbfBuilder goods = small_dbf();
    for (int i = 0; i < 50; ++i) goods.record({"a good thing", "12.50", i % 3 == 0 ? "" : "20070301"});
    goods.write(dbf("goods"));
    small_dbf().type(131).write(dbf("memo"));
    small_dbf().type(48).write(dbf("other"));
    small_dbf().record({"a", "1", "20070301"}).write(dbf("stock"));
    small_dbf().record({"a", "1", "20070301"}).write(dbf("halfway"));
    write_file("damaged.tf", " T>>001::A::C::10::0      =>\n");
}

int MixedWork::close_files_left_open() {
    const double newest = newest_handle();
    int closed = 0;
    for (double handle = last_handle_ + 1; handle < newest; ++handle) {
        if (host::fclose(handle).logical()) ++closed;
    }
    last_handle_ = newest;
    return closed;
}

void MixedWork::round() {
    query();
    look_into_the_catalog();
    fail_queries();
    update();
    batch();
    lock_records();
    lock_tables();
    make_and_drop_tables();
    describe();
    import_and_export();
    fail_imports();
    rebuild_by_matrix();
    fail_matrices();
    attach_and_detach();
}

void MixedWork::query() {
    EXPECT_EQ(does("executequery", "select * from STOCK").size(), 41U);
    EXPECT_EQ(Transaction(connection()).one<std::string>("select NOTE from NOTES").size(), 5000U);
    EXPECT_EQ(does("getrow", "STOCK", "RECNO > 0", "RECNO", "", 3).size(), 6U);
    EXPECT_EQ(does("getfirstrows", "STOCK", "RECNO > 0", "RECNO", "", 10, 5).size(), 11U);
    EXPECT_EQ(does("executeudfskippad", "NAME", "STOCK", "1").size(), 1U);
    EXPECT_EQ(does("assemblestatement", "select @@A", host::array_of(host::array_of("@@A", "1"))).string(),
              "select 1");
}

void MixedWork::look_into_the_catalog() {
    yes("istable", "stock");
    no("istable", "NOWHERE");
    no("isview", "STOCK");
    yes("iszmrddtable", "STOCK");
    yes("isindex", "STOCK_NAME");
    yes("isindexoftable", "STOCK", "STOCK_NAME");
    yes("isfieldoftable", "STOCK", "PRICE");
    no("istrigger", "NONE");
    yes("isallneededudfsinstalled");
    EXPECT_EQ(does("gettablestruct", "STOCK").size(), 6U);
    EXPECT_EQ(does("getindexfields", "STOCK_NAME").size(), 1U);
    EXPECT_EQ(does("counttablerecords", "STOCK").number(), 40);
    EXPECT_EQ(does("gettablereccount", "STOCK").number(), 40);
    EXPECT_GE(does("gettablesname").size(), 5U);
}

void MixedWork::fail_queries() {
    for (const char* const query : {"select * from NOWHERE", "not even a query",
                                    "select 10 / (20 - RECNO) from STOCK order by RECNO"}) {
        does("executequery", query);
    }
    EXPECT_EQ(does("getrow", "NOWHERE", "1 = 1", "1", "", 0).size(), 0U);
    EXPECT_EQ(does("counttablerecords", "NOWHERE").number(), 0);
    does("nosuchmethod", 1);
}

void MixedWork::update() {
    runs("insert into STOCK values ('one more', 1, null, 'F', null, 0)");
    runs("update STOCK set PRICE = PRICE + 1 where NAME = 'one more'");
    runs("delete from STOCK where NAME = 'one more'");
    for (const char* const statement : {"insert into NOWHERE values (1)", "update STOCK set PRICE = 'much'",
                                        "update STOCK set PRICE = 1 / 0"}) {
        EXPECT_NE(does("executeupdate", statement).string(), "");
    }
}

void MixedWork::batch() {
    does("starttransaction");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(does("cachedupdate", "insert into STOCK values ('batch', 1, null, 'F', null, 0)").string(),
                  "");
    }
    EXPECT_NE(does("cachedupdate", "insert into NOWHERE values (1)").string(), "");
    does("commitchanges");
    runs("delete from STOCK where NAME = 'batch'");
}

void MixedWork::lock_records() {
    yes("settableusedbyarea", true, "STOCK", area, true);
    for (const char* const recno : {"1", "2", "3"}) yes("setrecordaslocked", "STOCK", area, recno);
    yes("setrecordaslocked", "STOCK", area, "1");
    no("setrecordaslocked", "STOCK", other_area, "1");
    yes("isrecordlockedbyuser", "STOCK", area, "2");
    EXPECT_EQ(does("getlockedrecords", "STOCK", area).size(), 3U);
    yes("setrecordasunlocked", "STOCK", area, "2");
    yes("unlockallrecords", "STOCK", area);
    yes("settableusedbyarea", false, "STOCK", area, true);
}

void MixedWork::lock_tables() {
    does("getuniqueareaid", "STOCK", "1");
    yes("settableaslocked", "STOCK", area);
    no("settableaslocked", "STOCK", other_area);
    EXPECT_EQ(does("getlockedtables").size(), 1U);
    no("setrecordaslocked", "STOCK", other_area, "7");
    yes("settableasunlocked", "STOCK", area);
    no("settableasunlocked", "STOCK", area);
    yes("releaselocks", "STOCK");
}

void MixedWork::make_and_drop_tables() {
    yes("createtable", "MADE", stock_structure());
    runs("insert into MADE values ('one', 1, '2007-03-01', 'F', null, 0)");
    yes("createview", "V_MADE", "WHO", "select NAME from MADE");
    yes("grantaccess", "SELECT", "MADE", "PUBLIC");
    yes("deleterecord", "MADE", "1");
    yes("deleteallrecords", "MADE");
    no("createtable", "MADE", stock_structure());
    no("createtable", "NEVER", host::array_of(host::array_of("A", "X", 1, 0)));
    yes("droptable", "MADE");
    no("droptable", "MADE");
}

void MixedWork::describe() {
    EXPECT_EQ(does("setindexdescription", "STOCK_NAME", "by name").string(), "");
    EXPECT_EQ(does("setfielddescription", "STOCK", "NAME", "what it is").string(), "");
    EXPECT_EQ(does("getfielddescription", "STOCK", "NAME").size(), 1U);
    EXPECT_EQ(does("getindexdescription", "STOCK_NAME").size(), 1U);
    EXPECT_EQ(does("gettabledescription", "STOCK").size(), 1U);
}

void MixedWork::import_and_export() {
    yes("bringdbf", dbf("goods"));
    EXPECT_EQ(does("counttablerecords", "GOODS").number(), 50);
    yes("exiletable", "STOCK");
    no("exiletable", "NOWHERE");
    yes("droptable", "GOODS");
    // The export wrote over the file that the next import is refused for.
    write_files();
}

// Each way out that leaves the DBF file open once, and two that do not.
void MixedWork::fail_imports() {
    no("bringdbf", dbf("absent"));
    no("bringdbf", dbf("other"));
    no("bringdbf", dbf("memo"));
    no("bringdbf", dbf("stock"));
    does("setfullpathdatfile", file("nowhere/data.dat"));
    no("bringdbf", dbf("halfway"));
    does("setfullpathdatfile", dat());
    yes("droptable", "HALFWAY");
    runs("create table EXT_HALFWAY (A integer)");
    no("bringdbf", dbf("halfway"));
    yes("droptable", "HALFWAY");
    yes("droponlytable", "EXT_HALFWAY");
    runs("create trigger T_HALFWAY_NULLDATES for NOTES before insert as begin end");
    no("bringdbf", dbf("halfway"));
    yes("droptrigger", "T_HALFWAY_NULLDATES");
    yes("droponlytable", "EXT_HALFWAY");
    yes("droptable", "HALFWAY");
}

void MixedWork::rebuild_by_matrix() {
    yes("createtable", "SHAPED",
        structure({{"NOME", "C", 10, 0}, {"PRECO", "N", 10, 2}, {"OLD", "C", 5, 0}}));
    runs("insert into SHAPED values ('Ana', 12.5, 'x', null, 0)");
    does("extractmatrix", texts({"SHAPED"}), file("matrix"));
    Editor editor(read_file(file("matrix.tf")));
    editor.block("SHAPED").change("NOME", {"NAME", "C", 20, 0}).drop("OLD").add({"CITY", "C", 15, 0});
    write_file("edited.tf", editor.text());
    EXPECT_TRUE(does("checkmatrix", file("edited.tf"))[1].logical());
    EXPECT_TRUE(does("applymatrix", file("edited.tf"))[1].logical());
    yes("isfieldoftable", "SHAPED", "CITY");
    yes("droptable", "SHAPED");
}

void MixedWork::fail_matrices() {
    EXPECT_FALSE(does("applymatrix", file("damaged.tf"))[1].logical());
    does("applymatrix", "");
    does("extractmatrix", "no list");
    does("extractmatrix", texts({"STOCK"}), file("nowhere/matrix"));
}

void MixedWork::attach_and_detach() {
    zmFBConn further = connect();
    EXPECT_TRUE(further.call("istable", "STOCK").logical());
    zmFBConn absent(file("nowhere.fdb"), sysdba, sysdba_password);
    EXPECT_FALSE(absent.isconnected());
    EXPECT_FALSE(absent.call("istable", "STOCK").logical());
    calls_ += 6;
}

}  // namespace zmfb::test
