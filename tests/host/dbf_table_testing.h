/// What the tests of the native driver share.
#pragma once

#include <string>
#include <utility>

#include "errors.h"
#include "folder.h"
#include "host/workarea.h"
#include "values.h"

namespace zmfb::host_test {

/// A fixture with a folder for tables; at the end of a test none is open.
class DbfTest : public FolderTest {
  protected:
    ~DbfTest() override {
        const CaughtErrors whatever_closing_raises;
        while (host::used().logical() || host::dbselectarea("T") || host::dbselectarea("U"))
            host::dbclosearea();
    }

    /// Creates the table `name` and opens it under the alias T.
    host::Table& create(const host::Value& structure, std::string_view name = "t.dbf") {
        EXPECT_TRUE(is_same(host::dbcreate(path(name), structure, "DBFIDX"), true));
        host::Table* table = open(name);
        if (table == nullptr) throw std::runtime_error("the table did not open");
        return *table;
    }
    /// Opens a table for exclusive use in a new area and gives it, null when it did not open.
    host::Table* open(std::string_view name = "t.dbf", std::string_view alias = "T") {
        host::dbusearea(true, "DBFIDX", path(name), alias, false, false);
        return host::table_of(alias);
    }
    host::Table* open_shared(std::string_view name = "t.dbf", std::string_view alias = "T") {
        host::dbusearea(true, "DBFIDX", path(name), alias, true, false);
        return host::table_of(alias);
    }
    static void close(std::string_view alias = "T") { host::dbclosearea(alias); }

    /// Appends a record with these values.
    static bool add(host::Table& table, const host::Value& values) {
        if (!table.append()) return false;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!table.put(i, values[i + 1])) return false;
        }
        return true;
    }
    /// The number of records that the header of a file counts.
    static std::uint32_t counted(const std::string& file) {
        const std::string bytes = content(file).substr(4, 4);
        std::uint32_t count = 0;
        for (std::size_t i = 4; i > 0; --i) count = count << 8 | static_cast<unsigned char>(bytes[i - 1]);
        return count;
    }
};

inline host::Value field(std::string_view name, std::string_view type, int length, int decimals = 0) {
    return host::array_of(name, type, length, decimals);
}

}  // namespace zmfb::host_test
