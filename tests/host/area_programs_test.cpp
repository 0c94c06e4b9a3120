// The native driver runs the programs over work areas.
#include "area_programs.h"

#include <unistd.h>

#include "errors.h"
#include "expression.h"
#include "folder.h"
#include "host/settings.h"
#include "host/workarea.h"

namespace zmfb::host_test {
namespace {

class AreaPrograms : public FolderTest {
  protected:
    AreaPrograms() : before_(std::filesystem::current_path()) { std::filesystem::current_path(path("")); }
    ~AreaPrograms() override {
        const CaughtErrors whatever_closing_raises;
        host::dbcloseall();
        host::set(8, host::Value());
        std::filesystem::current_path(before_);
    }
    // Files of tables are made anew, so that no program finds what another one left.
    static void prepare(std::string_view table) {
        for (const auto& file : std::filesystem::directory_iterator(std::filesystem::current_path()))
            std::filesystem::remove(file);
        host::set(8, host::Value(false));
        host::dbcreate("staff", staff_structure());
        host::dbusearea(false, {}, "staff");
        if (table != "empty") append_staff();
        if (table == "closed") host::dbcloseall();
    }

  private:
    std::filesystem::path before_;
};

TEST_F(AreaPrograms, PrintTheSameOnDbfFiles) { run_area_programs("DBFIDX", prepare); }

TEST_F(AreaPrograms, OneThatPrintsAnythingElseIsTold) {
    prepare("staff");
    EXPECT_EQ(printed_by("? RECNO(), FIELDGET(\"PAY\"), FIELDGET(4), FIELDGET(5), DBRLOCKLIST()"),
              "1 1200.50 19800102 .T. {}");
    EXPECT_EQ(printed_by("? 1; FIELDPUT(1, \"x\"); n := 3; ? n + 1"), "1 !38 4");
    EXPECT_THROW(printed_by("NOSUCH()"), SyntaxError);
}

}  // namespace
}  // namespace zmfb::host_test
