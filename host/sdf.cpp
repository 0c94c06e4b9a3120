#include "host/sdf.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "host/descriptor.h"
#include "host/table_error.h"
#include "host/text.h"
#include "host/workarea.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

constexpr char end_of_text = 0x1A;

// What a text file is parted by: line ends, or the length that all its lines have.
enum class Parting : std::uint8_t { line_ends, full_length };

// The lines of a text file, of which the first `width` bytes count.
class Lines {
  public:
    Lines(Descriptor&& file, std::size_t width, Parting parting)
        : file_(std::move(file)), width_(width), parting_(parting) {
        buffer_.resize(std::max<std::size_t>(std::size_t{256} * 1024, 2 * (width + 2)));
    }

    // Gives the next line without its end; false at the end of the file, or when it cannot be read (see
    // error() and wrong_line()).
    bool next(std::string_view& line) {
        if (rest().size() < width_ + 2) fill();
        ++number_;
        return parting_ == Parting::full_length ? next_of_full_length(line) : next_by_line_end(line);
    }

    // The number of the line that was not as long as all have to be, which ended the reading; 0 when there
    // was none.
    [[nodiscard]] std::int64_t wrong_line() const { return wrong_line_; }
    // The system's error that ended the reading, 0 when there was none.
    [[nodiscard]] int error() const { return error_; }

  private:
    [[nodiscard]] std::string_view rest() const { return {buffer_.data() + used_, filled_ - used_}; }

    // Moves what is left to the front of the buffer and fills it up.
    void fill() {
        if (at_end_) return;
        std::memmove(buffer_.data(), buffer_.data() + used_, filled_ - used_);
        filled_ -= std::exchange(used_, 0);
        const std::size_t read = file_.read(std::span(buffer_).subspan(filled_));
        if (filled_ + read < buffer_.size()) {
            at_end_ = true;
            error_ = errno;
        }
        filled_ += read;
    }

    bool next_of_full_length(std::string_view& line) {
        if (rest().empty()) return false;
        if (rest().size() <= width_ || rest()[width_] != '\n') {
            wrong_line_ = number_;
            return false;
        }
        line = rest().substr(0, width_);
        used_ += width_ + 1;
        return true;
    }

    bool next_by_line_end(std::string_view& line) {
        if (rest().empty() || rest().front() == end_of_text) return false;
        std::size_t end = rest().find('\n');
        if (end == std::string_view::npos) {
            fill();
            end = rest().find('\n');
        }
        if (end != std::string_view::npos) {
            line = rest().substr(0, end);
            used_ += end + 1;
            if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
            return true;
        }
        if (at_end_) {
            line = rest();
            used_ = filled_;
            return true;
        }
        long_line_.assign(rest(), 0, width_);
        line = long_line_;
        skip_line();
        return true;
    }

    void skip_line() {
        std::size_t end = rest().find('\n');
        while (end == std::string_view::npos && !rest().empty()) {
            used_ = filled_;
            fill();
            end = rest().find('\n');
        }
        used_ += end == std::string_view::npos ? 0 : end + 1;
    }

    Descriptor file_;
    std::size_t width_;
    Parting parting_;
    std::int64_t number_ = 0;
    std::int64_t wrong_line_ = 0;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
    std::size_t filled_ = 0;
    bool at_end_ = false;
    int error_ = 0;
    std::string long_line_;
};

struct Column {
    std::size_t field;
    std::size_t offset;
    std::size_t width;
};

// The columns of a line; false when `names` has one that the table does not.
bool find_columns(const Table& table, const Value& names, std::vector<Column>& columns) {
    std::vector<std::string> wanted;
    if (names.is(Kind::array)) {
        for (const Value& name : names.items()) {
            if (!name.is(Kind::character)) return false;
            wanted.emplace_back(upper(alltrim(name)).string());
        }
    }
    std::size_t found = 0;
    std::size_t offset = 0;
    for (std::size_t i = 0; i < table.fields().size(); ++i) {
        const Field& field = table.fields()[i];
        if (!wanted.empty() && std::ranges::find(wanted, upper(field.name).string()) == wanted.end())
            continue;
        ++found;
        if (field.type == 'M') continue;
        columns.push_back({i, offset, static_cast<std::size_t>(field.length)});
        offset += columns.back().width;
    }
    return wanted.empty() || found == wanted.size();
}

