// The rows on the screen, read again and again.
#include "tests/rdd/area_test.h"
#include "tests/support/faulty_client.h"
#include "tool/browse/area_source.h"
#include "tool/browse/numbered_source.h"
#include "tool/browse/window.h"
#include "tool/locks.h"

namespace zmfb::test {
namespace {

using namespace tool::browse;
using Numbers = std::vector<std::int64_t>;

class BrowseWindow : public AreaTest {
  protected:
    BrowseWindow() {
        fill(30);
        window_.resize(5);
    }
    [[nodiscard]] Numbers numbers() const {
        Numbers shown;
        for (const ShownRow& row : window_.rows()) shown.push_back(row.number);
        return shown;
    }
    AreaSource source_{connection(), "STOCK", OpenMode::shared};
    Window window_{source_};
};

TEST_F(BrowseWindow, IsReadAgainInOneQuery) {
    window_.page_down();
    window_.refresh();
    const FaultyClient client;
    execute("update STOCK set CODE = 'NEW' where RECNO = 8");
    window_.refresh();
    EXPECT_EQ(client.count(ClientCall::open), 1);
    EXPECT_EQ(numbers(), (Numbers{6, 7, 8, 9, 10}));
    EXPECT_EQ(window_.rows()[2].cells[0], "NEW");
    window_.refresh();
    EXPECT_EQ(client.count(ClientCall::open), 2);
}

TEST_F(BrowseWindow, LooksForLocksInOneQuery) {
    Area other = stock({.alias = "OTHER"});
    other.go(7);
    const Held held = other.lock();
    other.lock_table();
    const FaultyClient client;
    const auto locks = tool::locks_of(connection(), "STOCK", numbers());
    EXPECT_EQ(client.count(ClientCall::open), 1);
    ASSERT_EQ(locks.size(), 1u) << "that of a record that is not shown is none of them";
    EXPECT_EQ(locks[0].record, std::nullopt);
    EXPECT_EQ(locks[0].owner.holder.id, other.id());
    EXPECT_EQ(tool::locks_of(connection(), "STOCK", Numbers{7}).at(1).record, 7);
    EXPECT_EQ(tool::locks_of(connection(), "OTHER", Numbers{7}).size(), 0u);
}

TEST_F(BrowseWindow, KeepsItsRowWhileOthersAddAndDelete) {
    window_.page_down();
    window_.down();
    window_.down();
    EXPECT_EQ(window_.number(), 8);
    execute("delete from STOCK where RECNO in (6, 9)");
    window_.refresh();
    EXPECT_EQ(window_.number(), 8);
    EXPECT_EQ(numbers(), (Numbers{5, 7, 8, 10, 11})) << "in its line";
    execute("delete from STOCK where RECNO = 8");
    window_.refresh();
    EXPECT_EQ(window_.number(), 10);
    execute("delete from STOCK where RECNO > 10");
    window_.refresh();
    EXPECT_EQ(numbers(), (Numbers{3, 4, 5, 7, 10}));
    execute("delete from STOCK");
    window_.refresh();
    EXPECT_TRUE(window_.empty());
    execute("insert into STOCK (CODE) values ('NEW')");
    window_.refresh();
    EXPECT_EQ(window_.number(), 31);
}

class ThreeRows final : public NumberedSource {
  public:
    tool::Cell whole(std::int64_t, std::size_t) override { return {}; }

  protected:
    bool has(std::int64_t number) override { return number <= 3; }
    std::int64_t last_number() override { return 3; }
    std::vector<tool::Cell> cells(std::int64_t) override { return {}; }
};

TEST(NumberedRows, GoFromTheFirstToTheLast) {
    ThreeRows source;
    for (std::int64_t number = 0; number <= 4; ++number)
        EXPECT_EQ(source.row(number).has_value(), number >= 1 && number <= 3) << number;
    EXPECT_EQ(source.first(2).size(), 2u);
    EXPECT_EQ(source.first(4).size(), 3u);
    EXPECT_EQ(source.behind(source.first(1), 5).size(), 2u);
    EXPECT_EQ(source.before(source.last(1), 5).size(), 2u);
}

}  // namespace
}  // namespace zmfb::test
