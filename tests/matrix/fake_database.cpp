#include "tests/matrix/fake_database.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "conn/class.h"
#include "host/text.h"

namespace zmfb::test {
namespace {

FakeDatabase* current = nullptr;

FakeDatabase::Table* find(const Value& name) {
    const auto found = current->tables.find(host::upper(name).string());
    return found == current->tables.end() ? nullptr : &found->second;
}

auto find_field(FakeDatabase::Table& table, const Value& name) {
    return std::ranges::find_if(table.fields, [&](const Value& field) { return field[1].same(name); });
}

// Writes a change down and answers whether it is to work: on a table that is there, unless a test wants it to
// fail.
bool note(std::string_view method, Args args, const std::string& what) {
    const std::string change =
        fmt::format("{} {}{}{}", method, args[0].text(), what.empty() ? "" : " ", what);
    current->changes.push_back(change);
    return !current->failing.contains(std::string(method)) && !current->failing.contains(change);
}

Value istable(Self&, Args args) { return find(args[0]) != nullptr; }

Value iszmrddtable(Self&, Args args) {
    const auto* table = find(args[0]);
    return table != nullptr && !table->foreign;
}

Value gettablestruct(Self&, Args args) {
    Value made = Value::array_of_size(0);
    if (const auto* table = find(args[0])) {
        for (const Value& field : table->fields) made.push(field);
    }
    return made;
}

Value gettablesname(Self&, Args) {
    Value names = Value::array_of_size(0);
    for (const auto& [name, table] : current->tables) names.push(name);
    return names;
}

Value createtable(Self&, Args args) {
    if (!note("createtable", args, fmt::format("{}", fmt::join(field_texts(args[1]), ", ")))) return false;
    current->add(host::upper(args[0]).string(), args[1]);
    return true;
}

Value droptable(Self&, Args args) {
    if (!note("droptable", args, "")) return false;
    current->tables.erase(host::upper(args[0]).string());
    return true;
}

Value addfield(Self&, Args args) {
    if (!note("addfield", args, field_text(args[1]))) return false;
    auto& table = *find(args[0]);
    if (find_field(table, args[1][1]) != table.fields.end()) return false;
    table.fields.push_back(args[1]);
    return true;
}

Value dropfield(Self&, Args args) {
    if (!note("dropfield", args, field_text(args[1]))) return false;
    auto& table = *find(args[0]);
    const auto found = find_field(table, args[1][1]);
    if (found == table.fields.end()) return false;
    table.fields.erase(found);
    return true;
}

Value alterfield(Self&, Args args) {
    if (!note("alterfield", args, field_text(args[2]) + " -> " + field_text(args[1]))) return false;
    auto& table = *find(args[0]);
    const auto found = find_field(table, args[2][1]);
    if (found == table.fields.end()) return false;
    table.fields.erase(found);
    if (find_field(table, args[1][1]) != table.fields.end()) return false;
    table.fields.push_back(args[1]);
    return true;
}

Value addlimbofield(Self&, Args args) {
    const Value original = args[1][static_cast<std::size_t>(args[2].integer())];
    if (!note("addlimbofield", args, field_text(original))) return false;
    auto& table = *find(args[0]);
    const Value name = host::operator+(Value("RDDLMB_"), original[1]);
    if (find_field(table, name) != table.fields.end()) return true;
    table.fields.push_back(host::array_of(name, original[2], original[3], original[4]));
    return true;
}

// A position beyond the last column means the last.
Value setfieldposition(Self&, Args args) {
    const std::int64_t position = args[2].integer();
    if (!note("setfieldposition", args, fmt::format("{} {}", args[1][1].text(), position))) return false;
    auto& fields = find(args[0])->fields;
    const auto found = find_field(*find(args[0]), args[1][1]);
    if (found == fields.end()) return false;
    const Value moved = *found;
    fields.erase(found);
    const auto target = std::min<std::int64_t>(position - 1, static_cast<std::int64_t>(fields.size()));
    fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(target), moved);
    return true;
}

constexpr struct {
    std::string_view name;
    host::Routine routine;
} replaced[] = {
    {"istable", istable},
    {"iszmrddtable", iszmrddtable},
    {"gettablestruct", gettablestruct},
    {"gettablesname", gettablesname},
    {"createtable", createtable},
    {"droptable", droptable},
    {"addfield", addfield},
    {"dropfield", dropfield},
    {"alterfield", alterfield},
    {"addlimbofield", addlimbofield},
    {"setfieldposition", setfieldposition},
};

const host::Class& fake_class() {
    static const auto methods = [] {
        const auto real = conn::zmfbconn_class().methods();
        std::vector<host::Method> table(real.begin(), real.end());
        for (const auto& [name, routine] : replaced) {
            std::ranges::find(table, name, &host::Method::name)->routine = routine;
        }
        return table;
    }();
    static const host::Class the_class("ZMFBCONN", conn::zmfbconn_class().variables(), methods);
    return the_class;
}

}  // namespace

FakeDatabase::FakeDatabase() : object_(new host::Instance(fake_class())) { current = this; }

FakeDatabase::~FakeDatabase() {
    object_ = Value();
    current = nullptr;
}

void FakeDatabase::add(const std::string& name, const Value& structure) {
    Table& table = tables[name];
    for (const Value& field : structure.items()) table.fields.push_back(field);
    table.fields.push_back(field({"RDD_AREAID", "C", 50, 0}));
    table.fields.push_back(field({"RECNO", "N", 15, 0}));
}

void FakeDatabase::add_foreign(const std::string& name, std::initializer_list<Field> fields) {
    Table& table = tables[name];
    table.foreign = true;
    for (const Field& one : fields) table.fields.push_back(field(one));
}

Self& FakeDatabase::self() { return static_cast<Self&>(*object_.object()); }

std::vector<std::string> FakeDatabase::user_fields(const std::string& name) {
    return field_texts(call("filterrddfields", call("gettablestruct", name)));
}

std::vector<std::string> FakeDatabase::columns(const std::string& name) {
    std::vector<std::string> names;
    for (const Value& field : tables[name].fields) names.emplace_back(field[1].text());
    return names;
}

}  // namespace zmfb::test
