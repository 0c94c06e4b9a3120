#include "host/workarea.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>

#include "host/class.h"
#include "host/dbf_driver.h"
#include "host/settings.h"
#include "host/table_error.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

struct Area {
    std::string alias;
    std::string rddname;
    std::shared_ptr<Driver> driver;  // outlives its table
    std::unique_ptr<Table> table;
};

int current_area = 1;
bool net_error = false;
std::string default_driver(dbf_driver_name);

// The tables that are still open when the program ends are closed then, without a word.
std::map<int, Area>& areas() {
    static auto& open_areas = *[] {
        std::atexit([] { areas().clear(); });
        return new std::map<int, Area>;
    }();
    return open_areas;
}

// An alias or driver name as it is compared: upper case, without outer blanks.
std::string key_of(const Value& name) {
    return name.is(Kind::character) ? upper(alltrim(name)).string() : std::string();
}

using AreaPosition = std::map<int, Area>::iterator;

AreaPosition find_area(const Value& alias) {
    if (alias.is_nil()) return areas().find(current_area);
    const std::string key = key_of(alias);
    return std::find_if(areas().begin(), areas().end(),
                        [&](const auto& entry) { return entry.second.alias == key; });
}

int free_area() {
    int number = 1;
    while (areas().contains(number)) ++number;
    return number;
}

void close_area(AreaPosition position) {
    // Out of the table first: its close may run the program's own code, and may throw.
    const Area area = std::move(position->second);
    areas().erase(position);
    area.table->close();
}

std::string base_name(std::string_view file) {
    file.remove_prefix(file.rfind('/') + 1);
    const std::size_t dot = file.rfind('.');
    return std::string(dot == std::string_view::npos || dot == 0 ? file : file.substr(0, dot));
}

bool opens_shared(const Value& shared) {
    constexpr int set_exclusive = 8;
    if (shared.is(Kind::logical)) return shared.logical();
    const Value exclusive = set(set_exclusive);
    if (exclusive.is(Kind::logical)) return !exclusive.logical();
    return key_of(exclusive) == "OFF";
}

// The driver named, or the default one; raises and returns null when there is none of that name.
std::shared_ptr<Driver> driver_for(std::string_view name, GenCode gencode, std::string_view operation,
                                   std::string_view file) {
    auto driver = find_driver(alltrim(name).string());
    if (driver == nullptr) {
        const std::string description = "No driver of the name " + std::string(name);
        raise_table_error({.gencode = gencode,
                           .subcode = Subcode::driver_unknown,
                           .description = description,
                           .operation = operation,
                           .file = file});
    }
    return driver;
}

std::string driver_name(const Value& driver) {
    return key_of(driver).empty() ? default_driver : std::string(driver.text());
}

// A length or number of decimals of a descriptor; 0 for what is none.
int size_in(const Value& item) {
    constexpr std::int64_t longest = 1 << 20;
    return item.is(Kind::numeric) ? static_cast<int>(std::clamp<std::int64_t>(item.integer(), 0, longest))
                                  : 0;
}

bool read_descriptor(const Value& row, Field& field) {
    if (!row.is(Kind::array) || row.size() < 3) return false;
    const std::span<const Value> items = row.items();
    if (!items[0].is(Kind::character) || !items[1].is(Kind::character) || !items[2].is(Kind::numeric))
        return false;
    if (items[1].text().empty()) return false;
    field.name = alltrim(items[0]).string();
    field.type = upper(items[1]).string().front();
    field.length = size_in(items[2]);
    if (row.size() > 3) field.decimals = size_in(items[3]);
    if (field.type == 'C') {
        // A long one may be given as a DBF file keeps it.
        if (field.length < 256) field.length += 256 * field.decimals;
        field.decimals = 0;
    }
    return true;
}

// DBOBJECT()'s object: what a work area is, as it was when it was asked for.
constexpr Variable server_variables[] = {
    {"alias", Visibility::exported, [] { return Value(""); }},
    {"rddname", Visibility::exported, [] { return Value(""); }},
};

}  // namespace

