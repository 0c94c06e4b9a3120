#include <algorithm>
#include <random>

#include "rdd/claims.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

namespace {

constexpr std::size_t longest = 50;

// What would be read as the end of a part, or of a text in a statement.
std::string plain(std::string_view name) {
    std::string text(name);
    std::ranges::replace_if(
        text, [](char c) { return c <= ' ' || c > '~' || c == ':' || c == '\''; }, '_');
    return text;
}

}  // namespace

std::string make_unique(std::string_view alias) {
    constexpr std::string_view letters = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::random_device numbers;
    std::uniform_int_distribution<std::size_t> one(0, letters.size() - 1);
    std::string name = plain(alias) + '~';
    for (std::size_t i = 0; i < random_letters; ++i) name += letters[one(numbers)];
    return name;
}

std::string make_area_id(zmFBConn connection, std::string_view table, std::string_view unique_alias) {
    const std::string unique(unique_alias.substr(unique_alias.rfind('~')));
    std::string alias(unique_alias.substr(0, unique_alias.size() - unique.size()));
    std::string name = plain(table);
    const std::size_t fixed =
        std::to_string(connection(m::getpid)).size() + connection(m::gethostname).size() + 3;
    const std::size_t used = fixed + unique.size();
    const std::size_t room = std::max(longest, used + 1) - used;
    name.resize(std::min(name.size(), room));
    alias.resize(std::min(alias.size(), room - name.size()));
    return connection(m::getuniqueareaid, name, alias + unique).text();
}

}  // namespace zmfb::rdd
