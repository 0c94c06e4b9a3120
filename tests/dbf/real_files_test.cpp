// Files of others, kept outside the sources, beside readers that are not ours.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>

#include "dbf/code_page.h"
#include "dbf/memo.h"
#include "dbf/records.h"
#include "dbf/value.h"
#include "shown.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/process.h"
#include "tests/support/samples.h"

namespace zmfb::dbf_test {
namespace {

namespace fs = std::filesystem;
using namespace zmfb::dbf;
using Lines = std::vector<std::string>;

std::string escaped(std::string_view bytes) {
    std::string made;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = byte >= 0x20 && byte < 0x7F && c != '\\';
        made += plain ? std::string(1, c) : fmt::format("\\x{:02X}", byte);
    }
    return made;
}

std::string memo_cell(const std::optional<MemoFile>& memos, MemoBlock memo) {
    if (!memos) return "NULL";
    const Memo found = memos->read(memo.block);
    return found.problem.empty() ? escaped(found.bytes) : "?";
}

// A value as dbf_values.py shows it.
std::string cell(const Value& value, const std::optional<MemoFile>& memos) {
    if (std::holds_alternative<Blank>(value) || std::holds_alternative<Null>(value)) return "NULL";
    if (std::holds_alternative<Bad>(value)) return "?";
    if (const auto* text = std::get_if<Text>(&value)) return escaped(text->bytes);
    if (const auto* bytes = std::get_if<Bytes>(&value)) return escaped(bytes->bytes);
    if (const auto* memo = std::get_if<MemoBlock>(&value)) return memo_cell(memos, *memo);
    if (const auto* logical = std::get_if<bool>(&value)) return *logical ? "T" : "F";
    if (const auto* number = std::get_if<Number>(&value))
        return fmt::format("{:.15g}", std::strtod(number->text.c_str(), nullptr));
    if (const auto* real = std::get_if<double>(&value)) return fmt::format("{:.15g}", *real);
    if (const auto* amount = std::get_if<Currency>(&value))
        return fmt::format("{:.15g}", static_cast<double>(amount->ten_thousandths) / 10000);
    return shown(value);
}

// All records, those in use first.
Lines records_of(const Source& file, const Header& header, const std::optional<MemoFile>& memos) {
    Lines in_use;
    Lines deleted;
    for (Records records(file, header, true); records.next();) {
        std::string line;
        for (const Field& field : header.fields) {
            line += (line.empty() && &field == &header.fields[0] ? "" : "\t") +
                    cell(read_value(header, field, records.bytes()), memos);
        }
        (records.deleted() ? deleted : in_use).push_back(line);
    }
    in_use.insert(in_use.end(), deleted.begin(), deleted.end());
    return in_use;
}

Lines read_with_ours(const std::string& path) {
    const auto file = open_file(path);
    const Header header = read_header(*file);
    std::optional<MemoFile> memos;
    if (const std::string memo = header.has_memo() ? find_memo_file(path, header) : ""; !memo.empty())
        memos.emplace(memo, header);
    return records_of(*file, header, memos);
}

// The values of one field, in the order of the records.
Lines values_of(const std::string& path, const std::string& name) {
    const auto file = open_file(path);
    const Header header = read_header(*file);
    Lines found;
    for (Records records(*file, header); records.next();) {
        for (const Field& field : header.fields) {
            if (field.name == name) found.push_back(cell(read_value(header, field, records.bytes()), {}));
        }
    }
    return found;
}

Lines split(const std::string& text, char end) {
    Lines found;
    std::istringstream rest(text);
    for (std::string piece; std::getline(rest, piece, end);) found.push_back(piece);
    return found;
}

// What the other reader makes of the file; none when it refuses it.
std::optional<Lines> read_with(const std::string& reader, const std::string& path) {
    const test::Finished script = test::run({ZMFB_PYTHON, ZMFB_DBF_VALUES, reader, path});
    if (script.status != 0) return std::nullopt;
    return split(script.out, '\n');
}

// The first difference; "" when there is none. A "-" of the other reader is no value of its.
std::string difference(const Lines& ours, const Lines& others) {
    for (std::size_t i = 0; i < std::max(ours.size(), others.size()); ++i) {
        if (i >= ours.size() || i >= others.size())
            return fmt::format("{} records, not {}", ours.size(), others.size());
        const Lines mine = split(ours[i], '\t');
        const Lines theirs = split(others[i], '\t');
        for (std::size_t j = 0; j < std::max(mine.size(), theirs.size()); ++j) {
            const std::string one = j < mine.size() ? mine[j] : "";
            const std::string other = j < theirs.size() ? theirs[j] : "";
            if (one != other && other != "-")
                return fmt::format("record {}, field {}: \"{}\", not \"{}\"", i + 1, j + 1, one, other);
        }
    }
    return {};
}

std::string refusal_of(const std::string& path) {
    try {
        read_with_ours(path);
        return {};
    } catch (const Refused& refused) {
        return refused.what();
    }
}

class RealFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        if (test::samples(".dbf").empty()) GTEST_SKIP() << "ZMFB_SAMPLES names no folder with DBF files";
    }
};

