#include "tool/transfer/export_check.h"

#include <fmt/format.h>

#include <map>

#include "host/dbf_format.h"
#include "host/number.h"
#include "host/text.h"
#include "tool/character_set.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t name_size = 10;

void check_names(const std::vector<host::Field>& fields, ExportCheck& check) {
    std::map<std::string, std::string> taken;
    for (const host::Field& field : fields) {
        const std::string name = field.name.substr(0, name_size);
        const auto [first, is_new] = taken.emplace(name, field.name);
        if (!is_new) {
            check.refusals.push_back(fmt::format("the columns {} and {} would both become the field {}",
                                                 to_utf8(first->second), to_utf8(field.name), to_utf8(name)));
        } else if (name != field.name) {
            check.warnings.push_back(
                fmt::format("the column {} becomes the field {}", to_utf8(field.name), to_utf8(name)));
        }
    }
}

void check_types(const std::vector<host::Field>& fields, ExportCheck& check) {
    for (const host::Field& field : fields) {
        if (std::string_view("CNDL").find(field.type) == std::string_view::npos) {
            check.refusals.push_back(
                fmt::format("the column {} has a type that a DBF file cannot hold", to_utf8(field.name)));
        }
    }
    if (!check.refusals.empty()) return;
    std::vector<host::Field> fitted = fields;
    const std::string wrong = host::fit_for_dbf(fitted);
    if (!wrong.empty()) check.refusals.push_back(to_utf8(wrong));
}

// A condition on the values of a column, and what it means when one of them meets it.
struct Question {
    std::string condition;
    std::string meaning;
    bool refuses;
};

std::vector<Question> questions(const std::vector<host::Field>& fields) {
    std::vector<Question> asked;
    for (const host::Field& field : fields) {
        const std::string name = to_utf8(field.name);
        if (field.type == 'D') {
            asked.push_back({fmt::format("cast({} as time) <> '00:00'", field.name),
                             fmt::format("values of {} that lose their time of day", name), false});
            continue;
        }
        asked.push_back({fmt::format("{} is null", field.name),
                         fmt::format("values of {} that are NULL, which a DBF file does not have", name),
                         true});
        if (field.type != 'N') continue;
        asked.push_back(
            {fmt::format("char_length(cast({} as varchar(64))) > {}", field.name, field.length),
             fmt::format("values of {} that need more than its {} characters", name, field.length), true});
    }
    return asked;
}

void check_values(zmFBConn& connection, const std::string& table, const std::vector<host::Field>& fields,
                  ExportCheck& check) {
    const std::vector<Question> asked = questions(fields);
    std::string statement;
    for (const Question& question : asked) {
        statement += fmt::format("{}count(case when {} then 1 end)", statement.empty() ? "select " : ", ",
                                 question.condition);
    }
    const Value answer = connection.call("executequery", statement + " from " + table);
    if (answer.size() < 2) return;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const auto count = host::val(answer[2][i + 1]).integer();
        if (count == 0) continue;
        auto& lines = asked[i].refuses ? check.refusals : check.warnings;
        lines.push_back(fmt::format("{}: {}", asked[i].meaning, count));
    }
}

}  // namespace

ExportCheck check_export(zmFBConn& connection, const std::string& table, const Structure& structure) {
    std::vector<host::Field> fields;
    for (const FieldDescriptor& field : structure) {
        fields.push_back({field.name, field.type.front(), static_cast<int>(field.length),
                          static_cast<int>(field.decimals)});
    }
    ExportCheck check;
    const std::string width = width_problem(default_character_set(connection));
    if (!width.empty()) check.refusals.push_back(width);
    check_names(fields, check);
    check_types(fields, check);
    if (check.refusals.empty()) check_values(connection, table, fields, check);
    return check;
}

}  // namespace zmfb::tool
