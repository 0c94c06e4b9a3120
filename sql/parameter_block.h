/// What an attachment is asked for with: database name and credentials, and the client's parameter block of
/// them.
#pragma once

#include <string>
#include <string_view>

namespace zmfb::sql {

/// Why these cannot be handed to the client, or a null pointer: it takes texts that end at a zero byte, and
/// credentials of at most 255 bytes; a server gets user names of at most 31.
const char* objection_to(std::string_view database, std::string_view user, std::string_view password,
                         std::string_view role);

/// The database name as the client takes it: blanks around it do not count.
std::string name_without_blanks(std::string_view database);

/// A parameter block of user, password and role, which must have passed objection_to(); no character set. The
/// types of Firebird 4 come as those of before (sql/new_types.h); older engines pass that over.
class ParameterBlock {
  public:
    ParameterBlock(std::string_view user, std::string_view password, std::string_view role);

    [[nodiscard]] const char* data() const { return bytes_.data(); }
    [[nodiscard]] short size() const { return static_cast<short>(bytes_.size()); }
    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

}  // namespace zmfb::sql
