#include "host/operation.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "host/text.h"
#include "host/workarea.h"

namespace zmfb::host {
namespace {

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
    constexpr double longest = 1e9;
    if (!wait.is(Kind::numeric)) return {};
    return std::chrono::milliseconds(
        static_cast<std::int64_t>(std::clamp(wait.number(), 0.0, longest) * std::milli::den));
}

constexpr std::array operations{
    // workarea.h
    Operation{"ALIAS", 1, [](Args args) { return alias(args[0]); }},
    Operation{"DBCLOSEALL", 0, done<dbcloseall>},
    Operation{"DBCLOSEAREA", 1, [](Args args) { return dbclosearea(args[0]), Value(); }},
    Operation{"DBCREATE", 3, [](Args args) { return dbcreate(args[0], args[1], args[2]); }},
    Operation{"DBSELECTAREA", 1, [](Args args) -> Value { return dbselectarea(args[0]); }},
    Operation{"DBSTRUCT", 0, [](Args) { return dbstruct(); }},
    Operation{"DBUSEAREA", 6,
              [](Args args) {
                  dbusearea(args[0], args[1], args[2], args[3], args[4], args[5]);
                  return Value();
              }},
    Operation{"NETERR", 0, [](Args) { return neterr(); }},
    Operation{"NETERRHOLDER", 0, [](Args) { return neterrholder(); }},
    Operation{"RDDSETDEFAULT", 1,
              [](Args args) { return args.size() == 0 ? rddsetdefault() : rddsetdefault(args[0]); }},
    Operation{"SELECT", 1, [](Args args) -> Value { return select(args[0]); }},
    Operation{"USED", 0, [](Args) { return used(); }},

    // moves.h
    Operation{"BOF", 0, yes_or_no<bof>},
    Operation{"DBCLEARFILTER", 0, done<dbclearfilter>},
    Operation{"DBEVAL", 6,
              [](Args args) {
                  dbeval(args[0], args[1], args[2], args[3], args[4], args[5]);
                  return Value();
              }},
    Operation{"DBFILTER", 0, [](Args) { return dbfilter(); }},
    Operation{"DBGOBOTTOM", 0, done<dbgobottom>},
    Operation{"DBGOTO", 1, [](Args args) { return dbgoto(args[0].integer()), Value(); }},
    Operation{"DBGOTOP", 0, done<dbgotop>},
    Operation{"DBSEEK", 3, [](Args args) -> Value { return dbseek(args[0], args[1], args[2]); }},
    Operation{"DBSETFILTER", 2, [](Args args) -> Value { return dbsetfilter(args[0], args[1]); }},
    Operation{"DBSETINDEX", 1, [](Args args) { return dbsetindex(args[0]), Value(); }},
    Operation{"DBSKIP", 1,
              [](Args args) { return dbskip(args.size() == 0 ? 1 : args[0].integer()), Value(); }},
    Operation{"EOF", 0, yes_or_no<eof>},
    Operation{"FOUND", 0, yes_or_no<found>},
    Operation{"INDEXKEY", 1, [](Args args) { return indexkey(args.size() == 0 ? Value(0) : args[0]); }},
    Operation{"INDEXORD", 0, number<indexord>},
    Operation{"LASTREC", 0, number<lastrec>},
    Operation{"ORDCREATE", 3, [](Args args) -> Value { return ordcreate(args[0], args[1], args[2]); }},
    Operation{"ORDDESTROY", 1, [](Args args) -> Value { return orddestroy(args[0]); }},
    Operation{"ORDKEYNO", 0, number<ordkeyno>},
    Operation{"ORDLISTADD", 1, [](Args args) -> Value { return ordlistadd(args[0]); }},
    Operation{"ORDLISTCLEAR", 0, done<ordlistclear>},
    Operation{"ORDLISTREBUILD", 0, yes_or_no<ordlistrebuild>},
    Operation{"ORDNAME", 1, [](Args args) { return ordname(args[0]); }},
    Operation{"ORDNUMBER", 1, [](Args args) -> Value { return ordnumber(args[0]); }},
    Operation{"ORDSETFOCUS", 1, [](Args args) { return ordsetfocus(args[0]); }},
    Operation{"RECCOUNT", 0, number<reccount>},
    Operation{"RECNO", 0, number<recno>},
    Operation{"__DBCONTINUE", 0, yes_or_no<dbcontinue>},
    Operation{"__DBLOCATE", 5,
              [](Args args) -> Value { return dblocate(args[0], args[1], args[2], args[3], args[4]); }},

    // record.h
    Operation{"DBAPPEND", 1, [](Args args) -> Value { return dbappend(args[0]); }},
    Operation{"DBCOMMIT", 0, yes_or_no<dbcommit>},
    Operation{"DBCOMMITALL", 0, yes_or_no<dbcommitall>},
    Operation{"DBDELETE", 0, yes_or_no<dbdelete>},
    Operation{"DBRECALL", 0, yes_or_no<dbrecall>},
    Operation{"DBRLOCK", 2, [](Args args) -> Value { return dbrlock(args[0], seconds(args[1])); }},
    Operation{"DBRLOCKLIST", 0, [](Args) { return dbrlocklist(); }},
    Operation{"DBRUNLOCK", 1, [](Args args) { return dbrunlock(args[0]), Value(); }},
    Operation{"DBUNLOCK", 0, done<dbunlock>},
    Operation{"DBUNLOCKALL", 0, done<dbunlockall>},
    Operation{"DELETED", 0, yes_or_no<deleted>},
    Operation{"FCOUNT", 0, number<fcount>},
    Operation{"FIELDGET", 1, [](Args args) { return fieldget(args[0]); }},
    Operation{"FIELDNAME", 1, [](Args args) { return fieldname(args[0].integer()); }},
    Operation{"FIELDPOS", 1, [](Args args) -> Value { return fieldpos(args[0]); }},
    Operation{"FIELDPUT", 2, [](Args args) { return fieldput(args[0], args[1]); }},
    Operation{"FLOCK", 1, [](Args args) -> Value { return flock(seconds(args[0])); }},
    Operation{"RLOCK", 1, [](Args args) -> Value { return rlock(seconds(args[0])); }},
    Operation{"__DBPACK", 0, yes_or_no<dbpack>},
    Operation{"__DBZAP", 0, yes_or_no<dbzap>},
};

}  // namespace

const Operation* find_operation(std::string_view name) {
    const Value wanted = upper(name);
    const auto found = std::ranges::find(operations, wanted.text(), &Operation::name);
    return found == operations.end() ? nullptr : found;
}

}  // namespace zmfb::host
