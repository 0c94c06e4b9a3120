#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/folder.h"
#include "tests/support/runtime.h"
#include "tool/doctor/checks.h"

namespace zmfb::test {
namespace {

using tool::Finding;
using tool::folder_finding;
using tool::State;

class DoctorFolder : public Runtime {
  protected:
    [[nodiscard]] std::string with_mode(mode_t mode) const {
        std::filesystem::create_directory(file("data"));
        ::chmod(file("data").c_str(), mode);
        return file("data");
    }
};

TEST_F(DoctorFolder, SaysWhoMayChangeTheDataFiles) {
    struct Case {
        mode_t mode;
        bool on_server;
        State state;
        std::string text;
        std::string advice;
    };
    const std::string data = file("data");
    const std::string own = data + ": its owner or group may write (permissions 700)";
    for (const Case& one : std::vector<Case>{
             {01777, false, State::ok,
              data + ": everybody may write, and remove files of their own (permissions 1777)", ""},
             {01777, true, State::ok,
              data + ": everybody may write, and remove files of their own (permissions 1777)", ""},
             {0777, false, State::note, data + ": everybody may write, and remove any file (permissions 777)",
              "chmod +t " + data},
             {0700, false, State::ok, own, ""},
             {0700, true, State::note, own,
              "the account of the server must be able to enter it and write there"},
         }) {
        const Finding found = folder_finding(with_mode(one.mode), one.on_server);
        EXPECT_EQ(found.check, "data-file folder");
        EXPECT_EQ(found.state, one.state) << one.text;
        EXPECT_EQ(found.text, one.text);
        EXPECT_EQ(found.advice, one.advice);
    }
}

TEST_F(DoctorFolder, OneThatIsNotThereIsBad) {
    const Finding found = folder_finding(file("nowhere"), false);
    EXPECT_EQ(found.state, State::bad);
    EXPECT_EQ(found.text, file("nowhere") + " is not there");
    EXPECT_EQ(found.advice, "mkdir " + file("nowhere"));
}

TEST_F(DoctorFolder, OneThatThisUserCannotWriteIsBad) {
    // Root may write anywhere, and becomes somebody who may not.
    const int outcome = host_test::in_child([] {
        constexpr uid_t nobody = 65534;
        if (::getuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) return 99;
        const Finding found = folder_finding("/proc", false);
        if (found.state != State::bad) return 1;
        if (found.text != "/proc cannot be written by this user") return 2;
        return found.advice == "bringdbf and exiletable need it" ? 0 : 3;
    });
    EXPECT_EQ(outcome, 0);
}

}  // namespace
}  // namespace zmfb::test
