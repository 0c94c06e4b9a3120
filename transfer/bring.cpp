#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "conn/log.h"
#include "conn/raise.h"
#include "conn/statement.h"
#include "host/file.h"
#include "host/text.h"
#include "transfer/data_file.h"
#include "transfer/dbf_header.h"
#include "transfer/methods.h"
#include "transfer/record_conversion.h"

namespace zmfb::transfer {

namespace {

namespace fs = std::filesystem;

using conn::raiseerror;
using host::operator""_l1;

constexpr std::string_view null_date =
    "IF ( NEW.@@DATEFIELD = '0001-01-01' ) THEN   NEW.@@DATEFIELD = NULL;  @@IFS";

// One import on its way. Each step answers whether the next one may run; one that says no has reported why.
//
// The DBF file is closed where a step says so and stays open on every other way out but for memory that runs
// out: after the memo's refusal, after a table that exists already, and once the table is made, after
// everything that fails before the copy.
struct Import {
    Self& self;
    const Value& dbfname;
    Value dbf = {};
    DbfHeader header = {};
    std::vector<dbf::Field> fields = {};
    Value structure = {};
    Value table = {};
    Value data_file = {};
    Value dat = {};
    std::int64_t records = 0;  // those that the data file has

    bool run();
    bool open();
    bool read_header();
    bool read_fields();
    void make_structure();
    bool make_table();
    bool write_data();
    bool make_external();
    bool make_null_dates_trigger();
    bool copy();

    bool refuse_as_no_dbf();
    [[nodiscard]] Value external_table() const { return "EXT_" + table; }
    [[nodiscard]] Value null_dates_name() const { return table + "_NULLDATES"; }
    [[nodiscard]] bool has_dates() const;
    // Up to `size` bytes of the DBF file from `offset` on, as many as it has.
    [[nodiscard]] std::string read(std::int64_t offset, std::size_t size) const;
};

std::string Import::read(std::int64_t offset, std::size_t size) const {
    host::fseek(dbf, offset);
    Value buffer = Value::text_of_size(size);
    const auto got = static_cast<std::size_t>(host::fread(dbf, buffer, size).integer());
    return std::string(buffer.text().substr(0, got));
}

bool Import::refuse_as_no_dbf() {
    raiseerror("Não é um DBF; Arquivo: "_l1 + dbfname);
    host::fclose(dbf);
    return false;
}

bool Import::open() {
    // A pipe would be waited for.
    std::error_code ignored;
    const bool is_file = !dbfname.is(host::Kind::character) || fs::is_regular_file(dbfname.string(), ignored);
    if (is_file) dbf = host::fopen(dbfname, 0);
    if (is_file && dbf.number() > 0) return true;
    raiseerror("Arquivo não encontrado; Arquivo: "_l1 + dbfname);
    return false;
}

bool Import::read_header() {
    const std::string bytes = read(0, dbf_header_bytes);
    if (!bytes.empty() && static_cast<unsigned char>(bytes.front()) == dbf_with_memo) {
        raiseerror("Arquivos .dbt e memo não suportados"_l1);
        return false;
    }
    const std::optional<DbfHeader> found = read_dbf_header(bytes);
    if (!found || found->type != dbf_plain) return refuse_as_no_dbf();
    header = *found;
    return true;
}

bool Import::read_fields() {
    const std::string descriptors = read(dbf::prolog_size, header.descriptor_bytes());
    conn::log_event(
        transfer_log_level,
        fmt::format("[BRING] Bringing to Heaven DBF: {} #Records: {} #Fields: {} FileSz: {} bytes "
                    "RecSz: {} bytes Starting at {}",
                    dbfname.text(), header.records, header.fields, header.file_size(), header.record_length,
                    header.start));
    if (!has_dbf_terminator(header, descriptors)) {
        call(self, "writelog",
             "[WARN] Possible DBF header corruption or not a FlagShip native DBF! File:" + dbfname,
             transfer_log_level);
    }
    std::optional<std::vector<dbf::Field>> found = read_dbf_fields(header, descriptors);
    if (!found || !record_holds_fields(header, *found)) return refuse_as_no_dbf();
    fields = std::move(*found);
    return true;
}

void Import::make_structure() {
    structure = host::array_of();
    for (const dbf::Field& field : fields) {
        structure.push(host::array_of(call(self, "removezerobytes", host::upper(field.name)),
                                      std::string_view(&field.type, 1), field.length, field.decimals));
    }
    table = host::upper(call(self, "removefilenameext", call(self, "getfilename", dbfname)));
}

bool Import::make_table() {
    if (!has_single_bytes(self)) {
        host::fclose(dbf);
        return false;
    }
    if (ask(self, "istable", table)) {
        call(self, "writelog", "[ERROR] Table already exists. Table: " + table, transfer_log_level);
        raiseerror("A tabela já existe; Tabela: "_l1 + table);
        return false;
    }
    if (ask(self, "createtable", table, structure)) return true;
    host::fclose(dbf);
    return false;
}

bool Import::write_data() {
    host::fseek(dbf, header.start);
    data_file = data_file_path(self);
    dat = host::fcreate(data_file, data_file_permissions);
    std::optional<std::int64_t> written;
    if (dat.number() > 0) {
        const RecordConversion conversion(fields, static_cast<std::size_t>(header.record_length));
        written = write_data_file(dbf, header.records, conversion, dat);
        host::fclose(dat);
    }
    if (!written) raiseerror("Impossível criar arq temporário para importação"_l1);
    records = written.value_or(0);
    return written.has_value();
}

bool Import::make_external() {
    const Value columns = host::array_of();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        columns.push(host::array_of(structure[i + 1][1], "C", dat_width(fields[i]), 0));
    }
    return make_external_table(self, external_table(), columns, data_file);
}

bool Import::has_dates() const {
    return std::any_of(fields.begin(), fields.end(),
                       [](const dbf::Field& field) { return field.type == 'D'; });
}

bool Import::make_null_dates_trigger() {
    constexpr std::string_view null_dates_trigger =
        "CREATE TRIGGER T_@@TRIGGERNAME FOR @@TABLENAME ACTIVE BEFORE INSERT POSITION 0 AS BEGIN   @@IFS "
        "END ";
    if (!has_dates()) return true;
    Placeholders placeholders{{"@@TRIGGERNAME", null_dates_name()}, {"@@TABLENAME", table}};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].type != 'D') continue;
        placeholders.add("@@IFS", null_date);
        placeholders.add("@@DATEFIELD", structure[i + 1][1]);
    }
    placeholders.add("@@IFS", "");
    return update(self, null_dates_trigger, placeholders);
}

