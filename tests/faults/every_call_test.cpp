// Every call of the client made to fail, one at a time, in every method that talks to the database.
#include <fmt/format.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>

#include "tests/faults/walk.h"

namespace zmfb::test {
namespace {

// How many occurrences of one call in one scenario are made to fail: the environment variable says it for
// the long run.
int limit() {
    const char* given = std::getenv("ZMFB_FAULTS_OF_EACH");
    return given == nullptr ? 1 : std::atoi(given);
}

void report(const char* what, const Tally& tally, std::size_t methods) {
    fmt::print(
        "{}: {} methods, {} calls of the client, {} pairs that occur, {} occurrences; made to fail: {}"
        ", with the rollback as well: {}; held against the kind of the answer only: {}\n",
        what, methods, client_call_count, tally.pairs.size(), tally.occurrences, tally.failures,
        tally.rollbacks, tally.by_kind_only);
}

class EveryCall : public Walk {
  protected:
    void walk_all(const char* what, const std::vector<Scenario>& scenarios) {
        Tally tally;
        std::set<std::string> methods;
        for (const Scenario& scenario : scenarios) {
            walk(scenario, limit(), tally);
            methods.insert(scenario.method);
        }
        report(what, tally, methods.size());
        EXPECT_GT(tally.failures, 0);
    }
};

TEST_F(EveryCall, OfAttachingAndDetaching) { walk_all("conn", connection_scenarios()); }
TEST_F(EveryCall, OfQueriesAndStatements) { walk_all("sql", sql_scenarios()); }
TEST_F(EveryCall, OfCatalogQuestions) { walk_all("catalog", catalog_scenarios()); }
TEST_F(EveryCall, OfRegistrationsAndLocks) { walk_all("locks", lock_scenarios()); }
TEST_F(EveryCall, OfTablesMadeAndDropped) { walk_all("schema", schema_scenarios()); }
TEST_F(EveryCall, OfFieldsChanged) { walk_all("schema, fields", change_scenarios()); }
TEST_F(EveryCall, OfTransfers) { walk_all("transfer", transfer_scenarios()); }
TEST_F(EveryCall, OfMatrices) { walk_all("matrix", matrix_scenarios()); }

TEST_F(EveryCall, WithARollbackThatFailsToo) {
    Tally tally;
    const std::vector<Scenario> scenarios = all_scenarios();
    std::set<std::string> methods;
    for (const Scenario& scenario : scenarios) {
        if (limit() == 1 && scenario.uses == Uses::changes) continue;
        walk_rollbacks(scenario, tally);
        methods.insert(scenario.method);
    }
    report("rollbacks", tally, methods.size());
    EXPECT_GT(tally.rollbacks, 0);
}

TEST_F(EveryCall, IsMadeByNoneOfTheOtherMethods) {
    Tally tally;
    for (const Scenario& scenario : quiet_scenarios()) walk(scenario, 0, tally);
    EXPECT_TRUE(tally.pairs.empty());
}

TEST(EveryMethod, HasAScenario) {
    std::set<std::string> have;
    for (const Scenario& scenario : all_scenarios()) have.insert(scenario.method);
    for (const MethodRow& row : methods()) EXPECT_TRUE(have.contains(std::string(row.name))) << row.name;
}

void add_declared(const char* file, std::set<std::string>& declared) {
    std::ifstream header(file);
    ASSERT_TRUE(header.is_open()) << file;
    const std::string text(std::istreambuf_iterator<char>(header), {});
    const std::regex declaration(R"(virtual ISC_STATUS (\w+)\()");
    for (std::sregex_iterator at(text.begin(), text.end(), declaration), end; at != end; ++at)
        declared.insert((*at)[1]);
}

// The client's functions are those of sql/client.h and sql/object_client.h that report an outcome.
TEST(EveryCallOfTheClient, CanBeMadeToFail) {
    std::set<std::string> declared;
    add_declared(ZMFB_CLIENT_HEADER, declared);
    add_declared(ZMFB_OBJECT_CLIENT_HEADER, declared);
    declared.erase("cancel_operation");  // comes from other threads, and nobody is told what came of it
    std::set<std::string> known;
    for (std::size_t call = 0; call < client_call_count; ++call)
        known.insert(name_of(static_cast<ClientCall>(call)));
    EXPECT_EQ(known, declared);
}

}  // namespace
}  // namespace zmfb::test
