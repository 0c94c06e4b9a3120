// The functions of work areas that expressions may call, by their names in the language.
#include <algorithm>
#include <array>

#include "functions.h"
#include "host/workarea.h"

namespace zmfb::host_test {
namespace {

using host::Args;
using host::Kind;
using host::Value;

struct Row {
    std::string_view name;
    Function call;
};

template <void (*F)()>
Value done(Args) {
    F();
    return {};
}
template <bool (*F)()>
Value yes_or_no(Args) {
    return F();
}
// A number as RECNO() and its like give it.
template <std::int64_t (*F)()>
Value number(Args) {
    return {static_cast<double>(F()), {7, 0}};
}

std::chrono::milliseconds seconds(const Value& wait) {
    return std::chrono::milliseconds(wait.is(Kind::numeric) ? static_cast<int>(wait.number() * 1000) : 0);
}

constexpr std::array opening{
    Row{"ALIAS", [](Args args) { return host::alias(args[0]); }},
    Row{"DBCLOSEALL", done<host::dbcloseall>},
    Row{"DBCLOSEAREA", [](Args args) { return host::dbclosearea(args[0]), Value(); }},
    Row{"DBCREATE", [](Args args) { return host::dbcreate(args[0], args[1], args[2]); }},
    Row{"DBSELECTAREA", [](Args args) -> Value { return host::dbselectarea(args[0]); }},
    Row{"DBSTRUCT", [](Args) { return host::dbstruct(); }},
    Row{"DBUSEAREA",
        [](Args args) {
            host::dbusearea(args[0], args[1], args[2], args[3], args[4], args[5]);
            return Value();
        }},
    Row{"NETERR", [](Args) { return host::neterr(); }},
    Row{"SELECT", [](Args args) -> Value { return host::select(args[0]); }},
    Row{"USED", [](Args) { return host::used(); }},
};

constexpr std::array moves{
    Row{"BOF", yes_or_no<host::bof>},
    Row{"DBCLEARFILTER", done<host::dbclearfilter>},
    Row{"DBEVAL",
        [](Args args) {
            host::dbeval(args[0], args[1], args[2], args[3], args[4], args[5]);
            return Value();
        }},
    Row{"DBFILTER", [](Args) { return host::dbfilter(); }},
    Row{"DBGOBOTTOM", done<host::dbgobottom>},
    Row{"DBGOTO", [](Args args) { return host::dbgoto(args[0].integer()), Value(); }},
    Row{"DBGOTOP", done<host::dbgotop>},
    Row{"DBSETFILTER", [](Args args) -> Value { return host::dbsetfilter(args[0], args[1]); }},
    Row{"DBSKIP", [](Args args) { return host::dbskip(args.size() == 0 ? 1 : args[0].integer()), Value(); }},
    Row{"EOF", yes_or_no<host::eof>},
    Row{"FOUND", yes_or_no<host::found>},
    Row{"LASTREC", number<host::lastrec>},
    Row{"RECCOUNT", number<host::reccount>},
    Row{"RECNO", number<host::recno>},
    Row{"__DBCONTINUE", yes_or_no<host::dbcontinue>},
    Row{"__DBLOCATE",
        [](Args args) -> Value { return host::dblocate(args[0], args[1], args[2], args[3], args[4]); }},
};

constexpr std::array orders{
    Row{"DBSEEK", [](Args args) -> Value { return host::dbseek(args[0], args[1], args[2]); }},
    Row{"INDEXKEY", [](Args args) { return host::indexkey(args.size() == 0 ? Value(0) : args[0]); }},
    Row{"INDEXORD", number<host::indexord>},
    Row{"ORDCREATE", [](Args args) -> Value { return host::ordcreate(args[0], args[1]); }},
    Row{"ORDDESTROY", [](Args args) -> Value { return host::orddestroy(args[0]); }},
    Row{"ORDKEYNO", number<host::ordkeyno>},
    Row{"ORDLISTADD", [](Args args) -> Value { return host::ordlistadd(args[0]); }},
    Row{"ORDLISTCLEAR", done<host::ordlistclear>},
    Row{"ORDLISTREBUILD", yes_or_no<host::ordlistrebuild>},
    Row{"ORDNAME", [](Args args) { return host::ordname(args[0]); }},
    Row{"ORDNUMBER", [](Args args) -> Value { return host::ordnumber(args[0]); }},
    Row{"ORDSETFOCUS", [](Args args) { return host::ordsetfocus(args[0]); }},
};

constexpr std::array records{
    Row{"DBAPPEND", [](Args args) -> Value { return host::dbappend(args[0]); }},
    Row{"DBCOMMIT", yes_or_no<host::dbcommit>},
    Row{"DBCOMMITALL", yes_or_no<host::dbcommitall>},
    Row{"DBDELETE", yes_or_no<host::dbdelete>},
    Row{"DBRECALL", yes_or_no<host::dbrecall>},
    Row{"DBRLOCK", [](Args args) -> Value { return host::dbrlock(args[0], seconds(args[1])); }},
    Row{"DBRLOCKLIST", [](Args) { return host::dbrlocklist(); }},
    Row{"DBRUNLOCK", [](Args args) { return host::dbrunlock(args[0]), Value(); }},
    Row{"DBUNLOCK", done<host::dbunlock>},
    Row{"DBUNLOCKALL", done<host::dbunlockall>},
    Row{"DELETED", yes_or_no<host::deleted>},
    Row{"FCOUNT", number<host::fcount>},
    Row{"FIELDGET", [](Args args) { return host::fieldget(args[0]); }},
    Row{"FIELDNAME", [](Args args) { return host::fieldname(args[0].integer()); }},
    Row{"FIELDPOS", [](Args args) -> Value { return host::fieldpos(args[0]); }},
    Row{"FIELDPUT", [](Args args) { return host::fieldput(args[0], args[1]); }},
    Row{"FLOCK", [](Args args) -> Value { return host::flock(seconds(args[0])); }},
    Row{"RLOCK", [](Args args) -> Value { return host::rlock(seconds(args[0])); }},
    Row{"__DBPACK", yes_or_no<host::dbpack>},
    Row{"__DBZAP", yes_or_no<host::dbzap>},
};

Function find(std::span<const Row> rows, std::string_view name) {
    const auto found = std::ranges::find(rows, name, &Row::name);
    return found == rows.end() ? nullptr : found->call;
}

}  // namespace

Function find_area_function(std::string_view name) {
    for (const std::span<const Row> rows : {std::span<const Row>(opening), std::span<const Row>(moves),
                                            std::span<const Row>(orders), std::span<const Row>(records)}) {
        if (const Function function = find(rows, name)) return function;
    }
    return nullptr;
}

}  // namespace zmfb::host_test
