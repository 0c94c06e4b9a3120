#include "tests/matrix/random_edits.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/matrix/fake_database.h"
#include "tests/support/runtime.h"

namespace zmfb::test {
namespace {

using Lines = std::vector<std::string>;

Editor extract(FakeDatabase& db) {
    std::string text;
    const Value matrix = db.call("extractmatrix", Value());
    for (std::size_t k = 1; k <= matrix.size(); ++k) {
        for (const std::string& line : group_lines(matrix, k)) text += line + "\n";
    }
    return Editor(text);
}

class RandomEditsInMemory : public Runtime {};

TEST_F(RandomEditsInMemory, ASimulationForetellsTheLogAndTheWantedStructureComesOut) {
    std::size_t changes = 0;
    for (unsigned seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        RandomEdits edits(seed);
        FakeDatabase db;
        for (int i = edits.number(1, 3); i > 0; --i) db.add(fmt::format("T{}", i), edits.structure());
        // A second round works on what the first left: limbo fields among the others.
        for (int round = 0; round < 2 && !HasFailure(); ++round) {
            RandomEdits of_round(seed * 2 + static_cast<unsigned>(round) + 100000, 100 * (round + 1));
            Editor editor = extract(db);
            of_round.edit(editor);
            const std::string path = write_file("edited.tf", editor.text());
            db.changes.clear();
            const Value simulated = db.call("checkmatrix", path);
            EXPECT_EQ(db.changes, Lines{});
            const Value real = db.call("applymatrix", path);
            EXPECT_TRUE(real[1].logical());
            EXPECT_EQ(lines(real[2]), lines(simulated[2]));
            changes += db.changes.size();
            for (const Editor::Block& block : editor.blocks()) {
                expect_wanted(of_round, block, db.user_fields(block.table));
            }
            db.changes.clear();
            write_file("again.tf", extract(db).text());
            db.call("applymatrix", file("again.tf"));
            EXPECT_EQ(db.changes, Lines{});
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(changes, 10000U);
    RecordProperty("changes", static_cast<int>(changes));
}

}  // namespace
}  // namespace zmfb::test
