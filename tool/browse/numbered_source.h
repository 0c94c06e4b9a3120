/// Rows that are only read and have a place each, counted from 1.
#pragma once

#include "tool/browse/source.h"

namespace zmfb::tool::browse {

class NumberedSource : public Source {
  public:
    [[nodiscard]] const std::vector<ShownColumn>& columns() const override { return columns_; }
    ShownRows first(std::size_t count) override;
    ShownRows last(std::size_t count) override;
    ShownRows behind(std::span<const ShownRow> known, std::size_t count) override;
    ShownRows before(std::span<const ShownRow> known, std::size_t count) override;
    std::optional<ShownRow> row(std::int64_t number) override;
    std::optional<std::int64_t> count() override { return known_count(); }
    std::int64_t place(std::int64_t number) override { return number; }

  protected:
    /// Whether there is a row of that number, 1 at least.
    virtual bool has(std::int64_t number) = 0;
    /// That of the last one, 0 when there is none.
    virtual std::int64_t last_number() = 0;
    virtual std::vector<Cell> cells(std::int64_t number) = 0;

    std::vector<ShownColumn> columns_;

  private:
    ShownRows from(std::int64_t number, std::size_t count);
};

}  // namespace zmfb::tool::browse
