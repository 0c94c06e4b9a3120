// The databases that the walk starts with.
#include <algorithm>
#include <filesystem>

#include "tests/faults/walk.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* customer_structure =
    R"({{"NAME", "C", 10, 0}, {"AGE", "N", 5, 0}, {"BORN", "D", 8, 0}, {"OK", "L", 1, 0}})";

constexpr const char* customer_rows[] = {
    "insert into CUSTOMER (NAME, AGE, BORN, OK) values ('Ana', 31, '2007-03-01', 'T')",
    "insert into CUSTOMER (NAME, AGE, BORN, OK) values ('Bia', 7, null, 'F')",
    "insert into CUSTOMER (NAME, AGE, BORN, OK) values ('Cid', 60, '1999-12-31', 'T')",
};

// PROBE shows that the object still works; FOREIGN_T is none of the driver's tables.
constexpr const char* other_objects[] = {
    "create table PROBE (A integer)",
    "insert into PROBE values (7)",
    "create table FOREIGN_T (A integer, T blob sub_type text)",
    "insert into FOREIGN_T values (1, 'text of a blob')",
    "create index I_NAME on CUSTOMER (NAME)",
    "comment on index I_NAME is 'by name'",
    "create index I_TWO on CUSTOMER (NAME, AGE)",
    "create view V_CUSTOMER (NAME) as select NAME from CUSTOMER",
    "create view V_OTHER (NAME) as select NAME from CUSTOMER",
    "create trigger TR_AGE for CUSTOMER before update as begin if (new.AGE is null) then new.AGE = 0; end",
    "create generator G_ALONE",
    "insert into RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED, OPN_APPRECNO) "
    "values ('CUSTOMER', 'A', 'F', 3)",
    "insert into RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) values ('CUSTOMER', 1, 'A')",
    "insert into RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) values ('CUSTOMER', 2, 'A')",
    "insert into RDDSYS_FLK (FLK_TABLE, FLK_AREAID) values ('CUSTOMER', 'A')",
    "insert into RDDSYS_FLK (FLK_TABLE, FLK_AREAID) values ('ORDERS', 'B')",
};

constexpr const char* catalog_queries[] = {
    "select rdb$relation_name, iif(rdb$external_file is null, '', 'external'), "
    "cast(rdb$description as varchar(255)) from rdb$relations where rdb$system_flag = 0 order by 1",
    "select rdb$relation_name, rdb$field_position, rdb$field_name, cast(rdb$description as varchar(255)) "
    "from rdb$relation_fields where rdb$system_flag = 0 order by 1, 2",
    "select rdb$trigger_name, rdb$relation_name from rdb$triggers where rdb$system_flag = 0 order by 1",
    "select rdb$index_name, rdb$relation_name, cast(rdb$description as varchar(255)) from rdb$indices "
    "where rdb$system_flag = 0 and rdb$index_name not starting with 'RDB$' order by 1",
    "select rdb$generator_name from rdb$generators where rdb$system_flag = 0 order by 1",
    "select rdb$relation_name, rdb$user, rdb$privilege from rdb$user_privileges where rdb$user = 'PUBLIC' "
    "and rdb$relation_name = 'CUSTOMER' order by 1, 2, 3",
};

std::string as_text(const Rows& rows) {
    std::string text;
    for (const Row& row : rows) {
        for (const std::string& value : row) text += value + "|";
        text += "\n";
    }
    return text;
}

}  // namespace

std::string Walk::state_of_database() const {
    BareClient client(name_);
    std::string text;
    for (const char* query : catalog_queries) text += as_text(client.rows(query));
    // Record numbers go on behind those of rows that were rolled back.
    for (const Row& table : client.rows(
             "select rf.rdb$relation_name, cast(list(trim(rf.rdb$field_name)) as varchar(1000)) from "
             "rdb$relations r join rdb$relation_fields rf on rf.rdb$relation_name = r.rdb$relation_name "
             "where "
             "r.rdb$system_flag = 0 and r.rdb$view_blr is null and r.rdb$external_file is null and "
             "rf.rdb$field_name <> 'RECNO' and r.rdb$relation_name <> 'FOREIGN_T' group by 1 order by 1")) {
        Rows rows = client.rows("select " + table[1] + " from " + table[0]);
        std::sort(rows.begin(), rows.end());
        text += table[0] + ":\n" + as_text(rows);
    }
    return text;
}

void Walk::make_databases() {
    declare_module();  // what each function is asked for
    const fs::path made = folder() / "database.fdb";
    fs::copy_file(made, folder() / "bare.fdb");
    object_.emplace(connect());
    name_ = database();
    evaluate(std::string("createtable('CUSTOMER', ") + customer_structure + ")");
    for (const char* statement : customer_rows) execute(statement);
    for (const char* statement : other_objects) execute(statement);
    object_.reset();
    fs::rename(made, folder() / "walk.fdb");

    const fs::path bare = folder() / "bare.fdb";
    object_.emplace(on_server() ? Server::shared().name_of(bare) : bare.string(), sysdba, sysdba_password);
    // The triggers of the others look into RDDSYS_OPN.
    for (const char* table : {"RDDSYS_FLK", "RDDSYS_RLK", "RDDSYS_OPN"}) object_->call("droptable", table);
    for (const char* statement : {other_objects[0], other_objects[1]})
        object_->call("executeupdate", statement);
    EXPECT_EQ(raised(), std::vector<std::string>{});
    object_.reset();
    forget_raised();
}

}  // namespace zmfb::test
