#include <malloc.h>

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "bench/sql/commands.h"
#include "bench/sql/string_rows.h"
#include "host/result.h"

namespace zmfb::bench {

namespace {

// Where the numbers stand that tell whether all rows have come.
constexpr std::size_t id_column = 0;
constexpr std::size_t credit_column = 3;

// Adds up what came, after the clock has stopped.
struct Sums {
    std::size_t rows = 0;
    std::int64_t id = 0;
    std::int64_t credit = 0;  // in hundredths

    void add(std::string_view id_text, std::string_view credit_text) {
        ++rows;
        std::int64_t number = 0;
        std::from_chars(id_text.data(), id_text.data() + id_text.size(), number);
        id += number;
        if (credit_text != "NULL")
            credit += std::llround(std::strtod(std::string(credit_text).c_str(), nullptr) * 100);
    }
    [[nodiscard]] json reply(double seconds, double processor = 0) const {
        return {
            {"seconds", seconds}, {"processor", processor}, {"rows", rows}, {"id", id}, {"credit", credit}};
    }
};

Sums sums_of(const Value& result) {
    Sums sums;
    for (const Value& row : host::data_rows(result))
        sums.add(row[id_column + 1].text(), row[credit_column + 1].text());
    return sums;
}

Sums sums_of(const StringRows& rows) {
    Sums sums;
    for (const auto& row : rows) sums.add(row[id_column], row[credit_column]);
    return sums;
}

json select_ours(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    Value result;
    const double before = processor_seconds();
    const double seconds = seconds_of([&] { result = worker.ours->call("internalselect", sql); });
    const double processor = processor_seconds() - before;
    return sums_of(result).reply(seconds, processor);
}

json select_bare(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    Sums sums;
    std::uint64_t touched = 0;
    const double before = processor_seconds();
    const double seconds = seconds_of([&] {
        worker.bare->query(sql, read_block, [&](std::span<const XSQLVAR> row) {
            touched += touch(row);
            ++sums.rows;
            sums.id += value_at<std::int32_t>(row[id_column]);
            if (!is_null(row[credit_column])) sums.credit += value_at<std::int32_t>(row[credit_column]);
        });
    });
    json reply = sums.reply(seconds, processor_seconds() - before);
    reply["touched"] = touched;
    return reply;
}

json select_strings(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    StringRows rows;
    const double seconds = seconds_of([&] { rows = read_strings(*worker.bare, sql); });
    return sums_of(rows).reply(seconds);
}

json sample_ours(Worker& worker, const json& request) {
    const Value result = worker.ours->call("internalselect", request.at("sql").get<std::string>());
    json rows = json::array();
    for (const Value& row : host::data_rows(result)) {
        json& texts = rows.emplace_back(json::array());
        for (const Value& value : row.items()) texts.push_back(value.text());
    }
    return {{"rows", rows}};
}

std::size_t heap_in_use() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

json hold_ours(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    const std::size_t before = heap_in_use();
    worker.held = worker.ours->call("internalselect", sql);
    const std::size_t heap = heap_in_use() - before;
    json reply = sums_of(worker.held).reply(0);
    reply["heap"] = heap;
    return reply;
}

json hold_strings(Worker& worker, const json& request) {
    static StringRows held;
    const std::size_t before = heap_in_use();
    held = read_strings(*worker.bare, request.at("sql").get<std::string>());
    const std::size_t heap = heap_in_use() - before;
    json reply = sums_of(held).reply(0);
    reply["heap"] = heap;
    return reply;
}

constexpr Command commands[] = {
    {.name = "select.ours", .run = select_ours},       {.name = "select.bare", .run = select_bare},
    {.name = "select.strings", .run = select_strings}, {.name = "sample.ours", .run = sample_ours},
    {.name = "hold.ours", .run = hold_ours},           {.name = "hold.strings", .run = hold_strings},
};

}  // namespace

std::span<const Command> select_commands() { return commands; }

}  // namespace zmfb::bench
