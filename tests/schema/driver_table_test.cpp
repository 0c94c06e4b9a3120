// The statements that make a table of the driver, beside the method that does.
#include "zmfbconn/driver_table.h"

#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

class DriverTable : public Schema {
  protected:
    void run(const std::vector<std::string>& statements) {
        for (const std::string& statement : statements) execute(statement);
    }
    // What the engine knows of a table, with T for its name.
    std::string told(const std::string& table) {
        std::string all;
        for (const std::string& query :
             {"select f.rdb$field_name, t.rdb$field_type, t.rdb$field_length, t.rdb$field_scale, "
              "t.rdb$field_precision, f.rdb$null_flag, f.rdb$default_source, f.rdb$description from "
              "rdb$relation_fields f join rdb$fields t on t.rdb$field_name = f.rdb$field_source where "
              "f.rdb$relation_name = '" +
                  table + "' order by f.rdb$field_position",
              "select i.rdb$index_type, i.rdb$unique_flag, s.rdb$field_name from rdb$indices i join "
              "rdb$index_segments s on s.rdb$index_name = i.rdb$index_name where i.rdb$relation_name = '" +
                  table + "' order by 1",
              "select rdb$trigger_name, rdb$trigger_sequence, rdb$trigger_type, rdb$trigger_source from "
              "rdb$triggers where rdb$relation_name = '" +
                  table + "' order by 1",
              "select rdb$description from rdb$relations where rdb$relation_name = '" + table + "'",
              "select rdb$generator_name from rdb$generators where rdb$generator_name containing '" + table +
                  "' order by 1"}) {
            for (const auto& row : rows(query)) {
                for (const std::string& value : row) all += value + "|";
                all += "\n";
            }
        }
        for (std::size_t at = 0; (at = all.find(table)) != std::string::npos;)
            all.replace(at, table.size(), "T");
        return all;
    }
};

TEST_F(DriverTable, MakesWhatCreatetableMakes) {
    create_client();
    std::vector<DriverColumn> columns{driver_column("NAME", 'C', 30, 0), driver_column("PRICE", 'N', 10, 2),
                                      driver_column("BORN", 'D', 8, 0), driver_column("OK", 'L', 1, 0)};
    run(statements_to_begin_table("OTHERS", columns, "not yet"));
    EXPECT_FALSE(yes("iszmrddtable", "OTHERS"));
    run(statements_to_finish_table("OTHERS"));
    const std::string made = told("OTHERS");
    EXPECT_NE(made.find("NUMERIC(10,2)"), std::string::npos) << made;
    EXPECT_EQ(made, told("CLIENT"));
}

TEST_F(DriverTable, HasFurtherColumnsInTheirPlaces) {
    run(statements_to_begin_table("OTHERS",
                                  std::vector<DriverColumn>{driver_column("NAME", 'C', 30, 0),
                                                            {"NOTE", "BLOB SUB_TYPE TEXT"},
                                                            {"SIZE_", "INTEGER", "NUMERIC(11,0)"}},
                                  "not yet"));
    run(statements_to_finish_table("OTHERS"));
    EXPECT_EQ(show(call("gettablestruct", "OTHERS")),
              "{{\"NAME\", \"C\", 30, 0}, {\"NOTE\", \"U\", 8, 0}, {\"SIZE_\", \"N\", 11, 0}, "
              "{\"RDD_AREAID\", \"C\", 50, 0}, {\"RECNO\", \"N\", 15, 0}}");
    execute("insert into OTHERS (NAME) values ('Ana')");
    EXPECT_EQ(rows("select cast(RECNO as integer) from OTHERS"), (Rows{{"1"}}));
}

}  // namespace
}  // namespace zmfb::test
