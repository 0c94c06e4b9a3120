#include "rdd/key_term.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zmfb::rdd {

namespace {

constexpr std::string_view char_of = "cast({} as char({}) character set none)";

Term fixed_text(std::string sql, std::size_t width) {
    Term term;
    term.sql = std::move(sql);
    term.width = width;
    return term;
}

std::string as_char(std::string_view sql, std::size_t width) {
    return fmt::format(fmt::runtime(char_of), sql, width);
}

// What a function was given, and what it cannot do without.
class Call {
  public:
    Call(std::string_view name, const std::vector<Term>& arguments) : name_(name), arguments_(arguments) {}

    [[nodiscard]] bool has(std::size_t index) const { return index < arguments_.size(); }
    [[nodiscard]] const Term& of_type(std::size_t index, char type, std::string_view word) const {
        if (!has(index) || arguments_[index].type != type) refuse(fmt::format("{} takes {}", name_, word));
        return arguments_[index];
    }
    [[nodiscard]] const Term& text() const { return of_type(0, 'C', "a text"); }
    [[nodiscard]] const Term& number() const { return of_type(0, 'N', "a number"); }
    // A length, a position: cut toward zero, and to what is far beyond every text.
    [[nodiscard]] int constant(std::size_t index) const {
        const Term& term = of_type(index, 'N', "lengths and positions that are numbers");
        if (!term.constant)
            refuse(fmt::format("{} takes lengths and positions that stand there themselves", name_));
        return static_cast<int>(std::trunc(std::clamp(*term.constant, -65535.0, 65535.0)));
    }
    void at_most(std::size_t count) const {
        if (arguments_.size() > count) refuse(fmt::format("{} takes at most {} arguments", name_, count));
    }
    [[nodiscard]] std::string_view name() const { return name_; }
    [[noreturn]] static void refuse(const std::string& why) { throw OrderError(why); }

  private:
    std::string_view name_;
    const std::vector<Term>& arguments_;
};

Term changed_case(const Call& call, std::string_view function) {
    call.at_most(1);
    Term term = call.text();
    term.sql = fmt::format("{}({})", function, term.sql);
    term.is_field = false;
    return term;
}

// Of the character set NONE the engine changes the letters of ASCII, and no others.
Term upper_term(const Call& call) { return changed_case(call, "upper"); }
Term lower_term(const Call& call) { return changed_case(call, "lower"); }

Term trim_term(const Call& call) {
    call.at_most(1);
    Term term = call.text();
    term.sql = fmt::format("trim(trailing from {})", term.sql);
    term.varying = true;
    term.is_field = false;
    return term;
}

Term substr_term(const Call& call) {
    call.at_most(3);
    const Term& text = call.text();
    const int width = static_cast<int>(text.width);
    int start = call.constant(1);
    std::string from;
    if (start < 0 && text.varying)
        from = fmt::format("maxvalue(octet_length({}) - {}, 0) + 1", text.sql, -start);
    if (start < 0) start = std::max(width + start, 0) + 1;
    start = std::max(start, 1);
    const int rest = std::max(width - start + 1, 0);
    const int count = call.has(2) ? std::clamp(call.constant(2), 0, rest) : rest;
    Term term;
    term.sql = fmt::format("substring({} from {} for {})", text.sql,
                           from.empty() ? std::to_string(start) : from, count);
    term.width = static_cast<std::size_t>(count);
    term.varying = text.varying;
    return term;
}

Term padded_term(const Call& call, std::string_view function) {
    call.at_most(2);
    const Term& text = call.text();
    const auto width = static_cast<std::size_t>(std::max(call.constant(1), 0));
    if (width == 0) return text_term("");
    return fixed_text(as_char(fmt::format("{}({}, {})", function, text.sql, width), width), width);
}

Term padr_term(const Call& call) { return padded_term(call, "rpad"); }
Term padl_term(const Call& call) { return padded_term(call, "lpad"); }

Term dtos_term(const Call& call) {
    call.at_most(1);
    const Term& date = call.of_type(0, 'D', "a date");
    const std::string day = as_char(fmt::format("cast({} as date)", date.sql), 10);
    return fixed_text(as_char(fmt::format("coalesce(replace({}, {}, {}), {})", day, literal("-"), literal(""),
                                          literal("        ")),
                              8),
                      8);
}

// The digits of a number whose decimals are only rounded: half away from zero, as STR does. What does not fit
// becomes asterisks.
std::string digits_of(const Term& number, std::size_t decimals) {
    return fmt::format("cast(cast({} as numeric(18, {})) as varchar(21) character set none)", number.sql,
                       decimals);
}

std::string if_it_fits(std::string_view digits, std::size_t columns, std::string_view aligned) {
    return fmt::format("iif(octet_length({}) > {}, {}, {})", digits, columns,
                       literal(std::string(columns, '*')), aligned);
}

std::string str_by_engine(const Term& number, std::size_t columns, std::size_t decimals) {
    const std::string digits = digits_of(number, decimals);
    return if_it_fits(digits, columns, fmt::format("lpad({}, {})", digits, columns));
}

std::string strzero_by_engine(const Term& number, std::size_t columns, std::size_t decimals) {
    const std::string digits = digits_of(number, decimals), zero = literal("0"), minus = literal("-");
    return if_it_fits(
        digits, columns,
        fmt::format("iif({0} starting with {1}, {1} || lpad(substring({0} from 2), {2}, {3}), lpad({0}, "
                    "{4}, {3}))",
                    digits, minus, columns - 1, zero, columns));
}

// STR of a number without its length goes by the columns that a field has; what is computed has none.
// The functions of the driver do the same, for floating numbers too, at many times the cost.
Term number_text(const Call& call, std::string_view function,
                 std::string (*by_engine)(const Term& number, std::size_t columns, std::size_t decimals)) {
    call.at_most(3);
    const Term& number = call.number();
    if (!call.has(1) && !number.is_field)
        Call::refuse(fmt::format("{} of what is no field needs a length", call.name()));
    int width = call.has(1) ? call.constant(1) : static_cast<int>(number.width);
    int decimals = call.has(2) ? call.constant(2) : call.has(1) ? 0 : static_cast<int>(number.decimals);
    if (width > 255) Call::refuse(fmt::format("{} gives at most 255 characters", call.name()));
    if (width < 1) width = 10;
    decimals = std::max(decimals, 0);
    const auto columns = static_cast<std::size_t>(width);
    const auto places = static_cast<std::size_t>(decimals);
    const bool is_cut = number.exact && places <= number.decimals;
    return fixed_text(as_char(is_cut ? by_engine(number, columns, places)
                                     : fmt::format("{}({}, {}, {})", function, number.sql, columns, decimals),
                              columns),
                      columns);
}

Term str_term(const Call& call) { return number_text(call, "zmstr", str_by_engine); }
Term strzero_term(const Call& call) { return number_text(call, "zmstrzero", strzero_by_engine); }

struct Function {
    std::string_view name;
    Term (*make)(const Call& call);
};

constexpr Function functions[] = {
    {"UPPER", upper_term},   {"LOWER", lower_term}, {"TRIM", trim_term},
    {"SUBSTR", substr_term}, {"STR", str_term},     {"STRZERO", strzero_term},
    {"DTOS", dtos_term},     {"PADR", padr_term},   {"PADL", padl_term},
};

}  // namespace

