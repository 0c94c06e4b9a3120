// The guard of a database file between processes, without an engine.
#include "sql/guard.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <thread>

#include "sql/client.h"
#include "tests/support/runtime.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// An engine with its locks in a folder that a test chooses.
class Engine : public sql::Client {
  public:
    explicit Engine(std::string folder) : folder_(std::move(folder)) { sql::set_client(this); }
    ~Engine() override { sql::set_client(nullptr); }
    void prefix_lock(char* path, const char* file) override {
        std::strcpy(path, (folder_ + "/" + file).c_str());
    }

  private:
    std::string folder_;
};

// A process that does what it is given, sends the text that it comes to, and then waits for its end.
class Holder {
  public:
    template <class Work>
    explicit Holder(const Work& work) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) throw std::runtime_error("pipe");
        process_ = ::fork();
        if (process_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::close(ends[0]);
            work([&](const std::string& text) { send(ends[1], text); });
            ::_exit(0);
        }
        ::close(ends[1]);
        answers_ = ends[0];
    }
    // One that takes a file, its locks in that folder.
    Holder(const std::string& folder, const std::string& file)
        : Holder([&](const auto& answer) {
              const Engine engine(folder);
              sql::Guard guard;
              const std::string problem = guard.take(file).message();
              answer(problem.empty() && !guard.holds(file) ? "not held" : problem);
              ::pause();
          }) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        kill();
        ::close(answers_);
    }

    // The text that it sent; waits for it.
    std::string answer() const {
        std::string text;
        for (char byte = 0; ::read(answers_, &byte, 1) == 1 && byte != '\0';) text += byte;
        return text;
    }
    void kill() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = -1;
    }
    [[nodiscard]] pid_t process() const { return process_; }

  private:
    static void send(int end, const std::string& text) {
        EXPECT_EQ(::write(end, text.c_str(), text.size() + 1), static_cast<ssize_t>(text.size() + 1));
    }

    pid_t process_ = -1;
    int answers_ = -1;
};

class Guards : public Runtime {
  protected:
    Guards() {
        for (const char* name : {"one", "two"}) fs::create_directory(file(name));
        write_file("shop.fdb", "a database");
    }
    [[nodiscard]] std::string shop() const { return file("shop.fdb"); }
    void expect_refused(const Holder& refused, const Holder& holder) const {
        const std::string answer = refused.answer();
        EXPECT_NE(answer.find("process " + std::to_string(holder.process()) + " (sql_guard_test, user "),
                  std::string::npos)
            << answer;
        EXPECT_NE(answer.find(file("two")), std::string::npos) << answer;
    }
};

TEST_F(Guards, ProcessesWithOneLockFolderHoldAFileTogether) {
    const Holder first(file("one"), shop());
    EXPECT_EQ(first.answer(), "");
    const Holder second(file("one"), shop());
    EXPECT_EQ(second.answer(), "");
}

TEST_F(Guards, AProcessWithAnotherLockFolderIsToldWhoHasTheFile) {
    fs::create_symlink(shop(), file("link"));
    fs::create_hard_link(shop(), file("hard"));
    Holder first(file("one"), shop());
    EXPECT_EQ(first.answer(), "");
    for (const std::string& name : {shop(), file("link"), file("hard")}) {
        SCOPED_TRACE(name);
        expect_refused(Holder(file("two"), name), first);
    }
    first.kill();
    EXPECT_EQ(Holder(file("two"), shop()).answer(), "");
}

TEST_F(Guards, OtherFilesAreFree) {
    write_file("other.fdb", "");
    const Holder first(file("one"), shop());
    EXPECT_EQ(first.answer(), "");
    EXPECT_EQ(Holder(file("two"), file("other.fdb")).answer(), "");
}

pid_t forked() {
    const pid_t made = ::fork();
    if (made == 0) ::pause();
    return made;
}

// Nothing of ours runs in such a child before it is another program.
pid_t spawned() {
    pid_t made = -1;
    std::string words[] = {"sleep", "60"};
    char* const arguments[] = {words[0].data(), words[1].data(), nullptr};
    return ::posix_spawnp(&made, "sleep", nullptr, nullptr, arguments, environ) == 0 ? made : -1;
}

