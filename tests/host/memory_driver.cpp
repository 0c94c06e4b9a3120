#include "tests/host/memory_driver.h"

#include <algorithm>

namespace zmfb::host_test {
namespace {

using host::Field;
using host::Value;

class OpenTable final : public host::Table {
  public:
    OpenTable(MemoryDriver& driver, MemoryTable& table, std::string alias)
        : driver_(driver), table_(table), alias_(std::move(alias)) {}

    [[nodiscard]] std::span<const Field> fields() const override { return table_.fields; }
    std::int64_t record_count() override { return static_cast<std::int64_t>(table_.records.size()); }
    [[nodiscard]] std::int64_t record_number() const override { return record_; }
    [[nodiscard]] bool bof() const override { return false; }
    [[nodiscard]] bool eof() const override {
        return record_ > static_cast<std::int64_t>(table_.records.size());
    }
    bool go_top() override { return go_to(1); }
    bool go_to(std::int64_t record) override {
        record_ = std::clamp<std::int64_t>(record, 1, record_count() + 1);
        return true;
    }
    bool skip(std::int64_t count) override { return go_to(record_ + count); }
    bool deleted() override { return deleted_; }
    bool set_deleted(bool deleted) override {
        if (driver_.keeps_records) return false;
        if (deleted) driver_.asked.push_back("delete " + std::to_string(record_));
        deleted_ = deleted;
        return true;
    }
    Value get(std::size_t index) override { return eof() ? Value() : current()[index]; }
    bool put(std::size_t index, const Value& value) override {
        current()[index] = value;
        return true;
    }
    bool append() override {
        table_.records.emplace_back(table_.fields.size());
        return go_to(record_count());
    }
    bool commit() override { return true; }
    bool close() override {
        driver_.asked.push_back("close " + alias_);
        driver_.on_close(alias_);
        return true;
    }

  private:
    std::vector<Value>& current() { return table_.records[static_cast<std::size_t>(record_ - 1)]; }

    MemoryDriver& driver_;
    MemoryTable& table_;
    std::string alias_;
    std::int64_t record_ = 1;
    bool deleted_ = false;
};

}  // namespace

std::unique_ptr<host::Table> MemoryDriver::open(const host::OpenRequest& request) {
    asked.push_back("open " + std::string(request.file) + " as " + std::string(request.alias) +
                    (request.shared ? " shared" : " exclusive") + (request.readonly ? " readonly" : ""));
    const auto found = tables.find(request.file);
    if (found == tables.end()) return nullptr;
    on_open(request.alias);
    return std::make_unique<OpenTable>(*this, found->second, std::string(request.alias));
}

bool MemoryDriver::create(std::string_view file, std::span<const Field> structure) {
    tables[std::string(file)] = {{structure.begin(), structure.end()}, {}};
    return true;
}

}  // namespace zmfb::host_test
