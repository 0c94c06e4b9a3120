#include "sql/parameter_block.h"

#include <algorithm>
#include <memory>

#include "sql/client.h"
#include "sql/new_types.h"
#include "zmfbconn/database.h"

namespace zmfb::sql {

namespace {

constexpr std::size_t item_limit = 255;

// The headers of 3.0 do not have it.
constexpr char set_bind_item = 93;
// A server of Firebird 3.0 ends itself over a longer one, and what the server is shows only later.
constexpr std::size_t server_user_limit = 31;

}  // namespace

const char* objection_to(std::string_view database, std::string_view user, std::string_view password,
                         std::string_view role) {
    for (const std::string_view text : {database, user, password, role}) {
        if (text.find('\0') != std::string_view::npos)
            return "The database name or a credential holds a zero byte";
    }
    if (user.size() > item_limit) return "The user name is longer than 255 bytes";
    if (user.size() > server_user_limit && names_a_server(database))
        return "The user name is longer than 31 characters, and a server of Firebird 3.0 would end over it";
    if (password.size() > item_limit) return "The password is longer than 255 bytes";
    if (role.size() > item_limit) return "The role name is longer than 255 bytes";
    return nullptr;
}

std::string name_without_blanks(std::string_view database) {
    const std::size_t first = std::min(database.find_first_not_of(' '), database.size());
    return std::string(database.substr(first, database.find_last_not_of(' ') - first + 1));
}

ParameterBlock::ParameterBlock(std::string_view user, std::string_view password, std::string_view role) {
    char* block = nullptr;
    short size = 0;
    client().expand_dpb(&block, &size, std::string(user).c_str(), std::string(password).c_str(),
                        std::string(role).c_str());
    const auto free = [](char* made) { client().free_block(made); };
    const std::unique_ptr<char, decltype(free)> owned(block);
    if (block != nullptr) bytes_.assign(block, static_cast<std::size_t>(size));
    bytes_ += set_bind_item;
    bytes_ += static_cast<char>(new_types_as_before.size());
    bytes_ += new_types_as_before;
}

}  // namespace zmfb::sql
