// Files of others, kept outside the sources: what came in beside what readers that are not ours find.
#include <filesystem>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/support/samples.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// Why a file may be refused. There is no table without columns, and of nothing there is less.
const std::map<std::string, std::string> refused{
    {"empty.dbf", "empty.dbf is empty"},
    {"polygon.dbf", "polygon.dbf has no fields"},
};

class ImportSamples : public Tool {
  protected:
    ImportSamples() : path(database()) {}
    void SetUp() override {
        if (samples(".dbf").empty()) GTEST_SKIP() << without_sample("DBF file");
    }
    // Imports all that the file has, with defaults for its bad values, into the table S.
    Finished import(const std::string& dbf) const {
        fs::remove(file("rejects.csv"));
        return on(path,
                  {"--json", "import", dbf, "--table", "s", "--replace", "--yes", "--on-bad-value", "default",
                   "--rejects", file("rejects.csv"), "--all-records", "--incomplete", "--mark-deleted"});
    }
    std::string query(const std::string& mode, const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", mode, text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
    // The table as JSON, bytes as hex digits.
    std::string rows() const {
        std::string columns;
        const std::vector<std::string> all = lines(
            query("csv",
                  "select trim(f.rdb$field_name), case when t.rdb$field_type = 261 and t.rdb$field_sub_type "
                  "= 0 then "
                  "'bytes' else '' end from rdb$relation_fields f join rdb$fields t on t.rdb$field_name = "
                  "f.rdb$field_source where f.rdb$relation_name = 'S' order by f.rdb$field_position"));
        for (std::size_t i = 1; i < all.size(); ++i) {
            const std::string name = all[i].substr(0, all[i].find(','));
            const bool bytes = all[i].find(",bytes") != std::string::npos;
            columns += (columns.empty() ? "" : ", ");
            columns += bytes ? "cast(substring(" + name +
                                   " from 1 for 10000) as varchar(10000) character set octets) " + name
                             : name;
        }
        return query("json", "select " + columns + " from s order by recno");
    }
    struct Found {
        bool same = true;
        std::string told = {};
        std::optional<std::string> rounded = {};  ///< how many numbers were, to make them the same
    };
    // The table beside what the first reader finds that does not refuse the file, or that finds the same.
    Found beside_others(const std::string& dbf) const {
        Found found{.told = "read by no other reader"};
        const std::string ours = write_file("rows.json", rows());
        for (const char* const reader : {"dbfread", "gdal"}) {
            const Finished compared = zmfb::test::run(
                {ZMFB_PYTHON, "-B", ZMFB_IMPORT_SAMPLES, reader, dbf, ours, file("rejects.csv")});
            if (compared.status == 0)
                return {.told = std::string("as ") + reader, .rounded = lines(compared.out).at(0)};
            if (compared.status == 1) found = {.same = false, .told = compared.out + compared.err};
        }
        return found;
    }
    std::string path;
};

TEST_F(ImportSamples, ComeInWithTheValuesThatOtherReadersFind) {
    for (const std::string& dbf : samples(".dbf")) {
        const std::string name = fs::path(dbf).filename().string();
        SCOPED_TRACE(name);
        const Finished run = import(dbf);
        if (const auto known = refused.find(name); known != refused.end()) {
            EXPECT_NE(run.err.find(known->second), std::string::npos) << run.err;
            continue;
        }
        ASSERT_EQ(run.status, 0) << run.err;
        const Found found = beside_others(dbf);
        std::cout << name << ": " << found.told << '\n';
        EXPECT_TRUE(found.same) << found.told;
        if (found.rounded) {
            EXPECT_EQ(*found.rounded, nlohmann::json::parse(run.out).at("rounded_numbers").dump());
        }
    }
}

// What the other readers leave out, as the bytes of the files show it.
TEST_F(ImportSamples, HaveTheValuesThatNoOtherReaderFinds) {
    const struct {
        const char *file, *columns, *values;
    } cases[] = {
        {"dBaseVII_double.dbf", "double_", "-199.99\r\n-74.62\r\n43.65\r\n150.48\r\n0\r\n"},
        {"test_memo.dbf", "field2", "How are you\r\nI'm fine\r\n"},
        {"go-dbase_TEST.DBF", "varbin_nil, var, blob_",
         "112233445566778899AA,\"\",\r\nAABBCC,\"\",\r\n\"\",Test,\r\n"},
    };
    for (const auto& one : cases) {
        const std::string dbf = sample(one.file);
        if (dbf.empty()) continue;
        ASSERT_EQ(import(dbf).status, 0);
        const std::string found =
            query("csv", std::string("select ") + one.columns + " from s order by recno");
        EXPECT_EQ(found.substr(found.find('\n') + 1), one.values) << one.file;
    }
}

}  // namespace
}  // namespace zmfb::test
