#include <optional>

#include "conn/raise.h"
#include "conn/statement.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "schema/column.h"
#include "schema/methods.h"
#include "zmfbconn/driver_table.h"

namespace zmfb::schema {
namespace {

using host::operator""_l1;

// The name as it was passed, and as the table gets it.
struct TableName {
    Value passed;
    Value stored;
};

// Whether there is something to create. A table that exists is raised; nothing given is no error.
enum class Start { create, nothing, refused };

Start start(Self& self, const Value& tblname, const Value& structure, const Value& exists_message) {
    if (!tblname.is_nil() && ask(self, "istable", tblname)) {
        conn::raiseerror(exists_message + tblname);
        return Start::refused;
    }
    const bool given = !host::empty(tblname) && structure.is(host::Kind::array) && !host::empty(structure);
    return given ? Start::create : Start::nothing;
}

// The tables of opens and locks have so much room for a name.
constexpr std::size_t longest_name = 30;
constexpr Objection too_long{-104, "The name of a table of the driver has at most 30 characters"};

std::optional<Objection> objection_to(const Value& structure) {
    for (const Value& descriptor : structure.items()) {
        const Field field = field_of(descriptor);
        const auto column = column_of_type(field.type);
        if (const auto objection = column ? objection_to_size(*column, field.len) : std::nullopt)
            return objection;
    }
    return {};
}

constexpr std::string_view create_statement = "CREATE TABLE @@TABLENAME( @@FIELDS, PRIMARY KEY(@@RECNO) )";

bool create_relation(Self& self, const TableName& table, const Value& structure) {
    Placeholders placeholders{{"@@TABLENAME", table.stored}};
    if (!add_columns(self, placeholders, table.stored, structure)) return false;
    placeholders.add("@@FIELDS", column_template(Column::area_identity) + Value(",@@FIELDS"));
    placeholders.add("@@FIELDS", column_template(Column::record_number));
    placeholders.add("@@RECNO", "RECNO");
    placeholders.add("@@AREAID", "RDD_AREAID");
    placeholders.add("@@FIELDLEN", "50");
    const bool fits = table.stored.string().size() <= longest_name;
    return update_or_raise(self, create_statement, placeholders,
                           "Error on creating Table; FB Error: ", fits ? objection_to(structure) : too_long);
}

constexpr std::string_view driver_description = "Created by ZMRDDFIRE";

bool describe_table(Self& self, const TableName& table) {
    const Value failure = call(self, "settabledescription", table.passed, driver_description);
    if (host::empty(failure)) return true;
    conn::raiseerror("Erro na descrição da tabela; Tabela: "_l1 + table.passed);
    return false;
}

bool describe_fields(Self& self, const TableName& table, const Value& structure) {
    bool done = true;
    // Not cleared from field to field: behind a failed description the error is raised for the fields without
    // one too.
    Value failure = "";
    for (const Value& descriptor : structure.items()) {
        const Field field = field_of(descriptor);
        const auto column = column_of_type(field.type);
        const Value descr = column ? column_description(*column, field.len, field.dec) : Value();
        if (!descr.is_nil()) failure = call(self, "setfielddescription", table.stored, field.name, descr);
        if (host::empty(failure)) continue;
        done = false;
        conn::raiseerror("Erro na descrição do campo; Tabela: "_l1 + table.passed + " Campo: " + field.name);
    }
    return done;
}

constexpr std::string_view recno_index =
    "CREATE UNIQUE DESC INDEX @@TABLENAME_RECNO_DESC ON @@TABLENAME(RECNO)";
constexpr std::string_view insert_generator = "CREATE GENERATOR G_@@TABLENAME_I";
constexpr std::string_view delete_generator = "CREATE GENERATOR G_@@TABLENAME_D";

bool create_part(Self& self, const TableName& table, std::string_view statement, std::string_view message) {
    return update_or_raise(self, statement, {{"@@TABLENAME", table.stored}}, message);
}

constexpr std::string_view insert_trigger =
    "CREATE TRIGGER T_@@TRIGGERNAME FOR @@TABLENAME ACTIVE BEFORE INSERT POSITION 0 AS "
    "DECLARE VARIABLE CT INTEGER; "
    "BEGIN   NEW.@@RECNO = GEN_ID( G_@@TABLENAME_I, 1 );   "
    "IF( NEW.@@AREAID IS NOT NULL ) THEN   "
    "BEGIN     SELECT COUNT(*) FROM RDDSYS_OPN            "
    "WHERE OPN_TABLE = '@@TABLENAME' AND                  OPN_AREAID = NEW.@@AREAID INTO :CT;     "
    "IF( CT > 0 ) THEN     "
    "BEGIN       UPDATE RDDSYS_OPN SET OPN_APPRECNO = NEW.@@RECNO              "
    "WHERE OPN_TABLE = '@@TABLENAME' AND                    OPN_AREAID = NEW.@@AREAID;       "
    "NEW.@@AREAID = NULL;     END   END END ";

bool create_insert_trigger(Self& self, const TableName& table) {
    const Placeholders placeholders{{"@@TRIGGERNAME", table.stored + "_RECNO"},
                                    {"@@TABLENAME", table.stored},
                                    {"@@RECNO", "RECNO"},
                                    {"@@AREAID", "RDD_AREAID"}};
    return update_or_raise(self, insert_trigger, placeholders,
                           "Erro na criação da trigger Recno; FB Error: "_l1);
}

constexpr std::string_view delete_trigger =
    "CREATE TRIGGER T_@@TRIGGERNAME FOR @@TABLENAME ACTIVE AFTER DELETE POSITION 1 AS "
    "DECLARE VARIABLE IAUX INTEGER;BEGIN   IAUX = GEN_ID( G_@@TABLENAME_D, 1 ); END ";

bool create_delete_trigger(Self& self, const TableName& table) {
    const Placeholders placeholders{{"@@TRIGGERNAME", table.stored + "_DELETES"},
                                    {"@@TABLENAME", table.stored}};
    return update_or_raise(self, delete_trigger, placeholders,
                           "Erro na criação da trigger Deletes; FB Error: "_l1);
}

}  // namespace

Value createtable(Self& self, Args args) {
    const Value &tblname = args[0], &structure = args[1];
    const Start begin = start(self, tblname, structure, "Table already exists!; Tbl: ");
    if (begin != Start::create) return begin == Start::nothing;
    const TableName table{.passed = tblname, .stored = host::alltrim(host::upper(tblname))};
    return create_relation(self, table, structure) && describe_table(self, table) &&
           describe_fields(self, table, structure) &&
           create_part(self, table, recno_index, "Erro na criação do índice recno; FB Error: "_l1) &&
           create_part(self, table, insert_generator, "Erro na criação do generator I; FB Error: "_l1) &&
           create_part(self, table, delete_generator, "Erro na criação do generator D; FB Error: "_l1) &&
           create_insert_trigger(self, table) && create_delete_trigger(self, table);
}

Value createtableexternal(Self& self, Args args) {
    constexpr std::string_view external_statement =
        "CREATE TABLE @@TABLENAME EXTERNAL FILE '@@DATFILE' ( @@FIELDS )";
    const Value &tblname = args[0], &structure = args[1], &datfile = args[2];
    const Start begin = start(self, tblname, structure, "A tabela já existe; Tabela: "_l1);
    if (begin != Start::create) return begin == Start::nothing;
    const Value stored = host::alltrim(host::upper(tblname));
    Placeholders placeholders{{"@@TABLENAME", stored}, {"@@DATFILE", datfile}};
    if (!add_columns(self, placeholders, stored, structure)) return false;
    placeholders.add(",@@FIELDS", "");
    return update_or_raise(self, external_statement, placeholders,
                           "Error on creating External Table; FB Error: ", objection_to(structure));
}

}  // namespace zmfb::schema

