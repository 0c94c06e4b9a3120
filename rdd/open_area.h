/// An open area: its table, where it stands, and what it has of it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rdd/claims.h"
#include "rdd/desk.h"
#include "rdd/edit.h"
#include "rdd/orders.h"
#include "rdd/walk.h"

namespace zmfb::rdd {

class OpenArea : public std::enable_shared_from_this<OpenArea> {
  public:
    using Wait = Area::Wait;

    /// Throws, and has taken back what it made.
    static std::shared_ptr<OpenArea> open(const zmFBConn& connection, std::string_view table,
                                          const AreaOptions& options);

    [[nodiscard]] Desk& desk() const { return *desk_; }
    [[nodiscard]] bool is_open() const { return walk_.has_value(); }
    /// @{
    /// Throws AreaError when it is closed.
    [[nodiscard]] Walk& walk();
    [[nodiscard]] Claims& claims();
    /// @}
    /// That it may be moved, since no guard has values to write.
    Walk& moving();
    [[nodiscard]] const std::string& table() const { return columns_->table(); }
    [[nodiscard]] const Columns& columns() const { return *columns_; }
    /// Its fields as programs of xBase know them, those of floating numbers with the type "F".
    [[nodiscard]] const Structure& structure();
    [[nodiscard]] std::vector<KeptOrder> orders();
    [[nodiscard]] const std::string& id() const { return claims_->id(); }
    /// What its program calls it.
    [[nodiscard]] const std::string& alias() const { return alias_; }
    /// What the connection knows it as.
    [[nodiscard]] const std::string& announced() const { return announced_; }

    [[nodiscard]] std::unique_ptr<Edit> lock(Wait wait);
    [[nodiscard]] std::unique_ptr<Edit> edit();
    [[nodiscard]] std::unique_ptr<Edit> append(Wait wait);
    void lock_record(std::int64_t recno, Wait wait);
    void unlock_record(std::int64_t recno);
    void lock_table(Wait wait);
    void unlock();
    [[nodiscard]] const std::set<std::int64_t>& by_number() const { return by_number_; }
    void zap();

    void close() noexcept;
    /// Gives back what it has of its table, after it was closed.
    void leave() noexcept;
    void change_transaction() noexcept;
    void joint_ended(bool committed) noexcept;

    void add(Edit& edit) { edits_.push_back(&edit); }
    void remove(Edit& edit) { std::erase(edits_, &edit); }
    /// A guard that goes gives its record back.
    void give_back(std::int64_t recno) noexcept { claims_->give_back(recno); }

  private:
    explicit OpenArea(std::shared_ptr<Desk> desk) : desk_(std::move(desk)) {}
    void check_writable() const;
    /// A guard of a record that is taken for it.
    std::unique_ptr<Edit> hold(std::int64_t recno, Wait wait);

    std::shared_ptr<Desk> desk_;
    std::optional<Walk> walk_;
    std::shared_ptr<const Columns> columns_;
    std::optional<Claims> claims_;
    Structure structure_;
    std::string alias_, announced_;
    std::set<std::int64_t> by_number_;
    std::vector<Edit*> edits_;
};

}  // namespace zmfb::rdd
