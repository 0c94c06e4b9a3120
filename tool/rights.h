/// The rights that users need, on their tables and on what the driver uses itself.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/catalog.h"

namespace zmfb::tool {

/// What a user is to do; each includes the one before.
enum class Level {
    read,   ///< tables
    write,  ///< them, and locks and registrations
    make,   ///< new tables, by importing too
    admin,  ///< change and drop tables of others
};

inline constexpr std::array<std::string_view, 4> level_names{"read", "write", "make", "admin"};

/// One of the engine's rights, as GRANT names it.
struct Right {
    std::string_view privileges;   ///< "SELECT, INSERT"
    std::string_view object_kind;  ///< "TABLE"; "" for a right on no object
    Name object;
    std::string_view grantee_kind;  ///< "USER"
    Name grantee;

    /// "SELECT, INSERT on TABLE CUSTOMERS to USER ANNA".
    [[nodiscard]] std::string text() const;
    /// The statement that gives it.
    [[nodiscard]] std::string statement() const;
};

/// All that a user needs for the tables, of any kind, at this level. Functions are given to everybody, and
/// the generators and registrations that triggers use are given to the triggers.
std::vector<Right> rights_for(Level level, const Name& user, const std::vector<Table>& tables);

}  // namespace zmfb::tool
