// Files imported and exported again, compared field by field by independent readers.
#include <algorithm>

#include "host/latin1.h"
#include "tests/support/samples.h"
#include "tests/transfer/independent_reader.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

DbfBuilder made_file() {
    DbfBuilder file = DbfBuilder()
                          .field("CODE", 'N', 6)
                          .field("NAME", 'C', 20)
                          .field("AMOUNT", 'N', 12, 3)
                          .field("SINCE", 'D', 8)
                          .field("ACTIVE", 'L', 1);
    file.record({"999999", std::string("São João d'Água"_l1), "99999999.999", "99991231", "T"});
    file.record({"-99999", "\"quotes\" and 'quotes'", "-9999999.999", "00010102", "y"});
    file.record({"", "", "", "", "?"}, '*');
    file.record({"0", "''", "0.001", "20000229", "n"});
    file.record({"-1", "\xFF\xA0\xE7", "-0.500", "15821004", ""});
    return file;
}

class RoundTrip : public TransferOfRows, public ::testing::WithParamInterface<std::string> {
  protected:
    RoundTrip() : here_(exports_folder()) {}

    void SetUp() override {
        TransferOfRows::SetUp();
        if (GetParam() == "made") {
            original_ = dbf("made");
            made_file().write(original_);
        } else {
            original_ = sample(GetParam() + ".dbf");
            if (original_.empty()) GTEST_SKIP() << without_sample(GetParam() + ".dbf");
        }
    }

    [[nodiscard]] std::string exported() const { return exports_folder() / (GetParam() + ".dbf"); }
    [[nodiscard]] const std::string& original() const { return original_; }

    // What an import and an export make of it: names in upper case, 0 for a blank number.
    static DbfContent as_imported(DbfContent content) {
        for (std::string& field : content.fields) {
            std::transform(field.begin(), field.end(), field.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        }
        for (Row& record : content.records) {
            for (std::size_t i = 0; i < record.size(); ++i) {
                const bool is_number = content.fields[i].find(":N:") != std::string::npos;
                if (is_number && record[i] == "NULL") record[i] = "0";
            }
        }
        return content;
    }

  private:
    [[nodiscard]] std::filesystem::path exports_folder() const {
        std::filesystem::create_directory(folder() / "exports");
        return folder() / "exports";
    }
    CurrentFolder here_;
    std::string original_;
};

TEST_P(RoundTrip, ExportedFileIsTheImportedOneFieldByField) {
    const std::string table = GetParam();
    ASSERT_TRUE(call("bringdbf", original()).logical());
    ASSERT_TRUE(call("exiletable", table).logical());
    for (const char* reader : {"dbfread", "dbf"}) {
        SCOPED_TRACE(reader);
        const DbfContent before = as_imported(read_dbf(reader, original()));
        DbfContent after = read_dbf(reader, exported());
        EXPECT_EQ(after.fields, before.fields);
        EXPECT_EQ(after.deleted, 0) << "deleted records come along as records like the others";
        after.deleted = before.deleted;
        ASSERT_FALSE(before.records.empty());
        EXPECT_EQ(comparable(after), comparable(before));
        expect_no_complaint(exported(), before.records.size());
    }
}

TEST_P(RoundTrip, SecondRoundGivesTheSameFileButForTheDate) {
    const std::string table = GetParam();
    ASSERT_TRUE(call("bringdbf", original()).logical());
    ASSERT_TRUE(call("exiletable", table).logical());
    std::string first = read_file(exported());
    ASSERT_TRUE(call("droptable", table).logical());
    ASSERT_TRUE(call("bringdbf", exported()).logical());
    ASSERT_TRUE(call("exiletable", table).logical());
    std::string second = read_file(exported());
    ASSERT_EQ(first.size(), second.size());
    EXPECT_TRUE(first.replace(1, 3, "") == second.replace(1, 3, ""));
}

INSTANTIATE_TEST_SUITE_P(Files, RoundTrip,
                         ::testing::Values("made", "blockgroups", "people", "popctr_state1970", "scale_rank"),
                         [](const auto& instance) { return instance.param; });

}  // namespace
}  // namespace zmfb::test
