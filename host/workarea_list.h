/// The open work areas.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/driver.h"
#include "host/value.h"

namespace zmfb::host {

/// A table that is open in a work area. Who holds one while a block is evaluated looks at `table` afterwards:
/// it is null once the area has been closed.
struct WorkArea {
    std::string alias;
    std::string rddname;
    std::shared_ptr<Driver> driver;  // outlives its table
    std::unique_ptr<Table> table;
    Value filter;           ///< a block, NIL when there is none
    std::string condition;  ///< of the filter, as it was given
    Value located;          ///< what the last LOCATE looked for
    bool found = false;     ///< FOUND()
    bool before_first =
        false;  ///< whether a skip went to before the first record that the filter lets through
};

/// The current area, null when no table is open in it.
std::shared_ptr<WorkArea> current_workarea();
/// The same; null is raised as an error of `operation`.
std::shared_ptr<WorkArea> needed_workarea(std::string_view operation);
/// An alias, or the name of a field, order or driver, as it is compared: upper case, without outer blanks; ""
/// for what is no text.
std::string name_key(const Value& name);
/// Whether a condition of a program lets the current record through: a block that gives .T., and anything
/// that is no block. A block may close the area.
bool allows(const Value& condition);
/// Whether the block of the area's filter does.
bool passes(WorkArea& area);
/// From the current record on to one that passes, else to the end.
void on_to_passing(WorkArea& area);
/// What a switch of SET() says, .T., .F., "ON" or "OFF"; `otherwise` for any other value.
bool switched_on(const Value& setting, bool otherwise);
/// Does it with each open area, in the order of their numbers.
void for_each_workarea(const std::function<void(WorkArea&)>& action);

}  // namespace zmfb::host
