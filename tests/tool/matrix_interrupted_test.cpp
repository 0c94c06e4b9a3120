// An applying of a matrix that is interrupted in the middle.
#include <signal.h>

#include <nlohmann/json.hpp>

#include "tests/tool/matrix_command.h"

namespace zmfb::test {
namespace {

// A matrix that adds a field and then changes another, whose values take for ever to be copied.
class MatrixInterrupted : public MatrixCommand {
  protected:
    MatrixInterrupted() {
        matrix = edited(" CLIENT>>002::PRICE::N::8::2               => 002::PRICE::N::8::2",
                        " CLIENT>>002::CITY::C::5::0                => 002::CITY::C::5::0\r\n"
                        " CLIENT>>003::PRICE::N::8::2               => 003::PRICE::N::9::2");
        exec(path,
             "create trigger slow for client before update as declare n bigint = 0; begin "
             "while (n >= 0) do n = mod(n + 1, 1000); end");
    }
    [[nodiscard]] Finished interrupted(const std::vector<std::string>& options, int signal) const {
        std::vector<std::string> words{"--db", path, "matrix", "apply", "--yes", matrix};
        words.insert(words.end(), options.begin(), options.end());
        const auto tool = start(words);
        while (
            on(path, {"query", "--mode", "csv",
                      "select count(*) from mon$statements where mon$sql_text starting with 'UPDATE CLIENT'"})
                .out != "COUNT\r\n1\r\n") {
        }
        tool->send(signal);
        return tool->end();
    }
    std::string matrix;
};

TEST_F(MatrixInterrupted, SaysWhatIsDoneAndWhatIsNot) {
    const Finished run = interrupted({}, SIGTERM);
    EXPECT_EQ(run.status, 143);
    EXPECT_TRUE(run.out.ends_with("[ CLIENT ]\n[OK] Added Field: CITY\n")) << run.out;
    EXPECT_TRUE(run.err.starts_with("error: interrupted; what was done stays\n  still to be done:\n  - - "))
        << run.err;
    EXPECT_NE(run.err.find("  [OK] Alter Field: PRICE\n"), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("CITY\n  [OK] Alter"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("hint: \"zmfb doctor\" says whether a field is half changed"), std::string::npos);
}

TEST_F(MatrixInterrupted, CanBeAppliedAgainWhenTheHalfChangedFieldIsPutRight) {
    EXPECT_EQ(interrupted({}, SIGINT).status, 130);
    EXPECT_NE(on(path, {"doctor"}).out.find("RDDAUX_PRICE"), std::string::npos);
    exec(path, "drop trigger slow");
    exec(path, "alter table client drop rddaux_price");
    EXPECT_EQ(on(path, {"matrix", "apply", "--yes", matrix}).status, 0);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select price from client"}).out, "PRICE\r\n1.50\r\n");
}

TEST_F(MatrixInterrupted, AsJsonBothAreLists) {
    const Finished run = interrupted({"--json"}, SIGINT);
    EXPECT_EQ(run.status, 130);
    const nlohmann::json said = nlohmann::json::parse(run.out);
    EXPECT_EQ(said["ok"], false);
    EXPECT_EQ(said["interrupted"], true);
    EXPECT_EQ(said["log"].back(), "[OK] Added Field: CITY");
    EXPECT_NE(std::ranges::find(said["left"], "[OK] Alter Field: PRICE"), said["left"].end());
}

}  // namespace
}  // namespace zmfb::test
