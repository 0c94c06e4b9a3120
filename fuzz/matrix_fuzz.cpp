// Reading and applying a matrix over a catalog that is made up: from a file of any lines, or from an array of
// any shape.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "host/file.h"
#include "tests/matrix/fake_database.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;
using test::FakeDatabase;
using Columns = std::map<std::string, std::vector<std::string>>;

void fill(FakeDatabase& db) {
    db.add("CLIENTES", {{"NOME", "C", 40}, {"SALDO", "N", 10, 2}, {"NASC", "D", 8}, {"ATIVO", "L", 1}});
    db.add("A", {{"X", "C", 1}});
    db.add_foreign("ALIEN", {{"Y", "C", 5}});
}

// Fields with their types and sizes.
Columns columns_of(FakeDatabase& db) {
    Columns columns;
    for (const auto& [name, table] : db.tables) {
        for (const Value& field : table.fields) columns[name].push_back(test::field_text(field));
    }
    return columns;
}

// {ok, {{text}, ...}}
void check_result(const Value& result) {
    require(result.is(Kind::array) && result.size() == 2, "applying gives two things");
    require(result[1].is(Kind::logical) && result[2].is(Kind::array),
            "one tells how it went, one is the log");
    bool errors = false;
    for (const Value& line : result[2].items()) {
        require(line.is(Kind::array) && line.size() == 1 && line[1].is(Kind::character), "a log has texts");
        errors = errors || line[1].text().starts_with("[ERROR]");
    }
    require(!errors || !result[1].logical(), "what failed is not called well");
}

bool is_plain(std::string_view name) {
    return !name.empty() && name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789") == name.npos;
}

// Whether the fields are such as a database can have.
bool is_plain(const FakeDatabase::Table& table) {
    return !table.foreign && std::ranges::all_of(table.fields, [](const Value& field) {
        return is_plain(field[1].text()) && field[2].size() == 1 && field[3].number() < 1000 &&
               field[4].number() >= 0 && field[4].number() < 1000;
    });
}

// What is written out of a table that a database can have asks for no change when it is read back.
void check_extracted(FakeDatabase& db) {
    Value names = Value::array_of_size(0);
    for (const auto& [name, table] : db.tables) {
        if (is_plain(name) && is_plain(table)) names.push(name);
    }
    if (names.size() == 0) return;
    const Value matrix = db.call("extractmatrix", names);
    db.changes.clear();
    const Value result = db.call("applymatrix", matrix);
    check_result(result);
    require(result[1].logical() && db.changes.empty(), "a matrix as it was written out changes nothing");
}

// A matrix file stays open at every use. Handles are numbered one after another.
void close_matrix_files(const Value& path) {
    const Value last = host::fopen(path);
    for (int back = 0; back <= 2; ++back) host::fclose(last.number() - back);
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::uint8_t how = input.byte();
    FakeDatabase db;
    fill(db);
    if ((how & 4) != 0) db.failing.insert("alterfield");
    if ((how & 8) != 0) db.failing.insert("setfieldposition");
    if ((how & 16) != 0) db.failing.insert("createtable");
    const Columns before = columns_of(db);
    const bool from_file = (how & 3) != 0;
    const Value matrix = from_file ? Value(scratch_file("m.tf", input.rest())) : value_of(input, 5);

    const Value check = db.call("checkmatrix", matrix);
    check_result(check);
    require(db.changes.empty() && columns_of(db) == before, "a check changes nothing");
    const Value applied = db.call("applymatrix", matrix, false);
    check_result(applied);
    require(!db.changes.empty() || columns_of(db) == before, "without a change all is as before");
    db.failing.clear();
    check_extracted(db);
    if (from_file) close_matrix_files(matrix);
}
