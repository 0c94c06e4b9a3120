#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "tests/matrix/fake_database.h"
#include "tests/matrix/random_edits.h"
#include "tests/matrix/round_trip.h"

namespace zmfb::test {
namespace {

class RandomRoundTrip : public RoundTrip, public ::testing::WithParamInterface<unsigned> {
  protected:
    void make_tables() {
        for (int i = edits.number(1, 3); i > 0; --i) {
            const std::string table = fmt::format("T{}", i);
            const Value fields = edits.structure();
            create(table, fields);
            model.add(table, fields);
            for (int row = edits.number(0, 4); row > 0; --row) insert_row(table, fields);
        }
    }

    void insert_row(const std::string& table, const Value& fields) {
        std::string names, values;
        for (const Value& one : fields.items()) {
            names += fmt::format(",{}", one[1].text());
            values += "," + edits.literal({std::string(one[1].text()), std::string(one[2].text()),
                                           one[3].number(), one[4].number()});
        }
        execute(fmt::format("insert into {} ({}) values ({})", table, names.substr(1), values.substr(1)));
    }

    Rows column(const std::string& table, const std::string& expression) {
        return rows(fmt::format("select {} from {} order by RECNO", expression, table));
    }

    RandomEdits edits{GetParam()};
    FakeDatabase model;
};

// As texts, or as numbers when the other type shows them differently.
void expect_same_values(const Rows& before, const Rows& after) {
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i] == after[i]) continue;
        char* end = nullptr;
        const double number = std::strtod(before[i][0].c_str(), &end);
        EXPECT_EQ(*end, '\0') << before[i][0];
        EXPECT_EQ(number, std::strtod(after[i][0].c_str(), nullptr)) << before[i][0];
    }
}

TEST_P(RandomRoundTrip, EndsWithTheWantedStructureAndEveryKeptValue) {
    make_tables();
    call("extractmatrix", Value(), file("matrix"));
    Editor editor(read_file(file("matrix.tf")));
    edits.edit(editor);
    std::map<std::string, Rows> before;
    for (const auto& kept : edits.kept()) {
        before[kept.table + "." + kept.before] = column(kept.table, kept.before);
    }

    const Applied applied = apply(editor);
    EXPECT_TRUE(applied.ok);
    EXPECT_EQ(applied.log, applied.simulated);
    EXPECT_EQ(raised(), std::vector<std::string>{});

    model.call("applymatrix", file("edited.tf"));
    for (const Editor::Block& block : editor.blocks()) {
        if (block.table.empty()) continue;
        expect_wanted(edits, block, user_fields(block.table));
        if (!edits.dropped_tables().contains(block.table)) {
            EXPECT_EQ(columns(block.table), model.columns(block.table));
        }
    }
    for (const auto& kept : edits.kept()) {
        SCOPED_TRACE(kept.table + "." + kept.before + " -> " + kept.after);
        expect_same_values(
            before[kept.table + "." + kept.before],
            column(kept.table, kept.type == "D" ? "cast(" + kept.after + " as timestamp)" : kept.after));
    }
    expect_nothing_to_do();
}

INSTANTIATE_TEST_SUITE_P(Seed, RandomRoundTrip, ::testing::Range(1U, 21U));

}  // namespace
}  // namespace zmfb::test
