/// A table in a DBF file.
#pragma once

#include <string>
#include <vector>

#include "host/dbf_format.h"
#include "host/dbf_locks.h"
#include "host/descriptor.h"
#include "host/driver.h"
#include "host/error.h"

namespace zmfb::host {

/// How a DBF file is opened.
enum class Access : std::uint8_t { exclusive, shared, read_only_exclusive, read_only_shared };

/// The range of a DBF file that a lock on its use is held over: all that a table can reach.
inline constexpr ByteRange dbf_use{0, std::int64_t{1} << 60};

/// An open DBF file.
///
/// Records are read and written in blocks; a file in shared use one record at a time. commit() and close()
/// finish in an order that never leaves a header counting records that the file does not have: records, 0x1A,
/// then, when these are on the disk, the header. When records cannot be written, all that were appended since
/// the last commit are taken back. In shared use a record is appended under a lock of the file's end and
/// counts at once; it is changed under its own.
class DbfTable final : public Table {
  public:
    DbfTable(Descriptor&& file, std::string_view path, DbfLayout&& layout, Access access);
    ~DbfTable() override;

    [[nodiscard]] std::span<const Field> fields() const override { return layout_.fields; }
    [[nodiscard]] std::int64_t record_count() override;
    [[nodiscard]] std::int64_t record_number() const override { return record_; }
    [[nodiscard]] bool bof() const override { return bof_; }
    [[nodiscard]] bool eof() const override { return at_end_; }

    bool go_top() override { return go_to(1); }
    bool go_to(std::int64_t record) override;
    bool skip(std::int64_t count) override;

    [[nodiscard]] bool deleted() override;
    bool set_deleted(bool deleted) override;
    [[nodiscard]] Value get(std::size_t index) override;
    bool put(std::size_t index, const Value& value) override;
    bool put_columns(std::size_t index, std::string_view columns) override;

    bool append() override;
    bool take_back() override;
    bool zap() override;
    bool pack() override;
    bool commit() override;

    bool lock_record(std::int64_t record, std::chrono::milliseconds wait) override;
    bool lock_table(std::chrono::milliseconds wait) override;
    bool unlock_record(std::int64_t record) override;
    bool unlock() override;
    [[nodiscard]] std::vector<std::int64_t> locked_records() override { return locks_.records(); }
    bool close() override;

  private:
    [[nodiscard]] bool shared() const {
        return access_ == Access::shared || access_ == Access::read_only_shared;
    }
    [[nodiscard]] bool read_only() const { return access_ >= Access::read_only_exclusive; }
    [[nodiscard]] std::int64_t position_of(std::int64_t record) const;
    [[nodiscard]] std::int64_t block_start(std::int64_t record) const;
    [[nodiscard]] std::int64_t behind_block() const;

    void refresh_count();
    char* record_bytes(std::int64_t record);
    std::span<char> field_bytes(std::size_t index);
    void mark_changed(std::int64_t record);
    bool report_encoding(Encoding encoding, std::size_t index);
    bool report(int system_error, GenCode gencode, std::string_view operation);
    bool refuse(std::string_view operation, GenCode gencode, Subcode subcode, std::string_view description);
    bool may_write(std::string_view operation);
    bool may_change(std::string_view operation);
    bool may_remove(std::string_view operation);

    int load_block(std::int64_t record);
    int write_block();
    int append_in_block();
    int append_shared();
    int write_header();
    int store();
    void roll_back();
    bool read_anew(std::string_view operation);
    int cut_to(std::int64_t count);
    int move_up(std::int64_t& kept);

    Descriptor file_;
    std::string path_;
    DbfLayout layout_;
    Access access_;
    std::int64_t records_in_block_;

    std::int64_t count_;      ///< records, those in memory only included
    std::int64_t committed_;  ///< records that the header counts
    std::int64_t record_ = 1;
    bool bof_;
    bool at_end_;
    bool changed_ = false;  ///< since the header was written

    // The block in memory: records block_first_ and following; those from changed_first_ to changed_last_ are
    // not in the file yet, none when changed_first_ is 0.
    std::vector<char> block_;
    std::int64_t block_first_ = 1;
    std::int64_t changed_first_ = 0;
    std::int64_t changed_last_ = 0;

    DbfLocks locks_;
};

}  // namespace zmfb::host
