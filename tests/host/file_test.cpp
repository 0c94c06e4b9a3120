#include "host/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <set>

#include "folder.h"
#include "host/class.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::in_child;
using host_test::is_same;
using host_test::limit_files_to;
using namespace std::string_view_literals;

class File : public host_test::FolderTest {
  protected:
    [[nodiscard]] Value open(std::string_view name, int mode = 0) const { return fopen(path(name), mode); }
    // Reads up to `size` bytes as a text of their number.
    static std::string read(const Value& handle, std::size_t size) {
        Value buffer = Value::text_of_size(size);
        const Value got = fread(handle, buffer, size);
        return std::string(buffer.text().substr(0, static_cast<std::size_t>(got.integer())));
    }
    static mode_t mode_of(const std::string& file) {
        struct stat status {};
        return ::stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
};

// The descriptors of this process that a file is open under.
std::vector<int> descriptors_of(const std::string& file) {
    std::vector<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone) == file)
            numbers.push_back(std::stoi(entry.path().filename()));
    }
    return numbers;
}

TEST_F(File, IsOpenedForWhatTheModeSays) {
    write_file("a", "text");
    const Value reader = open("a", 0);
    EXPECT_GT(reader.number(), 2);
    EXPECT_TRUE(is_same(ferror(), 0));
    EXPECT_TRUE(is_same(fwrite(reader, "x"), 0));
    EXPECT_TRUE(is_same(ferror(), 5));
    EXPECT_TRUE(is_same(fwrite(reader, ""), 0));
    EXPECT_TRUE(is_same(ferror(), 5));
    const Value writer = open("a", 1 + 16);
    Value buffer = "    ";
    EXPECT_TRUE(is_same(fread(writer, buffer, 4), 0));
    EXPECT_TRUE(is_same(ferror(), 5));
    EXPECT_TRUE(is_same(fwrite(writer, "T"), 1));
    const Value both = open("a", 2 + 64);
    EXPECT_EQ(read(both, 4), "Text");
    EXPECT_TRUE(is_same(fwrite(both, "!"), 1));
    for (const Value& handle : {reader, writer, both}) EXPECT_TRUE(is_same(fclose(handle), true));
    EXPECT_EQ(content(path("a")), "Text!");
}

TEST_F(File, ThatCannotBeOpenedGivesMinusOneAndTheReason) {
    write_file("plain", "");
    const std::pair<std::string, int> cases[] = {
        {path("missing"), 2},
        {path("no/folder"), 2},
        {path("plain/inside"), 3},
        {path(""), 5},
        {"", 2},
        {path(std::string(300, 'x')), 3},
        {path("plain") + '\0' + "more", 2},
    };
    for (const auto& [name, error] : cases) {
        EXPECT_TRUE(is_same(fopen(name), -1)) << name;
        EXPECT_TRUE(is_same(ferror(), error)) << name;
    }
    EXPECT_TRUE(is_same(fcreate(path("no/folder")), -1));
    EXPECT_TRUE(is_same(ferror(), 2));
    EXPECT_TRUE(is_same(fopen(path("plain"), 3), -1));
    EXPECT_TRUE(is_same(ferror(), 5));
}

TEST_F(File, NamesThatAreNoTextsRaiseAnArgumentError) {
    expect_argument_error(Subcode::file, "FOPEN", [] { return fopen(1); });
    expect_argument_error(Subcode::file, "FCREATE", [] { return fcreate({}); });
}

TEST_F(File, OnlyHandlesThatWereGivenOutAreValid) {
    const int foreign = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    Value buffer = "12345";
    for (const Value& handle :
         {Value(-1), Value(0), Value(1), Value(2), Value(foreign), Value(1e18), Value(), Value("3")}) {
        EXPECT_TRUE(is_same(fwrite(handle, "text"), 0));
        EXPECT_TRUE(is_same(ferror(), 6));
        EXPECT_TRUE(is_same(fwrite(handle, ""), 0));
        EXPECT_TRUE(is_same(fread(handle, buffer, 5), 0));
        EXPECT_TRUE(is_same(ferror(), 6));
        EXPECT_TRUE(is_same(fseek(handle, 0), 0));
        EXPECT_TRUE(is_same(freadtxt(handle), ""));
        EXPECT_TRUE(is_same(ferror(), 6));
        EXPECT_TRUE(is_same(flockf(handle, 2), -1));
        EXPECT_TRUE(is_same(fclose(handle), false));
        EXPECT_TRUE(is_same(ferror(), 6));
    }
    EXPECT_GE(::fcntl(foreign, F_GETFD), 0);
    ::close(foreign);
}

