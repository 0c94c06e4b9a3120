// The engine's keys are the values that the runtime computes for the same records, and compare as they do.
#include "rdd/key_expression.h"
#include "tests/rdd/random_records.h"

namespace zmfb::test {
namespace {

class KeyValues : public RandomRecords {
  protected:
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
    "STR(CREDIT + CODE, 9, 2) + STRZERO(CREDIT, 6)",
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

INSTANTIATE_TEST_SUITE_P(CharacterSets, KeyValues, character_sets(), character_set_name);

}  // namespace
}  // namespace zmfb::test
