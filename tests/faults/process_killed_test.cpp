// A process that is killed at random moments in the middle of an import, an export, a matrix or the making of
// a table: the database is sound, what was there before is there, and after the clean-up that
// docs/recovery.md describes the same operation succeeds.
#include "tests/faults/process_killed_test.h"

namespace zmfb::test {
namespace {

using host::array_of;

Value field(const char* name, const char* type, int length, int decimals = 0) {
    return array_of(name, type, length, decimals);
}

class KilledTableMaker : public KilledProcess {
  protected:
    [[nodiscard]] static Value structure() {
        Value fields = Value::array_of_size(0);
        for (int i = 1; i <= 12; ++i) fields.push(field(("N" + std::to_string(i)).c_str(), "N", 8, 2));
        return fields;
    }
};

TEST_F(KilledTableMaker, LeavesAPartThatCanBeDroppedAndMadeAgain) {
    const auto start = [](WorkerProcess& worker) { worker.start("createtable", "new", structure()); };
    const Figures figures = kill_many(start, [this] {
        expect_parts_in_order("NEW");
        take_away_table("NEW");
        EXPECT_TRUE(made([&] { return yes("createtable", "new", structure()); })) << last_engine_message();
        EXPECT_TRUE(yes("iszmrddtable", "new"));
        EXPECT_EQ(parts_of("NEW"), all_parts);
        execute("insert into NEW (N1) values (1)");
        EXPECT_EQ(rows("select cast(RECNO as integer) from NEW"), (Rows{{"1"}}));
        EXPECT_TRUE(yes("droptable", "new"));
    });
    figures.print("making a table");
}

class KilledImport : public KilledProcess {
  protected:
    static constexpr int records = 3000;

    KilledImport() {
        DbfBuilder builder;
        builder.field("NAME", 'C', 30).field("BORN", 'D', 8).field("AGE", 'N', 5);
        for (int i = 1; i <= records; ++i) builder.record({"name", i % 2 == 0 ? "20070301" : "", "2"});
        builder.write(dbf_);
        content_ = read_file(dbf_);
    }

    const std::string dbf_ = file("big.dbf");
    std::string content_;
};

TEST_F(KilledImport, LeavesATableWithAllRowsOrNoneAndCanBeMadeAgain) {
    const std::string all = std::to_string(records);
    const auto start = [this](WorkerProcess& worker) { worker.start("bringdbf", dbf_); };
    const Figures figures = kill_many(start, [&] {
        EXPECT_EQ(read_file(dbf_), content_);
        expect_parts_in_order("BIG");
        if (yes("istable", "BIG")) {
            const std::string count = rows("select count(*) from BIG")[0][0];
            EXPECT_TRUE(count == "0" || count == all) << count;
        }
        drop_external_table("EXT_BIG");
        take_away_table("BIG");
        std::filesystem::remove(data_file());
        EXPECT_TRUE(made([&] { return yes("bringdbf", dbf_); })) << last_engine_message();
        EXPECT_EQ(rows("select count(*), sum(AGE), count(BORN) from BIG"),
                  (Rows{{all, std::to_string(2 * records), std::to_string(records / 2)}}));
        EXPECT_FALSE(yes("istable", "EXT_BIG"));
        EXPECT_TRUE(yes("droptable", "BIG"));
    });
    figures.print("import");
}

class KilledExport : public KilledProcess {
  protected:
    static constexpr int records = 2000;

    KilledExport() {
        std::filesystem::current_path(folder());
        EXPECT_TRUE(yes("createtable", "CUSTOMER",
                        array_of(field("NAME", "C", 30), field("AGE", "N", 5), field("BORN", "D", 8))));
        execute("execute block as declare i integer = 0; begin while (i < " + std::to_string(records) +
                ") do begin insert into CUSTOMER (NAME, AGE, BORN) values ('name', 3, '2007-03-01'); i = i + "
                "1; end end");
    }
    ~KilledExport() override { std::filesystem::current_path(before_); }

    [[nodiscard]] std::string dbf() const { return file("CUSTOMER.dbf"); }

    // The number of records that the header of the file tells.
    [[nodiscard]] int records_of_file() const {
        const std::string bytes = read_file(dbf());
        int count = 0;
        for (std::size_t i = 0; i < 4 && bytes.size() > 32; ++i)
            count |= static_cast<unsigned char>(bytes[4 + i]) << (8 * i);
        return count;
    }

