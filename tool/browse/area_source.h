/// The records of a table, through a work area.
#pragma once

#include "tool/browse/source.h"
#include "zmfbconn/area.h"

namespace zmfb::tool::browse {

/// The order that moves follow; nothing for that of the record numbers. Throws SqlError.
std::optional<AreaOrder> order_of(Area& area);

/// Moves by keys: a record that others delete or add moves no other one.
class AreaSource final : public Source {
  public:
    /// Opens the table. Throws as Area does.
    AreaSource(zmFBConn& connection, const std::string& table, OpenMode mode);

    [[nodiscard]] const std::vector<ShownColumn>& columns() const override { return columns_; }
    void rows_at_a_time(std::size_t count) override;
    ShownRows first(std::size_t count) override;
    ShownRows last(std::size_t count) override;
    ShownRows behind(std::span<const ShownRow> known, std::size_t count) override;
    ShownRows before(std::span<const ShownRow> known, std::size_t count) override;
    ShownRows again(std::int64_t number, std::size_t count) override;
    bool leaves_in(std::int64_t number) override;
    std::optional<ShownRow> row(std::int64_t number) override;
    Cell whole(std::int64_t number, std::size_t column) override;
    std::optional<std::int64_t> count() override;
    std::int64_t place(std::int64_t number) override;
    void filter(const std::string& condition) override;
    [[nodiscard]] std::optional<Name> table() const override { return Name(area_.table()); }
    [[nodiscard]] Structure structure() const override { return structure_; }
    Area* area() override { return &area_; }

  private:
    bool stand_on(std::int64_t number);
    ShownRow current() const;
    ShownRows met(std::size_t count, int step);
    ShownRows forward(std::size_t count);
    ShownRows backward(std::size_t count);

    zmFBConn& connection_;
    Area area_;
    Structure structure_;
    bool is_filtered_ = false;
    std::vector<ShownColumn> columns_;
};

}  // namespace zmfb::tool::browse
