#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "host/file.h"
#include "tests/support/runtime.h"
#include "tests/transfer/open_files.h"
#include "zmfbconn/connection.h"

namespace zmfb {
namespace {

constexpr int invalid_handle = 6;

class Files : public test::Runtime {
  protected:
    Value call(std::string_view method, const Value& a = {}, const Value& b = {}) {
        return connection_.call(method, a, b);
    }
    // Whether a handle is one of an open file.
    static bool is_open(const Value& handle) {
        host::fseek(handle, 0, 1);
        return host::ferror().number() != invalid_handle;
    }

  private:
    zmFBConn connection_;
};

TEST_F(Files, FcrtfileMakesANewFileOpenForWriting) {
    const Value handle = call("fcrtfile", file("new.txt"));
    EXPECT_GT(handle.number(), 0);
    EXPECT_EQ(host::fwrite(handle, "abc").number(), 3);
    call("fclsfile", handle);
    EXPECT_EQ(read_file(file("new.txt")), "abc");
}

TEST_F(Files, FcrtfileEmptiesAFileThatIsThere) {
    write_file("old.txt", "old content");
    call("fclsfile", call("fcrtfile", file("old.txt")));
    EXPECT_EQ(std::filesystem::file_size(file("old.txt")), 0U);
}

TEST_F(Files, FcrtfileMakesAnOrdinaryFile) {
    const mode_t before = umask(022);
    call("fclsfile", call("fcrtfile", file("new.txt")));
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(file("new.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

TEST_F(Files, FcrtfileThatFailsAnswersMinusOneAndSaysWhy) {
    EXPECT_EQ(call("fcrtfile", file("no/such/folder/new.txt")).number(), -1);
    EXPECT_NE(host::ferror().number(), 0);
}

TEST_F(Files, FopnfileOpensForReadingWithoutAMode) {
    const std::string path = write_file("a.txt", "abc");
    for (const Value& mode : {Value(), Value(""), Value("   "), Value("r")}) {
        const Value handle = call("fopnfile", path, mode);
        ASSERT_GT(handle.number(), 0) << test::show(mode);
        EXPECT_EQ(host::fwrite(handle, "x").number(), 0) << test::show(mode);
        Value buffer("   ");
        EXPECT_EQ(host::fread(handle, buffer, 3).number(), 3);
        EXPECT_EQ(test::show(buffer), "\"abc\"");
        call("fclsfile", handle);
    }
    EXPECT_EQ(read_file(path), "abc");
}

TEST_F(Files, FopnfileOpensForReadingAndWriting) {
    const std::string path = write_file("a.txt", "abc");
    const Value handle = call("fopnfile", path, "rw");
    ASSERT_GT(handle.number(), 0);
    EXPECT_EQ(host::fwrite(handle, "x").number(), 1);
    call("fclsfile", handle);
    EXPECT_EQ(read_file(path), "xbc");
}

TEST_F(Files, FopnfileWithAnUnknownModeTouchesNothing) {
    const std::string path = write_file("a.txt", "abc");
    const std::size_t open = test::open_files();
    for (const char* mode : {"w", "R", "RW", "r ", "rw ", "rwx"}) {
        EXPECT_EQ(call("fopnfile", path, mode).number(), -1) << mode;
        EXPECT_EQ(call("fopnfile", file("absent.txt"), mode).number(), -1) << mode;
    }
    EXPECT_EQ(test::open_files(), open);
    EXPECT_FALSE(std::filesystem::exists(file("absent.txt")));
    EXPECT_EQ(read_file(path), "abc");
}

TEST_F(Files, FopnfileOfAMissingFileAnswersMinusOne) {
    for (const char* mode : {"r", "rw"})
        EXPECT_EQ(call("fopnfile", file("absent.txt"), mode).number(), -1) << mode;
    EXPECT_EQ(host::ferror().number(), 2);
}

TEST_F(Files, FopnfileLocksTheFileForOtherProcesses) {
    const std::string path = write_file("a.txt", "abc");
    const Value handle = call("fopnfile", path, "rw");
    EXPECT_FALSE(test::another_process_can_lock(path));
    call("fclsfile", handle);
    EXPECT_TRUE(test::another_process_can_lock(path));
}

TEST_F(Files, FopnfileForReadingTakesNoLock) {
    const std::string path = write_file("a.txt", "abc");
    const Value handle = call("fopnfile", path, "r");
    EXPECT_TRUE(test::another_process_can_lock(path));
    call("fclsfile", handle);
}

TEST_F(Files, FclsfileClosesOnceAndIgnoresANegativeHandle) {
    const std::size_t open = test::open_files();
    const Value handle = call("fopnfile", write_file("a.txt", "abc"));
    EXPECT_EQ(test::open_files(), open + 1);
    EXPECT_EQ(test::show(call("fclsfile", handle)), "NIL");
    EXPECT_EQ(test::open_files(), open);
    EXPECT_EQ(test::show(call("fclsfile", handle)), "NIL");
    const Value error_before = host::ferror();
    EXPECT_EQ(test::show(call("fclsfile", -1)), "NIL");
    EXPECT_EQ(host::ferror().number(), error_before.number()) << "no file call was made";
}

// How opening goes while another process holds the file for some time.
struct Held {
    int milliseconds;
    bool open_afterwards;
    double least_seconds;
};

class HeldFile : public Files, public ::testing::WithParamInterface<Held> {};

TEST_P(HeldFile, IsOpenedOnlyWhenTheLockCameWithinTheFirstFiveTries) {
    const std::string path = write_file("a.txt", "abc");
    const test::LockHolder holder(path, std::chrono::milliseconds(GetParam().milliseconds));
    const auto begin = std::chrono::steady_clock::now();
    const Value handle = call("fopnfile", path, "rw");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(handle.number(), 0) << "a closed handle is returned too, not -1";
    EXPECT_EQ(is_open(handle), GetParam().open_afterwards);
    EXPECT_GE(took.count(), GetParam().least_seconds);
    EXPECT_LE(took.count(), 5.0) << "no more than six waits";
    call("fclsfile", handle);
}

// Tries are made every half second from the start on: the third after 1.0, the sixth after 2.5, the seventh
// after 3.0.
INSTANTIATE_TEST_SUITE_P(Tries, HeldFile,
                         ::testing::Values(Held{750, true, 0.9}, Held{2250, false, 2.4},
                                           Held{2750, false, 2.9}, Held{20000, false, 2.9}));

}  // namespace
}  // namespace zmfb
