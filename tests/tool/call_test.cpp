#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class CallCommand : public Tool {
  protected:
    CallCommand() : path(database()) {}
    std::string path;
};

TEST_F(CallCommand, EachResultIsALiteralOnALineOfItsOwn) {
    const Finished run = on(
        path, {"call", "istable('rddsys_opn')", "toarray('a::b', \"::\")", "getloglevel", "setloglevel(0)"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, ".T.\n{\"a\", \"b\"}\n0\nNIL\n");
}

TEST_F(CallCommand, JsonConvertsTextsToUtf8) {
    const Finished run =
        on(path, {"--json", "call", "toarray('ç::b', '::')", "setloglevel(0)", "isconnected()"});
    EXPECT_EQ(run.out, "[\"ç\",\"b\"]\nnull\ntrue\n");
    EXPECT_EQ(run.status, 0);
}

TEST_F(CallCommand, OneObjectServesAllCalls) {
    const Finished run = on(path, {"call", "setglbskipcachesize(500)", "getglbskipcachesize()"});
    EXPECT_EQ(run.out, "NIL\n500\n");
}

TEST_F(CallCommand, ARaisedErrorGoesToStandardErrorAndTheCallsGoOn) {
    const Finished run = on(path, {"call", "looptest('CUSTOMER')", "isconnected()"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "{}\n.T.\n");
    EXPECT_EQ(run.err, "raised: [FBCONN Error];CUSTOMER\n");
}

TEST_F(CallCommand, AnUnknownMethodIsRaised) {
    const Finished run = on(path, {"call", "frobnicate(1)"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "NIL\n");
    EXPECT_EQ(run.err, "raised: [FBCONN Error];zmFBConn has no Method named: frobnicate\n");
}

TEST_F(CallCommand, AFailedStatementIsAFailureToo) {
    const Finished run = on(path, {"call", "executeupdate('delete from nosuch')"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.out.starts_with("\"[ERROR] SQLCODE=-204 (")) << run.out;
}

TEST_F(CallCommand, MinusReadsOneCallALine) {
    const Finished run = on(path, {"call", "-"}, "isconnected()\n\n  \r\ngetloglevel()\r\nistable(\"X\")");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, ".T.\n0\n.F.\n");
}

TEST_F(CallCommand, MinusPassesOverAByteOrderMarkBeforeTheFirstLine) {
    const Finished run = on(path, {"call", "-"}, "\xEF\xBB\xBFisconnected()\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, ".T.\n");
}

TEST_F(CallCommand, ALineThatIsNoCallIsReportedAndTheOthersGoOn) {
    const Finished run = on(path, {"call", "-"}, "isconnected()\nis table\nisconnected()\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, ".T.\n.T.\n");
    EXPECT_TRUE(run.err.starts_with("error: line 2: ")) << run.err;
}

TEST_F(CallCommand, NothingIsCalledWhenAWordIsNoCall) {
    const Finished run = on(path, {"call", "createtable('T', {{'A', 'C', 5, 0}})", "istable("});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(on(path, {"call", "istable('T')"}).out, ".F.\n");
}

TEST_F(CallCommand, TablesAreMadeFromArrayLiterals) {
    const Finished run = on(path, {"call", "createtable('client', {{'NAME','C',30,0},{'PRICE','N',10,2}})",
                                   "gettablestruct('client')"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              ".T.\n{{\"NAME\", \"C\", 30, 0}, {\"PRICE\", \"N\", 10, 2}, {\"RDD_AREAID\", \"C\", 50, 0}, "
              "{\"RECNO\", \"N\", 15, 0}}\n");
}

TEST_F(CallCommand, WithoutADatabaseTheObjectIsNotAttachedAndItIsSaid) {
    const Finished run = zmfb({"call", "isconnected()"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, ".F.\n");
    EXPECT_EQ(run.err, "note: no database given (--db, ZMFB_DB); the object is not attached\n");
}

TEST_F(CallCommand, DatesComeBackAsTheyWereGiven) {
    const std::vector<std::string> words{"call", "setrddactive({{^2007-03-01}, {^}, {}})", "isrddactive()"};
    EXPECT_EQ(on(path, words).out, "NIL\n{{^2007-03-01}, {^}, {}}\n");
    EXPECT_EQ(on(path, {"--json", words[0], words[1], words[2]}).out, "null\n[\"2007-03-01\",\"\",[]]\n");
}

}  // namespace
}  // namespace zmfb::test
