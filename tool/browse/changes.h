/// The changes that were made on the screen, each of which is one committed statement, and taking them back.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tool/browse/cell_rule.h"
#include "zmfbconn/area.h"

namespace zmfb::tool::browse {

/// What the columns of an area's table take. A computed one takes nothing.
struct TableRules {
    /// `structure` is what the driver knows the columns as.
    TableRules(zmFBConn& connection, const Area& area, const Structure& structure);

    std::vector<CellRule> columns;
    std::vector<bool> computed;
    /// Whether the area reads all columns, so that a record can be made again from what is read of it.
    bool is_whole;
};

/// Values for fields, by their places.
using NewValues = std::map<std::size_t, CellValue>;

/// Everything here throws what Area and Held throw, and nothing is changed then.
class Changes {
  public:
    Changes(Area& area, TableRules rules) : area_(area), rules_(std::move(rules)) {}

    [[nodiscard]] const TableRules& rules() const { return rules_; }
    /// Writes a record that is held. Thrown or not, it is held afterwards, with nothing assigned to it.
    void update(Held& held, const NewValues& values);
    /// Adds a record; fields without a value get their defaults. Returns its number.
    std::int64_t append(const NewValues& values);
    /// Deletes a record that is held.
    void remove(Held& held);

    struct Undone {
        std::string words;        ///< what was done
        std::int64_t number = 0;  ///< of the record, 0 when it was deleted
    };
    /// Takes the last change back, of those that were not taken back. Throws Failure when there is none, and
    /// when others have touched the record since: that change is left as it is, and the one before it is the
    /// last then.
    Undone undo();

  private:
    enum class Kind : std::uint8_t { update, append, remove };
    using Values = std::vector<CellValue>;
    struct Change {
        Kind kind;
        std::int64_t number;
        Values before;  ///< none of one that was added
        Values after;   ///< none of one that was deleted
    };

    void note(Change change);
    [[nodiscard]] Values current() const;
    [[nodiscard]] Held untouched(const Change& change);
    Undone undo_update(const Change& change);
    Undone undo_append(const Change& change);
    Undone undo_remove(const Change& change);
    void forget_last();

    Area& area_;
    TableRules rules_;
    std::vector<Change> changes_;
};

}  // namespace zmfb::tool::browse
