#include "conn/raise.h"
#include "conn/statement.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "schema/column.h"
#include "schema/methods.h"

namespace zmfb::schema {

using host::operator""_l1;

Value addfield(Self& self, Args args) {
    constexpr std::string_view add_column = "ALTER TABLE @@TABLENAME ADD @@FIELDDEF";
    const Value &tbl = args[0], &fldstru = args[1];
    const Value name = fldstru[1], type = fldstru[2];
    const Value length = host::alltrim(host::str(fldstru[3])),
                decimals = host::alltrim(host::str(fldstru[4]));
    const auto column = column_of_type(type);
    if (!column) return false;
    Placeholders placeholders{{"@@TABLENAME", host::upper(tbl)}, {"@@FIELDDEF", column_template(*column)}};
    add_size_placeholders(placeholders, *column, length, decimals);
    placeholders.add("@@FIELDNAME", name);
    const Value field = name + " Tabela: " + tbl + ";FB Error: ";
    if (!update_or_raise(self, add_column, placeholders, "Erro ao adicionar Campo: " + field,
                         objection_to_size(*column, length)))
        return false;

    const Value descr = column_description(*column, length, decimals);
    if (descr.is_nil()) return true;
    const Value failure = call(self, "setfielddescription", tbl, name, descr);
    if (host::empty(failure)) return true;
    conn::raiseerror("Erro na descrição do Campo: "_l1 + field + failure);
    return false;
}

Value addlimbofield(Self& self, Args args) {
    const Value &tbl = args[0], &tblstru = args[1], &fldpos = args[2];
    const Value field = tblstru[static_cast<std::size_t>(fldpos.integer())];
    const Value auxiliary = host::aclone(field);
    if (ask(self, "islimbofield", auxiliary[1])) return true;
    auxiliary[1] = "RDDLMB_" + field[1];
    if (ask(self, "isfieldinstru", auxiliary[1], tblstru)) return true;
    return call(self, "addfield", tbl, auxiliary);
}

Value renamefield(Self& self, Args args) {
    constexpr std::string_view rename_column =
        "ALTER TABLE @@TABLENAME ALTER @@OLDFIELDNAME TO @@NEWFIELDNAME";
    const Value &tbl = args[0], &oldnm = args[1], &newnm = args[2];
    const Placeholders placeholders{{"@@TABLENAME", host::alltrim(host::upper(tbl))},
                                    {"@@OLDFIELDNAME", host::alltrim(host::upper(oldnm))},
                                    {"@@NEWFIELDNAME", host::alltrim(host::upper(newnm))}};
    return update_or_raise(self, rename_column, placeholders,
                           "Erro ao renomear Campo: " + oldnm + " Tabela: " + tbl + ";FB Error: ");
}

Value setfieldposition(Self& self, Args args) {
    constexpr std::string_view move_column = "ALTER TABLE @@TABLENAME ALTER @@FIELDNAME POSITION @@FIELDPOS";
    const Value &tbl = args[0], &fstru = args[1], &pos = args[2];
    const Value name = host::alltrim(host::upper(fstru[1]));
    const Placeholders placeholders{{"@@TABLENAME", host::alltrim(host::upper(tbl))},
                                    {"@@FIELDNAME", name},
                                    {"@@FIELDPOS", host::strzero(pos, 3)}};
    return update_or_raise(self, move_column, placeholders,
                           "Erro ao reposicionar Campo: " + name + " Tabela: " + tbl + ";FB Error: ");
}

namespace {

bool copy_to_auxiliary(Self& self, const Value& tbl, const Value& auxiliary, const Value& old_name) {
    constexpr std::string_view copy_column = "UPDATE @@TABLENAME SET @@NEWFIELDNAME = @@OLDFIELDNAME";
    const Placeholders placeholders{{"@@TABLENAME", host::alltrim(host::upper(tbl))},
                                    {"@@NEWFIELDNAME", auxiliary[1]},
                                    {"@@OLDFIELDNAME", old_name}};
    if (update_or_raise(self, copy_column, placeholders,
                        "Erro ao popular AuxCampo: " + auxiliary[1] + " Tabela: " + tbl + ";FB Error: ")) {
        return true;
    }
    call(self, "dropfield", tbl, auxiliary);
    return false;
}

}  // namespace

Value alterfield(Self& self, Args args) {
    const Value &tbl = args[0], &fstru_r = args[1], &fstru_l = args[2];
    const Value auxiliary = host::aclone(fstru_r);
    auxiliary[1] = "RDDAUX_" + host::alltrim(host::upper(fstru_r[1]));
    if (!ask(self, "addfield", tbl, auxiliary)) return false;
    if (!copy_to_auxiliary(self, tbl, auxiliary, host::alltrim(host::upper(fstru_l[1])))) return false;
    if (!ask(self, "dropfield", tbl, fstru_l)) return false;
    return call(self, "renamefield", tbl, auxiliary[1], fstru_r[1]);
}

}  // namespace zmfb::schema
