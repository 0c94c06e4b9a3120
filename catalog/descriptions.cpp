#include <functional>
#include <numeric>

#include "catalog/comment.h"
#include "catalog/existence.h"
#include "catalog/methods.h"
#include "conn/statement.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

// Whether a description goes in by COMMENT ON. A single quote breaks the UPDATE, and the
// caller is to see its error, whatever the engine.
template <class... Names>
bool by_comment(Self& self, const Names&... names) {
    return takes_comments_only(self) && !(host::contained("'", names) || ...);
}

// A name with trailing blanks names nothing, though the engine's own comparison ignores them.
bool padded(const Value& name) { return name.text().ends_with(' '); }

Value escaped(const Value& descr) { return host::strtran(descr, "'", "''"); }

Value description(Self& self, const Value& stmt) {
    const Value result = call(self, "internalselect", stmt);
    if (!host::has_row(result)) return host::array_of("");
    Value row = host::data_rows(result)[0];
    const std::string_view text = row[1].text();
    // A search that stops at the first one takes the processor many times as long.
    const char bits = std::accumulate(text.begin(), text.end(), '\0', std::bit_or<char>());
    if ((bits & 0x80) != 0 && takes_comments_only(self)) row[1] = from_utf8(text);
    return row;
}

}  // namespace

Value settabledescription(Self& self, Args args) {
    const Value tbl = host::upper(args[0]);
    const Value& descr = args[1];
    if (!by_comment(self, tbl)) {
        return call(self, "executeupdate",
                    "update rdb$relations set rdb$description = '" + escaped(descr) + "' " +
                        "where rdb$relation_name = '" + tbl + "' ");
    }
    if (padded(tbl) || surely_absent(self, table_question(tbl))) return "";
    const Value kind = ask(self, "isview", tbl) ? "VIEW " : "TABLE ";
    return comment_on(self, kind + quoted(tbl), descr);
}

Value setindexdescription(Self& self, Args args) {
    const Value ind = host::upper(args[0]);
    const Value& descr = args[1];
    if (!by_comment(self, ind)) {
        return call(self, "executeupdate",
                    "update rdb$indices set rdb$description = '" + escaped(descr) + "' " +
                        "where rdb$index_name = '" + ind + "' ");
    }
    if (padded(ind) || surely_absent(self, index_question(ind))) return "";
    return comment_on(self, "INDEX " + quoted(ind), descr);
}

Value setfielddescription(Self& self, Args args) {
    const Value tbl = host::upper(args[0]), fldname = host::upper(args[1]);
    const Value& descr = args[2];
    if (!by_comment(self, tbl, fldname)) {
        return call(self, "executeupdate",
                    "update rdb$relation_fields set rdb$description = '" + escaped(descr) + "' " +
                        "where rdb$field_name = '" + fldname + "' and " + "      rdb$relation_name = '" +
                        tbl + "' ");
    }
    if (padded(tbl) || padded(fldname) || surely_absent(self, field_question(tbl, fldname))) return "";
    return comment_on(self, "COLUMN " + quoted(tbl) + "." + quoted(fldname), descr);
}

Value gettabledescription(Self& self, Args args) {
    const Value& tbl = args[0];
    return description(
        self, "select zmBlobSubstr(rdb$description,1,255) from rdb$relations where rdb$relation_name = '" +
                  host::upper(tbl) + "' ");
}

Value getindexdescription(Self& self, Args args) {
    const Value& ind = args[0];
    return description(
        self, "select zmBlobSubstr(rdb$description,1,255) from rdb$indices where rdb$index_name = '" +
                  host::upper(ind) + "' ");
}

Value getfielddescription(Self& self, Args args) {
    const Value &tbl = args[0], &fldname = args[1];
    return description(
        self, "select zmBlobSubstr(rdb$description,1,255) from rdb$relation_fields where rdb$field_name = '" +
                  host::upper(fldname) + "' and " + "rdb$relation_name = '" + host::upper(tbl) + "' ");
}

}  // namespace zmfb::catalog
