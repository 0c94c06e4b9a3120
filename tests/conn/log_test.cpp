#include "conn/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>

#include "tests/host/folder.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

// Sets an environment variable, or removes it with nullptr, for as long as it lives.
class Setting {
  public:
    Setting(const char* name, const char* value) : name_(name) {
        const char* before = std::getenv(name);
        if (before != nullptr) before_ = before;
        had_ = before != nullptr;
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    }
    ~Setting() { had_ ? setenv(name_, before_.c_str(), 1) : unsetenv(name_); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

  private:
    const char* name_;
    std::string before_;
    bool had_ = false;
};

class Log : public Runtime {
  protected:
    zmFBConn object;
};

TEST_F(Log, AnEntryIsTwoLinesByteForByte) {
    const Setting user("USER", "ana");
    std::string before(26, '\0');
    std::string after(26, '\0');
    std::time_t now = std::time(nullptr);
    ctime_r(&now, before.data());
    object.call("setloglevel", 3);
    now = std::time(nullptr);
    ctime_r(&now, after.data());
    const auto entry = [](const std::string& date) {
        return "\t[0] ana " + std::string(date.c_str()) + " [LOG#] zmFBConn loglevel now is: 3\n";
    };
    const std::string text = log_text();
    EXPECT_TRUE(text == entry(before) || text == entry(after)) << text;
}

// Else what one process writes could stand in the middle of what another does.
TEST_F(Log, EntriesOfSeveralProcessesDoNotMix) {
    constexpr int processes = 4;
    constexpr int entries = 200;
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
        children.push_back(::fork());
        if (children.back() != 0) continue;
        for (int k = 0; k < entries; ++k)
            object.call("writelog", std::string(9000, static_cast<char>('a' + i)), 0);
        ::_exit(0);
    }
    for (const pid_t child : children) ::waitpid(child, nullptr, 0);
    const auto lines = log_lines();
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(processes * entries));
    for (const LogEntry& line : lines) EXPECT_EQ(line.text, std::string(9000, line.text.front()));
}

TEST_F(Log, WithoutUserTheNullTextIsPrinted) {
    const Setting user("USER", nullptr);
    object.call("setloglevel", 0);
    EXPECT_EQ(log_text().substr(0, 11), "\t[0] (null)");
}

TEST_F(Log, EntriesAboveTheLevelAreNotWritten) {
    object.call("writelog", "[ERROR] SQLCODE=-204 (x)", 1);
    EXPECT_EQ(log_text(), "");
    object.call("writelog", "[CONN] y", 0);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "[CONN] y"}}));
}

TEST_F(Log, ALevelOfMinusOneStopsEverythingItsOwnLineIncluded) {
    object.call("setloglevel", -1);
    object.call("writelog", "[CONN] y", 0);
    EXPECT_EQ(log_text(), "");
    EXPECT_EQ(show(object.call("getloglevel")), "-1");
}

TEST_F(Log, ANegativeEntryIsStillWrittenAtItsLevel) {
    object.call("setloglevel", -1);
    object.call("writelog", "deep", -2);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{-2, "deep"}}));
}

TEST_F(Log, ALevelSetThroughOneObjectAppliesToAll) {
    zmFBConn other;
    object.call("setloglevel", 8);
    EXPECT_EQ(show(other.call("getloglevel")), "8");
}

TEST_F(Log, ALongTextIsCutToItsFirst9999Characters) {
    const std::string text = "<" + std::string(11998, 'x') + ">";
    object.call("writelog", text, 0);
    const auto lines = log_lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, text.substr(0, 9999));
}

TEST_F(Log, ATextEndsAtAZeroByte) {
    object.call("writelog", std::string("ab\0cd", 5), 0);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "ab"}}));
}

TEST_F(Log, PercentSignsAreOrdinary) {
    object.call("writelog", "%s%n%d 100%", 0);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "%s%n%d 100%"}}));
}

TEST_F(Log, TextsOfOtherKindsCountAsEmptyAndLevelsAsZero) {
    object.call("writelog", 5, "x");
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, ""}}));
}

