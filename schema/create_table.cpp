#include "conn/raise.h"
#include "conn/statement.h"
#include "host/array.h"
#include "host/text.h"
#include "schema/column.h"
#include "schema/methods.h"

namespace zmfb::schema {
namespace {

using host::operator""_l1;

/// The name as it was passed, and as the table gets it.
struct TableName {
    Value passed;
    Value stored;
};

/// Whether there is something to create. A table that exists is raised; nothing given is no error.
enum class Start { create, nothing, refused };

Start start(Self& self, const Value& tblname, const Value& structure, const Value& exists_message) {
    if (!tblname.is_nil() && ask(self, "istable", tblname)) {
        conn::raiseerror(exists_message + tblname);
        return Start::refused;
    }
    const bool given = !empty(tblname) && structure.is(host::Kind::array) && !empty(structure);
    return given ? Start::create : Start::nothing;
}

constexpr std::string_view create_statement = "CREATE TABLE @@TABLENAME( @@FIELDS, PRIMARY KEY(@@RECNO) )";

bool create_relation(Self& self, const TableName& table, const Value& structure) {
    Parameters aparam{{"@@TABLENAME", table.stored}};
    if (!add_columns(self, aparam, table.stored, structure)) return false;
    aparam.add("@@FIELDS", column_template(Column::area_identity) + Value(",@@FIELDS"));
    aparam.add("@@FIELDS", column_template(Column::record_number));
    aparam.add("@@RECNO", "RECNO");
    aparam.add("@@AREAID", "RDD_AREAID");
    aparam.add("@@FIELDLEN", "50");
    return update_or_raise(self, create_statement, aparam, "Error on creating Table; FB Error: ");
}

bool describe_table(Self& self, const TableName& table) {
    const Value saux = call(self, "settabledescription", table.passed, "Created by ZMRDDFIRE");
    if (empty(saux)) return true;
    conn::raiseerror("Erro na descrição da tabela; Tabela: "_l1 + table.passed);
    return false;
}

bool describe_fields(Self& self, const TableName& table, const Value& structure) {
    bool bok = true;
    // Not cleared from field to field: behind a failed description the error is raised for the fields without
    // one too.
    Value saux = "";
    for (const Value& descriptor : structure.items()) {
        const Field field = field_of(descriptor);
        const auto column = column_of_type(field.type);
        const Value descr = column ? column_description(*column, field.len, field.dec) : Value();
        if (!descr.is_nil()) saux = call(self, "setfielddescription", table.stored, field.name, descr);
        if (empty(saux)) continue;
        bok = false;
        conn::raiseerror("Erro na descrição do campo; Tabela: "_l1 + table.passed + " Campo: " + field.name);
    }
    return bok;
}

constexpr std::string_view recno_index =
    "CREATE UNIQUE DESC INDEX @@TABLENAME_RECNO_DESC ON @@TABLENAME(RECNO)";
constexpr std::string_view insert_generator = "CREATE GENERATOR G_@@TABLENAME_I";
constexpr std::string_view delete_generator = "CREATE GENERATOR G_@@TABLENAME_D";

bool create_part(Self& self, const TableName& table, std::string_view sstmt, std::string_view message) {
    return update_or_raise(self, sstmt, {{"@@TABLENAME", table.stored}}, message);
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
    const Parameters aparam{{"@@TRIGGERNAME", table.stored + "_RECNO"},
                            {"@@TABLENAME", table.stored},
                            {"@@RECNO", "RECNO"},
                            {"@@AREAID", "RDD_AREAID"}};
    return update_or_raise(self, insert_trigger, aparam, "Erro na criação da trigger Recno; FB Error: "_l1);
}

constexpr std::string_view delete_trigger =
    "CREATE TRIGGER T_@@TRIGGERNAME FOR @@TABLENAME ACTIVE AFTER DELETE POSITION 1 AS "
    "DECLARE VARIABLE IAUX INTEGER;BEGIN   IAUX = GEN_ID( G_@@TABLENAME_D, 1 ); END ";

bool create_delete_trigger(Self& self, const TableName& table) {
    const Parameters aparam{{"@@TRIGGERNAME", table.stored + "_DELETES"}, {"@@TABLENAME", table.stored}};
    return update_or_raise(self, delete_trigger, aparam, "Erro na criação da trigger Deletes; FB Error: "_l1);
}

}  // namespace

Value createtable(Self& self, Args args) {
    const Value &tblname = args[0], &structure = args[1];
    const Start begin = start(self, tblname, structure, "Table already exists!; Tbl: ");
    if (begin != Start::create) return begin == Start::nothing;
    const TableName table{.passed = tblname, .stored = alltrim(upper(tblname))};
    return create_relation(self, table, structure) && describe_table(self, table) &&
           describe_fields(self, table, structure) &&
           create_part(self, table, recno_index, "Erro na criação do índice recno; FB Error: "_l1) &&
           create_part(self, table, insert_generator, "Erro na criação do generator I; FB Error: "_l1) &&
           create_part(self, table, delete_generator, "Erro na criação do generator D; FB Error: "_l1) &&
           create_insert_trigger(self, table) && create_delete_trigger(self, table);
}

namespace {

constexpr std::string_view external_statement =
    "CREATE TABLE @@TABLENAME EXTERNAL FILE '@@DATFILE' ( @@FIELDS )";

}  // namespace

Value createtableexternal(Self& self, Args args) {
    const Value &tblname = args[0], &structure = args[1], &datfile = args[2];
    const Start begin = start(self, tblname, structure, "A tabela já existe; Tabela: "_l1);
    if (begin != Start::create) return begin == Start::nothing;
    const Value stablename = alltrim(upper(tblname));
    Parameters aparam{{"@@TABLENAME", stablename}, {"@@DATFILE", datfile}};
    if (!add_columns(self, aparam, stablename, structure)) return false;
    aparam.add(",@@FIELDS", "");
    return update_or_raise(self, external_statement, aparam, "Error on creating External Table; FB Error: ");
}

}  // namespace zmfb::schema
