/// A record that is being changed, or a new one.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "rdd/record.h"
#include "zmfbconn/area.h"

namespace zmfb::rdd {

class OpenArea;

/// It has a share in the lock of its record, which it gives back when it goes.
class Edit {
  public:
    /// Of a record that is locked for it.
    Edit(std::shared_ptr<OpenArea> area, std::int64_t recno);
    /// Of a new one, to be locked within a time.
    Edit(std::shared_ptr<OpenArea> area, Area::Wait wait);
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;
    ~Edit();

    [[nodiscard]] std::int64_t recno() const { return recno_; }
    [[nodiscard]] bool is_assigned() const { return record_ && record_->is_assigned(); }
    void take(Record record) { record_ = std::move(record); }
    /// Reads it when it was not read yet. Throws.
    Record& record();
    void write();
    void remove();
    [[noreturn]] void throw_gone() const;

  private:
    void update(Record& assigned);
    void insert(Record& assigned);
    [[nodiscard]] std::int64_t insert_in(Transaction& work, const Record& assigned);
    void check_locked() const;

    std::shared_ptr<OpenArea> area_;
    std::int64_t recno_ = 0;
    Area::Wait wait_ = Area::Wait::zero();
    std::optional<Record> record_;
};

}  // namespace zmfb::rdd
