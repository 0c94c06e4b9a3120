#include "tool/drop.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

TEST(WaitingForOthers, IsWorthItWhereTheyMayGoAndForSoManyAttempts) {
    struct Case {
        const char* message;
        int attempt;
        bool waits;
    };
    for (const auto& [message, attempt, waits] : std::initializer_list<Case>{
             {"the table CLIENT is in use by another program", 1, true},
             {"unsuccessful metadata update\nobject TABLE \"A\" is in use", 19, true},
             {"update conflicts with concurrent update\nconcurrent transaction number is 7", 1, true},
             {"the table CLIENT is in use by another program", 20, false},
             {"the table CLIENT is open in TILL", 1, false},
             {"no permission for DROP access to TABLE CLIENT", 1, false},
         })
        EXPECT_EQ(tool::wait_for_others(message, attempt), waits) << message << attempt;
}

}  // namespace
}  // namespace zmfb::test
