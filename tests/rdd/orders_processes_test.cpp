// Several processes that make orders of one table, and one that is killed while it does.
#include <chrono>
#include <random>
#include <thread>

#include "tests/rdd/orders_test.h"
#include "tests/support/environment.h"
#include "tests/support/validation.h"
#include "tests/support/worker/worker_process.h"

namespace zmfb::test {
namespace {

class OrdersOfProcesses : public Orders {
  protected:
    OrdersOfProcesses() {
        execute(
            "execute block as declare i integer = 0; begin while (i < 5000) do begin insert into CUST (NAME) "
            "values "
            "('Name ' || mod(:i * 7919, 5000)); i = i + 1; end end");
    }
    [[nodiscard]] WorkerProcess worker() const {
        WorkerProcess process;
        EXPECT_TRUE(process.call("attach", database(), sysdba, sysdba_password, "").logical());
        return process;
    }
};

TEST_F(OrdersOfProcesses, MakeOneOrderAtTheSameMoment) {
    WorkerProcess first = worker(), second = worker();
    for (int round = 0; round < 10; ++round) {
        for (WorkerProcess* process : {&first, &second}) process->start("makeorder", "CUST", "MAIN", "NAME");
        for (WorkerProcess* process : {&first, &second}) EXPECT_TRUE(process->finish().logical());
        EXPECT_EQ(indexes().size(), 2u);
        EXPECT_TRUE(kept().at(0).complete);
        rdd::drop_order(connection(), "CUST", "MAIN");
    }
}

TEST_F(OrdersOfProcesses, GiveTwoMeaningsToOneNameOnlyToOneOfThem) {
    WorkerProcess first = worker(), second = worker();
    for (int round = 0; round < 5; ++round) {
        first.start("makeorder", "CUST", "MAIN", "NAME");
        second.start("makeorder", "CUST", "MAIN", "UPPER(NAME)");
        int made = 0;
        for (WorkerProcess* process : {&first, &second}) {
            try {
                made += process->finish().logical() ? 1 : 0;
            } catch (const std::runtime_error& error) {
                EXPECT_NE(std::string(error.what()).find("CUST has another order MAIN already"),
                          std::string::npos)
                    << error.what();
            }
        }
        EXPECT_EQ(made, 1);
        EXPECT_TRUE(kept().at(0).complete);
        rdd::drop_order(connection(), "CUST", "MAIN");
    }
}

TEST_F(OrdersOfProcesses, KilledLeaveAWholeOrderOrNone) {
    std::mt19937 random(20);
    for (int round = 0; round < 5; ++round) {
        disconnect();
        {
            WorkerProcess victim = worker();
            victim.start("churnorders", "CUST", "MAIN", "UPPER(NAME)");
            EXPECT_TRUE(victim.finish().logical());
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 150000));
            victim.kill();
        }
        expect_sound(database());
        for (const rdd::KeptOrder& one : kept()) EXPECT_TRUE(one.complete);
        EXPECT_EQ(indexes().size(), 2 * kept().size());
        const rdd::Order order = create("MAIN", "UPPER(NAME)");
        EXPECT_EQ(walk(order, rdd::Direction::backward, 1000).size(), 5000u);
        rdd::drop_order(connection(), "CUST", "MAIN");
    }
}

}  // namespace
}  // namespace zmfb::test
