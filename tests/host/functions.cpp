#include "functions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/array.h"
#include "host/compare.h"
#include "host/date.h"
#include "host/error.h"
#include "host/number.h"
#include "host/operation.h"
#include "host/settings.h"
#include "host/text.h"

namespace zmfb::host_test {
namespace {

using host::Args;
using host::Kind;
using host::Subcode;
using host::Value;

// STR and STRZERO tell an argument left out from NIL.
template <auto One, auto Two, auto Three>
Value by_count(Args args) {
    if (args.size() <= 1) return One(args[0]);
    return args.size() == 2 ? Two(args[0], args[1]) : Three(args[0], args[1], args[2]);
}

using One = Value (*)(const Value&);
using Two = Value (*)(const Value&, const Value&);
using Three = Value (*)(const Value&, const Value&, const Value&);

template <One F>
Value one(Args args) {
    return F(args[0]);
}
template <Two F>
Value two(Args args) {
    return F(args[0], args[1]);
}
template <Three F>
Value three(Args args) {
    return F(args[0], args[1], args[2]);
}

Value not_a_number(std::string_view operation, Args args) {
    return host::argument_error(Subcode::wrong_kind, operation, args.all());
}

Value shown_with_decimals(double number) {
    return {number, host::computed_picture(number, host::set_decimals())};
}

Value sqrt(Args args) {
    if (!args[0].is(Kind::numeric)) return not_a_number("SQRT", args);
    return shown_with_decimals(std::sqrt(std::max(args[0].number(), 0.0)));
}

Value log(Args args) {
    if (!args[0].is(Kind::numeric)) return not_a_number("LOG", args);
    return shown_with_decimals(std::log(args[0].number()));
}

Value exp(Args args) {
    if (!args[0].is(Kind::numeric)) return not_a_number("EXP", args);
    return shown_with_decimals(std::exp(args[0].number()));
}

Value round(Args args) {
    if (!args[0].is(Kind::numeric) || !args[1].is(Kind::numeric)) return not_a_number("ROUND", args);
    const auto decimals = static_cast<int>(args[1].integer());
    constexpr int widest = 400;
    double result = 0;
    if (decimals >= 0) {
        result = host::val(host::str(args[0], widest, decimals)).number();
    } else {
        const double unit = std::pow(10.0, -decimals);
        result = std::round(args[0].number() / unit) * unit;
    }
    return {result, host::computed_picture(result, std::max(decimals, 0))};
}

Value mod(Args args) {
    if (!args[0].is(Kind::numeric) || !args[1].is(Kind::numeric)) return not_a_number("MOD", args);
    const double divisor = args[1].number();
    if (divisor == 0)
        return host::runtime_error(host::GenCode::zero_divide, Subcode::zero_divide, "Zero divisor: MOD");
    const double number = args[0].number();
    return number - divisor * std::floor(number / divisor);
}

Value min(Args args) {
    if (args[0].is_nil() || args[0].kind() != args[1].kind()) return not_a_number("MIN", args);
    return host::less(args[1], args[0]) ? args[1] : args[0];
}

Value max(Args args) {
    if (args[0].is_nil() || args[0].kind() != args[1].kind()) return not_a_number("MAX", args);
    return host::greater(args[1], args[0]) ? args[1] : args[0];
}

Value eval(Args args) { return args[0].eval(args.size() > 1 ? Args(args.all().subspan(1)) : Args()); }

Value strtran(Args args) { return host::strtran(args[0], args[1], args[2], args[3], args[4]); }
Value ascan(Args args) { return host::ascan(args[0], args[1], args[2], args[3]); }
Value acopy(Args args) { return host::acopy(args[0], args[1], args[2], args[3], args[4]); }

Value atail(Args args) {
    const bool has_one = args[0].is(Kind::array) && args[0].size() > 0;
    return has_one ? args[0][args[0].size()] : Value();
}

struct Row {
    std::string_view name;
    Function call;
};

constexpr std::array functions{
    Row{"AADD", two<host::aadd>},
    Row{"ABS", one<host::abs>},
    Row{"ACLONE", one<host::aclone>},
    Row{"ACOPY", acopy},
    Row{"ALLTRIM", one<host::alltrim>},
    Row{"ARRAY", [](Args args) { return host::array(args); }},
    Row{"ASC", one<host::asc>},
    Row{"ASCAN", ascan},
    Row{"AT", two<host::at>},
    Row{"ATAIL", atail},
    Row{"BIN2I", one<host::bin2i>},
    Row{"BIN2L", one<host::bin2l>},
    Row{"CHR", one<host::chr>},
    Row{"CTOD", one<host::ctod>},
    Row{"DATE", [](Args) { return host::date(); }},
    Row{"DAY", one<host::day>},
    Row{"DTOC", one<host::dtoc>},
    Row{"DTOS", one<host::dtos>},
    Row{"EMPTY", [](Args args) -> Value { return host::empty(args[0]); }},
    Row{"ERRORNEW", [](Args) { return host::error_new(); }},
    Row{"EVAL", eval},
    Row{"EXP", exp},
    Row{"INT", one<host::integer_part>},
    Row{"LEFT", two<host::left>},
    Row{"LEN", one<host::len>},
    Row{"LOG", log},
    Row{"LOWER", one<host::lower>},
    Row{"LTRIM", one<host::ltrim>},
    Row{"MAX", max},
    Row{"MIN", min},
    Row{"MOD", mod},
    Row{"MONTH", one<host::month>},
    Row{"PAD", three<host::padr>},
    Row{"PADL", three<host::padl>},
    Row{"PADR", three<host::padr>},
    Row{"RAT", two<host::rat>},
    Row{"REPLICATE", two<host::replicate>},
    Row{"RIGHT", two<host::right>},
    Row{"ROUND", round},
    Row{"RTRIM", one<host::trim>},
    Row{"SET", [](Args args) { return args.size() > 1 ? host::set(args[0], args[1]) : host::set(args[0]); }},
    Row{"SPACE", one<host::space>},
    Row{"SQRT", sqrt},
    Row{"STOD", one<host::stod>},
    Row{"STR",
        by_count<static_cast<One>(host::str), static_cast<Two>(host::str), static_cast<Three>(host::str)>},
    Row{"STRPEEK", two<host::strpeek>},
    Row{"STRTRAN", strtran},
    Row{"STRZERO", by_count<static_cast<One>(host::strzero), static_cast<Two>(host::strzero),
                            static_cast<Three>(host::strzero)>},
    Row{"SUBSTR", three<host::substr>},
    Row{"TIME", [](Args) { return host::time(); }},
    Row{"TRIM", one<host::trim>},
    Row{"UPPER", one<host::upper>},
    Row{"VAL", one<host::val>},
    Row{"VALTYPE", one<host::valtype>},
    Row{"YEAR", one<host::year>},
};

}  // namespace

Function find_function(std::string_view name) {
    const auto found = std::ranges::find(functions, name, &Row::name);
    if (found != functions.end()) return found->call;
    const host::Operation* operation = host::find_operation(name);
    return operation == nullptr ? nullptr : operation->run;
}

}  // namespace zmfb::host_test
