/// The name of an object of the database, on its way into a statement or before a person.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// A name as the engine's own tables have it. Whoever may make an object may give it any name, one that is
/// SQL too, and methods put names into their statements as they are: they get plain ones only. What is not
/// plain goes into a statement through quoted(), or as a parameter, and is shown in quotes.
class Name {
  public:
    /// Blanks at the end are not part of a name.
    explicit Name(std::string_view bytes);

    /// As the engine has it: UTF-8 since names are checked, and whatever was written before that.
    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    /// Whether it is an upper-case identifier: without quotes it means the object of this name and no other,
    /// or, being a reserved word, none.
    [[nodiscard]] bool is_plain() const;
    /// In double quotes, for a statement.
    [[nodiscard]] std::string quoted() const;
    /// In UTF-8, as it is.
    [[nodiscard]] std::string text() const;
    /// In UTF-8, as a statement of a person has it: in double quotes unless it is plain.
    [[nodiscard]] std::string shown() const;

    bool operator==(const Name&) const = default;

  private:
    std::string bytes_;
};

/// @{
/// Whether a plain name may begin with that character, or have it in it.
bool begins_plain(char c);
bool is_plain(char c);
/// @}

/// The name that a person means (UTF-8): as it stands between double quotes, in upper case and without the
/// blanks around it otherwise.
Name typed_name(std::string_view typed);

/// Why a name that is not plain cannot be used, for people.
inline constexpr std::string_view plain_names_only = "the driver knows only names of A to Z, digits, _ and $";

bool all_plain(const std::vector<Name>& names);
/// Names as a person reads them: "A, B".
std::string joined(const std::vector<Name>& names);

/// A text (UTF-8) quoted so that a shell takes it as it is for one word, and a terminal gets no controls.
std::string shell_word(std::string_view text);
/// The command line that runs a statement (UTF-8).
std::string exec_command_line(std::string_view statement);

}  // namespace zmfb::tool