Value rddsetdefault() { return default_driver; }

Value rddsetdefault(const Value& name) {
    Value before = default_driver;
    if (name.is(Kind::character)) default_driver = key_of(name);
    return before;
}

Value dbcreate(const Value& file, const Value& structure, const Value& driver) {
    const Value args[] = {file, structure, driver};
    if (!file.is(Kind::character) || alltrim(file).string().empty() || !structure.is(Kind::array)) {
        argument_error(Subcode::structure, "DBCREATE", args);
        return false;
    }
    std::vector<Field> fields(structure.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (read_descriptor(structure[i + 1], fields[i])) continue;
        argument_error(Subcode::structure, "DBCREATE", args);
        return false;
    }
    const auto found = driver_for(driver_name(driver), GenCode::create, "DBCREATE", file.text());
    return found != nullptr && found->create(alltrim(file).string(), fields);
}

void dbusearea(const Value& new_area, const Value& driver, const Value& file, const Value& alias,
               const Value& shared, const Value& readonly) {
    if (!file.is(Kind::character) || alltrim(file).string().empty()) {
        argument_error(Subcode::table_open, "DBUSEAREA", {&file, 1});
        return;
    }
    if (new_area.is(Kind::logical) && new_area.logical()) {
        current_area = free_area();
    } else {
        dbclosearea();
    }
    net_error = false;
    Area area;
    area.rddname = driver_name(driver);
    area.driver = driver_for(area.rddname, GenCode::open, "DBUSEAREA", file.text());
    if (area.driver == nullptr) return;
    area.alias = key_of(alias).empty() ? key_of(base_name(file.text())) : key_of(alias);
    if (find_area(area.alias) != areas().end()) {
        raise_table_error({.gencode = GenCode::duplicate_alias,
                           .subcode = Subcode::alias_in_use,
                           .description = "Alias already in use: " + area.alias,
                           .operation = "DBUSEAREA",
                           .file = file.text()});
        return;
    }
    const Value path = alltrim(file);
    area.table = area.driver->open({.file = path.text(),
                                    .alias = area.alias,
                                    .shared = opens_shared(shared),
                                    .readonly = readonly.is(Kind::logical) && readonly.logical()});
    if (area.table != nullptr) areas().emplace(current_area, std::move(area));
}

void dbsetindex(const Value& files) {
    if (key_of(files).empty()) return;
    raise_table_error({.gencode = GenCode::unsupported,
                       .subcode = Subcode::index_files,
                       .description = "No index files in this driver",
                       .operation = "DBSETINDEX",
                       .file = files.text()});
}

void dbgotop() {
    if (Table* table = table_of()) {
        table->go_top();
        return;
    }
    raise_table_error({.gencode = GenCode::no_table,
                       .subcode = Subcode::area_not_in_use,
                       .description = "Work area not in use",
                       .operation = "DBGOTOP"});
}

Value used() { return table_of() != nullptr; }

Value neterr() { return net_error; }

void neterr(bool failed) { net_error = failed; }

Value alias() {
    const auto area = areas().find(current_area);
    return area == areas().end() ? "" : Value(area->second.alias);
}

bool dbselectarea(const Value& alias) {
    const auto area = find_area(alias);
    if (area == areas().end()) return false;
    current_area = area->first;
    return true;
}

Value dbobject(const Value& alias) {
    static const Class data_server("DATASERVER", server_variables, {});
    const auto area = find_area(alias);
    if (area == areas().end()) return {};
    Value server(new Instance(data_server));
    server.object()->set("alias", area->second.alias);
    server.object()->set("rddname", area->second.rddname);
    return server;
}

Table* table_of(const Value& alias) {
    const auto area = find_area(alias);
    return area == areas().end() ? nullptr : area->second.table.get();
}

void dbclosearea(const Value& alias) {
    const auto area = find_area(alias);
    if (area == areas().end()) return;
    current_area = area->first;
    close_area(area);
}

}  // namespace zmfb::host