// Without fields there is nothing to bring in, and of nothing there is less.
bool may_be_refused(const std::string& reason) { return reason == "is empty" || reason == "has no fields"; }

TEST_F(RealFiles, AreReadWithTheValuesThatOtherReadersFind) {
    std::map<std::string, int> counts;
    for (const std::string& path : test::samples(".dbf")) {
        SCOPED_TRACE(path);
        if (const std::string reason = refusal_of(path); !reason.empty()) {
            EXPECT_TRUE(may_be_refused(reason)) << reason;
            ++counts["refused: " + reason];
            continue;
        }
        const Lines ours = read_with_ours(path);
        std::string found = "read, and by no other reader";
        for (const std::string reader : {"dbfread", "gdal"}) {
            const auto others = read_with(reader, path);
            if (!others) continue;
            const std::string differs = difference(ours, *others);
            found = differs.empty() ? "read as by " + reader : reader + " differs: " + differs;
            if (differs.empty()) break;
        }
        std::cout << fs::path(path).filename().string() << ": " << ours.size() << " records, " << found
                  << '\n';
        for (const std::string& note : read_header(*open_file(path)).notes)
            std::cout << "    " << note << '\n';
        EXPECT_EQ(found.find("differs"), std::string::npos) << found;
        ++counts[found];
    }
    for (const auto& [what, count] : counts) std::cout << count << " " << what << '\n';
}

struct Lie {
    std::string what;
    std::string bytes;
};

// The file with one thing in its header that is not so.
std::vector<Lie> lies_about(const std::string& bytes, const Header& header) {
    std::vector<Lie> lies;
    const auto changed = [&](std::size_t at, std::uint64_t number) {
        std::string made = bytes;
        made.replace(at, 2, test::low_first(number, 2));
        return made;
    };
    for (const int by : {-3, -1, 1, 7}) {
        lies.push_back(
            {fmt::format("a header {} longer", by), changed(8, header.start + static_cast<unsigned>(by))});
        lies.push_back({fmt::format("records {} longer", by),
                        changed(10, header.record_size + static_cast<unsigned>(by))});
    }
    lies.push_back({"no header", changed(8, 0)});
    lies.push_back({"no record", changed(10, 0)});
    if (const std::size_t end = bytes.find('\r', 32); header.start == end + 1) {
        std::string open = bytes;
        open[end] = '\0';
        lies.push_back({"nothing ends the fields", open});
    }
    return lies;
}

TEST_F(RealFiles, AreReadAlikeWhenTheirHeadersLieInOneThing) {
    int looked_at = 0;
    for (const std::string& path : test::samples(".dbf")) {
        const auto file = open_file(path);
        if (!refusal_of(path).empty()) continue;
        const Header header = read_header(*file);
        // One record fits in many ways; dBASE 7 has another header.
        if (!header.notes.empty() || header.records < 2 || header.dialect == Dialect::dbase7) continue;
        const Lines expected = records_of(*file, header, {});
        for (const Lie& lie :
             lies_about(read_bytes(*file, 0, static_cast<std::size_t>(file->size())), header)) {
            SCOPED_TRACE(path + ": " + lie.what);
            const auto lying = in_memory(lie.bytes);
            const Header seen_through = read_header(*lying);
            EXPECT_EQ(difference(records_of(*lying, seen_through, {}), expected), "");
            EXPECT_FALSE(seen_through.notes.empty());
            ++looked_at;
        }
    }
    if (looked_at == 0) GTEST_SKIP() << "no file of ZMFB_SAMPLES is sound and has two records";
    std::cout << looked_at << " headers that lie\n";
}

// What the other readers leave out, as the bytes of the files show it.
TEST_F(RealFiles, HaveTheValuesThatNoOtherReaderFinds) {
    struct Case {
        std::string file;
        std::string field;
        Lines values;
    };
    const Case cases[] = {
        {"dBaseVII_double.dbf", "double", {"-199.99", "-74.62", "43.65", "150.48", "0"}},
        {"test_memo.dbf", "FIELD2", {"How are you", "I'm fine"}},
        {"go-dbase_TEST.DBF", "VARBIN_NIL", {"\\x11\"3DUfw\\x88\\x99\\xAA", "\\xAA\\xBB\\xCC", ""}},
        {"go-dbase_TEST.DBF", "VAR", {"", "", "Test"}},
        {"go-dbase_TEST.DBF", "BLOB", {"NULL", "NULL", "NULL"}},
    };
    for (const Case& c : cases) {
        const std::string path = test::sample(c.file);
        if (path.empty()) continue;
        EXPECT_EQ(values_of(path, c.field), c.values) << c.file << ' ' << c.field;
    }
}

}  // namespace
}  // namespace zmfb::dbf_test
