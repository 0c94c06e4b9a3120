#include "tool/browse/lock_view.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tool/browse/lock_sightings.h"
#include "tool/browse/text_window.h"

namespace zmfb::tool::browse {
namespace {

using Clock = std::chrono::steady_clock;

void add_lines(const std::string& text, std::vector<std::string>& lines) {
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t end = std::min(text.find('\n', from), text.size());
        lines.push_back(" " + text.substr(from, end - from));
        from = end + 1;
    }
}

// The lines of the view.
class Listed {
  public:
    void read(zmFBConn& connection) {
        const std::vector<Lock> locks = locks_of(connection);
        const std::vector<Registration> opens = registrations_of(connection);
        sightings_.see(locks);
        lines_.clear();
        add(locks);
        lines_.emplace_back();
        add(opens);
        heading_ = fmt::format(" Locks {}   open tables {}   {}", locks.size(), opens.size(),
                               time_words(std::chrono::system_clock::now()));
    }
    [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
    [[nodiscard]] const std::string& heading() const { return heading_; }

  private:
    void add(const std::vector<Lock>& locks) {
        if (locks.empty()) lines_.emplace_back(" no locks");
        if (locks.empty()) return;
        auto columns = with_owner({{"table"}, {"lock"}, {"record", true}});
        columns.push_back({"seen since"});
        TextTable table(std::move(columns));
        for (const Lock& lock : locks) {
            auto cells = with_owner({lock.table, lock.record ? "record" : "table",
                                     lock.record ? std::to_string(*lock.record) : ""},
                                    lock.owner);
            cells.push_back(time_words(sightings_.see(lock)));
            table.add(std::move(cells));
        }
        add_lines(table.text(), lines_);
    }
    void add(const std::vector<Registration>& opens) {
        if (opens.empty()) lines_.emplace_back(" no tables are open");
        if (opens.empty()) return;
        TextTable table(with_owner(std::vector<TextTable::Column>{{"table"}, {"open"}}));
        for (const Registration& open : opens)
            table.add(with_owner({open.table, open.shared ? "shared" : "exclusive"}, open.owner));
        add_lines(table.text(), lines_);
    }

    LockSightings sightings_;
    std::vector<std::string> lines_;
    std::string heading_;
};

int moved(Key typed, int page) {
    switch (typed) {
        case Key::up:
            return -1;
        case Key::down:
            return 1;
        case Key::page_up:
            return -page;
        case Key::page_down:
            return page;
        default:
            return 0;
    }
}

}  // namespace

void show_locks(Screen& screen, zmFBConn& connection, std::chrono::seconds every) {
    every = std::max(every, std::chrono::seconds(1));
    Listed listed;
    Clock::time_point due = Clock::now();
    for (int top = 0;;) {
        if (Clock::now() >= due) {
            listed.read(connection);
            due = Clock::now() + every;
        }
        const int height = lines_shown(screen);
        top = std::clamp(top, 0, std::max(static_cast<int>(listed.lines().size()) - height, 0));
        draw_lines(screen, listed.heading(), listed.lines(), top, " Up Down PgUp PgDn   Esc back");
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - Clock::now());
        const Key typed = screen.read(std::max(left, std::chrono::milliseconds(0)));
        if (closes(typed)) return;
        top += moved(typed, height);
    }
}

}  // namespace zmfb::tool::browse
