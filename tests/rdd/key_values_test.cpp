// The engine's keys are the values that the runtime computes for the same records, and compare as they do.
#include <fmt/format.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstdlib>

#include "host/compare.h"
#include "host/date.h"
#include "host/number.h"
#include "host/text.h"
#include "rdd/key_expression.h"
#include "tests/host/expression.h"
#include "tests/support/database.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

using host::Value;

struct Record {
    std::string name, city;
    std::int64_t credit = 0;  // in hundredths
    std::int64_t code = 0;
    std::optional<std::chrono::year_month_day> born;
    bool good = false;
};

using Letters = std::vector<std::string>;

std::string text_of(const Letters& letters, std::size_t longest) {
    std::string text;
    for (auto left = *rc::gen::inRange<std::size_t>(0, longest + 1); left > 0; --left)
        text += *rc::gen::elementOf(letters);
    return text;
}

std::int64_t number_of(int digits) {
    std::int64_t limit = 10;
    for (int i = 1; i < digits; ++i) limit *= 10;
    return *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(-limit + 1, limit),
                           rc::gen::inRange<std::int64_t>(-20, 20));
}

Record any_record(const Letters& letters) {
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

Value date_value(const Record& record) {
    if (!record.born) return host::stod(Value("        "));
    return host::stod(Value(fmt::format("{:04}{:02}{:02}", static_cast<int>(record.born->year()),
                                        static_cast<unsigned>(record.born->month()),
                                        static_cast<unsigned>(record.born->day()))));
}

// Sums of doubles differ in digits that no field has.
bool comes_before(const Value& a, const Value& b) {
    if (a.is(host::Kind::numeric)) return std::llround(a.number() * 100) < std::llround(b.number() * 100);
    return host::less(a, b);
}

// The character set that the columns of a database have, and letters of it.
struct CharacterSet {
    const char* name;
    Letters letters;
};

void PrintTo(const CharacterSet& set, std::ostream* out) { *out << set.name; }

class KeyValues : public Database, public ::testing::WithParamInterface<CharacterSet> {
  protected:
    // A case has twenty records.
    static void SetUpTestSuite() { setenv("RC_PARAMS", "max_success=25", 0); }

    KeyValues() {
        execute(std::string("alter database set default character set ") + GetParam().name);
        const Structure wanted{{"NAME", "C", 20, 0}, {"CITY", "C", 8, 0}, {"CREDIT", "N", 10, 2},
                               {"CODE", "N", 6, 0},  {"BORN", "D", 8, 0}, {"GOOD", "L", 1, 0}};
        EXPECT_TRUE(connection()(m::createtable, "T", wanted));
        fields_ = connection()(m::gettablestruct, "T");
    }

    // A few records in the table, for as long as the transaction is open.
    std::vector<Record> insert(Transaction& work) const {
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

    // The keys of all records as the engine makes them, by record number.
    std::vector<std::string> keys(Transaction& work, const std::string& expression) const {
        const rdd::Term key = rdd::key_of(expression, {fields_});
        std::vector<std::string> keys;
        auto query = work.prepare("select " + key.sql + " || 'x' from T order by RECNO", TextForm::as_kept);
        for (auto& [text] : query.query<std::string>()) {
            RC_ASSERT(text.size() == key.width + 1);
            keys.push_back(text.substr(0, key.width));
        }
        return keys;
    }

    // The value of an expression for a record, by the operations of the runtime.
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

  private:
    Structure fields_;
};

constexpr const char* text_expressions[] = {
    "NAME",
    "UPPER(NAME)",
    "LOWER(NAME) + CITY",
    "TRIM(CITY) + NAME",
    "UPPER(TRIM(NAME)) + '*' + TRIM(CITY)",
    "SUBSTR(NAME, 3, 5)",
    "SUBSTR(NAME, -4)",
    "SUBSTR(TRIM(NAME), -4, 2)",
    "SUBSTR(TRIM(NAME), 3)",
    "SUBSTR(NAME, 0, 3) + SUBSTR(CITY, 20) + SUBSTR(CITY, 8, 9)",
    "PADR(NAME, 5) + PADL(TRIM(CITY), 12)",
    "PADL(NAME, 3) + PADR(TRIM(NAME), 25)",
    "STR(CREDIT, 10, 2) + STR(CODE, 6)",
    "STR(CREDIT, 5) + STR(CODE, 3, 0)",
    "STR(CREDIT + CODE + 0.5, 14, 3)",
    "STRZERO(CREDIT, 11, 2) + STRZERO(CODE, 4)",
    "DTOS(BORN) + STRZERO(CODE, 7)",
    "CITY + [ex] + \"'\" + STR(CODE, 6)",
};
constexpr const char* other_expressions[] = {"CREDIT", "CODE", "CREDIT + CODE + 1", "BORN", "GOOD"};

TEST_P(KeyValues, AreTheTextsOfTheRuntime) {
    EXPECT_TRUE(rc::check([this] {
        Transaction work(connection());
        const std::vector<Record> records = insert(work);
        for (const std::string expression : text_expressions) {
            const host_test::Code code = host_test::compile(expression);
            const std::vector<std::string> found = keys(work, expression);
            RC_ASSERT(found.size() == records.size());
            for (std::size_t i = 0; i < found.size(); ++i) {
                std::string wanted(computed(code, records[i]).string());
                wanted.resize(found[i].size(), ' ');
                if (wanted != found[i])
                    RC_FAIL(fmt::format("{}: \"{}\" should be \"{}\"", expression, found[i], wanted));
            }
        }
    }));
}

TEST_P(KeyValues, CompareAsThoseOfTheRuntime) {
    EXPECT_TRUE(rc::check([this] {
        Transaction work(connection());
        const std::vector<Record> records = insert(work);
        for (const std::string expression : other_expressions) {
            const host_test::Code code = host_test::compile(expression);
            const std::vector<std::string> found = keys(work, expression);
            RC_ASSERT(found.size() == records.size());
            for (std::size_t i = 0; i < found.size(); ++i) {
                for (std::size_t j = 0; j < found.size(); ++j) {
                    if (comes_before(computed(code, records[i]), computed(code, records[j])) !=
                        (found[i] < found[j]))
                        RC_FAIL(fmt::format("{}: \"{}\" and \"{}\"", expression, found[i], found[j]));
                }
            }
        }
    }));
}

const Letters ascii{"a", "A", "z", "Z", " ", "\x01", "'", "~", "0"};

Letters with(std::initializer_list<const char*> more) {
    Letters letters = ascii;
    letters.insert(letters.end(), more.begin(), more.end());
    return letters;
}

INSTANTIATE_TEST_SUITE_P(CharacterSets, KeyValues,
                         ::testing::Values(CharacterSet{"NONE", with({"\xE9", "\xC9", "\xFF", "\x80"})},
                                           CharacterSet{"ISO8859_1", with({"\xE9", "\xC9", "\xFF"})},
                                           CharacterSet{"UTF8", with({"é", "É", "ÿ", "€"})}),
                         [](const auto& suite) { return std::string(suite.param.name); });

}  // namespace
}  // namespace zmfb::test
