// Walks and seeks of areas beside a sorted list of what the runtime computes.
#include <algorithm>

#include "tests/rdd/random_records.h"
#include "zmfbconn/area.h"

namespace zmfb::test {
namespace {

constexpr const char* expressions[] = {
    "NAME",   "UPPER(NAME) + STR(CODE, 6)", "TRIM(CITY) + SUBSTR(NAME, 2, 3)",
    "CREDIT", "DTOS(BORN) + CITY",          "BORN",
    "GOOD"};

struct Expected {
    Value key;
    std::int64_t recno;
};

// As the bytes of a key are, filled with blanks.
bool is_less(const Value& a, const Value& b) {
    if (!a.is(host::Kind::character)) return comes_before(a, b);
    std::string first(a.string()), second(b.string());
    first.resize(std::max(first.size(), second.size()), ' ');
    second.resize(first.size(), ' ');
    return first < second;
}

bool is_found(const Value& key, const Value& sought) {
    if (!key.is(host::Kind::character)) return !is_less(key, sought) && !is_less(sought, key);
    std::string padded(key.string());
    padded.resize(std::max<std::size_t>(padded.size(), 300), ' ');
    return padded.starts_with(sought.string());
}

class OrderModel : public RandomRecords {
  protected:
    OrderModel() {
        connection()(m::setglbskipcachesize, 3);
        Area area(connection(), "T");
        int made = 0;
        for (const char* expression : expressions) area.create_order(fmt::format("O{}", ++made), expression);
    }

    // Other records in the place of those that were there.
    std::vector<Expected> refill(const std::string& expression) {
        Transaction work(connection());
        work.execute("delete from T");
        const std::vector<Record> records = insert(work);
        std::vector<Expected> sorted;
        const host_test::Code code = host_test::compile(expression);
        auto recno = work.one<std::int64_t>("select cast(min(RECNO) as bigint) from T");
        for (const Record& record : records) sorted.push_back({computed(code, record), recno++});
        work.commit();
        std::ranges::stable_sort(sorted, is_less, &Expected::key);
        return sorted;
    }

    static Parameter parameter(const Value& key, std::string& text) {
        switch (key.kind()) {
            case host::Kind::character:
                text = key.string();
                return text;
            case host::Kind::numeric:
                return key.number();
            case host::Kind::logical:
                return key.logical();
            default:
                break;
        }
        const host::CalendarDay day = host::calendar_day(key.date());
        if (day.year == 0) return std::nullopt;
        return std::chrono::year(day.year) / day.month / day.day;
    }

    // Where the seek of a model ends: a record number, 0 at the end.
    static std::int64_t sought_in(const std::vector<Expected>& sorted, const Value& key,
                                  SeekOptions options) {
        std::int64_t found = 0, behind = 0;
        for (const auto& [at, recno] : sorted) {
            if (is_found(at, key)) {
                if (found == 0 || options.last) found = recno;
            } else if (behind == 0 && is_less(key, at)) {
                behind = recno;
            }
        }
        return found != 0 ? found : options.soft ? behind : 0;
    }
};

TEST_P(OrderModel, IsWalkedAsTheRuntimeSorts) {
    EXPECT_TRUE(rc::check([this] {
        const auto number = *rc::gen::inRange<std::size_t>(0, std::size(expressions));
        const std::vector<Expected> sorted = refill(expressions[number]);
        Area area(connection(), "T", {.texts = TextForm::as_kept});
        area.order(fmt::format("O{}", number + 1));
        std::vector<std::int64_t> wanted, met, back;
        for (const Expected& expected : sorted) wanted.push_back(expected.recno);
        for (const Area& at : area) met.push_back(at.recno());
        for (bool there = area.bottom(); there; there = area.skip(-1))
            back.insert(back.begin(), area.recno());
        RC_ASSERT(met == wanted);
        RC_ASSERT(back == wanted);
    }));
}

TEST_P(OrderModel, IsSoughtInAsInASortedList) {
    EXPECT_TRUE(rc::check([this] {
        const auto number = *rc::gen::inRange<std::size_t>(0, std::size(expressions));
        const std::vector<Expected> sorted = refill(expressions[number]);
        const host_test::Code code = host_test::compile(expressions[number]);
        Area area(connection(), "T", {.texts = TextForm::as_kept});
        area.order(fmt::format("O{}", number + 1));
        for (int i = 0; i < 20; ++i) {
            Value key = *rc::gen::arbitrary<bool>()
                            ? sorted[static_cast<std::size_t>(*rc::gen::inRange(0, 20))].key
                            : computed(code, any_record(GetParam().letters));
            if (key.is(host::Kind::character))
                key = host::left(key, Value(*rc::gen::inRange<std::int64_t>(0, 9)));
            const SeekOptions options{*rc::gen::arbitrary<bool>(), *rc::gen::arbitrary<bool>()};
            const bool wanted =
                std::ranges::any_of(sorted, [&](const Expected& at) { return is_found(at.key, key); });
            std::string text;
            RC_ASSERT(area.seek(parameter(key, text), options) == wanted);
            RC_ASSERT((area.eof() ? 0 : area.recno()) == sought_in(sorted, key, options));
        }
    }));
}

INSTANTIATE_TEST_SUITE_P(CharacterSets, OrderModel, character_sets(), character_set_name);

}  // namespace
}  // namespace zmfb::test
