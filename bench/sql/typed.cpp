// Reading every value of every row as a C++ type.
#include "bench/sql/commands.h"
#include "zmfbconn/transaction.h"

namespace zmfb::bench {

namespace {

// The columns of the table.
auto people(Transaction& work, const std::string& sql) {
    return work.query<std::int32_t, std::string, std::string, std::optional<Decimal>, double, Timestamp,
                      std::int16_t>(sql);
}

std::uint64_t ends(const std::string& text) {
    return text.empty() ? 0 : static_cast<std::uint64_t>(text.front() + text.back());
}

json select_typed(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    std::uint64_t rows = 0, touched = 0;
    std::int64_t ids = 0, credits = 0;
    const double before = processor_seconds();
    const double seconds = seconds_of([&] {
        Transaction work(*worker.ours, Access::read_only);
        for (const auto& [id, name, city, credit, rate, changed, kind] : people(work, sql)) {
            ++rows;
            ids += id;
            if (credit) credits += credit->unscaled();
            touched += ends(name) + ends(city) + static_cast<std::uint64_t>(rate) +
                       static_cast<std::uint64_t>(changed.time_since_epoch().count()) +
                       static_cast<std::uint64_t>(kind);
        }
        work.commit();
    });
    return {{"seconds", seconds}, {"processor", processor_seconds() - before},
            {"rows", rows},       {"id", ids},
            {"credit", credits},  {"touched", touched}};
}

// The first rows, as texts.
json sample_typed(Worker& worker, const json& request) {
    Transaction work(*worker.ours, Access::read_only);
    json rows = json::array();
    for (const Row& row : work.rows(request.at("sql").get<std::string>())) {
        json& texts = rows.emplace_back(json::array());
        for (std::size_t i = 0; i < row.size(); ++i) texts.push_back(row[i].text().value_or("NULL"));
    }
    return {{"rows", rows}};
}

constexpr Command commands[] = {
    {.name = "select.typed", .run = select_typed},
    {.name = "sample.typed", .run = sample_typed},
};

}  // namespace

std::span<const Command> typed_commands() { return commands; }

}  // namespace zmfb::bench