TEST_F(File, AClosedHandleStaysInvalidWhenOthersAreOpened) {
    const Value first = fcreate(path("a"));
    EXPECT_TRUE(is_same(fclose(first), true));
    EXPECT_TRUE(is_same(ferror(), 0));
    const Value second = fcreate(path("b"));
    EXPECT_NE(first.integer(), second.integer());
    EXPECT_TRUE(is_same(fclose(first), false));
    EXPECT_TRUE(is_same(ferror(), 6));
    EXPECT_TRUE(is_same(fwrite(second, "still open"), 10));
    fclose(second);
}

TEST_F(File, AProgramThatIsStartedInheritsNoHandle) {
    const Value handles[] = {fcreate(path("a")), open("a")};
    const std::vector<int> descriptors = descriptors_of(path("a"));
    EXPECT_EQ(descriptors.size(), 2U);
    for (const int number : descriptors) EXPECT_NE(::fcntl(number, F_GETFD) & FD_CLOEXEC, 0);
    for (const Value& handle : handles) fclose(handle);
}

TEST_F(File, ReadingFillsTheFrontOfTheBufferAndKeepsTheRest) {
    write_file("a", "0123456789");
    const Value handle = open("a");
    Value buffer = "abcdefghijklmnopqrst";
    const Value shared = buffer;
    EXPECT_TRUE(is_same(fread(handle, buffer, 8), 8));
    EXPECT_TRUE(is_same(buffer, "01234567ijklmnopqrst"));
    EXPECT_TRUE(is_same(shared, "abcdefghijklmnopqrst"));
    EXPECT_TRUE(is_same(fread(handle, buffer, 8), 2));
    EXPECT_TRUE(is_same(buffer, "89234567ijklmnopqrst"));
    EXPECT_TRUE(is_same(fread(handle, buffer, 8), 0));
    EXPECT_TRUE(is_same(ferror(), 0));
    fclose(handle);
}

TEST_F(File, NothingIsReadIntoABufferThatIsTooShortOrNoText) {
    write_file("a", "0123456789");
    const Value handle = open("a");
    Value buffer = "abc";
    Value number = 5;
    for (const Value& size : {Value(4), Value(0), Value(-1), Value(1e300), Value(), Value("2")}) {
        EXPECT_TRUE(is_same(fread(handle, buffer, size), 0));
        EXPECT_TRUE(is_same(ferror(), 0));
    }
    EXPECT_TRUE(is_same(fread(handle, number, 1), 0));
    EXPECT_TRUE(is_same(buffer, "abc"));
    EXPECT_TRUE(is_same(fseek(handle, 0, 1), 0));
    fclose(handle);
}

TEST_F(File, WritingNothingCutsTheFileOffHere) {
    write_file("a", "0123456789");
    const Value handle = open("a", 2);
    fseek(handle, 4);
    EXPECT_TRUE(is_same(fwrite(handle, "x", 0), 0));
    EXPECT_EQ(content(path("a")), "0123456789");
    EXPECT_TRUE(is_same(fwrite(handle, ""), 0));
    EXPECT_TRUE(is_same(ferror(), 0));
    EXPECT_EQ(content(path("a")), "0123");
    EXPECT_TRUE(is_same(fwrite(handle, "abcdef", 2), 2));
    EXPECT_TRUE(is_same(fwrite(handle, "XY\0Z"sv, 100), 4));
    EXPECT_TRUE(is_same(fwrite(handle, "no", -1), 0));
    EXPECT_TRUE(is_same(fwrite(handle, 5), 0));
    EXPECT_EQ(content(path("a")), "0123abXY\0Z"sv);
    fclose(handle);
}

TEST_F(File, SeekingCountsFromTheStartFromHereAndFromTheEnd) {
    write_file("a", "0123456789");
    const Value handle = open("a", 2);
    EXPECT_TRUE(is_same(fseek(handle, 0, 2), 10));
    EXPECT_TRUE(is_same(fseek(handle, -3, 1), 7));
    EXPECT_TRUE(is_same(fseek(handle, 2), 2));
    for (const auto& [offset, origin] :
         {std::pair<Value, int>{-3, 1}, {-11, 2}, {-1, 0}, {-1e300, 0}, {0, 3}}) {
        EXPECT_TRUE(is_same(fseek(handle, offset, origin), 2));
        EXPECT_TRUE(is_same(ferror(), 25));
    }
    EXPECT_TRUE(is_same(fseek(handle, 12), 12));
    EXPECT_TRUE(is_same(ferror(), 0));
    fwrite(handle, "x");
    EXPECT_EQ(content(path("a")), "0123456789\0\0x"sv);
    fclose(handle);
}

