#include "tests/hostile/values.h"

#include <limits>
#include <string_view>

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

Value nested(std::size_t depth) {
    Value inner = array_of("innermost");
    for (std::size_t i = 1; i < depth; ++i) inner = array_of(std::move(inner));
    return inner;
}

std::string every_byte() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    return bytes;
}

void add_texts(std::vector<HostileValue>& values, std::size_t longest) {
    using namespace std::string_view_literals;
    values.push_back({"empty", ""});
    values.push_back({"blanks", "    "});
    values.push_back({"quote", "'"});
    values.push_back({"quotes", R"(''"")"});
    values.push_back({"statement", "x'; drop table CLIENT; --"});
    values.push_back({"percent", "%s%n%d%x%99999999d"});
    values.push_back({"zero byte", "\0"sv});
    values.push_back({"zero byte inside", "CLI\0ENT"sv});
    values.push_back({"line ends", "a\r\nb\tc\x1A"});
    values.push_back({"every byte", every_byte()});
    values.push_back({"placeholder", "@@TABLENAME@@FIELDS@@"});
    values.push_back({"path", "../no/such/file"});
    values.push_back({"expression", "((((a*)*)*)*)[["});
    values.push_back({"name of 31 bytes", std::string(31, 'N')});
    values.push_back({"name of 32 bytes", std::string(32, 'N')});
    values.push_back({"10000 bytes", std::string(10000, 'x')});
    values.push_back({"long", std::string(longest, 'y')});
    values.push_back({"long of quotes", std::string(longest, '\'')});
    values.push_back({"long of percents", std::string(longest, '%')});
    values.push_back({"long of zero bytes", std::string(longest, '\0')});
}

void add_numbers(std::vector<HostileValue>& values) {
    using Double = std::numeric_limits<double>;
    values.push_back({"0", 0});
    values.push_back({"-1", -1});
    values.push_back({"half", 0.5});
    values.push_back({"over 16 bits", 65536});
    values.push_back({"over 31 bits", 2147483648.0});
    values.push_back({"below -2^31", -2147483649.0});
    values.push_back({"over 63 bits", 9223372036854775808.0});
    values.push_back({"largest", Double::max()});
    values.push_back({"lowest", Double::lowest()});
    values.push_back({"smallest", Double::denorm_min()});
    values.push_back({"infinity", Double::infinity()});
    values.push_back({"-infinity", -Double::infinity()});
    values.push_back({"NaN", Double::quiet_NaN()});
}

void add_other_kinds(std::vector<HostileValue>& values, std::size_t deepest) {
    values.push_back({"NIL", {}});
    values.push_back({"true", true});
    values.push_back({"no date", host::Date{}});
    values.push_back({"last day", host::Date{std::numeric_limits<std::int32_t>::max()}});
    values.push_back({"day below 0", host::Date{std::numeric_limits<std::int32_t>::min()}});
    values.push_back({"empty array", array_of()});
    values.push_back({"array of NIL", array_of(Value(), Value(), Value(), Value())});
    values.push_back({"array of texts", array_of("NAME", "C", "10", "0")});
    values.push_back({"field of wrong kinds", array_of(array_of(1, 2, "C", Value()))});
    values.push_back({"field without end", array_of(array_of("NAME", "C", 1e300, -1e300))});
    values.push_back(
        {"pairs with a hole", array_of(array_of("@@A"), array_of(), array_of("@@B", array_of()))});
    values.push_back({"nested array", nested(8)});
    values.push_back({"array nested deep", nested(deepest)});
    values.push_back({"block", Value::block([](host::Args) { return array_of(Value(), "x"); })});
}

}  // namespace

std::vector<HostileValue> hostile_values(std::size_t longest, std::size_t deepest) {
    std::vector<HostileValue> values;
    add_texts(values, longest);
    add_numbers(values);
    add_other_kinds(values, deepest);
    return values;
}

}  // namespace zmfb::test
