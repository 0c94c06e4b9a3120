#include "conn/raise.h"

#include "host/error.h"
#include "host/latin1.h"
#include "tests/support/runtime.h"

namespace zmfb::test {
namespace {

using namespace host;

class Raise : public Runtime {};

TEST_F(Raise, TheHandlerGetsDescriptionGencodeAndSeverity) {
    Value seen;
    const ScopedErrorBlock block(Value::block([&seen](Args args) {
        seen = args[0];
        return Value("ignored");
    }));
    EXPECT_TRUE(conn::raiseerror("x").is_nil());
    ASSERT_NE(seen.object(), nullptr);
    EXPECT_EQ(show(seen.object()->get("description")), "\"[FBCONN Error];x\"");
    EXPECT_EQ(show(seen.object()->get("gencode")), "-1");
    EXPECT_EQ(show(seen.object()->get("severity")), "2");
}

TEST_F(Raise, MessagesAreOneBytePerLetter) {
    conn::raiseerror("Erro na descrição"_l1);
    EXPECT_EQ(raised(), (std::vector<std::string>{"[FBCONN Error];Erro na descri\xE7\xE3o"}));
}

}  // namespace
}  // namespace zmfb::test