TEST_F(File, CreatingEmptiesAFileThatExists) {
    write_file("a", "old");
    const Value handle = fcreate(path("a"));
    EXPECT_EQ(content(path("a")), "");
    EXPECT_TRUE(is_same(fwrite(handle, "new"), 3));
    fseek(handle, 0);
    EXPECT_EQ(read(handle, 3), "new");
    fclose(handle);
}

TEST_F(File, TheAttributeOfCreatingGivesThePermissions) {
    const mode_t umask_before = ::umask(027);
    const std::pair<Value, mode_t> cases[] = {{Value(), 0640}, {0, 0640},   {1, 0440},    {2, 0640},
                                              {666, 0666},     {600, 0600}, {777, 0777},  {888, 0640},
                                              {1666, 0640},    {-5, 0640},  {"666", 0640}};
    int number = 0;
    for (const auto& [attribute, mode] : cases) {
        const std::string name = path(std::to_string(++number));
        const Value handle = fcreate(name, attribute);
        EXPECT_TRUE(is_same(fwrite(handle, "x"), 1));
        EXPECT_EQ(mode_of(name), mode) << number;
        fclose(handle);
    }
    fclose(fcreate(path("1"), 666));
    EXPECT_EQ(mode_of(path("1")), 0666U);
    ::umask(umask_before);
}

TEST_F(File, CreatingLeavesThePermissionsOfWhatIsNoFile) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    const Value handle = fcreate(path("pipe"), 666);
    EXPECT_GT(handle.number(), 0);
    EXPECT_EQ(mode_of(path("pipe")), 0600U);
    fclose(handle);
}

TEST_F(File, CreatingFollowsLinksOfThisUser) {
    write_file("target", "old");
    ASSERT_EQ(::symlink("target", path("relative").c_str()), 0);
    ASSERT_EQ(::symlink(path("relative").c_str(), path("absolute").c_str()), 0);
    const Value handle = fcreate(path("absolute"));
    fwrite(handle, "new");
    fclose(handle);
    EXPECT_EQ(content(path("target")), "new");
    ASSERT_EQ(::symlink("round", path("round").c_str()), 0);
    EXPECT_TRUE(is_same(fcreate(path("round")), -1));
    EXPECT_TRUE(is_same(ferror(), 5));
}

TEST_F(File, CreatingDoesNotFollowALinkOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a link of another user";
    write_file("target", "precious");
    ASSERT_EQ(::symlink("target", path("foreign").c_str()), 0);
    ASSERT_EQ(::lchown(path("foreign").c_str(), 12345, 12345), 0);
    ASSERT_EQ(::symlink("foreign", path("own").c_str()), 0);
    for (const char* name : {"foreign", "own"}) {
        EXPECT_TRUE(is_same(fcreate(path(name)), -1));
        EXPECT_TRUE(is_same(ferror(), 5));
    }
    EXPECT_EQ(content(path("target")), "precious");
    const Value reader = open("foreign");
    EXPECT_EQ(read(reader, 8), "precious");
    fclose(reader);
}

