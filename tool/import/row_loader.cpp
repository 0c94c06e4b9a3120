#include "tool/import/row_loader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace zmfb::tool {
namespace {

// Two of them go in a message, of 65,535 bytes.
constexpr std::size_t piece_size = 32000;
constexpr std::size_t length_width = 6;  // in front of a varying value: its length, or -1 for NULL

std::span<const std::byte> as_bytes(std::string_view text) {
    return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

bool is_varying(const LoadColumn& column) { return column.kind == LoadColumn::Kind::varying; }

std::size_t width_of(const LoadColumn& column) { return is_varying(column) ? length_width : column.width; }

// A value that is longer than a piece is a parameter itself, and its length is not read.
std::string length_text(const std::optional<std::string>& value) {
    const std::string length = value ? std::to_string(std::min(value->size(), piece_size)) : "-1";
    return fmt::format("{:>{}}", length, length_width);
}

// What is wrong with the values of a row, or what a trigger has against it; not what is wrong with the
// database.
bool is_of_the_row(const SqlError& error) {
    constexpr int user_exception = -836;
    return error.sqlstate().starts_with("22") || error.sqlstate().starts_with("23") ||
           error.sqlcode() == user_exception;
}

// As a parameter itself, of any length. Characters of a text are counted, not its bytes.
std::string blob_type_of(const LoadColumn& column) {
    if (column.type.starts_with("BLOB")) return column.type;
    return column.type.ends_with("OCTETS") ? "BLOB" : "BLOB SUB_TYPE TEXT";
}

std::string text_parameter(std::size_t number, std::size_t size) {
    return fmt::format("D{} VARCHAR({}) CHARACTER SET OCTETS = ?, ", number, size);
}

std::string cut(std::size_t text, std::size_t offset, std::size_t width) {
    return fmt::format("SUBSTRING(:D{} FROM :P + {} FOR {})", text, offset, width);
}

std::string cut_or_null(std::size_t text, std::size_t offset, std::size_t width) {
    return fmt::format("NULLIF({}, '{:{}}')", cut(text, offset, width), "", width);
}

constexpr std::size_t mantissa_width = 18, exponent_width = real_width - mantissa_width;

std::string real_value(std::size_t text, std::size_t offset) {
    return fmt::format("CAST({} AS BIGINT) * POWER(2e0, CAST({} AS INTEGER))",
                       cut_or_null(text, offset, mantissa_width),
                       cut_or_null(text, offset + mantissa_width, exponent_width));
}

}  // namespace

std::string real_text(double value) {
    constexpr int bits = 53;
    int exponent = 0;
    auto mantissa = static_cast<std::int64_t>(std::ldexp(std::frexp(value, &exponent), bits));
    // As small as can be: the power of two of the smallest numbers would be none.
    for (exponent -= bits; mantissa != 0 && mantissa % 2 == 0; ++exponent) mantissa /= 2;
    return fmt::format("{:>{}}{:>{}}", mantissa, mantissa_width, exponent, exponent_width);
}

RowLoader::RowLoader(Transaction& work, std::string table, std::vector<LoadColumn> columns, Refused refused)
    : work_(work), table_(std::move(table)), columns_(std::move(columns)), refused_(std::move(refused)) {
    place_columns();
}

// A row that is longer than a piece goes in several parameters, none of its columns in two.
void RowLoader::place_columns() {
    sizes_.assign(1, 0);
    for (const LoadColumn& column : columns_) {
        const std::size_t width = width_of(column);
        if (sizes_.back() > 0 && sizes_.back() + width > piece_size) sizes_.push_back(0);
        places_.push_back({sizes_.size() - 1, sizes_.back()});
        sizes_.back() += width;
    }
}

std::string RowLoader::insertion() const {
    std::string names;
    for (const LoadColumn& column : columns_) names += column.name + ",";
    return fmt::format("INSERT INTO {} ({}RECNO) VALUES ({}:R);", table_, names, values());
}

// Two texts, since a message holds two. Varying values stand behind the fixed part of their row.
std::string RowLoader::block_of_many() const {
    std::string declarations, cutting;
    for (std::size_t i = 0, number = 0; i < columns_.size(); ++i) {
        if (!is_varying(columns_[i])) continue;
        ++number;
        declarations += fmt::format("DECLARE V{} {}; ", number, columns_[i].type);
        cutting += fmt::format(
            "L = CAST(SUBSTRING(:D0 FROM :P + {} FOR {}) AS INTEGER); V{} = NULL; IF (L >= 0) THEN BEGIN "
            "V{} = SUBSTRING(:D0 FROM :Q FOR :L); Q = Q + L; END ",
            places_[i].offset, length_width, number, number);
    }
    return fmt::format(
        "EXECUTE BLOCK ({}N INTEGER = ?, {}M INTEGER = ?, R BIGINT = ?) AS DECLARE P INTEGER; DECLARE Q "
        "INTEGER; DECLARE L INTEGER; {}BEGIN WHILE (N > 0) DO BEGIN P = 1; WHILE (N > 0) DO BEGIN Q = P + "
        "{}; "
        "{}{} R = R + 1; P = Q; N = N - 1; END D0 = D1; N = M; M = 0; END END",
        text_parameter(0, piece_size), text_parameter(1, piece_size), declarations, sizes_[0], cutting,
        insertion());
}

// Varying values are parameters themselves.
std::string RowLoader::block_of_one() const {
    std::string parameters;
    for (std::size_t i = 0; i < sizes_.size(); ++i)
        parameters += text_parameter(i, std::max(piece_size, sizes_[i]));
    std::size_t number = 0;
    for (const LoadColumn& column : columns_) {
        if (is_varying(column)) parameters += fmt::format("V{} {} = ?, ", ++number, blob_type_of(column));
    }
    return fmt::format("EXECUTE BLOCK ({}R BIGINT = ?) AS DECLARE P INTEGER = 1; BEGIN {} END", parameters,
                       insertion());
}

std::string RowLoader::values() const {
    std::string all;
    std::size_t number = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const LoadColumn& column = columns_[i];
        const auto& [text, offset] = places_[i];
        switch (column.kind) {
            case LoadColumn::Kind::fixed:
                all += cut(text, offset, column.width) + ",";
                break;
            case LoadColumn::Kind::nullable:
                all += cut_or_null(text, offset, column.width) + ",";
                break;
            case LoadColumn::Kind::real:
                all += real_value(text, offset) + ",";
                break;
            case LoadColumn::Kind::varying:
                all += fmt::format(":V{},", ++number);
                break;
        }
    }
    return all;
}

