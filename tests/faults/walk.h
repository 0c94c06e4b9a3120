/// The walk over all methods and all calls of the client.
#pragma once

#include <iosfwd>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/faults/scenario.h"
#include "tests/faults/witness.h"
#include "tests/support/database.h"

namespace zmfb::test {

/// How far the walk came.
struct Tally {
    std::set<std::pair<std::string, std::size_t>> pairs;  ///< (method, client call) that occur
    int occurrences = 0;                                  ///< all calls of these pairs
    int failures = 0;                                     ///< of them, made to fail
    int rollbacks = 0;                                    ///< failures in which the rollback failed as well
    int by_kind_only = 0;  ///< failures whose answer was held against the kind of the good one only
};

class Walk : public Database {
  protected:
    Walk();

    /// Runs a scenario without failure, and then once for every occurrence of every call; at most `limit` of
    /// each call, the first and the last among them.
    void walk(const Scenario& scenario, int limit, Tally& tally);
    /// The same with a rollback that fails too, for the first occurrence of every call that brings one about.
    void walk_rollbacks(const Scenario& scenario, Tally& tally);

    /// What was taken and not given back.
    struct Balance {
        int transactions = 0, statements = 0, attachments = 0, blocks = 0;
        bool batch = false;
        bool operator==(const Balance&) const = default;
    };
    friend void PrintTo(const Balance& balance, std::ostream* out);
    /// What has not been given back to `witness`.
    static Balance balance_of(const Witness& witness);

    /// An object on a fresh copy of the scenario's database.
    void restore(const Scenario& scenario);
    /// The objects of the database and the rows in its tables, as one text.
    [[nodiscard]] std::string state_of_database() const;
    /// An answer as text, without what differs from run to run.
    [[nodiscard]] std::string shown(const Value& answer) const;
    /// Expects that the object, if there is one, still queries and updates.
    void expect_usable(const Scenario& scenario);
    void let_object_go() { object_.reset(); }

  public:
    zmFBConn& object() { return *object_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    Value evaluate(const std::string& call);
    /// `text` with what the signs in it stand for.
    [[nodiscard]] std::string filled(std::string text) const;
    [[nodiscard]] std::string in_folder(const std::string& file_name) const { return file(file_name); }

  private:
    /// What came of one run.
    struct Seen {
        std::string answer;
        Value value;
        std::vector<std::string> raised;
        std::vector<std::string> lines;  ///< of the levels 0 and 1
        std::vector<std::string> statements_until_failure;
        int committed = 0;  ///< statements that changed something
        std::string state;  ///< of the database, where a scenario changes it
        Balance balance;
        std::vector<int> counts;  ///< of each call
        std::vector<int> rows;    ///< fetched in each transaction
        Moment moment;
    };

    /// What is to come of one.
    struct Expected {
        std::string answer;
        std::vector<std::string> raised;
        std::vector<std::string> lines;
        bool other_state = false;
    };

    void make_databases();
    void read_log(Seen& seen) const;
    Seen run(const Scenario& scenario, const std::vector<ClientCall>& failing, int nth);
    const Seen& good_run(const Scenario& scenario);
    void fail_one(const Scenario& scenario, ClientCall call, int nth, bool rollback_too, Tally& tally);
    void judge(const Scenario& scenario, ClientCall call, const Seen& seen, Tally& tally);
    void judge_answer(const Expected& expected, const Seen& seen, Tally& tally);
    [[nodiscard]] Expected expected(const Scenario& scenario, const Failure& failure,
                                    const Moment& moment) const;
    [[nodiscard]] Expected as_good() const;
    const Failure* expectation(const Scenario& scenario, ClientCall call, const Seen& seen) const;
    void expect_good(const Scenario& scenario, const char* when);

    std::optional<zmFBConn> object_;
    std::string name_;
    int number_ = 0;
    std::optional<Seen> good_;
};

}  // namespace zmfb::test