TEST_F(File, AReadThatComesInPiecesAndIsInterruptedIsWhole) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    const pid_t writer = ::fork();
    if (writer == 0) {
        const int out = ::open(path("pipe").c_str(), O_WRONLY);
        for (const char* piece : {"abc", "def", "gh\n", "end"}) {
            ::usleep(20000);
            if (::write(out, piece, 3) != 3) ::_exit(1);
        }
        ::_exit(0);
    }
    struct sigaction interrupt {};
    interrupt.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &interrupt, nullptr);
    const itimerval often{{0, 2000}, {0, 2000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    const Value handle = open("pipe");
    EXPECT_EQ(read(handle, 5), "abcde");
    EXPECT_TRUE(is_same(freadtxt(handle), "fgh"));
    EXPECT_EQ(read(handle, 10), "end");
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::waitpid(writer, nullptr, 0);
    fclose(handle);
}

TEST_F(File, AFullDiskShowsInTheBytesWritten) {
    const int outcome = in_child([&] {
        limit_files_to(1000);
        const Value handle = fcreate(path("a"));
        const bool first = fwrite(handle, std::string(600, 'a')).same(600) && ferror().same(0);
        const bool second = fwrite(handle, std::string(600, 'b')).same(400) && ferror().same(29);
        return first && second ? 0 : 1;
    });
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(std::filesystem::file_size(path("a")), 1000U);
    const Value full = fopen("/dev/full", 1);
    EXPECT_TRUE(is_same(fwrite(full, "x"), 0));
    EXPECT_TRUE(is_same(ferror(), 29));
    fclose(full);
}

TEST_F(File, LocksHoldAgainstOtherHandlesOfThisProcess) {
    write_file("a", "x");
    const Value first = open("a", 2);
    const Value second = open("a", 2);
    const auto expect_lock = [](const Value& handle, int mode, int granted, int error) {
        EXPECT_TRUE(is_same(flockf(handle, mode), granted));
        EXPECT_TRUE(is_same(ferror(), error));
    };
    expect_lock(first, 2, 0, 0);
    expect_lock(second, 2, -1, 33);
    expect_lock(second, 1, -1, 33);
    expect_lock(first, 0, 0, 0);
    expect_lock(second, 1, 0, 0);
    expect_lock(first, 1, 0, 0);
    expect_lock(first, 2, -1, 33);
    expect_lock(second, 0, 0, 0);
    expect_lock(first, 2, 0, 0);
    fclose(first);
    expect_lock(second, 2, 0, 0);
    expect_lock(second, 7, -1, 1);
    const Value reader = open("a");
    expect_lock(reader, 2, -1, 5);
    fclose(reader);
    fclose(second);
}

TEST_F(File, LocksHoldAgainstOtherProcessesAndEndWithTheirs) {
    write_file("a", "x");
    const Value mine = open("a", 2);
    flockf(mine, 2);
    const auto try_lock = [&] {
        return in_child([&] { return flockf(fopen(path("a"), 2), 2).same(0) ? 1 : 0; });
    };
    EXPECT_EQ(try_lock(), 0);
    flockf(mine, 0);
    EXPECT_EQ(try_lock(), 1);
    EXPECT_TRUE(is_same(flockf(mine, 2), 0));
    fclose(mine);
}

TEST_F(File, ExistsWhenItIsNoFolder) {
    write_file("a", "");
    fopen(path("missing"));
    EXPECT_TRUE(is_same(file(path("a")), true));
    EXPECT_TRUE(is_same(file(path("b")), false));
    EXPECT_TRUE(is_same(file(path("")), false));
    EXPECT_TRUE(is_same(file(""), false));
    EXPECT_TRUE(is_same(file(path("a") + '\0'), false));
    EXPECT_TRUE(is_same(file(5), false));
    EXPECT_TRUE(is_same(ferror(), 2)) << "FILE() leaves the file error as it was";
}

TEST_F(File, IsErased) {
    write_file("a", "");
    EXPECT_TRUE(is_same(ferase(path("a")), 0));
    EXPECT_TRUE(is_same(ferror(), 0));
    EXPECT_FALSE(std::filesystem::exists(path("a")));
    EXPECT_TRUE(is_same(ferase(path("a")), -1));
    EXPECT_TRUE(is_same(ferror(), 2));
    EXPECT_TRUE(is_same(ferase(1), -1));
    EXPECT_TRUE(is_same(ferror(), 3));
    EXPECT_TRUE(is_same(ferase(path("")), -1));
    EXPECT_TRUE(is_same(ferror(), 5));
}

TEST_F(File, TemporaryNamesAreFreshAndNotCreated) {
    std::set<std::string> names;
    for (int i = 0; i < 1000; ++i) names.emplace(tempfilename(path(""), "zmrdd").string());
    EXPECT_EQ(names.size(), 1000U);
    for (const std::string& name : names) {
        EXPECT_EQ(name.substr(0, path("zmrdd").size()), path("zmrdd"));
        EXPECT_GT(name.size(), path("zmrdd").size() + 10);
    }
    EXPECT_TRUE(std::filesystem::is_empty(path("")));
}

TEST_F(File, ThereIsNoTemporaryNameUnderWhatIsNoFolder) {
    EXPECT_TRUE(is_same(tempfilename(write_file("a", "text")), ""));
}

TEST_F(File, TemporaryNamesStandUnderTheFolderOfTheEnvironment) {
    const char* before = std::getenv("TMPDIR");
    const std::string kept = before == nullptr ? "" : before;
    ::setenv("TMPDIR", path("").c_str(), 1);
    EXPECT_EQ(tempfilename().string().substr(0, path("").size()), path(""));
    ::unsetenv("TMPDIR");
    EXPECT_EQ(tempfilename("").string().substr(0, 5), "/tmp/");
    if (before != nullptr) ::setenv("TMPDIR", kept.c_str(), 1);
}

}  // namespace
}  // namespace zmfb::host
