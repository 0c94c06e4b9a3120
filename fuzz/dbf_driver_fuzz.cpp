// The native driver of DBF files: a file of any bytes is opened, walked through, written to and opened again.
//
// An input: how to open, how many steps, the steps with what they need, and the file.
#include <cmath>
#include <memory>
#include <vector>

#include "fuzz/fuzz.h"
#include "host/date.h"
#include "host/dbf_driver.h"
#include "host/text.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;
using host::Table;

constexpr std::size_t most_steps = 64;
constexpr std::int64_t most_records_compared = 40;

void check_position(Table& table) {
    const std::int64_t count = table.record_count();
    require(count >= 0, "a number of records is not negative");
    require(table.record_number() >= 1 && table.record_number() <= count + 1,
            "the record number is in range");
    require(table.eof() == (table.record_number() == count + 1), "the end is behind the last record");
}

void check_kind(const host::Field& field, const Value& value) {
    const Kind wanted = field.type == 'C'   ? Kind::character
                        : field.type == 'N' ? Kind::numeric
                        : field.type == 'D' ? Kind::date
                                            : Kind::logical;
    require(value.is(wanted), "a field reads as its kind");
    if (field.type == 'C') {
        require(value.text().size() == static_cast<std::size_t>(field.length),
                "a text is as long as its field");
    }
}

void check_stored(const host::Field& field, const Value& put, const Value& got) {
    switch (field.type) {
        case 'C':
            require(got.same(host::padr(put, field.length)), "a text comes back padded or cut");
            break;
        case 'N': {
            const double half = 0.5000001 * std::pow(10.0, -field.decimals);
            const double noise = std::fabs(put.number()) * 1e-14;
            require(std::fabs(got.number() - put.number()) <= half + noise, "a number comes back rounded");
            break;
        }
        case 'L':
            require(got.logical() == put.logical(), "a logical comes back");
            break;
        default: {
            const int year = host::calendar_day(put.date()).year;
            require(got.same(put) || year < 1 || year > 9999, "a date comes back");
        }
    }
}

void put_some_value(Table& table, Input& input) {
    const auto fields = table.fields();
    const std::size_t index = input.below(fields.size() + 1);
    if (input.flag()) {
        table.put_columns(index, input.text());
        return;
    }
    const Value value = value_of(input, 1);
    if (!table.put(index, value)) return;
    require(index < fields.size() && !table.eof(), "only a field of a record is stored to");
    check_stored(fields[index], value, table.get(index));
}

void append(Table& table) {
    const std::int64_t before = table.record_count();
    if (!table.append()) return;
    require(table.record_count() == before + 1 && table.record_number() == before + 1 && !table.eof(),
            "a new record is the last and the current one");
    require(!table.deleted(), "a new record is in use");
    for (std::size_t i = 0; i < table.fields().size(); ++i) {
        require(host::empty(table.get(i)), "a new record is empty");
    }
}

void step(Table& table, Input& input) {
    switch (input.below(9)) {
        case 0:
            table.go_top();
            break;
        case 1:
            table.go_to(input.number<std::int16_t>());
            break;
        case 2:
            table.skip(input.number<std::int8_t>());
            break;
        case 3:
            append(table);
            break;
        case 4:
        case 5:
            put_some_value(table, input);
            break;
        case 6:
            table.set_deleted(input.flag());
            break;
        case 7:
            table.take_back();
            break;
        default:
            table.commit();
    }
    check_position(table);
}

std::vector<Value> records_of(Table& table) {
    std::vector<Value> values;
    const std::int64_t count = std::min(table.record_count(), most_records_compared);
    for (std::int64_t record = 1; record <= count; ++record) {
        require(table.go_to(record), "a record can be gone to");
        values.emplace_back(table.deleted());
        for (std::size_t i = 0; i < table.fields().size(); ++i) {
            values.push_back(table.get(i));
            check_kind(table.fields()[i], values.back());
        }
    }
    return values;
}

std::unique_ptr<Table> open(const std::string& path, bool shared, bool read_only) {
    return host::make_dbf_driver()->open(
        {.file = path, .alias = "T", .shared = shared, .readonly = read_only});
}

void check_reopened(const std::string& path, std::int64_t count, const std::vector<Value>& values) {
    const auto again = open(path, false, true);
    require(again != nullptr, "a table that was open opens again");
    require(again->record_count() == count, "every record is there again");
    const std::vector<Value> found = records_of(*again);
    require(found.size() == values.size(), "every field is there again");
    for (std::size_t i = 0; i < found.size(); ++i) require(found[i].same(values[i]), "a value is kept");
    again->close();
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::uint8_t how = input.byte();
    const std::string_view steps = input.text();
    Input script(reinterpret_cast<const std::uint8_t*>(steps.data()), steps.size());
    const std::string path = scratch_file("t.dbf", input.rest());
    const auto table = open(path, (how & 1) != 0, (how & 2) != 0);
    if (!table) return;
    require(!table->fields().empty(), "an open table has fields");
    check_position(*table);
    for (std::size_t i = 0; i < most_steps && !script.at_end(); ++i) step(*table, script);
    const std::int64_t count = table->record_count();
    const std::vector<zmfb::host::Value> values = records_of(*table);
    require(table->close(), "the table closes");
    check_reopened(path, count, values);
}
