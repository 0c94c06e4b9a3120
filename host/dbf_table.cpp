#include "host/dbf_table.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "dbf/layout.h"
#include "host/table_error.h"
#include "host/workarea.h"

namespace zmfb::host {
namespace {

constexpr std::int64_t block_size = std::int64_t{256} * 1024;
constexpr ByteRange append_lock{dbf_use.size, 1};

}  // namespace

DbfTable::DbfTable(Descriptor&& file, std::string_view path, DbfLayout&& layout, Access access)
    : file_(std::move(file)),
      path_(path),
      layout_(std::move(layout)),
      access_(access),
      records_in_block_(1),
      count_(layout_.records),
      committed_(layout_.records),
      bof_(count_ == 0),
      at_end_(bof_) {
    if (!shared()) {
        records_in_block_ =
            std::max<std::int64_t>(1, block_size / static_cast<std::int64_t>(layout_.record_size));
    }
}

DbfTable::~DbfTable() {
    if (file_.is_open() && store() != 0) roll_back();
}

std::int64_t DbfTable::position_of(std::int64_t record) const {
    return static_cast<std::int64_t>(layout_.header_size) +
           (record - 1) * static_cast<std::int64_t>(layout_.record_size);
}

std::int64_t DbfTable::block_start(std::int64_t record) const {
    return (record - 1) / records_in_block_ * records_in_block_ + 1;
}

std::int64_t DbfTable::behind_block() const {
    return block_first_ + static_cast<std::int64_t>(block_.size() / layout_.record_size);
}

bool DbfTable::report(int system_error, GenCode gencode, std::string_view operation) {
    if (system_error == 0) return true;
    const bool reading = gencode == GenCode::read;
    raise_table_error({.gencode = gencode,
                       .subcode = reading ? Subcode::table_read : Subcode::table_write,
                       .description = reading ? "Read error" : "Write error",
                       .operation = operation,
                       .file = path_,
                       .oscode = reading ? dos_error(system_error) : dos_write_error(system_error)});
    return false;
}

bool DbfTable::refuse(std::string_view operation, GenCode gencode, Subcode subcode,
                      std::string_view description) {
    raise_table_error({.gencode = gencode,
                       .subcode = subcode,
                       .description = description,
                       .operation = operation,
                       .file = path_});
    return false;
}

bool DbfTable::may_write(std::string_view operation) {
    return !read_only() ||
           refuse(operation, GenCode::read_only, Subcode::table_read_only, "Table opened for reading only");
}

// Whether the current record may be changed; false, and nothing raised, at the end.
bool DbfTable::may_change(std::string_view operation) {
    if (!may_write(operation) || eof()) return false;
    return !shared() || locks_.hold(record_) ||
           refuse(operation, GenCode::unlocked, Subcode::record_unlocked, "Record not locked");
}

// ---- The block in memory
// -------------------------------------------------------------------------------------------

int DbfTable::load_block(std::int64_t record) {
    if (const int error = write_block(); error != 0) return error;
    block_first_ = block_start(record);
    const std::int64_t records = std::min(records_in_block_, count_ - block_first_ + 1);
    block_.resize(static_cast<std::size_t>(records) * layout_.record_size);
    const std::size_t read = file_.read_at(position_of(block_first_), block_);
    const int error = reason(EIO);
    block_.resize(read / layout_.record_size * layout_.record_size);
    return record < behind_block() ? 0 : error;
}

// The bytes of a record, null (raised) when they cannot be read.
char* DbfTable::record_bytes(std::int64_t record) {
    if (record < block_first_ || record >= behind_block()) {
        const bool writes = changed_first_ != 0;
        if (const int error = load_block(record); error != 0) {
            report(error, writes ? GenCode::write : GenCode::read, "DBSKIP");
            return nullptr;
        }
    }
    return block_.data() + static_cast<std::size_t>(record - block_first_) * layout_.record_size;
}

std::span<char> DbfTable::field_bytes(std::size_t index) {
    char* const bytes = record_bytes(record_);
    if (bytes == nullptr) return {};
    return {bytes + layout_.offsets[index], static_cast<std::size_t>(layout_.fields[index].length)};
}

void DbfTable::mark_changed(std::int64_t record) {
    changed_first_ = changed_first_ == 0 ? record : std::min(changed_first_, record);
    changed_last_ = std::max(changed_last_, record);
    changed_ = true;
}

int DbfTable::write_block() {
    if (changed_first_ == 0) return 0;
    const auto first = static_cast<std::size_t>(changed_first_ - block_first_) * layout_.record_size;
    const auto size = static_cast<std::size_t>(changed_last_ - changed_first_ + 1) * layout_.record_size;
    const std::string_view bytes(block_.data() + first, size);
    if (file_.write_at(position_of(changed_first_), bytes) != size) {
        const int error = reason(ENOSPC);
        roll_back();
        return error;
    }
    changed_first_ = changed_last_ = 0;
    return 0;
}

// Forgets what could not be written, and the records that the header does not count.
void DbfTable::roll_back() {
    changed_first_ = changed_last_ = 0;
    block_.clear();
    block_first_ = 1;
    if (shared() || count_ == committed_) return;
    count_ = committed_;
    record_ = count_ + 1;
    at_end_ = true;
    // Nothing more can be done should this fail: the header is right, and the file only longer than it needs
    // to be.
    if (file_.truncate(position_of(count_ + 1))) {
        file_.write_at(position_of(count_ + 1), {&dbf::end_of_file, 1});
    }
}

// ---- Records
// -------------------------------------------------------------------------------------------------------

// In shared use others append: asks the file how many records there are.
void DbfTable::refresh_count() {
    char beginning[dbf::sizes_size];
    if (!shared() || file_.read_at(0, beginning) != sizeof beginning) return;
    const std::int64_t room =
        (file_.size() - position_of(1)) / static_cast<std::int64_t>(layout_.record_size);
    count_ = std::min<std::int64_t>(dbf::read_sizes({beginning, sizeof beginning}).records, room);
    committed_ = count_;
}

std::int64_t DbfTable::record_count() {
    refresh_count();
    return count_;
}

bool DbfTable::go_to(std::int64_t record) {
    if (shared()) {
        if (!report(write_block(), GenCode::write, "DBGOTO")) return false;
        block_.clear();
        refresh_count();
    }
    bof_ = count_ == 0;
    at_end_ = record < 1 || record > count_;
    record_ = at_end_ ? count_ + 1 : record;
    return true;
}

bool DbfTable::skip(std::int64_t count) {
    if (at_end_) {
        const bool counted = go_to(0);  // others may have appended since
        if (!counted || count >= 0) return counted;
    }
    const std::int64_t farthest = std::numeric_limits<std::int64_t>::max() - record_;
    const std::int64_t target = record_ + std::min(count, farthest);
    if (target >= 1) return go_to(target);
    if (!go_to(1)) return false;
    bof_ = true;
    return true;
}

bool DbfTable::deleted() {
    if (eof()) return false;
    const char* const bytes = record_bytes(record_);
    return bytes != nullptr && *bytes == dbf::record_deleted;
}

bool DbfTable::set_deleted(bool deleted) {
    if (!may_change(deleted ? "DBDELETE" : "DBRECALL")) return false;
    char* const bytes = record_bytes(record_);
    if (bytes == nullptr) return false;
    *bytes = deleted ? dbf::record_deleted : dbf::record_in_use;
    mark_changed(record_);
    return true;
}

// ---- Fields
// --------------------------------------------------------------------------------------------------------

Value DbfTable::get(std::size_t index) {
    if (index >= layout_.fields.size()) return {};
    const Field& field = layout_.fields[index];
    if (eof()) return empty_field(field);
    const std::span<char> bytes = field_bytes(index);
    return bytes.empty() ? empty_field(field) : decode_field(field, {bytes.data(), bytes.size()});
}

bool DbfTable::report_encoding(Encoding encoding, std::size_t index) {
    if (encoding == Encoding::stored) {
        mark_changed(record_);
        return true;
    }
    const bool too_wide = encoding == Encoding::too_wide;
    const std::string description = (too_wide ? "Number too wide for field " : "Wrong data type for field ") +
                                    layout_.fields[index].name + ", record " + std::to_string(record_);
    raise_table_error({.gencode = too_wide ? GenCode::data_width : GenCode::data_type,
                       .subcode = too_wide ? Subcode::data_width : Subcode::data_type,
                       .description = description,
                       .operation = "FIELDPUT",
                       .file = path_});
    return false;
}

bool DbfTable::put(std::size_t index, const Value& value) {
    if (index >= layout_.fields.size() || !may_change("FIELDPUT")) return false;
    const std::span<char> bytes = field_bytes(index);
    return !bytes.empty() && report_encoding(encode_field(layout_.fields[index], value, bytes), index);
}

bool DbfTable::put_columns(std::size_t index, std::string_view columns) {
    if (index >= layout_.fields.size() || !may_change("FIELDPUT")) return false;
    const std::span<char> bytes = field_bytes(index);
    return !bytes.empty() && report_encoding(encode_columns(layout_.fields[index], columns, bytes), index);
}

// ---- Appending and finishing
// ---------------------------------------------------------------------------------------

bool DbfTable::append() {
    if (!may_write("DBAPPEND")) return false;
    const int error = shared() ? append_shared() : append_in_block();
    if (shared() && error == EAGAIN) {
        neterr(true);
        raise_table_error({.gencode = GenCode::append_lock,
                           .subcode = Subcode::append_lock,
                           .description = "Append lock failed",
                           .operation = "DBAPPEND",
                           .file = path_,
                           .candefault = true});
        return false;
    }
    if (!report(error, GenCode::write, "DBAPPEND")) return false;
    record_ = count_;
    bof_ = at_end_ = false;
    return true;
}

int DbfTable::append_in_block() {
    const std::int64_t record = count_ + 1;
    if (record > std::numeric_limits<std::uint32_t>::max()) return EFBIG;
    if (record != behind_block() || block_start(record) != block_first_) {
        const bool begins_block = block_start(record) == record;
        const int error = begins_block ? write_block() : load_block(record - 1);
        if (error != 0) return error;
        if (begins_block) {
            block_.clear();
            block_first_ = record;
        }
    }
    block_.insert(block_.end(), layout_.record_size, ' ');
    count_ = record;
    mark_changed(record);
    return 0;
}

// The record, the 0x1A behind it and the new number of records reach the file while no other use appends;
// EAGAIN when another use has the table locked.
int DbfTable::append_shared() {
    if (const int error = write_block(); error != 0) return error;
    if (!file_.lock(Lock::exclusive, append_lock, true)) return errno;
    refresh_count();
    const std::int64_t record = count_ + 1;
    int error = record > std::numeric_limits<std::uint32_t>::max() ? EFBIG : 0;
    if (error == 0 && !locks_.lock_record(file_, record, {})) error = errno;
    if (error == 0) {
        block_.assign(layout_.record_size, ' ');
        block_.push_back(dbf::end_of_file);
        count_ = record;
        if (file_.write_at(position_of(record), {block_.data(), block_.size()}) != block_.size())
            error = reason(ENOSPC);
        if (error == 0) error = write_header();
        if (error != 0) {
            count_ = record - 1;
            if (file_.truncate(position_of(record)))
                file_.write_at(position_of(record), {&dbf::end_of_file, 1});
            locks_.unlock_record(file_, record);
        }
        block_.resize(error == 0 ? layout_.record_size : 0);
        block_first_ = record;
    }
    file_.lock(Lock::none, append_lock);
    return error;
}

bool DbfTable::take_back() {
    const bool in_memory_only = !shared() && count_ > committed_ && record_ == count_ &&
                                record_ >= block_first_ && behind_block() == record_ + 1;
    if (!in_memory_only) return set_deleted(true);
    block_.resize(block_.size() - layout_.record_size);
    --count_;
    at_end_ = true;
    if (changed_last_ > count_) changed_last_ = count_;
    if (changed_first_ > count_) changed_first_ = changed_last_ = 0;
    return true;
}

int DbfTable::write_header() {
    const std::string change = dbf_change(static_cast<std::uint32_t>(count_));
    if (file_.write_at(dbf_change_position, change) != change.size()) return reason(ENOSPC);
    committed_ = count_;
    return 0;
}

// Brings the file up to date; 0, or the system's error.
int DbfTable::store() {
    if (!changed_) return 0;
    const bool appended = count_ != committed_;
    if (const int error = write_block(); error != 0) return error;
    if (!shared() && appended) {
        const std::int64_t end = position_of(count_ + 1);
        if (file_.write_at(end, {&dbf::end_of_file, 1}) != 1) return reason(ENOSPC);
        if (!file_.truncate(end + 1) || !file_.sync()) return errno;
    }
    if (!shared()) {
        if (const int error = write_header(); error != 0) return error;
    } else if (!file_.sync()) {
        return errno;
    }
    changed_ = false;
    return 0;
}

bool DbfTable::commit() {
    const int error = store();
    if (error != 0) roll_back();
    return report(error, GenCode::write, "DBCOMMIT");
}

bool DbfTable::close() {
    if (!file_.is_open()) return true;
    int error = store();
    if (error != 0) roll_back();
    if (!file_.close() && error == 0) error = errno;
    return report(error, GenCode::close, "DBCLOSEAREA");
}

}  // namespace zmfb::host
