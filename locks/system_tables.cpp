#include "conn/raise.h"
#include "host/text.h"
#include "locks/methods.h"
#include "locks/statement.h"

namespace zmfb::locks {
namespace {

Value character_field(std::string_view name, int length) { return host::array_of(name, "C", length, 0); }
Value record_number_field(std::string_view name) { return host::array_of(name, "N", record_number_width, 0); }

// An existing table is never looked into; one whose index fails stays without it.
bool create_when_absent(Self& self, const SystemName& table, const Value& structure, std::string_view index,
                        const Placeholders& placeholders) {
    if (ask(self, "istable", table.name)) return true;
    if (!ask(self, "createtable", table.name, structure)) return false;
    return update(self, index, placeholders);
}

}  // namespace

Value createtableofopn(Self& self, Args) {
    constexpr std::string_view opn_index =
        "CREATE UNIQUE INDEX I_@@TABLE_OF_OPN ON @@TABLE_OF_OPN (@@OPN_COL_TABLENAME, @@OPN_COL_AREAID)";
    const Value structure =
        host::array_of(character_field(opn_col_tablename.name, table_name_width),
                       character_field(opn_col_areaid.name, area_id_width),
                       record_number_field(opn_col_apprecno), character_field(opn_col_shared.name, 1));
    return create_when_absent(self, table_of_opn, structure, opn_index,
                              {table_of_opn, opn_col_tablename, opn_col_areaid});
}

Value createtableofflocks(Self& self, Args) {
    constexpr std::string_view flocks_index =
        "CREATE UNIQUE INDEX I_@@TABLE_OF_FLOCKS ON @@TABLE_OF_FLOCKS (@@FCK_COL_TABLENAME)";
    const Value structure = host::array_of(character_field(fck_col_tablename.name, table_name_width),
                                           character_field(fck_col_areaid.name, area_id_width));
    return create_when_absent(self, table_of_flocks, structure, flocks_index,
                              {table_of_flocks, fck_col_tablename});
}

Value createtableofrlocks(Self& self, Args) {
    constexpr std::string_view rlocks_index =
        "CREATE UNIQUE INDEX I_@@TABLE_OF_RLOCKS ON @@TABLE_OF_RLOCKS (@@RCK_COL_TABLENAME, "
        "@@RCK_COL_TABLERECNO)";
    const Value structure = host::array_of(character_field(rck_col_tablename.name, table_name_width),
                                           record_number_field(rck_col_tablerecno.name),
                                           character_field(rck_col_areaid.name, area_id_width));
    return create_when_absent(self, table_of_rlocks, structure, rlocks_index,
                              {table_of_rlocks, rck_col_tablename, rck_col_tablerecno});
}

Value clearsystemtables(Self& self, Args) {
    if (!host::empty(var(self, Var::aaliases))) {
        const Value message = "[ERROR] Impossible to clear System Tables with opened tables";
        call(self, "writelog", message, 0);
        conn::raiseerror(message);
        return false;
    }
    const bool cleared = ask(self, "deleteallrecords", table_of_opn.name);
    // The outcome of these two is not reported: the registrations alone decide.
    call(self, "deleteallrecords", table_of_flocks.name);
    call(self, "deleteallrecords", table_of_rlocks.name);
    call(self, "writelog",
         cleared ? "[WARN] System Tables were cleared. This is a DANGEROUS procedure. Make sure you were the "
                   "only person "
                   "using the system. Unexpected results could happen."
                 : "[ERROR] Failed clearing System Tables. Try again.",
         0);
    return cleared;
}

}  // namespace zmfb::locks
