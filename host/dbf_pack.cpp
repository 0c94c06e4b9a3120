// PACK and ZAP of a DBF file.
#include <algorithm>
#include <cerrno>

#include "dbf/layout.h"
#include "host/dbf_table.h"

namespace zmfb::host {

bool DbfTable::may_remove(std::string_view operation) {
    if (!may_write(operation)) return false;
    return !shared() || refuse(operation, GenCode::shared, Subcode::exclusive_use, "Exclusive use required");
}

// Makes the file end behind `count` records. The header counts no more than the file has at any moment.
int DbfTable::cut_to(std::int64_t count) {
    block_.clear();
    block_first_ = 1;
    count_ = count;
    if (const int error = write_header(); error != 0) return error;
    const std::int64_t end = position_of(count_ + 1);
    if (file_.write_at(end, {&dbf::end_of_file, 1}) != 1) return reason(ENOSPC);
    return file_.truncate(end + 1) && file_.sync() ? 0 : errno;
}

bool DbfTable::zap() {
    if (!may_remove("ZAP")) return false;
    changed_first_ = changed_last_ = 0;
    changed_ = false;
    return report(cut_to(0), GenCode::write, "ZAP") && go_to(1);
}

// The records that stay move up over those that go; broken off in the middle, some are there twice and none
// is missing.
int DbfTable::move_up(std::int64_t& kept) {
    std::vector<char> staying;
    for (std::int64_t first = 1; first <= count_; first += records_in_block_) {
        if (const int error = load_block(first); error != 0) return error;
        staying.clear();
        for (auto record = block_.begin(); record != block_.end();) {
            const auto next = record + static_cast<std::ptrdiff_t>(layout_.record_size);
            if (*record != dbf::record_deleted) staying.insert(staying.end(), record, next);
            record = next;
        }
        if (!staying.empty() &&
            file_.write_at(position_of(kept + 1), {staying.data(), staying.size()}) != staying.size())
            return reason(ENOSPC);
        kept += static_cast<std::int64_t>(staying.size() / layout_.record_size);
    }
    return 0;
}

bool DbfTable::pack() {
    if (!may_remove("PACK") || !commit()) return false;
    std::int64_t kept = 0;
    int error = move_up(kept);
    if (error == 0) error = cut_to(kept);
    return report(error, GenCode::write, "PACK") && go_to(1);
}

}  // namespace zmfb::host
