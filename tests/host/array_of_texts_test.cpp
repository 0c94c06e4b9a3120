// Arrays whose texts lie together with them: what becomes of the texts when one of both goes or changes
// first.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/value.h"

namespace zmfb::host {
namespace {

const std::string name = "a name beyond fourteen bytes";
const std::string town = "a town beyond fourteen bytes";

Value row_of(const std::vector<std::string>& texts) {
    return Value::array_of_texts(std::vector<std::string_view>(texts.begin(), texts.end()));
}

std::vector<std::string> texts_of(const Value& row) {
    std::vector<std::string> texts;
    for (const Value& value : row.items()) texts.push_back(value.string());
    return texts;
}

bool are_neighbours(const Value& row) { return row[2].text().data() == row[1].text().data() + row[1].size(); }

TEST(ArrayOfTexts, HoldsTextsOfEverySizeAndZeroBytes) {
    std::vector<std::string> texts;
    for (std::size_t size = 0; size < 40; ++size) texts.emplace_back(size, static_cast<char>(size));
    EXPECT_EQ(texts_of(row_of(texts)), texts);
    EXPECT_EQ(row_of({}).size(), 0U);
}

TEST(ArrayOfTexts, LongTextsLieSideBySide) { EXPECT_TRUE(are_neighbours(row_of({name, town}))); }

TEST(ArrayOfTexts, TextBeyondTheSharedRoomHasItsOwn) {
    const std::string large(70000, 'x');
    const Value row = row_of({name, large, town, "short", name});
    EXPECT_EQ(texts_of(row), (std::vector<std::string>{name, large, town, "short", name}));
    Value grown = row[3];
    grown.append(large);
    EXPECT_EQ(grown.text(), town + large);
}

TEST(ArrayOfTexts, TextOutlivesItsArray) {
    Value kept;
    {
        const Value row = row_of({name, town});
        kept = row[2];
    }
    EXPECT_EQ(kept.text(), town);
    kept.writable_text()[0] = 'A';
    kept.append(" and more than there was room for");
    EXPECT_EQ(kept.text(), "A town beyond fourteen bytes and more than there was room for");
}

TEST(ArrayOfTexts, TextThatIsWrittenToLeavesTheOthersAlone) {
    const Value row = row_of({name, town});
    const Value before = row[1];
    row[1].writable_text()[0] = 'A';
    row[1].append(", longer");
    EXPECT_EQ(texts_of(row), (std::vector<std::string>{"A name beyond fourteen bytes, longer", town}));
    EXPECT_EQ(before.text(), name);
}

TEST(ArrayOfTexts, ReplacedTextsLeaveTheRest) {
    const Value row = row_of({name, town});
    const Value kept = row[2];
    row[2] = 5;
    row[1] = row[1];
    EXPECT_EQ(row[1].text(), name);
    EXPECT_EQ(row[2].number(), 5);
    EXPECT_EQ(kept.text(), town);
}

TEST(ArrayOfTexts, GrowsLikeAnyArray) {
    const Value row = row_of({name, town});
    std::vector<std::string> expected{name, town};
    for (int i = 0; i < 100; ++i) {
        row.push(row[1]);
        expected.push_back(name);
    }
    EXPECT_EQ(texts_of(row), expected);
    const Value empty = row_of({});
    empty.push(name);
    EXPECT_EQ(texts_of(empty), std::vector<std::string>{name});
}

TEST(ArrayOfTexts, IsFreedInsideAnotherArray) {
    Value kept;
    {
        const Value rows = Value::array_of_size(0);
        for (int i = 0; i < 10; ++i) rows.push(row_of({name, town}));
        kept = rows[5][1];
    }
    EXPECT_EQ(kept.text(), name);
}

}  // namespace
}  // namespace zmfb::host
