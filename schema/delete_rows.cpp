#include "conn/statement.h"
#include "host/text.h"
#include "schema/methods.h"

namespace zmfb::schema {

Value deleterecord(Self& self, Args args) {
    constexpr std::string_view delete_record = "DELETE FROM @@TABLENAME WHERE RECNO = @@RECNUMBER";
    const Value &tbl = args[0], &rec = args[1];
    return update_or_raise(self, delete_record, {{"@@TABLENAME", host::upper(tbl)}, {"@@RECNUMBER", rec}},
                           "Erro ao deletar registro; Tabela: " + tbl + " Recno: " + rec + ";FB Error: ");
}

Value deleteallrecords(Self& self, Args args) {
    constexpr std::string_view delete_all = "DELETE FROM @@TABLENAME";
    const Value& tbl = args[0];
    return update_or_raise(self, delete_all, {{"@@TABLENAME", host::upper(tbl)}},
                           "Erro ao zerar tabela; Tabela: " + tbl + ";FB Error: ");
}

}  // namespace zmfb::schema
