#include "conn/statement.h"
#include "host/text.h"
#include "schema/methods.h"

namespace zmfb::schema {
namespace {

using host::operator""_l1;

// How one kind of object is dropped.
struct Drop {
    std::string_view statement;
    std::string_view placeholder;
    std::string_view message;
};

Value drop(Self& self, const Drop& kind, const Value& name) {
    if (host::empty(name)) return false;
    const Value stored = host::alltrim(host::upper(name));
    return update_or_raise(self, kind.statement, {{kind.placeholder, stored}},
                           kind.message + stored + "; FB Error: ");
}

constexpr Drop generator = {"DROP GENERATOR @@GENNAME", "@@GENNAME",
                            "Impossível eliminar generator; Generator: "_l1};
constexpr Drop trigger = {"DROP TRIGGER @@TRIGGERNAME", "@@TRIGGERNAME",
                          "Impossível eliminar trigger; Trigger: "_l1};
constexpr Drop index = {"DROP INDEX @@INDEXNAME", "@@INDEXNAME", "Impossível eliminar índice; Índice: "_l1};
constexpr Drop table = {"DROP TABLE @@TABLENAME", "@@TABLENAME", "Impossível eliminar a Tabela: "_l1};
constexpr Drop view = {"DROP VIEW @@VIEWNAME", "@@VIEWNAME", "Impossível eliminar View: "_l1};

}  // namespace

Value dropgenerator(Self& self, Args args) { return drop(self, generator, args[0]); }
Value droptrigger(Self& self, Args args) { return drop(self, trigger, args[0]); }
Value dropindex(Self& self, Args args) { return drop(self, index, args[0]); }
Value droponlytable(Self& self, Args args) { return drop(self, table, args[0]); }
Value dropview(Self& self, Args args) { return drop(self, view, args[0]); }

}  // namespace zmfb::schema
