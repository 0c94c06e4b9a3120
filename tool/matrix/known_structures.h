/// All that a matrix asks of its tables, asked at once.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// What the engine's tables said of tables when this was made. One lives at a time.
class KnownStructures {
  public:
    /// Of these tables at least. Throws Failure.
    KnownStructures(zmFBConn& connection, std::span<const Name> tables);
    KnownStructures(const KnownStructures&) = delete;
    KnownStructures& operator=(const KnownStructures&) = delete;
    ~KnownStructures();

    /// Whether methods can name the table and all its columns.
    [[nodiscard]] bool is_nameable(const Name& table) const;
    /// An object of the same attachment whose methods ask this instead of the engine. It may look at
    /// structures and is not to change them. Goes before the other object.
    zmFBConn& object() { return object_; }

    struct Column {
        std::string name;
        std::optional<int> type, length, scale, precision;
        std::optional<std::string> description;
    };
    struct Table {
        std::optional<std::string> description;
        std::vector<Column> columns;  ///< in their order
    };
    /// What is known of a table, named as a method is given it; nullptr when there is none.
    [[nodiscard]] const Table* find(const Value& name) const;

  private:
    template <class... Values>
    void read(zmFBConn& connection, std::string_view condition, const Values&... values);

    std::map<std::string, Table, std::less<>> tables_;
    zmFBConn object_;
};

}  // namespace zmfb::tool
