#include "tool/matrix/interrupted.h"

#include <set>
#include <utility>

namespace zmfb::tool {
namespace {

// An action with the line that names its table.
using Action = std::pair<std::string, std::string>;

std::vector<Action> grouped(const host::Value& log) {
    std::vector<Action> actions;
    std::string table;
    for (const host::Value& entry : log.items()) {
        std::string line = entry[1].string();
        if (line.starts_with('[')) {
            actions.emplace_back(table, std::move(line));
        } else {
            table = std::move(line);
        }
    }
    return actions;
}

std::vector<std::string> as_lines(const std::vector<Action>& actions) {
    std::vector<std::string> lines;
    std::string last_table;
    for (const auto& [table, action] : actions) {
        if (table != last_table) lines.push_back(table);
        lines.push_back(action);
        last_table = table;
    }
    return lines;
}

}  // namespace

std::vector<std::string> done_of(const host::Value& plan, const host::Value& rest) {
    const std::vector<Action> open = grouped(rest);
    const std::set<Action> still_open(open.begin(), open.end());
    std::vector<Action> done = grouped(plan);
    std::erase_if(done, [&](const Action& action) { return still_open.contains(action); });
    return as_lines(done);
}

std::vector<std::string> actions_of(const host::Value& log) { return as_lines(grouped(log)); }

}  // namespace zmfb::tool
