#include "tool/transfer/replacing.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/reading.h"
#include "tool/transfer/new_table.h"

namespace zmfb::tool {
namespace {

bool can_be_made(const Index& index, const std::vector<std::string>& columns) {
    return index.active && !index.fields.empty() && std::ranges::all_of(index.fields, [&](const Name& field) {
               return field.bytes() == "RECNO" || std::ranges::find(columns, field.bytes()) != columns.end();
           });
}

void add_indexes(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns,
                 Belongings& all) {
    for (const Index& index : indexes_of(connection, table)) {
        if (!index.constraint.empty() || index.name.bytes() == table.bytes() + "_RECNO_DESC") continue;
        if (!can_be_made(index, columns)) {
            all.lost.push_back("index " + index.name.shown());
            continue;
        }
        std::string fields;
        for (const Name& field : index.fields) fields += (fields.empty() ? "" : ", ") + field.quoted();
        all.again.push_back(fmt::format("CREATE {}{}INDEX {} ON {} ({})", index.unique ? "UNIQUE " : "",
                                        index.descending ? "DESCENDING " : "", index.name.quoted(),
                                        table.quoted(), fields));
    }
}

void add_grants(zmFBConn& connection, const Name& table, Belongings& all) {
    static const std::map<std::string, std::string> privileges{
        {"S", "SELECT"}, {"I", "INSERT"}, {"U", "UPDATE"}, {"D", "DELETE"}, {"R", "REFERENCES"}};
    static const std::map<int, std::string> grantees{{8, "USER"}, {13, "ROLE"}};
    const auto rows = rows_of<std::string, std::string, int, int, std::optional<std::string>>(
        connection,
        "select p.rdb$user, trim(p.rdb$privilege), p.rdb$user_type, coalesce(p.rdb$grant_option, 0), "
        "p.rdb$field_name from rdb$user_privileges p join rdb$relations r on r.rdb$relation_name = "
        "p.rdb$relation_name where p.rdb$relation_name = ? and p.rdb$object_type = 0 and p.rdb$user <> "
        "r.rdb$owner_name order by 1, 2, 5",
        table.bytes());
    for (const auto& [user, privilege, user_type, option, field] : rows) {
        const auto word = privileges.find(privilege);
        const auto grantee = grantees.find(user_type);
        const std::string whom = Name(user).shown();
        if (word == privileges.end() || grantee == grantees.end() || field) {
            all.lost.push_back(fmt::format("a right of {}", whom));
            continue;
        }
        all.again.push_back(fmt::format("GRANT {} ON {} TO {} {}{}", word->second, table.quoted(),
                                        grantee->second, Name(user).quoted(),
                                        option == 1 ? " WITH GRANT OPTION" : ""));
    }
}

}  // namespace

Belongings belongings_of(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns) {
    Belongings all;
    add_indexes(connection, table, columns, all);
    add_grants(connection, table, all);
    return all;
}

void replace_with(zmFBConn& connection, const std::string& beside, const std::string& table,
                  std::span<const DriverColumn> columns, std::uint64_t rows, const std::vector<Name>& views,
                  const std::vector<std::string>& again) {
    drop_with_views(connection, Name(table), views);
    begin_table(connection, table, columns);
    std::string names;
    for (const DriverColumn& column : columns) names += column.name + ",";
    {
        Transaction work(connection);
        work.execute(fmt::format("INSERT INTO {0} ({1}RECNO) SELECT {1}RECNO FROM {2} ORDER BY RECNO", table,
                                 names, beside));
        finish_table(work, table, rows);
        for (const std::string& statement : again) work.execute(statement);
        work.commit();
    }
    drop_with_views(connection, Name(beside), {});
}

// Record numbers are the table's own to give. Those that rows took which do not stay count as deleted, so
// that the table is not said to have them.
void add_rows(zmFBConn& connection, const std::string& beside, const std::string& table,
              std::span<const DriverColumn> columns) {
    std::string names, values;
    for (const DriverColumn& column : columns) {
        names += (names.empty() ? "" : ",") + column.name;
        values += (values.empty() ? ":C." : ",:C.") + column.name;
    }
    {
        Transaction work(connection);
        work.execute(
            fmt::format("EXECUTE BLOCK AS DECLARE K BIGINT = 0; BEGIN FOR SELECT {0} FROM {1} ORDER BY RECNO "
                        "AS CURSOR C DO "
                        "BEGIN INSERT INTO {2} ({0}) VALUES ({3}); K = K + 1; END WHEN ANY DO BEGIN IF "
                        "(SQLSTATE NOT STARTING "
                        "WITH '22') THEN K = K + 1; K = GEN_ID(G_{2}_D, K); EXCEPTION; END END",
                        names, beside, table, values));
        work.commit();
    }
    drop_unfinished_table(connection, beside);
}

}  // namespace zmfb::tool
