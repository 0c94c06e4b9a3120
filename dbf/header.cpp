#include "dbf/header.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "dbf/descriptors.h"
#include "dbf/fit.h"
#include "dbf/layout.h"
#include "dbf/records.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t largest_header = 65535;
constexpr std::size_t language_at = 29;
// dBase II: byte 0 the type, 1 and 2 the number of records, 6 and 7 the length of a record; room for 32
// fields, then a byte.
constexpr std::size_t dbase2_header = 8 + 32 * 16 + 1;

std::optional<Dialect> dialect_of(std::uint8_t first_byte) {
    switch (first_byte) {
        case 0x02:
            return Dialect::dbase2;
        case 0x03:
        case 0x05:
        case 0x83:
        case 0xFB:
            return Dialect::dbase3;
        case 0x43:
        case 0x63:
        case 0x7B:
        case 0x8B:
        case 0xCB:
            return Dialect::dbase4;
        case 0x04:
        case 0x8C:
            return Dialect::dbase7;
        case 0x30:
        case 0x31:
        case 0x32:
            return Dialect::visual_foxpro;
        case 0xE5:
            return Dialect::six;
        case 0xF5:
            return Dialect::foxpro2;
        default:
            return std::nullopt;
    }
}

std::string joined(const std::vector<std::string>& reasons) {
    std::string all;
    for (const std::string& reason : reasons) all += (all.empty() ? "" : "; ") + reason;
    return all;
}

std::string of_records(std::uint64_t count) {
    return fmt::format("{} record{}", count, count == 1 ? "" : "s");
}

class Reading {
  public:
    explicit Reading(const Source& file) : file_(file), beginning_(read_bytes(file, 0, largest_header + 1)) {}

    Header read() {
        if (beginning_.empty()) throw Refused({"is empty"});
        header_.first_byte = static_cast<std::uint8_t>(beginning_[0]);
        header_.dialect = find_dialect();
        const Dialect dialect = header_.dialect;
        const Announced announced = dialect == Dialect::dbase2 ? read_dbase2() : read_prolog();
        const Described described = describe(announced);
        std::vector<std::string> problems;
        add_type_problems(described.fields, problems);
        const Fit fit = find_fit(file_, described, dialect, announced);
        if (!fit.problem.empty() && !described.fields.empty()) problems.push_back(fit.problem);
        if (!problems.empty()) throw Refused(std::move(problems));
        note_fit(fit, described, announced);
        place(described, fit);
        count(announced.records);
        return std::move(header_);
    }

  private:
    // By the first byte, but where the rest is plainly a header with descriptions of 32 bytes: programs have
    // bytes of their own, and FoxBASE and dBASE IV have those of dBASE II and 7.
    Dialect find_dialect() {
        const std::optional<Dialect> dialect = dialect_of(header_.first_byte);
        const bool other = !dialect || *dialect == Dialect::dbase2 || *dialect == Dialect::dbase7;
        if (other && agrees_as_dbase3()) {
            if (!dialect) {
                note("no DBF file begins with the byte {:02X}: read as one of dBASE III", header_.first_byte);
            }
            return dialect == Dialect::dbase7 ? Dialect::dbase4 : Dialect::dbase3;
        }
        if (dialect) return *dialect;
        throw Refused(
            {fmt::format("is not a DBF file: none begins with the byte {:02X}", header_.first_byte)});
    }

    // Whether the sizes, the end of the descriptions, their types and the marks of the records say the same.
    [[nodiscard]] bool agrees_as_dbase3() const {
        if (beginning_.size() < prolog_size) return false;
        const Sizes sizes = read_sizes(beginning_);
        const Described described = read_descriptions(beginning_, sizes.header, Dialect::dbase3);
        std::vector<std::string> problems;
        add_type_problems(described.fields, problems);
        const std::size_t end = described.end + 1;
        if (!problems.empty() || !described.ended || (sizes.header != end && sizes.header != end + 1))
            return false;
        const Fit fit =
            find_fit(file_, described, Dialect::dbase3, {sizes.header, sizes.record, sizes.records});
        return fit.problem.empty() && fit.start == sizes.header && fit.record_size == sizes.record &&
               record_size_of(described.fields, fit.long_texts) == sizes.record;
    }

    Announced read_dbase2() {
        if (beginning_.size() < dbase2_header) throw Refused({"ends within its header"});
        return {dbase2_header, static_cast<std::size_t>(little_endian(beginning_, 6, 2)),
                little_endian(beginning_, 1, 2)};
    }