namespace zmfb {

using schema::Column;

namespace {

std::string definition_of(Column column, const Value& len, const Value& dec) {
    const std::string text =
        filled(schema::column_template(column), {{"@@FIELDLEN", len}, {"@@FIELDDEC", dec}});
    return text.substr(text.find(' ') + 1);
}

}  // namespace

DriverColumn driver_column(std::string_view name, char type, std::size_t length, int decimals) {
    const Column column = schema::column_of_type(Value(std::string_view(&type, 1))).value();
    const Value len = std::to_string(length), dec = std::to_string(decimals);
    const Value description = schema::column_description(column, len, dec);
    return {.name = std::string(name),
            .definition = definition_of(column, len, dec),
            .description = description.is_nil() ? "" : description.string()};
}

std::vector<std::string> statements_to_begin_table(std::string_view table,
                                                   std::span<const DriverColumn> columns,
                                                   std::string_view description) {
    const auto described = [](std::string_view what, const std::string& text) {
        return "COMMENT ON " + std::string(what) + " IS '" + text + "'";
    };
    const std::string name(table);
    std::string definitions;
    std::vector<std::string> descriptions{described("TABLE " + name, std::string(description))};
    for (const DriverColumn& column : columns) {
        definitions += column.name + ' ' + column.definition + ',';
        if (!column.description.empty())
            descriptions.push_back(described("COLUMN " + name + '.' + column.name, column.description));
    }
    definitions += "RDD_AREAID " + definition_of(Column::area_identity, "50", "") + ",RECNO " +
                   definition_of(Column::record_number, "", "");
    std::vector<std::string> statements{filled(
        schema::create_statement, {{"@@TABLENAME", table}, {"@@FIELDS", definitions}, {"@@RECNO", "RECNO"}})};
    statements.insert(statements.end(), descriptions.begin(), descriptions.end());
    for (const std::string_view generator : {schema::insert_generator, schema::delete_generator})
        statements.push_back(filled(generator, {{"@@TABLENAME", table}}));
    return statements;
}

std::vector<std::string> statements_to_finish_table(std::string_view table) {
    const std::string name(table);
    return {filled(schema::recno_index, {{"@@TABLENAME", table}}),
            filled(schema::insert_trigger, {{"@@TRIGGERNAME", name + "_RECNO"},
                                            {"@@TABLENAME", table},
                                            {"@@RECNO", "RECNO"},
                                            {"@@AREAID", "RDD_AREAID"}}),
            filled(schema::delete_trigger, {{"@@TRIGGERNAME", name + "_DELETES"}, {"@@TABLENAME", table}}),
            "COMMENT ON TABLE " + name + " IS '" + std::string(schema::driver_description) + "'"};
}

}  // namespace zmfb
