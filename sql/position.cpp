#include "host/number.h"
#include "host/result.h"
#include "host/text.h"
#include "sql/methods.h"

namespace zmfb::sql {

namespace {

Value trimmed_number(const Value& n) { return host::alltrim(host::str(n)); }

// The plan stands right behind the condition, with the blank and the keyword that it brings along.
Value selection(const Value& tbl, const Value& cond, const Value& plan, const Value& order) {
    return " * from " + tbl + " where " + cond + (host::empty(plan) ? Value("") : plan) + " order by " +
           order;
}

Value no_rows() { return Value::array_of_size(0); }

Value first_row(const Value& result) {
    return host::has_row(result) ? host::data_rows(result)[0] : no_rows();
}

}  // namespace

Value getrow(Self& self, Args args) {
    const Value &tbl = args[0], &cond = args[1], &order = args[2], &plan = args[3], &sk = args[4];
    const Value stmt = "select first 1 skip " + trimmed_number(sk) + selection(tbl, cond, plan, order);
    return first_row(call(self, "internalselect", stmt));
}

// The whole result with its header, unlike getrow.
Value getfirstrows(Self& self, Args args) {
    const Value &tbl = args[0], &cond = args[1], &order = args[2], &plan = args[3], &qti = args[4],
                &sk = args[5];
    const Value stmt = "select first " + trimmed_number(qti) + " skip " + trimmed_number(sk) +
                       selection(tbl, cond, plan, order);
    const Value result = call(self, "internalselect", stmt);
    return host::has_row(result) ? result : no_rows();
}

Value executeudfskippad(Self& self, Args args) {
    const Value &col = args[0], &tbl = args[1], &recno = args[2];
    const Value stmt =
        "select skippad(" + col + ") from " + tbl + " where recno = " + recno + " order by recno";
    return first_row(call(self, "internalselect", stmt));
}

}  // namespace zmfb::sql