    Announced read_prolog() {
        if (beginning_.size() < prolog_size) throw Refused({"ends within its header"});
        header_.language = static_cast<std::uint8_t>(beginning_[language_at]);
        const Sizes sizes = read_sizes(beginning_);
        return {sizes.header, sizes.record, sizes.records};
    }

    // The descriptions within the header; when nothing ends them there, those up to an end behind it if they
    // make records of the announced size.
    Described describe(const Announced& announced) {
        const auto limit = static_cast<std::size_t>(announced.start);
        Described within = read_descriptions(beginning_, limit, header_.dialect);
        if (within.ended) return within;
        Described all = read_descriptions(beginning_, beginning_.size(), header_.dialect);
        const bool better = all.ended && all.fields.size() > within.fields.size() &&
                            (record_size_of(all.fields, true) == announced.record_size ||
                             record_size_of(all.fields, false) == announced.record_size);
        if (better) return all;
        if (limit > beginning_.size()) throw Refused({"ends within its header"});
        return within;
    }

    void note_fit(const Fit& fit, const Described& described, const Announced& announced) {
        const std::size_t fields = record_size_of(described.fields, fit.long_texts);
        if (fit.start != announced.start) {
            note("its header says that records begin at {}: read from {} on", announced.start, fit.start);
        }
        if (!described.ended) note("nothing ends the fields in its header: {} read", described.fields.size());
        const bool decimals = fields != record_size_of(described.fields, true);
        if (decimals) note("decimals of text fields mean nothing: their lengths fit without them");
        if (fit.record_size != announced.record_size) {
            note("its header says records of {} bytes, its fields make {}: read as {}, which fits the file",
                 announced.record_size, fields, fit.record_size);
        } else if (fields != fit.record_size) {
            note("its records have {} bytes, its fields {}: the rest of each is not read", fit.record_size,
                 fields);
        }
    }

    void place(const Described& described, const Fit& fit) {
        header_.start = fit.start;
        header_.record_size = fit.record_size;
        std::size_t offset = 1;
        for (Field field : described.fields) {
            if (field.type == 'C' && fit.long_texts)
                field.length = long_text_length(field.length, field.decimals);
            if (field.type == 'C') field.decimals = 0;
            if (field.length == 0) note("its field {} has no bytes: it is always blank", field.name);
            field.offset = offset;
            offset += field.length;
            if (field.type != '0') {
                header_.fields.push_back(std::move(field));
            } else if (!header_.null_flags) {
                header_.null_flags = field.offset;
                header_.null_flags_size = field.length;
            }
        }
        number_null_bits(header_.fields, header_.null_flags_size);
    }

    void count(std::uint64_t counted) {
        header_.counted = counted;
        const std::uint64_t room = file_.size() > header_.start ? file_.size() - header_.start : 0;
        const std::uint64_t whole = room / header_.record_size;
        header_.records = std::min(counted, whole);
        if (counted > whole) {
            const std::uint64_t end = header_.start + whole * header_.record_size;
            const std::string rest = read_bytes(file_, end, header_.record_size);
            if (!rest.empty() && rest[0] != end_of_file) header_.cut_off = rest.size();
            note("its header counts {}, the file has {}{}", of_records(counted), whole,
                 header_.cut_off > 0 ? " and the beginning of another" : "");
            return;
        }
        header_.behind = count_behind(whole - counted);
        if (header_.behind > 0) {
            note("its header counts {}, the file has {} more", of_records(counted), header_.behind);
        }
    }

    // How many of the next `most` records begin with a deletion mark.
    std::uint64_t count_behind(std::uint64_t most) const {
        Header behind = header_;
        behind.start += header_.records * header_.record_size;
        behind.records = most;
        std::uint64_t found = 0;
        for (Records records(file_, behind); records.next(); ++found) {
            if (!is_mark(records.bytes().front())) break;
        }
        return found;
    }

    template <class... Arguments>
    void note(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
        header_.notes.push_back(fmt::format(text, std::forward<Arguments>(arguments)...));
    }

    const Source& file_;
    std::string beginning_;
    Header header_;
};

}  // namespace

Refused::Refused(std::vector<std::string> reasons)
    : std::runtime_error(joined(reasons)), reasons_(std::move(reasons)) {}

Refused::~Refused() = default;

bool Header::has_memo() const {
    return std::any_of(fields.begin(), fields.end(), [](const Field& field) {
        return field.kind == Kind::memo_text || field.kind == Kind::memo_bytes;
    });
}

Header read_header(const Source& file) { return Reading(file).read(); }

}  // namespace zmfb::dbf
