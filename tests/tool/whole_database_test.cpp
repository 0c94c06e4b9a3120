// A whole database out into files, and into another one. ZMFB_ROWS is how many rows it has, 5,000 unless it
// is given.
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

constexpr int tables_of_a_kind = 25;

class WholeDatabase : public ExportFolder {
  protected:
    WholeDatabase() {
        const char* const given = std::getenv("ZMFB_ROWS");
        rows = (given == nullptr ? 5000 : std::atoi(given)) / (2 * tables_of_a_kind);
    }
    void make_driver_table(const std::string& name) const {
        ASSERT_EQ(call("createtable('" + name +
                       "', {{'CODE', 'N', 8, 0}, {'NAME', 'C', 30, 0}, {'CREDIT', 'N', 10, 2}, "
                       "{'BORN', 'D', 8, 0}, {'OK', 'L', 1, 0}})")
                      .status,
                  0);
        fill(name,
             "(code, name, credit, born, ok) values (:i, 'Naïve ' || :i, mod(:i, 1000) * -1.25, "
             "iif(mod(:i, 7) = 0, null, dateadd(mod(:i, 20000) day to timestamp '1950-01-01')), "
             "iif(mod(:i, 3) = 0, 'T', 'F'))");
    }
    void make_table_with_memos(const std::string& name) const {
        exec("create table " + name +
             " (id integer not null, name varchar(40), price numeric(18, 4), ratio double precision, "
             "seen timestamp, known boolean, note blob sub_type text, picture blob sub_type 0)");
        fill(name,
             "values (:i, iif(mod(:i, 11) = 0, null, 'row ' || :i), :i * 1.0625, :i / 7e0, "
             "dateadd(mod(:i, 5000000) * 17 second to timestamp '1999-12-31 23:59:59'), "
             "iif(mod(:i, 5) = 0, null, mod(:i, 2) = 0), "
             "iif(mod(:i, 4) = 0, null, rpad('', mod(:i, 300), 'a note of é ' || :i)), "
             "iif(mod(:i, 9) = 0, x'00FF1A', null))");
    }
    void fill(const std::string& name, const std::string& values) const {
        exec("execute block as declare i integer = 0; begin while (i < " + std::to_string(rows) +
             ") do begin insert into " + name + " " + values + "; i = i + 1; end end");
    }
    int rows;
};

TEST_F(WholeDatabase, IsTheSameInAnother) {
    for (int i = 0; i < tables_of_a_kind; ++i) {
        make_driver_table("PEOPLE" + std::to_string(i));
        make_table_with_memos("MEMOS" + std::to_string(i));
    }
    const std::string list = folder_out + "/list.json";
    const Finished out = export_to_folder({"--all", "--format", "vfp", "--manifest", list});
    ASSERT_EQ(out.status, 0) << out.err;
    const auto files = nlohmann::json::parse(read_file(list)).at("files");
    ASSERT_EQ(files.size(), 2U * tables_of_a_kind);
    for (const auto& file : files) EXPECT_EQ(file.at("records"), rows) << file;
    const std::string second = as_database("second.fdb");
    ASSERT_EQ(on(second, {"create"}).status, 0);
    const Finished in = on(second, {"import", "--manifest", list});
    EXPECT_EQ(in.status, 0) << in.err;
    int same = 0;
    for (const std::string& line : lines(in.out)) same += line == "the records and values that were exported";
    EXPECT_EQ(same, 2 * tables_of_a_kind);
}

// The most memory that a command had, in KB.
constexpr const char* peak_of = R"(
import resource, subprocess, sys
status = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL).returncode
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
sys.exit(status))";

TEST_F(WholeDatabase, TakesNoMoreMemoryToWriteForMoreRows) {
    const auto peak = [&](int count) {
        const Finished run =
            zmfb_after("set -- /usr/bin/python3 -c '" + std::string(peak_of) + "' \"$@\"",
                       {"--db", path, "export", "--yes", "-o", folder_out, "--table", "big", "--query",
                        "select first " + std::to_string(count) +
                            " a.rdb$field_name as name, a.rdb$field_length as size, cast(b.rdb$field_name as "
                            "varchar(100)) "
                            "as other from rdb$fields a cross join rdb$fields b cross join rdb$types"});
        EXPECT_EQ(run.status, 0) << run.err;
        return std::atoi(run.out.c_str());
    };
    const int few = peak(20000);
    EXPECT_GT(few, 0);
    EXPECT_LT(peak(600000), few + 4096);
}

}  // namespace
}  // namespace zmfb::test