void RowLoader::add(std::uint64_t record, std::span<const std::optional<std::string>> values) {
    std::vector<std::string> fixed(sizes_.size());
    std::vector<std::string_view> varying;
    std::size_t size = sizes_[0];
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::string& text = fixed[places_[i].text];
        if (!is_varying(columns_[i])) {
            const std::string_view value = values[i] ? std::string_view(*values[i]) : std::string_view();
            text += value;
            text.append(columns_[i].width - value.size(), ' ');
            continue;
        }
        varying.push_back(values[i] ? std::string_view(*values[i]) : std::string_view());
        size += varying.back().size();
        text += length_text(values[i]);
    }
    if (sizes_.size() > 1 || size > piece_size) {
        flush();
        return send_alone(record, fixed, values);
    }
    if (piece_.size() - second_begin_ + size > piece_size) {
        if (second_ == none) {
            second_ = in_piece_.size();
            second_begin_ = piece_.size();
        } else {
            flush();
        }
    }
    in_piece_.push_back({record, piece_.size()});
    piece_ += fixed[0];
    for (const std::string_view value : varying) piece_ += value;
}

void RowLoader::flush() {
    if (in_piece_.empty()) return;
    if (!many_) many_ = work_.prepare(block_of_many());
    send(0, in_piece_.size());
    piece_.clear();
    in_piece_.clear();
    second_ = none;
    second_begin_ = 0;
}

// The bytes of these rows, which are all of one text.
std::span<const std::byte> RowLoader::text_of(std::size_t begin, std::size_t end) const {
    const auto place = [&](std::size_t row) {
        return row < in_piece_.size() ? in_piece_[row].begin : piece_.size();
    };
    return as_bytes(std::string_view(piece_).substr(place(begin), place(end) - place(begin)));
}

void RowLoader::send(std::size_t begin, std::size_t end) {
    const std::size_t second = second_ > begin ? std::min(second_, end) : end;
    try {
        many_->execute_uncounted(text_of(begin, second), second - begin, text_of(second, end), end - second,
                                 rows_ + 1);
        rows_ += end - begin;
    } catch (const SqlError& error) {
        if (!is_of_the_row(error)) throw;
        if (end - begin == 1) return refused_(in_piece_[begin].record, error.message());
        const std::size_t middle = begin + (end - begin) / 2;
        send(begin, middle);
        send(middle, end);
    }
}

void RowLoader::send_alone(std::uint64_t record, const std::vector<std::string>& fixed,
                           std::span<const std::optional<std::string>> values) {
    if (!one_) one_ = work_.prepare(block_of_one());
    std::vector<Parameter> parameters;
    for (const std::string& text : fixed) parameters.emplace_back(as_bytes(text));
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (!is_varying(columns_[i])) continue;
        if (!values[i]) {
            parameters.emplace_back(std::nullopt);
            continue;
        }
        BlobWriter blob(work_);
        blob.write(*values[i]);
        parameters.emplace_back(blob);
    }
    parameters.emplace_back(rows_ + 1);
    try {
        one_->execute_uncounted(std::span<const Parameter>(parameters));
        ++rows_;
    } catch (const SqlError& error) {
        if (!is_of_the_row(error)) throw;
        refused_(record, error.message());
    }
}

}  // namespace zmfb::tool
