/// Random records in databases of several character sets, and what the runtime computes of them.
#pragma once

#include <fmt/format.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/compare.h"
#include "host/date.h"
#include "host/text.h"
#include "tests/host/expression.h"
#include "tests/support/database.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {

using host::Value;

struct Record {
    std::string name, city;
    std::int64_t credit = 0;  // in hundredths
    std::int64_t code = 0;
    std::optional<std::chrono::year_month_day> born;
    bool good = false;
};

using Letters = std::vector<std::string>;

inline std::string text_of(const Letters& letters, std::size_t longest) {
    std::string text;
    for (auto left = *rc::gen::inRange<std::size_t>(0, longest + 1); left > 0; --left)
        text += *rc::gen::elementOf(letters);
    return text;
}

inline std::int64_t number_of(int digits) {
    std::int64_t limit = 10;
    for (int i = 1; i < digits; ++i) limit *= 10;
    return *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(-limit + 1, limit),
                           rc::gen::inRange<std::int64_t>(-20, 20));
}

inline Record any_record(const Letters& letters) {
    Record record;
    record.name = text_of(letters, 20);
    record.city = text_of({"a", "B", " "}, 8);
    record.credit = number_of(*rc::gen::inRange(1, 11));
    record.code = number_of(*rc::gen::inRange(1, 7));
    if (*rc::gen::inRange(0, 4) > 0) {
        using namespace std::chrono;
        record.born = year_month_day(sys_days(year{1} / 1 / 1) + days(*rc::gen::inRange(0, 3652058)));
    }
    record.good = *rc::gen::arbitrary<bool>();
    return record;
}

inline Value date_value(const Record& record) {
    if (!record.born) return host::stod(Value("        "));
    return host::stod(Value(fmt::format("{:04}{:02}{:02}", static_cast<int>(record.born->year()),
                                        static_cast<unsigned>(record.born->month()),
                                        static_cast<unsigned>(record.born->day()))));
}

/// Whether one value comes before another. Sums of doubles differ in digits that no field has.
inline bool comes_before(const Value& a, const Value& b) {
    if (a.is(host::Kind::numeric)) return std::llround(a.number() * 100) < std::llround(b.number() * 100);
    return host::less(a, b);
}

/// The character set that the columns of a database have, and letters of it.
struct CharacterSet {
    const char* name;
    Letters letters;
};

inline void PrintTo(const CharacterSet& set, std::ostream* out) { *out << set.name; }

class RandomRecords : public Database, public ::testing::WithParamInterface<CharacterSet> {
  protected:
    /// A case has twenty records.
    static void SetUpTestSuite() { setenv("RC_PARAMS", "max_success=25", 0); }

    RandomRecords() {
        execute(std::string("alter database set default character set ") + GetParam().name);
        const Structure wanted{{"NAME", "C", 20, 0}, {"CITY", "C", 8, 0}, {"CREDIT", "N", 10, 2},
                               {"CODE", "N", 6, 0},  {"BORN", "D", 8, 0}, {"GOOD", "L", 1, 0}};
        EXPECT_TRUE(connection()(m::createtable, "T", wanted));
        fields_ = connection()(m::gettablestruct, "T");
    }

    /// A few records for the table.
    static std::vector<Record> insert(Transaction& work) {
        auto add =
            work.prepare("insert into T (NAME, CITY, CREDIT, CODE, BORN, GOOD) values (?, ?, ?, ?, ?, ?)",
                         TextForm::as_kept);
        std::vector<Record> records;
        for (int i = 0; i < 20; ++i) {
            const Record record = any_record(GetParam().letters);
            add.execute(record.name, record.city, Decimal(record.credit, 2), record.code, record.born,
                        record.good);
            records.push_back(record);
        }
        return records;
    }

    /// The value of an expression for a record, by the operations of the runtime.
    Value computed(const host_test::Code& code, const Record& record) const {
        const auto scope = std::make_shared<host_test::Scope>();
        scope->variables = {{"NAME", host::padr(Value(record.name), Value(fields_[0].length))},
                            {"CITY", host::padr(Value(record.city), Value(fields_[1].length))},
                            {"CREDIT", Value(static_cast<double>(record.credit) / 100)},
                            {"CODE", Value(static_cast<double>(record.code))},
                            {"BORN", date_value(record)},
                            {"GOOD", Value(record.good)}};
        return code(scope);
    }

    Structure fields_;
};

inline const Letters ascii{"a", "A", "z", "Z", " ", "\x01", "'", "~", "0"};

inline Letters with(std::initializer_list<const char*> more) {
    Letters letters = ascii;
    letters.insert(letters.end(), more.begin(), more.end());
    return letters;
}

inline auto character_sets() {
    return ::testing::Values(CharacterSet{"NONE", with({"\xE9", "\xC9", "\xFF", "\x80"})},
                             CharacterSet{"ISO8859_1", with({"\xE9", "\xC9", "\xFF"})},
                             CharacterSet{"UTF8", with({"é", "É", "ÿ", "€"})});
}
inline std::string character_set_name(const ::testing::TestParamInfo<CharacterSet>& suite) {
    return suite.param.name;
}

}  // namespace zmfb::test