bool Import::copy() {
    constexpr std::string_view copy_rows = "INSERT INTO @@TABLENAME SELECT @@COLUMNS FROM @@EXTTABLE";
    Placeholders placeholders{{"@@TABLENAME", table}, {"@@EXTTABLE", external_table()}};
    for (const Value& field : structure.items()) placeholders.add("@@COLUMNS", field[1] + ",@@COLUMNS");
    // The two driver columns behind the user's: the area's, and the record number that the table's own
    // trigger sets.
    placeholders.add("@@COLUMNS", "null,@@COLUMNS");
    placeholders.add("@@COLUMNS", "0");
    // Counted before the copy, so that nothing of another file comes in, and after it, in case another
    // program has made the file its own between.
    const bool copied =
        holds_rows(self, "counttablerecords", external_table(), records, data_file) &&
        update_or_raise(
            self, copy_rows, placeholders,
            "Erro durante a transferência dos dados da tabela externa para tabela oficial; FB Error: "_l1) &&
        holds_rows(self, "gettablereccount", table, records, data_file);
    if (has_dates()) call(self, "droptrigger", "T_" + null_dates_name());
    call(self, "droponlytable", external_table());
    host::fclose(dbf);
    return copied;
}

bool Import::run() {
    if (!open() || !read_header() || !read_fields()) return false;
    make_structure();
    return make_table() && write_data() && make_external() && make_null_dates_trigger() && copy();
}

}  // namespace

Value bringdbf(Self& self, Args args) {
    const Value& dbfname = args[0];
    if (host::empty(dbfname)) return false;
    Import import{.self = self, .dbfname = dbfname};
    try {
        return import.run();
    } catch (const std::bad_alloc&) {
        host::fclose(import.dat);
        host::fclose(import.dbf);
        throw;
    }
}

}  // namespace zmfb::transfer
