#include "conn/raise.h"
#include "conn/statement.h"
#include "host/array.h"
#include "host/number.h"
#include "host/text.h"
#include "schema/column.h"
#include "schema/methods.h"

namespace zmfb::schema {
namespace {

using host::operator""_l1;

constexpr std::string_view add_column = "ALTER TABLE @@TABLENAME ADD @@FIELDDEF";

}  // namespace

Value addfield(Self& self, Args args) {
    const Value &tbl = args[0], &fldstru = args[1];
    const Value sfieldname = fldstru[1], sfieldtype = fldstru[2];
    const Value sfieldlen = alltrim(str(fldstru[3])), sfielddec = alltrim(str(fldstru[4]));
    const auto column = column_of_type(sfieldtype);
    if (!column) return false;
    Parameters aparam{{"@@TABLENAME", upper(tbl)}, {"@@FIELDDEF", column_template(*column)}};
    add_size_parameters(aparam, *column, sfieldlen, sfielddec);
    aparam.add("@@FIELDNAME", sfieldname);
    const Value campo = sfieldname + " Tabela: " + tbl + ";FB Error: ";
    if (!update_or_raise(self, add_column, aparam, "Erro ao adicionar Campo: " + campo)) return false;

    const Value descr = column_description(*column, sfieldlen, sfielddec);
    if (descr.is_nil()) return true;
    const Value saux = call(self, "setfielddescription", tbl, sfieldname, descr);
    if (empty(saux)) return true;
    conn::raiseerror("Erro na descrição do Campo: "_l1 + campo + saux);
    return false;
}

Value addlimbofield(Self& self, Args args) {
    const Value &tbl = args[0], &tblstru = args[1], &fldpos = args[2];
    const Value field = tblstru[static_cast<std::size_t>(fldpos.integer())];
    const Value afieldaux = aclone(field);
    if (ask(self, "islimbofield", afieldaux[1])) return true;
    afieldaux[1] = "RDDLMB_" + field[1];
    if (ask(self, "isfieldinstru", afieldaux[1], tblstru)) return true;
    return call(self, "addfield", tbl, afieldaux);
}

namespace {

constexpr std::string_view rename_column = "ALTER TABLE @@TABLENAME ALTER @@OLDFIELDNAME TO @@NEWFIELDNAME";

}  // namespace

Value renamefield(Self& self, Args args) {
    const Value &tbl = args[0], &oldnm = args[1], &newnm = args[2];
    const Parameters aparam{{"@@TABLENAME", alltrim(upper(tbl))},
                            {"@@OLDFIELDNAME", alltrim(upper(oldnm))},
                            {"@@NEWFIELDNAME", alltrim(upper(newnm))}};
    return update_or_raise(self, rename_column, aparam,
                           "Erro ao renomear Campo: " + oldnm + " Tabela: " + tbl + ";FB Error: ");
}

namespace {

constexpr std::string_view move_column = "ALTER TABLE @@TABLENAME ALTER @@FIELDNAME POSITION @@FIELDPOS";

}  // namespace

Value setfieldposition(Self& self, Args args) {
    const Value &tbl = args[0], &fstru = args[1], &pos = args[2];
    const Value sfieldname = alltrim(upper(fstru[1]));
    const Parameters aparam{
        {"@@TABLENAME", alltrim(upper(tbl))}, {"@@FIELDNAME", sfieldname}, {"@@FIELDPOS", strzero(pos, 3)}};
    return update_or_raise(self, move_column, aparam,
                           "Erro ao reposicionar Campo: " + sfieldname + " Tabela: " + tbl + ";FB Error: ");
}

namespace {

constexpr std::string_view copy_column = "UPDATE @@TABLENAME SET @@NEWFIELDNAME = @@OLDFIELDNAME";

bool copy_to_auxiliary(Self& self, const Value& tbl, const Value& afieldaux, const Value& soldfldnam) {
    const Parameters aparam{{"@@TABLENAME", alltrim(upper(tbl))},
                            {"@@NEWFIELDNAME", afieldaux[1]},
                            {"@@OLDFIELDNAME", soldfldnam}};
    if (update_or_raise(self, copy_column, aparam,
                        "Erro ao popular AuxCampo: " + afieldaux[1] + " Tabela: " + tbl + ";FB Error: ")) {
        return true;
    }
    call(self, "dropfield", tbl, afieldaux);
    return false;
}

}  // namespace

Value alterfield(Self& self, Args args) {
    const Value &tbl = args[0], &fstru_r = args[1], &fstru_l = args[2];
    const Value afieldaux = aclone(fstru_r);
    afieldaux[1] = "RDDAUX_" + alltrim(upper(fstru_r[1]));
    if (!ask(self, "addfield", tbl, afieldaux)) return false;
    if (!copy_to_auxiliary(self, tbl, afieldaux, alltrim(upper(fstru_l[1])))) return false;
    if (!ask(self, "dropfield", tbl, fstru_l)) return false;
    return call(self, "renamefield", tbl, afieldaux[1], fstru_r[1]);
}

}  // namespace zmfb::schema
