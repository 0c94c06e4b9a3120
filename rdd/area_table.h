/// An area as the runtime has it: a table in a work area.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/driver.h"
#include "host/error.h"
#include "zmfbconn/area.h"
#include "zmfbconn/connection.h"

namespace zmfb::rdd {

/// A field as the runtime knows it, and where the area has it.
struct TableField {
    host::Field field;
    std::size_t index;
    bool is_real;  ///< a number without a fixed number of decimals
};

/// Opens a table of the object for a work area. Throws what Area throws.
std::unique_ptr<host::Table> open_table(host::Object& object, const host::OpenRequest& request);

/// The texts are those of the database, unconverted. What was assigned is kept in a guard until the next
/// move, commit or unlock.
class AreaTable final : public host::Table {
  public:
    AreaTable(host::Object& object, Area&& area, OpenMode mode);
    ~AreaTable() override;

    [[nodiscard]] std::span<const host::Field> fields() const override { return fields_; }
    [[nodiscard]] std::int64_t record_count() override;
    [[nodiscard]] std::int64_t last_record() override;
    [[nodiscard]] std::int64_t record_number() const override;
    [[nodiscard]] bool bof() const override;
    /// Also when the object has gone, or closed the area without the runtime.
    [[nodiscard]] bool eof() const override { return !area_.is_open() || area_.eof(); }

    bool go_top() override;
    bool go_bottom() override;
    bool go_to(std::int64_t record) override;
    bool skip(std::int64_t count) override;
    [[nodiscard]] bool takes_conditions() const override { return true; }
    bool set_filter(std::string_view condition) override;

    [[nodiscard]] bool deleted() override { return removed_; }
    bool set_deleted(bool deleted) override;
    [[nodiscard]] host::Value get(std::size_t index) override;
    bool put(std::size_t index, const host::Value& value) override;
    bool append() override;
    bool zap() override;
    bool pack() override;
    bool commit() override { return write("DBCOMMIT"); }
    bool close() override;

    bool lock_record(std::int64_t record, std::chrono::milliseconds wait) override;
    bool lock_table(std::chrono::milliseconds wait) override;
    bool unlock_record(std::int64_t record) override;
    bool unlock() override;
    [[nodiscard]] std::vector<std::int64_t> locked_records() override;

    [[nodiscard]] std::vector<host::TableOrder> orders() override;
    [[nodiscard]] std::size_t order() const override;
    bool set_order(std::size_t order) override;
    bool create_order(std::string_view name, std::string_view expression, bool unique) override;
    bool destroy_order(std::size_t order) override;
    bool rebuild_orders() override;
    bool seek(const host::Value& key, host::SeekOptions options) override;
    [[nodiscard]] bool has_key(const host::Value& key) override;
    [[nodiscard]] std::int64_t key_number() override;

  private:
    [[nodiscard]] zmFBConn connection() const { return zmFBConn::of(Value(&object_)); }
    /// Writes what was assigned, which is forgotten then, and does it, unless one of the two is raised.
    bool move(std::string_view operation, const std::function<void()>& action);
    bool write(std::string_view operation);
    bool edit(std::string_view operation);
    bool refuse(std::string_view operation, host::GenCode gencode, host::Subcode subcode,
                std::string_view description);
    [[nodiscard]] bool exists(std::int64_t record) const;
    /// Whether a lock is granted without asking anybody: the table is had already.
    [[nodiscard]] bool has_table() const { return mode_ == OpenMode::exclusive || area_.is_table_locked(); }
    bool may_write(std::string_view operation);
    bool may_remove(std::string_view operation);
    void note_end();
    void ask_for_orders();

    host::Object& object_;
    Area area_;
    OpenMode mode_;
    std::string table_;
    std::vector<TableField> columns_;
    std::vector<host::Field> fields_;
    std::vector<host::TableOrder> orders_;  ///< as they were last asked for
    std::optional<Held> held_;
    bool removed_ = false;  ///< the current record, by set_deleted()
    std::int64_t end_ = 1;  ///< the record number at the end
};

}  // namespace zmfb::rdd
