#include "tests/support/worker/ledger.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <bitset>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

namespace zmfb::test {

void Ledger::begin(const Change& change) const {
    write(fmt::format("begin {} {}\n", change.amount, change.records));
}

void Ledger::end(bool made) const { write(made ? "made\n" : "not\n"); }

void Ledger::write(const std::string& line) const {
    const int descriptor = ::open(file_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) throw std::runtime_error("no ledger " + file_);
    const bool written = ::write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(descriptor);
    if (!written) throw std::runtime_error("the ledger could not be written");
}

void add_ledger(const std::string& file, Account& account) {
    std::ifstream lines(file);
    std::optional<Change> open;
    for (std::string word; lines >> word;) {
        if (word == "begin") {
            open.emplace();
            lines >> open->amount >> open->records;
            continue;
        }
        if (word == "made" && open) {
            account.made.amount += open->amount;
            account.made.records += open->records;
            ++account.changes;
        }
        open.reset();
    }
    if (open) account.unfinished.push_back(*open);
}

// Which sums of amounts can be, for each number of records; a bit each, 0 in the middle.
bool accounts_for(const Account& account, const Change& seen) {
    constexpr std::int64_t middle = 1 << 17;
    using Sums = std::bitset<2 * middle>;
    std::int64_t furthest = 0;
    for (const Change& change : account.unfinished) furthest += std::abs(change.amount);
    const std::int64_t wanted = seen.amount - account.made.amount;
    if (furthest >= middle) throw std::length_error("too many changes are unfinished");
    if (std::abs(wanted) > furthest) return false;

    std::map<std::int64_t, Sums> reached;
    reached[0].set(middle);
    for (const Change& change : account.unfinished) {
        auto with = reached;
        for (const auto& [records, sums] : reached) {
            const auto places = static_cast<std::size_t>(std::abs(change.amount));
            with[records + change.records] |= change.amount < 0 ? sums >> places : sums << places;
        }
        reached = std::move(with);
    }
    const auto found = reached.find(seen.records - account.made.records);
    return found != reached.end() && found->second.test(static_cast<std::size_t>(middle + wanted));
}

}  // namespace zmfb::test
