// DBF and memo files whose sizes are not what they say.
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t three_gigabytes = std::uint64_t{3} << 30;

class LyingFiles : public Tool {
  protected:
    LyingFiles() : path(database()) {}
    // In 20 seconds of a processor at most.
    Finished import(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--db", path, "import"});
        return zmfb_after("ulimit -t 20", words);
    }
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    // Behind what it has there are holes up to that size.
    void stretch(const std::string& name, std::uint64_t size) const { fs::resize_file(file(name), size); }
    std::string path;
};

DbfBuilder two_records() { return DbfBuilder().field("N", 'N', 4).record({"1"}).record({"2"}); }

struct Lie {
    std::string name;
    DbfBuilder file;
    int status;
    std::string words;  // some of what is said
};

TEST_F(LyingFiles, OfDbfAreRefusedOrReadAsTheirNoteSays) {
    const std::vector<Lie> lies{
        {"more", two_records().record_count(0xFFFFFFFF), 1,
         "the header counts 4294967295 records, the file holds 2"},
        {"fewer", two_records().record_count(1), 0, "its header counts 1 record, the file has 1 more"},
        {"none", two_records().record_count(0), 0, "its header counts 0 records, the file has 2 more"},
        {"long_records", two_records().record_length(65535), 0, "records of 65535 bytes"},
        {"short_records", two_records().record_length(2), 0, "records of 2 bytes"},
        {"no_records", two_records().record_length(0), 0, "records of 0 bytes"},
        {"long_header", two_records().header_length(65535), 0, "its header says that records begin at 65535"},
        {"short_header", two_records().header_length(1), 0, "its header says that records begin at 1"},
        {"no_header", two_records().header_length(0), 0, "its header says that records begin at 0"},
        {"endless_fields", two_records().no_terminator().header_length(65535), 1, "ends within its header"},
    };
    for (const Lie& lie : lies) {
        const Finished run = import({made(lie.name + ".dbf", lie.file)});
        EXPECT_EQ(run.status, lie.status) << lie.name << run.err;
        EXPECT_NE((run.out + run.err).find(lie.words), std::string::npos) << lie.name << "\n"
                                                                          << run.out << run.err;
    }
}

// Memos of each kind, all of 1000 records with a length or without an end in a file of holes.
struct Memos {
    std::string name, ending;
    int type;
    MemoFormat format;
    std::string block, length;
    std::string words;
};

const std::vector<Memos> memos_of_holes{
    {"three", ".dbt", 0x83, MemoFormat::dbase3, "1", "",
     "the memo has no end in the 67108864 bytes that are read"},
    {"four", ".dbt", 0x8B, MemoFormat::dbase4, "1", low_first(0xB0000008, 4),
     "a memo of 2952790016 bytes is longer than the 67108864 that are read"},
    {"fox", ".fpt", 0xF5, MemoFormat::foxpro, "1", high_first(0xB0000000, 4),
     "a memo of 2952790016 bytes is longer than the 67108864 that are read"},
    {"beyond", ".fpt", 0xF5, MemoFormat::foxpro, "1", high_first(0xFFFFFFFF, 4),
     "a memo of 4294967295 bytes goes beyond the end of the memo file"},
    {"behind", ".fpt", 0xF5, MemoFormat::foxpro, "4000000000", "",
     "block 4000000000 is behind the end of the memo file"},
};

DbfBuilder with_memos(const Memos& one) {
    DbfBuilder dbf = DbfBuilder().type(one.type).field("M", 'M', 10);
    for (int i = 0; i < 1000; ++i) dbf.record({std::string(10 - one.block.size(), ' ') + one.block});
    return dbf;
}

TEST_F(LyingFiles, OfMemosWithThreeGigabytesOfHolesAreReportedAtOnceAndLeaveTheRest) {
    for (const Memos& one : memos_of_holes) {
        MemoBuilder memos(one.format);
        memos.add("");
        std::string bytes = memos.bytes().substr(0, 512 + (one.length.empty() ? 0 : 8));
        if (!one.length.empty()) bytes.replace(512 + 4, 4, one.length);
        write_file(one.name + one.ending, bytes);
        stretch(one.name + one.ending, three_gigabytes);
        const std::string dbf = made(one.name + ".dbf", with_memos(one));
        const Finished run = import({dbf});
        EXPECT_EQ(run.status, 1) << one.name;
        EXPECT_NE(run.err.find(one.words), std::string::npos) << one.name << "\n" << run.err;
        EXPECT_NE(run.err.find("1000 values would be refused"), std::string::npos) << run.err;
        EXPECT_EQ(import({dbf, "--on-bad-value", "default"}).status, 0) << one.name;
    }
}

TEST_F(LyingFiles, OfHolesAreSetAsideWithTheirHoles) {
    const Memos& one = memos_of_holes[1];
    MemoBuilder memos(one.format);
    memos.add("");
    write_file("four.dbt", std::string(memos.bytes()).replace(512 + 4, 4, one.length));
    stretch("four.dbt", three_gigabytes);
    const Finished run = import(
        {made("four.dbf", with_memos(one)), "--on-bad-value", "set-aside", "--set-aside", file("aside.dbf")});
    EXPECT_EQ(run.status, 0) << run.err;
    struct stat copy {};
    ASSERT_EQ(::stat(file("aside.dbt").c_str(), &copy), 0);
    EXPECT_EQ(static_cast<std::uint64_t>(copy.st_size), three_gigabytes);
    EXPECT_LT(copy.st_blocks * 512, 10 << 20);
}

TEST_F(LyingFiles, OfRecordsInHolesAreRefusedUnlessTheyAreWanted) {
    made("holes.dbf", two_records().no_end_mark().record_count(1000000));
    stretch("holes.dbf", 6 << 20);
    const Finished run = import({file("holes.dbf")});
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(
        run.err.find("from record 3 on there are zero bytes only: nobody wrote them there; --incomplete"),
        std::string::npos)
        << run.err;
    made("few.dbf", two_records().no_end_mark().record_count(200000));
    stretch("few.dbf", 65 + 200000 * 5);
    EXPECT_EQ(import({file("few.dbf"), "--dry-run"}).status, 0);
}

// However much they seem to have, and whatever the tool is at.
TEST_F(LyingFiles, OfHolesDoNotKeepAToolThatIsToEnd) {
    made("holes.dbf", two_records().record_count(0xFFFFFFFF));
    stretch("holes.dbf", three_gigabytes);
    const std::string manifest = write_file(
        "m.json",
        R"({"zmfb_manifest":1,"files":[{"table":"H","file":"holes.dbf","sha256":"0","records":1}]})");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"import", file("holes.dbf"), "--incomplete"},
          {"import", "--manifest", manifest, "--incomplete"}}) {
        std::vector<std::string> all{"--db", path};
        all.insert(all.end(), words.begin(), words.end());
        const auto tool = start(all);
        tool->settle();
        tool->send(SIGTERM);
        const Finished run = tool->end();
        EXPECT_EQ(run.status, 143) << run.err;
        EXPECT_EQ(run.err.find("has not come to an end"), std::string::npos) << run.err;
    }
}

}  // namespace
}  // namespace zmfb::test
