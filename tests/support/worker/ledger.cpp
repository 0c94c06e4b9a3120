#include "tests/support/worker/ledger.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <stdexcept>

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

bool accounts_for(const Account& account, const Change& seen) {
    const std::size_t ways = std::size_t{1} << account.unfinished.size();
    for (std::size_t way = 0; way < ways; ++way) {
        Change sum = account.made;
        for (std::size_t i = 0; i < account.unfinished.size(); ++i) {
            if ((way >> i & 1) == 0) continue;
            sum.amount += account.unfinished[i].amount;
            sum.records += account.unfinished[i].records;
        }
        if (sum == seen) return true;
    }
    return false;
}

}  // namespace zmfb::test
