#include "dbf/fit.h"

#include <fmt/format.h>

#include <algorithm>

#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t database_name_size = 263;
constexpr std::uint64_t most_marks = 256;

// How well a way fits.
struct Look {
    bool marks = false;   ///< each of the first records begins with a deletion mark
    bool length = false;  ///< the file ends behind the last record, or the byte that says so follows
};

Look look_at(const Source& file, const Fit& way, std::uint64_t records) {
    const std::uint64_t room = file.size() > way.start ? file.size() - way.start : 0;
    const std::uint64_t whole = std::min(records, room / way.record_size);
    Look look;
    look.marks = whole > 0 || records == 0;
    for (std::uint64_t i = 0; i < std::min(whole, most_marks); ++i) {
        const std::string mark = read_bytes(file, way.start + i * way.record_size, 1);
        look.marks = look.marks && mark.size() == 1 && is_mark(mark[0]);
    }
    const std::uint64_t end = way.start + whole * way.record_size;
    const std::string around = read_bytes(file, end - 1, 2);
    const bool ends = around.size() == 1 || (around.size() == 2 && around[1] == end_of_file);
    look.length = whole == records && ends && (whole == 0 || around[0] != end_of_file);
    return look;
}

// Where records begin behind such descriptions, as far as is usual: some programs write a zero byte more.
std::vector<std::uint64_t> usual_starts(const Source& file, const Described& described, Dialect dialect) {
    const std::uint64_t end = described.end + (described.ended ? 1 : 0);
    std::vector<std::uint64_t> starts{end};
    if (read_bytes(file, end, 1) == std::string(1, '\0')) starts.push_back(end + 1);
    if (dialect == Dialect::visual_foxpro) starts.push_back(described.end + 1 + database_name_size);
    return starts;
}

// The ways there are, the announced one first.
std::vector<Fit> ways(const Described& described, const std::vector<std::uint64_t>& usual,
                      const Announced& announced) {
    std::vector<std::uint64_t> starts{announced.start};
    starts.insert(starts.end(), usual.begin(), usual.end());
    std::vector<Fit> found;
    for (const std::uint64_t start : starts) {
        if (start < described.end) continue;
        for (const bool long_texts : {true, false}) {
            const std::size_t fields = record_size_of(described.fields, long_texts);
            if (announced.record_size >= fields)
                found.push_back({start, announced.record_size, long_texts, {}});
            found.push_back({start, fields, long_texts, {}});
        }
    }
    return found;
}

bool is_consistent(const Fit& way, const Described& described, const Announced& announced) {
    return way.start == announced.start && way.record_size == announced.record_size &&
           way.record_size == record_size_of(described.fields, way.long_texts);
}

}  // namespace

std::size_t record_size_of(const std::vector<Field>& fields, bool long_texts) {
    std::size_t size = 1;
    for (const Field& field : fields) {
        const bool is_long = long_texts && field.type == 'C';
        size += is_long ? long_text_length(field.length, field.decimals) : field.length;
    }
    return size;
}

Fit find_fit(const Source& file, const Described& described, Dialect dialect, const Announced& announced) {
    const std::vector<std::uint64_t> usual = usual_starts(file, described, dialect);
    const bool usual_start = std::find(usual.begin(), usual.end(), announced.start) != usual.end();
    const Fit* consistent = nullptr;
    const Fit* best = nullptr;
    int best_rank = 0;
    const std::vector<Fit> all = ways(described, usual, announced);
    for (const Fit& way : all) {
        const Look look = look_at(file, way, announced.records);
        const int rank = (look.marks ? 2 : 0) + (look.length ? 1 : 0);
        if (is_consistent(way, described, announced) && consistent == nullptr) {
            if (usual_start ? rank > 0 : rank == 3) return way;
            consistent = &way;
        }
        if (look.marks && rank > best_rank) {
            best = &way;
            best_rank = rank;
        }
    }
    // Marks alone are not enough against a header that agrees with itself: texts are full of blanks.
    if (consistent != nullptr) return best_rank == 3 ? *best : *consistent;
    if (best != nullptr) return *best;
    return {.problem =
                fmt::format("has a header that does not fit the file: records of {} bytes from {} on, "
                            "fields of {} bytes",
                            announced.record_size, announced.start, record_size_of(described.fields, true))};
}

}  // namespace zmfb::dbf
