#include "host/workarea.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <string>

#include "host/class.h"
#include "host/dbf_driver.h"
#include "host/settings.h"
#include "host/table_error.h"
#include "host/text.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

using Areas = std::map<int, std::shared_ptr<WorkArea>>;

int current_area = 1;
bool net_error = false;
std::string net_holder;
std::string default_driver(dbf_driver_name);

// The tables that are still open when the program ends are closed then, without a word.
Areas& areas() {
    static auto& open_areas = *[] {
        std::atexit([] { areas().clear(); });
        return new Areas;
    }();
    return open_areas;
}

int area_number(const Value& number) {
    constexpr std::int64_t highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp<std::int64_t>(number.integer(), 0, highest));
}

// The area of an alias or number, the current one for NIL.
Areas::iterator find_area(const Value& alias) {
    if (alias.is_nil()) return areas().find(current_area);
    if (alias.is(Kind::numeric)) return areas().find(area_number(alias));
    const std::string key = name_key(alias);
    return std::find_if(areas().begin(), areas().end(),
                        [&](const auto& entry) { return entry.second->alias == key; });
}

int free_area() {
    int number = 1;
    while (areas().contains(number)) ++number;
    return number;
}

void close_area(Areas::iterator position) {
    // Out of the list first: its close may run the program's own code, and may throw.
    const std::shared_ptr<WorkArea> area = position->second;
    const std::unique_ptr<Table> table = std::move(area->table);
    areas().erase(position);
    table->close();
}

std::string base_name(std::string_view file) {
    file.remove_prefix(file.rfind('/') + 1);
    const std::size_t dot = file.rfind('.');
    return std::string(dot == std::string_view::npos || dot == 0 ? file : file.substr(0, dot));
}

bool opens_shared(const Value& shared) {
    constexpr int set_exclusive = 8;
    return shared.is(Kind::logical) ? shared.logical() : !switched_on(set(set_exclusive), true);
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
    return name_key(driver).empty() ? default_driver : std::string(driver.text());
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
    if (name.is(Kind::character)) default_driver = name_key(name);
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
    neterr(false);
    const auto area = std::make_shared<WorkArea>();
    area->rddname = driver_name(driver);
    area->driver = driver_for(area->rddname, GenCode::open, "DBUSEAREA", file.text());
    if (area->driver == nullptr) return;
    area->alias = name_key(alias).empty() ? name_key(base_name(file.text())) : name_key(alias);
    if (find_area(area->alias) != areas().end()) {
        raise_table_error({.gencode = GenCode::duplicate_alias,
                           .subcode = Subcode::alias_in_use,
                           .description = "Alias already in use: " + area->alias,
                           .operation = "DBUSEAREA",
                           .file = file.text()});
        return;
    }
    const Value path = alltrim(file);
    area->table = area->driver->open({.file = path.text(),
                                      .alias = area->alias,
                                      .shared = opens_shared(shared),
                                      .readonly = readonly.is(Kind::logical) && readonly.logical()});
    if (area->table != nullptr) areas().emplace(current_area, area);
}

Value used() { return table_of() != nullptr; }

Value neterr() { return net_error; }

void neterr(bool failed) {
    net_error = failed;
    if (!failed) net_holder.clear();
}

bool is_told_by_neterr(const Value& error) {
    if (error.object() == nullptr) return false;
    const Value candefault = error.object()->get("candefault");
    return candefault.is(Kind::logical) && candefault.logical();
}

Value neterrholder() { return net_holder; }

void neterrholder(std::string_view holder) { net_holder = holder; }

Value alias(const Value& number) {
    const auto area = find_area(number);
    return area == areas().end() ? "" : Value(area->second->alias);
}

std::int64_t select(const Value& alias) {
    if (alias.is_nil()) return current_area;
    const auto area = find_area(alias);
    return area == areas().end() ? 0 : area->first;
}

bool dbselectarea(const Value& alias) {
    if (alias.is(Kind::numeric)) {
        const int number = area_number(alias);
        current_area = number == 0 ? free_area() : number;
        return true;
    }
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
    server.object()->set("alias", area->second->alias);
    server.object()->set("rddname", area->second->rddname);
    return server;
}

Table* table_of(const Value& alias) {
    const auto area = find_area(alias);
    return area == areas().end() ? nullptr : area->second->table.get();
}

void dbclosearea(const Value& alias) {
    const auto area = find_area(alias);
    if (area == areas().end()) return;
    current_area = area->first;
    close_area(area);
}

void dbcloseall() {
    while (!areas().empty()) {
        current_area = areas().begin()->first;
        close_area(areas().begin());
    }
    current_area = 1;
}

Value dbstruct() {
    Value structure = array_of();
    if (const Table* table = table_of()) {
        for (const Field& field : table->fields())
            structure.push(
                array_of(field.name, std::string_view(&field.type, 1), field.length, field.decimals));
    }
    return structure;
}

std::string name_key(const Value& name) {
    return name.is(Kind::character) ? upper(alltrim(name)).string() : std::string();
}

std::shared_ptr<WorkArea> current_workarea() {
    const auto area = areas().find(current_area);
    return area == areas().end() ? nullptr : area->second;
}

std::shared_ptr<WorkArea> needed_workarea(std::string_view operation) {
    auto area = current_workarea();
    if (area == nullptr) {
        raise_table_error({.gencode = GenCode::no_table,
                           .subcode = Subcode::area_not_in_use,
                           .description = "Work area not in use",
                           .operation = operation});
    }
    return area;
}

bool switched_on(const Value& setting, bool otherwise) {
    if (setting.is(Kind::logical)) return setting.logical();
    const std::string text = name_key(setting);
    return text == "ON" || (otherwise && text != "OFF");
}

void for_each_workarea(const std::function<void(WorkArea&)>& action) {
    // What is done may open and close areas.
    for (const auto& [number, area] : Areas(areas())) {
        if (area->table != nullptr) action(*area);
    }
}

}  // namespace zmfb::host
