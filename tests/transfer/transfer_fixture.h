/// The fixture of the tests that bring DBF files in and out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/database.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/server_setup.h"
#include "tests/transfer/open_files.h"

namespace zmfb::test {

/// A database with an object attached whose data file lies in the test's folder.
class Transfer : public Database {
  protected:
    Transfer() { call("setfullpathdatfile", dat()); }

    [[nodiscard]] std::string dat() const { return file("data.dat"); }
    /// Where the DBF file called `name` is written.
    [[nodiscard]] std::string dbf(const std::string& name) const { return file(name + ".dbf"); }

    /// Writes a DBF file and imports it.
    bool bring(const std::string& name, const DbfBuilder& builder) {
        builder.write(dbf(name));
        return call("bringdbf", dbf(name)).logical();
    }

    /// Whether the database has a table or a trigger of that name.
    [[nodiscard]] bool has_table(const std::string& name) const {
        return has("rdb$relations where rdb$relation_name = '" + name + "'");
    }
    [[nodiscard]] bool has_trigger(const std::string& name) const {
        return has("rdb$triggers where rdb$trigger_name = '" + name + "'");
    }

    /// What was raised, without the "[FBCONN Error];" in front.
    std::vector<std::string> messages() {
        constexpr std::string_view prefix = "[FBCONN Error];";
        std::vector<std::string> texts;
        for (const std::string& description : raised()) {
            EXPECT_TRUE(description.starts_with(prefix)) << description;
            texts.push_back(description.substr(prefix.size()));
        }
        return texts;
    }

  private:
    [[nodiscard]] bool has(const std::string& source) const {
        return rows("select count(*) from " + source) != Rows{{"0"}};
    }
};

/// The same of rows that go through external tables: a run whose server allows none skips it.
class TransferOfRows : public Transfer {
  protected:
    void SetUp() override {
        if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    }
};

}  // namespace zmfb::test
