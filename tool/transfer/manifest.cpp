#include "tool/transfer/manifest.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "tool/file_kind.h"
#include "tool/json.h"
#include "tool/session.h"
#include "tool/transfer/sha256.h"
#include "zmfbconn/dbf/memo.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* mark = "zmfb_manifest";
constexpr int version = 1;
constexpr std::size_t largest_manifest = 1U << 30;

// "." for a file of the current folder.
fs::path folder_of(const std::string& path) { return fs::absolute(path).parent_path(); }

std::string as_seen_from(const std::string& manifest, const std::string& path) {
    return fs::absolute(path).lexically_normal().lexically_proximate(folder_of(manifest).lexically_normal());
}

Json as_json(const ManifestFile& file) {
    Json json{{"table", file.table}, {"file", file.file}, {"sha256", file.sha256}};
    if (!file.memo.empty()) {
        json["memo"] = file.memo;
        json["memo_sha256"] = file.memo_sha256;
    }
    json["records"] = file.records;
    if (!file.values.empty()) json["values_sha256"] = file.values;
    return json;
}

ManifestFile from_json(const Json& json) {
    const std::string memo = json.value("memo", "");
    const std::string memo_sha256 = memo.empty() ? "" : json.at("memo_sha256").get<std::string>();
    return {.table = json.at("table"),
            .file = json.at("file"),
            .sha256 = json.at("sha256"),
            .memo = memo,
            .memo_sha256 = memo_sha256,
            .records = json.at("records").get_ref<const Json::number_unsigned_t&>(),
            .values = json.value("values_sha256", "")};
}

}  // namespace

ManifestFile manifest_entry(const std::string& manifest, const std::string& dbf) try {
    ManifestFile entry;
    entry.file = as_seen_from(manifest, dbf);
    entry.sha256 = sha256_of_file(dbf);
    const std::string memo = dbf::find_memo_file(dbf, dbf::read_header(*dbf::open_file(dbf)));
    if (memo.empty()) return entry;
    entry.memo = as_seen_from(manifest, memo);
    entry.memo_sha256 = sha256_of_file(memo);
    return entry;
} catch (const std::bad_alloc&) {
    throw;
} catch (const std::exception& problem) {
    throw Failure{Exit::failed, fmt::format("cannot read {}", dbf), problem.what()};
}

void write_manifest(OutputFile& out, const std::vector<ManifestFile>& files) {
    Json all = Json::array();
    for (const ManifestFile& file : files) all.push_back(as_json(file));
    out.write(json_lines({{mark, version}, {"files", all}}));
    out.write("\n");
    out.close();
}

Manifest::Manifest(std::vector<ManifestFile> files) : files_(std::move(files)) {
    for (std::size_t i = 0; i < files_.size(); ++i)
        by_name_.emplace(fs::path(files_[i].file).filename().string(), i);
}

const ManifestFile* Manifest::entry_of(const std::string& dbf) const {
    const auto found = by_name_.find(fs::path(dbf).filename().string());
    return found == by_name_.end() ? nullptr : &files_[found->second];
}

Manifest read_manifest(const std::string& path) {
    const std::string content = whole_file(path, "manifest", largest_manifest);
    try {
        const Json json = Json::parse(content);
        if (json.at(mark) != version)
            throw Failure{Exit::failed, fmt::format("{} is of a later version", path)};
        std::vector<ManifestFile> files;
        for (const Json& file : json.at("files")) files.push_back(from_json(file));
        return Manifest(std::move(files));
    } catch (const Json::exception& problem) {
        throw Failure{Exit::failed, fmt::format("{} is no manifest of an export", path), problem.what()};
    }
}

std::string path_by_manifest(const std::string& manifest, const std::string& file) {
    return (fs::path(manifest).parent_path() / file).lexically_normal();
}

std::string manifest_problem(const ManifestFile& entry, const std::string& dbf) {
    if (sha256_of_file(dbf) != entry.sha256) return "is not the file that was exported: its checksum differs";
    if (entry.memo.empty()) return "";
    const std::string memo = fs::path(dbf).parent_path() / fs::path(entry.memo).filename();
    const bool is_same = fs::exists(memo) && sha256_of_file(memo) == entry.memo_sha256;
    return is_same ? "" : fmt::format("has not the memo file {} that was exported", memo);
}

}  // namespace zmfb::tool
