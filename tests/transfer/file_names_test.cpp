#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb {
namespace {

struct Case {
    std::string given;
    std::string wanted;
};

class FileNames : public test::Runtime {
  protected:
    void expect(std::string_view method, const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            EXPECT_EQ(test::show(connection_.call(method, c.given)), test::show(c.wanted))
                << method << ": " << c.given;
        }
    }

  private:
    zmFBConn connection_;
};

TEST_F(FileNames, GetfilenameIsWhatStandsBehindTheLastSlash) {
    expect("getfilename", {{"/a/b/c.dbf", "c.dbf"},
                           {"c.dbf", "c.dbf"},
                           {"/a/b/", ""},
                           {"/", ""},
                           {"", ""},
                           {"./x.dbf", "x.dbf"},
                           {"a\\b.dbf", "a\\b.dbf"},
                           {"//a", "a"}});
}

TEST_F(FileNames, RemovefilenameextCutsAtTheFirstDot) {
    expect("removefilenameext", {{"clientes.dbf", "clientes"},
                                 {"noext", "noext"},
                                 {"a.b.c", "a"},
                                 {"data.tar.gz", "data"},
                                 {".hidden", ""},
                                 {"./x.dbf", ""},
                                 {"end.", "end"},
                                 {"", ""}});
}

TEST_F(FileNames, RemovezerobytesCutsAtTheFirstZeroByte) {
    using namespace std::string_literals;
    expect("removezerobytes", {{"NAME\0\0\0\0\0\0"s, "NAME"},
                               {"\0NAME"s, ""},
                               {"A\0B\0"s, "A"},
                               {"no zero byte", "no zero byte"},
                               {"blank \0"s, "blank "},
                               {"", ""}});
}

}  // namespace
}  // namespace zmfb