Term field_term(const FieldDescriptor& field, std::string_view prefix) {
    Term term;
    const std::string column = fmt::format("{}\"{}\"", prefix, field.name);
    term.type = field.type.front();
    term.width = static_cast<std::size_t>(std::max<std::int64_t>(field.length, 0));
    term.decimals = static_cast<std::size_t>(field.decimals);
    term.is_field = true;
    switch (term.type) {
        case 'C':
            term.sql = as_char(fmt::format("coalesce({}, '')", column), term.width);
            break;
        case 'L':
            term.width = 1;
            term.sql = as_char(fmt::format("coalesce({}, 'F')", column), 1);
            break;
        case 'F':
            term.type = 'N';
            term.exact = false;
            [[fallthrough]];
        case 'N':
            term.sql = fmt::format("coalesce({}, 0)", column);
            term.most = std::pow(10.0, static_cast<double>(field.length - field.decimals));
            break;
        case 'D':
            term.sql = column;
            break;
        default:
            throw OrderError(fmt::format("{} is a field of no type that keys are made of", field.name));
    }
    return term;
}

Term text_term(std::string_view bytes) { return fixed_text(literal(bytes), bytes.size()); }

Term number_term(std::string_view digits, bool negative) {
    Term term;
    term.type = 'N';
    if (digits.ends_with('.')) digits.remove_suffix(1);
    const std::size_t point = digits.find('.');
    term.decimals = point == std::string_view::npos ? 0 : digits.size() - point - 1;
    term.sql = fmt::format("{}{}", negative ? "-" : "", digits);
    term.constant = std::strtod(term.sql.c_str(), nullptr);
    term.most = std::abs(*term.constant);
    return term;
}

// With its decimals it is an integer of 64 bits, and stays one when a key adds five times the greatest number
// of 18 digits.
void require_digits(const Term& number) {
    constexpr double greatest = 4e18;
    if (number.exact && number.most * std::pow(10.0, static_cast<double>(number.decimals)) > greatest)
        throw OrderError("it may have more than 18 digits, those behind the point among them");
}

Term sum_of(const Term& a, const Term& b) {
    Term term = a;
    term.is_field = false;
    term.constant.reset();
    if (a.type == 'C' && b.type == 'C') {
        term.sql = fmt::format("{} || {}", a.sql, b.sql);
        term.width = a.width + b.width;
        term.varying = a.varying || b.varying;
        return term;
    }
    if (a.type != 'N' || b.type != 'N') throw OrderError("+ joins two texts, or adds two numbers");
    term.sql = fmt::format("({} + {})", a.sql, b.sql);
    term.decimals = std::max(a.decimals, b.decimals);
    term.exact = a.exact && b.exact;
    term.most = a.most + b.most;
    require_digits(term);
    return term;
}

bool is_key_function(std::string_view name) {
    return std::ranges::find(functions, name, &Function::name) != std::end(functions);
}

Term call(std::string_view name, const std::vector<Term>& arguments) {
    return std::ranges::find(functions, name, &Function::name)->make(Call(name, arguments));
}

std::string literal(std::string_view bytes) {
    std::string hex;
    for (const char c : bytes) hex += fmt::format("{:02x}", static_cast<unsigned char>(c));
    return fmt::format("_none x'{}'", hex);
}

std::string padded(const Term& text) { return text.varying ? as_char(text.sql, text.width) : text.sql; }

}  // namespace zmfb::rdd
