#include "conn/raise.h"
#include "host/compare.h"
#include "host/date.h"
#include "host/number.h"
#include "host/text.h"
#include "matrix/format.h"
#include "matrix/methods.h"
#include "matrix/write_file.h"

namespace zmfb::matrix {
namespace {

using host::operator""_l1;

constexpr std::string_view banner_lines[] = {
    "  :   :  .::::. .:::::. .:     .: ::::::",  //
    " ::: ::.     ::   ::    ::.::: ::    .:'",  //
    ":: ::::: .:::::   ::    :::    ::   .:' ",  //
    "::  : :: ::  ::.  ::    ::     ::  .:'  ",  //
    ":     `: '::::::. `:.   :      :  ::::::",
};
constexpr std::string_view opening_line = "- - - - - Created by ZMRDDFIRE - - - - -";
static_assert(opening_line.find(table_opener) != opening_line.npos);
constexpr std::string_view version_line = "-                 v2.0                 -";
constexpr std::string_view change_here = "!!--- Alterar Aqui ---!!";
constexpr std::string_view no_such_table = " >> Does not exists!";
constexpr std::string_view system_tables[] = {"RDDSYS_FLK", "RDDSYS_RLK", "RDDSYS_OPN"};

constexpr int left_width = 40;
constexpr int marker_indent = 46;

Value banner() {
    Value lines = Value::array_of_size(0);
    for (const std::string_view line : banner_lines) lines.push(host::array_of(line));
    return lines;
}

bool is_system_table(const Value& table) {
    for (const std::string_view name : system_tables) {
        if (host::exactly_equal(table, name)) return true;
    }
    return false;
}

void add_header(Self& self, const Value& table, const Value& lines) {
    const auto add = [&lines](Value line) { lines.push(host::array_of(std::move(line))); };
    add(opening_line);
    add(version_line);
    add(Value("   Data: ") + host::dtoc(host::date()) + " " + host::time());
    add(Value("     DB: ") + var(self, Var::sdbname));
    add(Value(" Tabela: ") + table);
    add(host::space(marker_indent) + change_here);
}

Value descriptor_text(std::size_t position, const Value& field) {
    return host::strzero(position, 3) + between_pieces + field[1] + between_pieces + field[2] +
           between_pieces + host::alltrim(host::str(field[3])) + between_pieces +
           host::alltrim(host::str(field[4]));
}

Value field_line(const Value& table, const Value& descriptor) {
    const double padding = left_width - host::len(descriptor).number() - host::len(table).number();
    return Value(" ") + table + after_table + descriptor + host::space(padding) + arrow + " " + descriptor;
}

}  // namespace

Value extracmatrixoftable(Self& self, Args args) {
    const Value table = host::upper(args[0]);
    Value lines = Value::array_of_size(0);
    if (is_system_table(table)) return lines;
    if (!ask(self, "istable", table)) {
        lines.push(host::array_of(no_such_table));
        return lines;
    }
    if (!ask(self, "iszmrddtable", table)) return lines;
    add_header(self, table, lines);
    const Value structure = call(self, "filterrddfields", call(self, "gettablestruct", table));
    for (std::size_t i = 1; i <= structure.items().size(); ++i) {
        lines.push(host::array_of(field_line(table, descriptor_text(i, structure[i]))));
    }
    return lines;
}

Value extractmatrix(Self& self, Args args) {
    Value matrix = host::array_of(host::array_of(banner()));
    const Value tables = host::empty(args[0]) ? call(self, "gettablesname") : args[0];
    if (!tables.is(host::Kind::array)) {
        conn::raiseerror(
            "Não foi possível extrair a matriz.; Coloque os nomes das tabelas em um array unidimensional"_l1);
        return matrix;
    }
    for (std::size_t i = 1; i <= tables.size(); ++i) {
        matrix.push(host::array_of(call(self, "extracmatrixoftable", tables[i])));
    }
    if (!host::empty(args[1])) write_file(self, matrix, args[1]);
    return matrix;
}

}  // namespace zmfb::matrix
