// Imports and exports one of whose processes is killed.
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/big_table.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

/// The state letter and the parent of a process; nothing when there is none.
std::optional<std::pair<char, pid_t>> look_at(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string before;
    char state = 0;
    pid_t parent = 0;
    if (!std::getline(file, before, ')') || !(file >> state >> parent)) return std::nullopt;
    return std::pair(state, parent);
}

/// The child of a process; 0 for none.
pid_t child_of(pid_t process) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const pid_t other = std::atoi(entry.path().filename().c_str());
        if (other == 0) continue;
        const auto about = look_at(other);
        if (about && about->second == process) return other;
    }
    return 0;
}

bool is_gone(pid_t process) {
    const auto about = look_at(process);
    return !about || about->first == 'Z';
}

class Killed : public Tool {
  protected:
    Killed() : path(database()) {
        big_table().write(file("big.dbf"));
        before = objects();
    }
    /// The names of the tables, generators and triggers that users made.
    [[nodiscard]] std::string objects() const {
        return on(path, {"query", "--mode", "csv",
                         "select rdb$relation_name from rdb$relations where rdb$system_flag = 0 union "
                         "select rdb$generator_name from rdb$generators where rdb$system_flag = 0 union "
                         "select rdb$trigger_name from rdb$triggers where rdb$system_flag = 0"})
            .out;
    }
    std::string path;
    std::string before;
};

TEST_F(Killed, AnExportTakesItsProcessesWithItAndIsUndone) {
    ASSERT_EQ(on(path, {"import", file("big.dbf")}).status, 0);
    const std::string with_table = objects();
    std::filesystem::create_directory(file("out"));
    const auto tool = start({"--db", path, "export", "big", "-o", file("out")});
    wait_for_table(path, "EXT_BIG");
    const pid_t watcher = child_of(tool->pid());
    const pid_t worker = child_of(watcher);
    tool->send(SIGKILL);
    for (int i = 0; i < 1200 && !(is_gone(watcher) && is_gone(worker)); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(is_gone(worker));
    EXPECT_TRUE(is_gone(watcher));
    EXPECT_NE(tool->end().err.find("the export of big was interrupted, and undone\n"
                                   "  external table EXT_BIG dropped\n"),
              std::string::npos);
    EXPECT_EQ(objects(), with_table);
    EXPECT_TRUE(std::filesystem::is_empty(file("out")));
}

TEST_F(Killed, ByControlCOnATerminalAnImportIsUndone) {
    Dialogue talk({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK",
                   "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), ZMFB_TOOL, "--db", path,
                   "import", file("big.dbf")});
    talk.expect("copying    [#");
    talk.type("\x03");
    talk.expect("error: the import of ");
    talk.expect(" was interrupted, and undone\r\n");
    EXPECT_EQ(talk.end(), 130);
    EXPECT_EQ(objects(), before);
}

}  // namespace
}  // namespace zmfb::test
