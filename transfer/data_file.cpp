#include "transfer/data_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "conn/log.h"
#include "conn/raise.h"
#include "conn/statement.h"
#include "host/file.h"
#include "host/text.h"

namespace zmfb::transfer {

namespace {

using host::operator""_l1;

// Large enough to make calls of the system rare, small enough to stay in the processor's cache.
constexpr std::size_t block_size = std::size_t{256} * 1024;

// The number of records that the first `size` bytes of `block` hold, a last one in part filled up with
// blanks.
std::size_t complete(std::span<char> block, std::size_t size, std::size_t record_length) {
    const std::size_t whole = size / record_length;
    const std::size_t rest = size % record_length;
    if (rest <= 1) return whole;
    std::memset(block.data() + size, ' ', record_length - rest);
    return whole + 1;
}

}  // namespace

bool has_single_bytes(Self& self) {
    constexpr std::string_view wide_character_set =
        "SELECT C.RDB$CHARACTER_SET_NAME, C.RDB$BYTES_PER_CHARACTER FROM RDB$DATABASE D JOIN "
        "RDB$CHARACTER_SETS C ON C.RDB$CHARACTER_SET_NAME = D.RDB$CHARACTER_SET_NAME WHERE "
        "C.RDB$BYTES_PER_CHARACTER > 1";
    const Value wide = call(self, "internalselect", wide_character_set);
    if (!host::has_row(wide)) return true;
    const Value& found = host::data_rows(wide)[0];
    const Value name = host::alltrim(found[1]);
    call(self, "writelog", "[ERROR] Default character set of more than one byte: " + name,
         transfer_log_level);
    conn::raiseerror("Default character set " + name + " takes up to " + found[2] +
                     " bytes a character;DBF files go in and out of databases where it takes one");
    return false;
}

Value data_file_path(Self& self) {
    const Value path = call(self, "getfullpathdatfile");
    if (host::empty(path)) return path;
    std::error_code no_current_folder;
    const std::filesystem::path absolute = std::filesystem::absolute(path.text(), no_current_folder);
    return no_current_folder ? path : Value(absolute.native());
}

bool make_external_table(Self& self, const Value& name, const Value& structure, const Value& path) {
    if (ask(self, "istable", name)) {
        conn::raiseerror("Uma tabela externa com este nome já existe!"_l1);
        return false;
    }
    // Within the literal of the statement a quote is two.
    return ask(self, "createtableexternal", name, structure, host::strtran(path, "'", "''"));
}

bool holds_rows(Self& self, MethodName<1> counter, const Value& name, std::int64_t records,
                const Value& path) {
    if (conn::integer_or_zero(var(self, Var::dbhndl)) == 0) return true;
    const std::int64_t rows = call(self, counter, name).integer();
    return rows == records || refuse_rows(self, name, rows, records, path);
}

bool refuse_rows(Self& self, const Value& name, std::int64_t rows, std::int64_t records, const Value& path) {
    const Value numbers = name + fmt::format(" Rows: {} Records: {}", rows, records);
    call(self, "writelog", "[ERROR] Rows and records differ. Table: " + numbers, transfer_log_level);
    conn::raiseerror("Rows and records differ; Table: " + numbers + ";Data file: " + path);
    return false;
}

std::optional<std::int64_t> write_data_file(const Value& dbf, std::int64_t records,
                                            const RecordConversion& conversion, const Value& dat) {
    const std::size_t record = conversion.record_length();
    std::int64_t written = 0;
    if (record <= 1 || conversion.dat_length() == 0) return written;
    const std::size_t per_block =
        std::max<std::size_t>(1, block_size / std::max(record, conversion.dat_length()));
    Value source = Value::text_of_size(per_block * record);
    Value target = Value::text_of_size(per_block * conversion.dat_length());
    while (records > 0) {
        const auto asked = static_cast<std::size_t>(std::min(records, static_cast<std::int64_t>(per_block)));
        const auto got = static_cast<std::size_t>(host::fread(dbf, source, asked * record).integer());
        if (host::ferror().number() != 0) return std::nullopt;  // no end of the file, which sets none
        const std::size_t count = complete(source.writable_text(), got, record);
        if (count == 0) return written;
        conversion.convert(source.text().data(), count, target.writable_text().data());
        const auto size = static_cast<std::int64_t>(count * conversion.dat_length());
        if (host::fwrite(dat, target, size).integer() != size) return std::nullopt;
        written += static_cast<std::int64_t>(count);
        if (got < asked * record) return written;
        records -= static_cast<std::int64_t>(asked);
    }
    return written;
}

}  // namespace zmfb::transfer
