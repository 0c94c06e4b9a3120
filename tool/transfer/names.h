/// The names that tables and columns get in the database, where those of a file cannot be.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// Index, triggers and generators are named after a table: T_RECNO_DESC.
inline constexpr std::size_t longest_table = 20;

/// A name that could not stay, and why: "is a reserved word".
struct NameChange {
    std::string from, to, why;

    bool operator==(const NameChange&) const = default;
};

/// The name that a person wants for a field, by the name that it has in the file, both in upper case.
using Renames = std::map<std::string, std::string>;

/// A name (UTF-8) in upper case, in the bytes of the object where they have its characters.
std::string upper_bytes(const std::string& name);

/// Letters of A to Z, digits, _ and $, with a letter at the front: everything else in `name` becomes _, and
/// `prefix` goes before a first character that is no letter.
std::string plain_form(std::string_view name, std::string_view prefix);

/// Those of the names that an engine of a later version than the one asked reserves.
std::set<std::string> reserved_later(const std::vector<std::string>& names);

/// What the fields of a table are called in the file, upper case, and will be in the database.
class FieldNames {
  public:
    FieldNames(std::vector<std::string> names, const Renames& renames);
    /// The names to ask the engine about: which of them it reserves.
    [[nodiscard]] const std::vector<std::string>& wanted() const { return wanted_; }
    /// Settles the names: reserved ones get _ behind, those of the driver's own F_ before, repeated ones _2,
    /// _3 and so on. A name that can stay is kept from those that cannot. `longest` is that of the engine.
    void settle(const std::set<std::string>& reserved, std::size_t longest);

    [[nodiscard]] const std::vector<std::string>& names() const { return names_; }
    [[nodiscard]] const std::vector<NameChange>& changes() const { return changes_; }

  private:
    std::vector<std::string> from_, wanted_, names_;
    std::vector<std::string> why_;
    std::vector<NameChange> changes_;
};

/// A table's name, upper case, brought to what can be: like a field's, with T_ before, and cut to 20
/// characters and away from the names in `taken`, which it is added to. `change` says what became of it, if
/// anything.
std::string table_name(const std::string& name, bool reserved, std::set<std::string>& taken,
                       NameChange& change);

}  // namespace zmfb::tool
