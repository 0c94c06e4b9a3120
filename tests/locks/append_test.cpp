// Processes that append to one table at once, each learning the numbers of its own records.
#include <map>
#include <set>

#include "tests/locks/workers_test.h"

namespace zmfb::test {
namespace {

using Append = Workers;

TEST_F(Append, EachOfEightProcessesLearnsExactlyItsOwnRecordNumbers) {
    constexpr int processes = 8;
    constexpr int appended = 50;
    const Value structure = host::array_of(host::array_of("NAME", "C", 60, 0));
    ASSERT_TRUE(yes("createtable", "JOURNAL", structure));
    disconnect();

    std::vector<Worker> workers = start_workers(processes, "JOURNAL");
    ASSERT_EQ(workers.size(), processes);
    for (Worker& worker : workers) worker.process.start("appendrows", "JOURNAL", worker.area, appended);

    std::map<long, std::string> learned;
    for (Worker& worker : workers) {
        const Value numbers = worker.process.finish();
        ASSERT_EQ(numbers.kind(), host::Kind::array) << show(numbers);
        EXPECT_EQ(numbers.size(), appended);
        for (std::size_t row = 1; row <= numbers.size(); ++row) {
            const auto number = static_cast<long>(numbers[row].integer());
            const std::string name = worker.area + "/" + std::to_string(row);
            EXPECT_TRUE(learned.emplace(number, name).second) << name << " and " << learned[number];
        }
    }

    std::map<long, std::string> stored;
    for (const Row& row : rows("select recno, name, rdd_areaid from journal")) {
        stored.emplace(std::stol(row[0]), row[1]);
        EXPECT_EQ(row[2], "NULL") << row[1];
    }
    EXPECT_EQ(stored.size(), std::size_t{processes * appended});
    EXPECT_EQ(learned, stored);
    EXPECT_EQ(registrations(), Rows{});
}

}  // namespace
}  // namespace zmfb::test