// Raises what keeps a file from being read.
bool fail(GenCode gencode, std::string_view file, int system_error) {
    const bool opening = gencode == GenCode::open;
    raise_table_error({.gencode = gencode,
                       .subcode = opening ? Subcode::table_open : Subcode::table_read,
                       .description = opening ? "Open error" : "Read error",
                       .operation = "APPEND FROM",
                       .file = file,
                       .oscode = dos_error(system_error)});
    return false;
}

// Raises that the line of that number is not as long as all have to be.
bool fail_at_line(std::int64_t number, std::string_view file) {
    const std::string description =
        "Read error, line " + std::to_string(number) + " is not as long as a record";
    raise_table_error({.gencode = GenCode::corrupt,
                       .subcode = Subcode::table_corrupt,
                       .description = description,
                       .operation = "APPEND FROM",
                       .file = file});
    return false;
}

std::int64_t limit(const Value& number) {
    return number.is(Kind::numeric) ? number.integer() : std::numeric_limits<std::int64_t>::max();
}

// What narrows the lines down.
struct Conditions {
    const Value& for_block;
    const Value& while_block;
    const Value& next;
    const Value& record;
};

bool store_line(Table& table, std::span<const Column> columns, std::string_view line) {
    for (const Column& column : columns) {
        const std::size_t from = std::min(column.offset, line.size());
        if (!table.put_columns(column.field, line.substr(from, column.width))) return false;
    }
    return true;
}

bool append_lines(Table& table, std::span<const Column> columns, Lines& lines, const Conditions& conditions) {
    const std::int64_t last =
        conditions.record.is(Kind::numeric) ? limit(conditions.record) : limit(conditions.next);
    std::string_view line;
    for (std::int64_t number = 1; number <= last && lines.next(line); ++number) {
        if (conditions.record.is(Kind::numeric) && number != last) continue;
        if (!table.append()) return false;
        if (!store_line(table, columns, line)) {
            table.take_back();
            return false;
        }
        const bool ends = !allows(conditions.while_block);
        if (table_of() != &table) return false;  // a block has closed the table
        if ((ends || !allows(conditions.for_block)) && table_of() == &table && !table.take_back())
            return false;
        if (table_of() != &table) break;
        table.unlock_record(table.record_number());
        if (ends) break;
    }
    return true;
}

// What dbappsdf() does, with the file of exactly the name `file` and its lines parted so.
bool append_file(const Value& file, Parting parting, const Value& fields, const Conditions& conditions) {
    const auto area = needed_workarea("APPEND FROM");
    if (area == nullptr) return false;
    Table* const table = area->table.get();
    std::vector<Column> columns;
    if (!file.is(Kind::character) || alltrim(file).string().empty() ||
        !find_columns(*table, fields, columns)) {
        argument_error(Subcode::structure, "APPEND FROM", {file, fields});
        return false;
    }
    if (columns.empty()) return true;
    const std::string path(file.text());
    Descriptor source(path, O_RDONLY);
    if (!source.is_open()) return fail(GenCode::open, path, errno);
    Lines lines(std::move(source), columns.back().offset + columns.back().width, parting);
    if (!append_lines(*table, columns, lines, conditions)) return false;
    if (lines.error() != 0) return fail(GenCode::read, path, lines.error());
    return lines.wrong_line() == 0 || fail_at_line(lines.wrong_line(), path);
}

// The name of a file without the blanks around it, .txt behind it when it has no extension. What is no text
// stays as it is.
Value with_extension(const Value& file) {
    if (!file.is(Kind::character)) return file;
    std::string path = alltrim(file).string();
    if (!path.empty() && path.find('.', path.rfind('/') + 2) == std::string::npos) path += ".txt";
    return path;
}

}  // namespace

Value dbappsdf(const Value& file, const Value& fields, const Value& for_block, const Value& while_block,
               const Value& next, const Value& record) {
    return append_file(with_extension(file), Parting::line_ends, fields,
                       {for_block, while_block, next, record});
}

Value dbappsdf_exactly(const Value& file) {
    const Value all;
    return append_file(file, Parting::full_length, all, {all, all, all, all});
}

}  // namespace zmfb::host
