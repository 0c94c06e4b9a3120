/// A folder for files that are written, and what our reader finds in them.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "dbf/code_page.h"
#include "dbf/memo.h"
#include "dbf/records.h"
#include "dbf/value.h"
#include "dbf/writer.h"
#include "shown.h"

namespace zmfb::dbf_test {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

/// A folder that goes with its test.
class Folder {
  public:
    Folder() : path_((fs::temp_directory_path() / "zmfb-writer-XXXXXX").string()) {
        if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder");
    }
    ~Folder() {
        fs::permissions(path_, fs::perms::owner_all);
        fs::remove_all(path_);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }
    /// The names of what is in it.
    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(path_)) all.insert(entry.path().filename().string());
        return all;
    }

  private:
    std::string path_;
};

inline std::string bytes_of(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void write_bytes(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A value as shown.h shows it; of a memo its bytes.
inline std::string shown_with_memos(const dbf::Value& value, const dbf::MemoFile* memos) {
    const auto* block = std::get_if<dbf::MemoBlock>(&value);
    if (block == nullptr) return shown(value);
    if (memos == nullptr) return "no memo file";
    const dbf::Memo memo = memos->read(block->block);
    return memo.problem.empty() ? "memo \"" + memo.bytes + "\"" : memo.problem;
}

/// A line for each record, "|" between the values. Expects a header that nothing is wrong with.
inline Lines read_back(const std::string& path) {
    const auto file = dbf::open_file(path);
    const dbf::Header header = dbf::read_header(*file);
    EXPECT_EQ(header.notes, Lines());
    EXPECT_EQ(header.behind, 0U);
    std::optional<dbf::MemoFile> memos;
    if (header.has_memo()) memos.emplace(dbf::find_memo_file(path, header), header);
    Lines lines;
    for (dbf::Records records(*file, header); records.next();) {
        std::string line;
        for (const dbf::Field& field : header.fields) {
            if (&field != &header.fields.front()) line += "|";
            line +=
                shown_with_memos(dbf::read_value(header, field, records.bytes()), memos ? &*memos : nullptr);
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace zmfb::dbf_test
