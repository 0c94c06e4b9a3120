// What "zmfb matrix check" and "apply" take for a matrix.
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/matrix_command.h"

namespace zmfb::test {
namespace {

using MatrixFile = MatrixCommand;

std::string as_utf16(std::string_view text, bool big_endian) {
    std::string bytes = big_endian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text) bytes += big_endian ? std::string{'\0', c} : std::string{c, '\0'};
    return bytes;
}

TEST_F(MatrixFile, WhatIsNoMatrixIsRefused) {
    const std::string matrix = read_file(edited("=> 001::NAME::C::10::0", "=> 001::NAME::C::20::0"));
    struct Case {
        std::string content;
        std::string reason;
        std::string hint;
    };
    const std::string text_hint = "a matrix is a text in ISO-8859-1; zmfb matrix extract writes one";
    const std::string hint = "zmfb matrix extract writes one";
    for (const Case& one : std::vector<Case>{
             {"", "no line of it names a table", hint},
             {"Dear Ana,\n\nall is well here.\n", "no line of it names a table", hint},
             {"const f = (x) => x + 1;\n", "no line of it names a table", hint},
             {read_file(ZMFB_EXAMPLE_DBF), "it has zero bytes in it", text_hint},
             {as_utf16(matrix, false), "it is written in UTF-16", text_hint},
             {as_utf16(matrix, true), "it is written in UTF-16", text_hint},
             {"\xEF\xBB\xBF" + matrix, "it begins with the byte order mark of UTF-8", text_hint},
             {std::string(65 << 20, '\n'), "it has more than 67108864 bytes", ""},
         }) {
        const std::string other = write_file("other", one.content);
        for (const std::vector<std::string>& words :
             std::vector<std::vector<std::string>>{{"matrix", "check", other},
                                                   {"matrix", "apply", "--yes", other},
                                                   {"matrix", "apply", other}}) {
            const Finished run = on(path, words);
            EXPECT_EQ(run.status, 1) << one.reason;
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err, "error: " + other + " is no matrix: " + one.reason + "\n" +
                                   (one.hint.empty() ? "" : "hint: " + one.hint + "\n"));
        }
    }
    EXPECT_NE(on(path, {"struct", "client"}).out.find("\nNAME        C         10 "), std::string::npos);
}

TEST_F(MatrixFile, WhatCannotBeReadIsSaidSo) {
    for (const auto& [name, reason] :
         {std::pair<std::string, std::string>{"nosuch.tf", "No such file or directory"},
          {"", "it is a folder"},
          {"Łódź.tf", "No such file or directory"}}) {
        const Finished run = on(path, {"matrix", "apply", file(name)});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "error: cannot read " + file(name) + "\n  " + reason + "\n");
    }
}

TEST_F(MatrixFile, AnyNameWillDo) {
    std::filesystem::rename(edited("=> 001::NAME::C::10::0", "=> 001::NAME::C::20::0"), file("Łódź"));
    const Finished run = on(path, {"matrix", "check", file("Łódź")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("[OK] Alter Field: NAME\n"), std::string::npos);
}

TEST_F(MatrixFile, ABlockWithoutFieldsIsAMatrixThatDoesNothing) {
    on(path, {"exec", "alter table client drop name, drop price"});
    on(path, {"matrix", "extract", "client", "-o", file("m.tf")});
    const Finished run = on(path, {"matrix", "check", file("m.tf")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.find("[OK]"), std::string::npos) << run.out;
}

TEST_F(MatrixFile, WhatWasShownIsWhatIsApplied) {
    const std::string matrix = edited("=> 001::NAME::C::10::0", "=> 001::NAME::C::20::0");
    Dialogue talk({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK",
                   "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), ZMFB_TOOL, "--db", path,
                   "matrix", "apply", matrix});
    talk.expect("Apply it?");
    edited("=> 001::NAME::C::10::0", "=> DROP FIELD");
    talk.type("y\n");
    EXPECT_EQ(talk.end(), 0);
    EXPECT_NE(on(path, {"struct", "client"}).out.find("\nNAME        C         20 "), std::string::npos);
}

}  // namespace
}  // namespace zmfb::test
