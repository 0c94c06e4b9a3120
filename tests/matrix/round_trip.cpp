#include "tests/matrix/round_trip.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace zmfb::test {

std::string log_header(std::string_view table) {
    return fmt::format("- - - - - - - - - - - - - - - - - - - - - - - - - [ {} ]", table);
}

void RoundTrip::create(std::string_view table, const Value& structure) {
    ASSERT_TRUE(call("createtable", table, structure).logical());
}

Editor RoundTrip::extract(std::initializer_list<std::string_view> tables) {
    call("extractmatrix", texts(tables), file("matrix"));
    return Editor(read_file(file("matrix.tf")));
}

RoundTrip::Applied RoundTrip::apply(const Editor& edited, std::string_view line_end) {
    const std::string path = write_file("edited.tf", edited.text(line_end));
    const std::string before = everything();
    const Value simulated = call("checkmatrix", path);
    EXPECT_EQ(everything(), before);
    const Value applied = call("applymatrix", path);
    return {applied[1].logical(), lines(applied[2]), lines(simulated[2])};
}

std::vector<std::string> RoundTrip::apply_well(const Editor& edited) {
    Applied applied = apply(edited);
    EXPECT_TRUE(applied.ok) << fmt::format("{}", fmt::join(applied.log, "\n"));
    EXPECT_EQ(applied.log, applied.simulated);
    EXPECT_EQ(raised(), std::vector<std::string>{});
    expect_nothing_to_do();
    return std::vector<std::string>(applied.log.begin() + 1, applied.log.end());
}

void RoundTrip::expect_nothing_to_do() {
    const std::string before = everything();
    log_at(7);
    clear_log();
    const Value extracted = call("extractmatrix", Value(), file("again"));
    const Value result = call("applymatrix", file("again.tf"));
    EXPECT_EQ(sql_log(), std::vector<std::string>{});
    log_at(0);
    EXPECT_TRUE(result[1].logical());
    for (const std::string& line : lines(result[2])) EXPECT_TRUE(line.starts_with("- - - ")) << line;
    EXPECT_EQ(everything(), before);
}

std::vector<std::string> RoundTrip::user_fields(std::string_view table) {
    return field_texts(call("filterrddfields", call("gettablestruct", table)));
}

std::vector<std::string> RoundTrip::columns(const std::string& table) {
    std::vector<std::string> names;
    for (const Row& row : rows("select rdb$field_name from rdb$relation_fields where rdb$relation_name = '" +
                               table + "' order by rdb$field_position")) {
        names.push_back(row[0]);
    }
    return names;
}

std::string RoundTrip::everything() {
    std::string all;
    BareClient client(database());
    for (const Row& table :
         client.rows("select rdb$relation_name from rdb$relations where rdb$system_flag = 0 "
                     "order by 1")) {
        all += table[0] + "\n";
        for (const Row& column : client.rows(fmt::format(
                 "select f.rdb$field_name, f.rdb$field_position, d.rdb$field_type, d.rdb$field_length, "
                 "d.rdb$field_scale from rdb$relation_fields f join rdb$fields d on d.rdb$field_name = "
                 "f.rdb$field_source where f.rdb$relation_name = '{}' order by 2",
                 table[0]))) {
            all += fmt::format("  {}\n", fmt::join(column, " "));
        }
        for (const Row& row : client.rows("select * from " + table[0])) {
            all += fmt::format("    {}\n", fmt::join(row, "|"));
        }
    }
    return all;
}

}  // namespace zmfb::test
