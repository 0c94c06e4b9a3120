#include <algorithm>

#include "conn/raise.h"
#include "conn/statement.h"
#include "host/text.h"
#include "schema/methods.h"

namespace zmfb::schema {
namespace {

using host::operator""_l1;

// Whether a name of the catalog means the same object when it stands in a statement without quotes.
bool is_plain(std::string_view name) {
    const auto letter = [](char c) { return c >= 'A' && c <= 'Z'; };
    const auto inner = [&](char c) { return letter(c) || (c >= '0' && c <= '9') || c == '_' || c == '$'; };
    return !name.empty() && letter(name[0]) && std::ranges::all_of(name, inner);
}

// Whether all that the rows name can be dropped; a name that would mean another object, or none, is raised.
bool can_be_dropped(std::span<const Value> rows) {
    for (const Value& row : rows) {
        const Value name = host::trim(row[1]);
        if (is_plain(name.text())) continue;
        conn::raiseerror("Impossível eliminar dependente: "_l1 + name + ";O nome exige aspas");
        return false;
    }
    return true;
}

// Drops what the rows of a query name, one after another, and answers whether all went well.
template <class Drop>
bool drop_each(const Value& result, Drop drop) {
    const std::span<const Value> rows = host::data_rows(result);
    return can_be_dropped(rows) && std::ranges::all_of(rows, [&](const Value& row) { return drop(row[1]); });
}

}  // namespace

Value dropviewsfromtable(Self& self, Args args) {
    constexpr std::string_view views_of_table =
        "SELECT RDB$VIEW_NAME FROM RDB$VIEW_RELATIONS WHERE RDB$RELATION_NAME = '@@TABLENAME' ";
    const Value& tblname = args[0];
    if (host::empty(tblname)) return false;
    const Value result = select(self, views_of_table, {{"@@TABLENAME", host::alltrim(host::upper(tblname))}});
    return drop_each(result, [&](const Value& view) { return ask(self, "dropview", view); });
}

Value droptable(Self& self, Args args) {
    const Value& tblname = args[0];
    if (host::empty(tblname)) return false;
    const Value table = host::alltrim(host::upper(tblname));
    if (!ask(self, "dropviewsfromtable", table) || !ask(self, "droponlytable", table)) return false;
    // The second generator alone decides.
    call(self, "dropgenerator", "G_" + table + "_I");
    return call(self, "dropgenerator", "G_" + table + "_D");
}

namespace {

Placeholders column_placeholders(const Value& tbl, const Value& fldname) {
    return {{"@@TABLENAME", host::alltrim(host::upper(tbl))},
            {"@@FIELDNAME", host::alltrim(host::upper(fldname))}};
}

}  // namespace

Value dropindexbasedonfield(Self& self, Args args) {
    constexpr std::string_view indexes_on_column =
        "SELECT IDX.RDB$INDEX_NAME FROM RDB$INDICES IDX LEFT JOIN RDB$INDEX_SEGMENTS SEG ON "
        "(SEG.RDB$INDEX_NAME "
        "= "
        "IDX.RDB$INDEX_NAME) WHERE IDX.RDB$RELATION_NAME = '@@TABLENAME' AND SEG.RDB$FIELD_NAME = "
        "'@@FIELDNAME'";
    const Value &tbl = args[0], &fldname = args[1];
    const Value result = select(self, indexes_on_column, column_placeholders(tbl, fldname));
    return drop_each(result, [&](const Value& index) { return ask(self, "dropindex", index); });
}

Value droptriggerbasedonfield(Self& self, Args args) {
    constexpr std::string_view triggers_on_column =
        "SELECT RDB$DEPENDENT_NAME FROM RDB$DEPENDENCIES WHERE RDB$DEPENDED_ON_NAME = '@@TABLENAME' AND "
        "RDB$DEPENDENT_TYPE = 2 AND RDB$FIELD_NAME = '@@FIELDNAME'";
    const Value &tbl = args[0], &fldname = args[1];
    const Value result = select(self, triggers_on_column, column_placeholders(tbl, fldname));
    return drop_each(result, [&](const Value& trigger) {
        // Asked while the trigger is there; index columns among them are left as they are.
        call(self, "getfieldsontrigger", trigger);
        return ask(self, "droptrigger", trigger);
    });
}

Value dropfield(Self& self, Args args) {
    constexpr std::string_view drop_column = "ALTER TABLE @@TABLENAME DROP @@FIELDNAME";
    const Value &tbl = args[0], &fldstru = args[1];
    const Value name = fldstru[1];
    Placeholders placeholders{{"@@TABLENAME", host::alltrim(host::upper(tbl))}};
    if (!ask(self, "dropindexbasedonfield", tbl, name)) return false;
    if (!ask(self, "droptriggerbasedonfield", tbl, name)) return false;
    placeholders.add("@@FIELDNAME", name);
    return update_or_raise(self, drop_column, placeholders,
                           "Erro ao deletar Campo: " + name + " Tabela: " + tbl + ";FB Error: ");
}

}  // namespace zmfb::schema