TEST_F(Guards, AGuardEndsWithItsProcessWhateverChildrenItHad) {
    for (const auto child : {forked, spawned}) {
        Holder first([&](const auto& answer) {
            const Engine engine(file("one"));
            sql::Guard guard;
            const Status held = guard.take(shop());
            answer(held.ok() ? std::to_string(child()) : held.message());
            ::pause();
        });
        const auto made = static_cast<pid_t>(std::stoi(first.answer()));
        ASSERT_GT(made, 0);
        expect_refused(Holder(file("two"), shop()), first);
        first.kill();
        EXPECT_EQ(::kill(made, 0), 0) << "the child has ended";
        EXPECT_EQ(Holder(file("two"), shop()).answer(), "");
        ::kill(made, SIGKILL);
    }
}

// What two processes that come at the same moment share.
struct Meeting {
    static constexpr int rounds = 15;
    std::atomic<int> arrived = 0;
    std::array<std::atomic<bool>, 2> in{};
    std::atomic<bool> both = false;
    std::atomic<int> let_in = 0;

    void meet(std::size_t me, const std::string& folder, const std::string& file) {
        const Engine engine(folder);
        for (int round = 1; round <= rounds; ++round) {
            for (++arrived; arrived < 2 * round;) continue;
            sql::Guard guard;
            if (!guard.take(file).ok()) continue;
            in.at(me) = true;
            ++let_in;
            for (int look = 0; look < 20; ++look) {
                if (in.at(1 - me)) both = true;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            in.at(me) = false;
        }
    }
};

TEST_F(Guards, OfTwoThatComeAtOnceOneIsLetInAfterTheOther) {
    void* const shared =
        ::mmap(nullptr, sizeof(Meeting), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    Meeting& meeting = *new (shared) Meeting;
    {
        const auto come = [&](std::size_t who, const char* folder) {
            return [&, who, folder](const auto& answer) {
                meeting.meet(who, file(folder), shop());
                answer("done");
            };
        };
        const Holder first(come(0, "one"));
        const Holder second(come(1, "two"));
        EXPECT_EQ(first.answer(), "done");
        EXPECT_EQ(second.answer(), "done");
    }
    EXPECT_FALSE(meeting.both);
    EXPECT_GE(meeting.let_in, Meeting::rounds);
    ::munmap(shared, sizeof(Meeting));
}

TEST_F(Guards, AFileThatCannotBeOpenedIsTheEnginesToComplainOf) {
    EXPECT_EQ(Holder(file("one"), file("nowhere.fdb")).answer(), "not held");
    EXPECT_EQ(Holder(file("one"), file("no/folder.fdb")).answer(), "not held");
}

TEST_F(Guards, AFileThatAnotherProgramHasLockedWholeIsRefused) {
    const Holder other([&](const auto& answer) {
        const int handle = ::open(shop().c_str(), O_RDWR);
        struct flock lock {};
        lock.l_type = F_RDLCK;
        answer(std::to_string(::fcntl(handle, F_SETLK, &lock)));
        ::pause();
    });
    ASSERT_EQ(other.answer(), "0");
    const std::string answer = Holder(file("one"), shop()).answer();
    EXPECT_TRUE(answer.starts_with("process " + std::to_string(other.process()) + " (sql_guard_test, user "))
        << answer;
    EXPECT_TRUE(answer.ends_with(") has locked all of " + shop())) << answer;
}

TEST_F(Guards, WithoutAFolderForLocksNothingIsTaken) {
    const std::string answer = Holder(file("nowhere"), shop()).answer();
    EXPECT_EQ(answer, "cannot use the folder of the engine's lock files, " + file("nowhere") +
                          ": No such file or directory");
}

// Not every file system has such locks. This process is given none from here on.
void have_no_locks() {
#ifdef __NR_fcntl64
    constexpr unsigned call = __NR_fcntl64;
#else
    constexpr unsigned call = __NR_fcntl;
#endif
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[1])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, F_OFD_SETLK, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOLCK),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
}

TEST_F(Guards, WhereFilesCannotBeLockedNoneIsTaken) {
    const Holder poor([&](const auto& answer) {
        have_no_locks();
        const Engine engine(file("one"));
        answer(sql::Guard().take(shop()).message());
    });
    EXPECT_EQ(poor.answer(), "files cannot be locked where " + shop() + " lies: No locks available");
}

TEST_F(Guards, ALockFolderThatIsNoLongerTheSameIsSaidSo) {
    const Holder mover([&](const auto& answer) {
        const Engine engine(file("one"));
        sql::Guard guard;
        const Status held = guard.take(shop());
        fs::rename(file("one"), file("moved"));
        fs::create_directory(file("one"));
        answer(held.message() + guard.take(shop()).message());
    });
    EXPECT_EQ(mover.answer(), "the folder of the engine's lock files, " + file("one") +
                                  ", was moved, replaced or emptied while this program runs");
}

}  // namespace
}  // namespace zmfb::test
