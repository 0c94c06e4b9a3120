/// The tables of a database, as rows.
#pragma once

#include "tool/browse/numbered_source.h"
#include "tool/catalog.h"

namespace zmfb::tool::browse {

class TableList final : public NumberedSource {
  public:
    explicit TableList(zmFBConn& connection);

    [[nodiscard]] const Table& table_at(std::int64_t number) const {
        return tables_[static_cast<std::size_t>(number - 1)];
    }
    Cell whole(std::int64_t number, std::size_t column) override { return cells(number)[column]; }
    [[nodiscard]] std::optional<std::int64_t> known_count() const override {
        return static_cast<std::int64_t>(tables_.size());
    }
    void read_anew() override;

  protected:
    bool has(std::int64_t number) override { return number <= last_number(); }
    std::int64_t last_number() override { return static_cast<std::int64_t>(tables_.size()); }
    std::vector<Cell> cells(std::int64_t number) override;

  private:
    zmFBConn& connection_;
    std::vector<Table> tables_;
};

}  // namespace zmfb::tool::browse
