/// What the engine's own validation says of a database.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"

namespace zmfb::test {

/// Makes the engine write pages through to the disk, in their order, as it does where people work.
inline void write_through(const std::string& database) {
    constexpr char forced_writes[] = {isc_dpb_force_write, 1, 1};
    const BareClient switched(database, std::string(forced_writes, sizeof forced_writes));
}

/// What gfix says of a database that nobody uses; nothing when all is well.
inline std::string validation(const std::string& database) {
    const Finished gfix =
        run({"gfix", "-v", "-full", "-user", sysdba, "-password", sysdba_password, database});
    return gfix.out + gfix.err + (gfix.status == 0 ? "" : "status " + std::to_string(gfix.status));
}

/// Expects a database in which a process was ended to be sound.
inline void expect_sound(const std::string& database) {
    // A record of a transaction that died may have got no entries in indexes any more: validation counts that
    // as errors until the record is swept away. A page that was taken and not yet used is an orphan, a
    // warning; validation frees it.
    const Finished sweep = run({"gfix", "-sweep", "-user", sysdba, "-password", sysdba_password, database});
    EXPECT_EQ(sweep.out + sweep.err, "");
    static const std::regex orphans(
        "(Summary of validation errors\n\\s+Number of database page warnings\\s+: \\d+\n)?");
    const std::string found = validation(database);
    EXPECT_TRUE(std::regex_match(found, orphans)) << found;
    EXPECT_EQ(validation(database), "") << "once the orphans are freed";
}

}  // namespace zmfb::test