  private:
    const std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(KilledExport, LeavesTheTableAsItWasAndCanBeMadeAgain) {
    const Rows sums = {{std::to_string(records), std::to_string(3 * records)}};
    const auto start = [](WorkerProcess& worker) { worker.start("exiletable", "CUSTOMER"); };
    const Figures figures = kill_many(start, [&] {
        EXPECT_EQ(rows("select count(*), sum(AGE) from CUSTOMER"), sums);
        EXPECT_EQ(parts_of("CUSTOMER"), all_parts);
        drop_external_table("EXT_CUSTOMER");
        std::filesystem::remove(data_file());
        std::filesystem::remove(dbf());
        EXPECT_TRUE(yes("exiletable", "CUSTOMER")) << last_engine_message();
        EXPECT_EQ(records_of_file(), records);
        EXPECT_FALSE(yes("istable", "EXT_CUSTOMER"));
        std::filesystem::remove(dbf());
    });
    figures.print("export");
}

class KilledMatrix : public KilledProcess {
  protected:
    static constexpr int records = 300;

    void make_table() {
        EXPECT_TRUE(yes("createtable", "M",
                        array_of(field("NAME", "C", 10), field("AGE", "N", 5), field("BORN", "D", 8),
                                 field("OK", "L", 1))));
        execute("execute block as declare i integer = 0; begin while (i < " + std::to_string(records) +
                ") do begin insert into M (NAME, AGE, OK) values ('name', 3, 'T'); i = i + 1; end end");
    }

    static Value lines(std::initializer_list<const char*> texts) {
        Value lines = array_of(array_of("- Created by ZMRDDFIRE -"));
        for (const char* text : texts) lines.push(array_of(text));
        return array_of(lines);
    }

    // NAME becomes TITLE and longer, AGE gets wider, BORN goes, EMAIL comes, NEWT is a new table.
    static Value matrix() {
        return array_of(
            lines({" M>>001::NAME::C::10::0 => 001::TITLE::C::20::0",
                   " M>>002::AGE::N::5::0 => 002::AGE::N::9::0", " M>>003::BORN::D::8::0 => DROP FIELD",
                   " M>>004::OK::L::1::0 => 003::OK::L::1::0",
                   " M>>005::EMAIL::C::30::0 => 004::EMAIL::C::30::0"}),
            lines({" NEWT>>001::CODE::N::5::0 => 001::CODE::N::5::0"}));
    }

    bool has_column(const std::string& name) { return yes("isfieldoftable", "M", name); }

    // A copy whose original is still there is taken away; one whose original is gone takes its name.
    void put_away_copy(const std::string& copy, const std::string& original, const std::string& wanted) {
        if (!has_column(copy)) return;
        const std::string change =
            has_column(original) ? " drop " + copy : " alter " + copy + " to " + wanted;
        EXPECT_EQ(call("executeupdate", "alter table M" + change).string(), "");
    }

    // What the values of a column are, whatever it is called at the moment.
    void expect_values() {
        const std::string name = has_column("NAME") ? "NAME" : has_column("TITLE") ? "TITLE" : "RDDAUX_TITLE";
        const std::string age = has_column("AGE") ? "AGE" : "RDDAUX_AGE";
        EXPECT_EQ(rows("select count(*), min(" + name + "), max(" + name + "), sum(" + age + ") from M"),
                  (Rows{{std::to_string(records), "name", "name", std::to_string(3 * records)}}));
    }
};

TEST_F(KilledMatrix, LeavesEveryValueInItsColumnOrItsCopyAndCanBeAppliedAgain) {
    const auto start = [](WorkerProcess& worker) { worker.start("applymatrix", matrix(), false); };
    const auto before = [this] { make_table(); };
    const Figures figures = kill_many(
        start,
        [this] {
            expect_values();
            put_away_copy("RDDAUX_TITLE", "NAME", "TITLE");
            put_away_copy("RDDAUX_AGE", "AGE", "AGE");
            expect_values();
            expect_parts_in_order("NEWT");
            if (parts_of("NEWT") != all_parts) take_away_table("NEWT");
            Value result;
            EXPECT_TRUE(made([&] {
                result = call("applymatrix", matrix(), false);
                return result[1].logical();
            })) << show(result)
                << last_engine_message();
            // Where NAME had become TITLE before, no name on the left of the matrix is that of TITLE: it gets
            // a twin.
            if (has_column("RDDLMB_TITLE")) call("executeupdate", "alter table M drop RDDLMB_TITLE");
            EXPECT_EQ(
                show(call("filterrddfields", call("gettablestruct", "M"))),
                R"({{"TITLE", "C", 20, 0}, {"AGE", "N", 9, 0}, {"OK", "L", 1, 0}, {"EMAIL", "C", 30, 0}})");
            expect_values();
            EXPECT_EQ(parts_of("NEWT"), all_parts);
            EXPECT_TRUE(yes("droptable", "NEWT"));
            EXPECT_TRUE(yes("droptable", "M"));
        },
        before);
    figures.print("matrix");
}

}  // namespace
}  // namespace zmfb::test
