/// Editing: of a cell in place, of a record as a form, and what adds and deletes records.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tool/browse/cell_input.h"
#include "tool/browse/changes.h"
#include "tool/browse/grid.h"
#include "tool/session.h"

namespace zmfb::tool::browse {

class Browse;

/// A record is locked before anything of it is changed, and read anew; leaving without writing gives it back
/// unchanged. What goes wrong is said on the screen, and what was typed stays to be mended.
class Editor {
  public:
    /// Of a source that has an area.
    Editor(Browse& browse, zmFBConn& connection, Source& source, Grid& grid, Watch& watch);

    /// The current cell.
    void edit();
    /// The current record as a form.
    void form();
    /// A new record, as a form.
    void append();
    /// Deletes the current record, after a question.
    void remove();
    /// Takes the last change back.
    void undo();

    /// @{
    /// For forms. The record, locked; waits for it when somebody has it and the user wants to, and gives none
    /// when not.
    std::optional<Held> hold(std::int64_t number, const std::function<void()>& over = {});
    /// Has a value typed until `commit` takes it, which is true, or it is given up. `place` draws what lies
    /// around it, and says where it stands.
    bool type(std::size_t column, const Cell& value, const std::function<Grid::Place()>& place,
              const std::function<bool(const CellInput&)>& commit);
    /// Why a column takes nothing that is typed; "" when it does.
    [[nodiscard]] std::string why_not(std::size_t column) const;
    /// A yes to a question.
    bool agrees(const std::string& question, const std::function<void()>& over = {});
    /// Tells what was typed for a column with the failure that ends it all.
    void add_unwritten(Failure& failure, std::size_t column, const Cell& text) const;
    Source& source() { return source_; }
    Changes& changes() { return changes_; }
    Browse& browse() { return browse_; }
    /// @}

  private:
    void draw(const CellInput& input, const Grid::Place& place);
    [[nodiscard]] std::string in_use(std::int64_t number, const Holder& holder);

    Browse& browse_;
    Source& source_;
    Grid& grid_;
    Watch& watch_;
    Area& area_;
    Changes changes_;
};

}  // namespace zmfb::tool::browse
