/// What tests of editing look at beside the screen.
#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <thread>

#include "tests/tool/browse/browser.h"
#include "zmfbconn/area.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {

/// Looks until it is so; throws after a minute.
inline void wait_until(const std::function<bool()>& is_so) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!is_so()) {
        if (std::chrono::steady_clock::now() > until) throw std::runtime_error("it did not come to that");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

/// Customers: CODE, NAME, CITY, CREDIT, SINCE; a column after another is reached with Right.
class Editing : public Browser {
  protected:
    [[nodiscard]] std::string stored(int record, const std::string& field) const {
        const auto found =
            rows("select " + field + " from CUSTOMERS where RECNO = " + std::to_string(record));
        return found.empty() ? "gone" : utf8_of(found[0][0]);
    }
    /// The numbers of the records that are locked.
    [[nodiscard]] std::string locked() const {
        std::string all;
        for (const auto& row : rows("select cast(RLK_RECNO as integer) from RDDSYS_RLK order by 1"))
            all += row[0] + " ";
        return all;
    }
    /// The process that has a table open as "browse".
    [[nodiscard]] pid_t browsing_process() const {
        for (const auto& row : rows("select OPN_AREAID from RDDSYS_OPN")) {
            if (const Holder holder(row[0]); holder.area == "browse") return std::stoi(holder.process);
        }
        throw std::runtime_error("nobody browses");
    }
    /// Has the server end the connection of the browser.
    void break_connection() const {
        const std::string its =
            " from mon$attachments where mon$remote_pid = " + std::to_string(browsing_process());
        execute("delete" + its);
        wait_until([&] { return rows("select count(*)" + its)[0][0] == "0"; });
    }
    /// Browses the customers, and has the cursor on a column of the first record.
    [[nodiscard]] std::unique_ptr<Tmux> at_column(const std::string& name, std::vector<std::string> more = {},
                                                  int columns = 80) const {
        more.insert(more.begin(), "customers");
        auto shown = browse(more, columns);
        shown->expect("record 1 ");
        for (int i = 0; i < 8 && shown->screen().find("   " + name + " ") == std::string::npos; ++i) {
            const std::string before = shown->screen();
            shown->press({"Right"});
            wait_until([&] { return shown->screen() != before; });
        }
        shown->expect("   " + name + " ");
        return shown;
    }

  private:
    // The database has ISO-8859-1.
    static std::string utf8_of(const std::string& bytes) {
        std::string text;
        for (const char byte : bytes) {
            const auto code = static_cast<unsigned char>(byte);
            if (code < 0x80) {
                text += byte;
            } else {
                text += {static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 0x3FU))};
            }
        }
        return text;
    }
};

}  // namespace zmfb::test