TEST_F(Log, TheLevelIsAnIntegerHeldWithinItsRange) {
    object.call("setloglevel", 3.9);
    EXPECT_EQ(show(object.call("getloglevel")), "3");
    object.call("setloglevel", 1e30);
    EXPECT_EQ(show(object.call("getloglevel")), "2147483647");
}

TEST_F(Log, ALogThatCannotBeWrittenChangesNothing) {
    const Setting path("ZMFB_TEST_LOG", "/nonexistent folder/zmrddfire.log");
    EXPECT_TRUE(object.call("setloglevel", 2).is_nil());
    EXPECT_EQ(show(object.call("getloglevel")), "2");
    object.call("frobnicate");
    EXPECT_EQ(raised().size(), 1U);
}

// Whether a method that logs into this pipe comes to its end, in a child that ends on a signal as programs
// do.
bool logs_into(zmFBConn& object) {
    return host_test::in_child([&] {
               std::signal(SIGPIPE, SIG_DFL);
               ::alarm(20);
               for (int i = 0; i < 20; ++i) object.call("writelog", std::string(9000, 'x'), 0);
               return 0;
           }) == 0;
}

TEST_F(Log, APipeInItsPlaceMakesNoMethodWaitWhetherOrNotSomebodyReads) {
    const std::string pipe = file("pipe");
    const Setting path("ZMFB_TEST_LOG", pipe.c_str());
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(logs_into(object)) << "nobody reads";
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_TRUE(logs_into(object)) << "somebody has it open and reads nothing";
    std::string read(200000, ' ');
    EXPECT_GT(::read(reader, read.data(), read.size()), 9000);
    ::close(reader);
    EXPECT_TRUE(logs_into(object)) << "nobody reads any more";
}

// What a process does with the signal of a file that grows beyond its limit: its action, whether it is
// blocked and whether it is pending.
std::string state_of_file_size_signal() {
    struct sigaction action {};
    ::sigaction(SIGXFSZ, nullptr, &action);
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    sigset_t pending;
    ::sigpending(&pending);
    return std::string(action.sa_handler == SIG_DFL ? "default" : "own") +
           (sigismember(&blocked, SIGXFSZ) != 0 ? " blocked" : "") +
           (sigismember(&pending, SIGXFSZ) != 0 ? " pending" : "");
}

TEST_F(Log, AFileAtTheLimitOfItsSizeChangesNothing) {
    object.call("writelog", std::string(5000, 'x'), 0);
    const std::string before = log_text();
    const int outcome = host_test::in_child([&] {
        host_test::limit_files_to(4096);
        std::signal(SIGXFSZ, SIG_DFL);
        object.call("setloglevel", 2);
        if (show(object.call("getloglevel")) != "2") return 1;
        return state_of_file_size_signal() == "default" ? 0 : 2;
    });
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(log_text(), before);
}

TEST_F(Log, ASignalThatTheProgramHoldsBackStaysForIt) {
    object.call("writelog", std::string(5000, 'x'), 0);
    const int outcome = host_test::in_child([&] {
        host_test::limit_files_to(4096);
        std::signal(SIGXFSZ, SIG_DFL);
        sigset_t signal;
        sigemptyset(&signal);
        sigaddset(&signal, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &signal, nullptr);
        object.call("writelog", "too much", 0);
        if (state_of_file_size_signal() != "default blocked") return 1;
        ::raise(SIGXFSZ);
        object.call("writelog", "too much", 0);
        const bool kept = state_of_file_size_signal() == "default blocked pending";
        const timespec at_once{};
        ::sigtimedwait(&signal, nullptr, &at_once);
        return kept ? 0 : 2;
    });
    EXPECT_EQ(outcome, 0);
}

TEST_F(Log, TheFileIsOpenedForEachEntryAnew) {
    object.call("writelog", "one", 0);
    ASSERT_EQ(std::rename(conn::log_path(), file("moved").c_str()), 0);
    object.call("writelog", "two", 0);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "two"}}));
}

}  // namespace
}  // namespace zmfb::test
