#include "tool/hints.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

TEST(Hints, RefusalsOfEveryEngineAreUnderstood) {
    constexpr std::string_view of_rights = "the owner of the database gives rights";
    constexpr std::string_view of_databases = "SYSDBA gives the right to make databases";
    const std::pair<std::string_view, std::string_view> known[] = {
        {"unsuccessful metadata update\nCREATE TABLE Q failed\nNo permission for CREATE TABLE "
         "operation\nEffective "
         "user is ANNA",
         of_rights},
        {"no permission for SELECT access to TABLE T\nEffective user is ANNA", of_rights},
        {"There is no privilege for this operation", of_rights},
        {"no permission for CREATE access to DATABASE /data/x.fdb", of_databases},
        {"No permission for CREATE DATABASE operation", of_databases},
        {"add record error\nno permission for INSERT access to TABLE PLG$SRP_VIEW\nEffective user is ANNA",
         "SYSDBA makes the users of a server"},
        {"Error while trying to create file\nNo such file or directory", "its folder has to be there"},
        {"Error while trying to create file\nFile exists", "\"zmfb doctor\" says"},
    };
    for (const auto& [message, hint] : known)
        EXPECT_TRUE(tool::hint_for(message).starts_with(hint)) << message;
}

}  // namespace
}  // namespace zmfb::test
