#include "tool/import/set_aside.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tool/interrupt.h"
#include "tool/output_file.h"
#include "tool/session.h"
#include "zmfbconn/dbf/code_page.h"
#include "zmfbconn/dbf/new_file.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t count_offset = 4;

std::string beside(const std::string& path, const std::string& ending) {
    return fs::path(path).replace_extension(ending).string();
}

std::string memo_beside(const DbfSource& source, const std::string& path) {
    return source.memo_path.empty() ? "" : beside(path, fs::path(source.memo_path).extension().string());
}

// Where the code page is named when the header does not.
std::string code_page_beside(const DbfSource& source, const std::string& path) {
    return source.code_page == dbf::code_page_of(source.header.language) ? "" : beside(path, ".cpg");
}

void write_file(const std::string& path, std::string_view bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.close();
}

// Of zero bytes only.
bool is_hole(std::string_view bytes) {
    return bytes.empty() ||
           (bytes.front() == '\0' && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

// Its holes stay holes.
void copy_file(const std::string& from, const std::string& to) try {
    constexpr std::size_t block = std::size_t{1} << 20;
    const auto source = dbf::open_file(from);
    dbf::NewFile copy(place_of_file(to));
    for (std::uint64_t at = 0; at < source->size(); at += block) {
        require_uninterrupted();
        const std::string bytes = dbf::read_bytes(*source, at, block);
        const bool is_last = at + block >= source->size();
        if (is_last || !is_hole(bytes)) copy.write_at(at, bytes);
    }
    copy.sync();
    copy.take_name();
} catch (const std::system_error& problem) {
    throw Failure{Exit::failed, fmt::format("cannot write {}: {}", to, problem.code().message())};
}

std::string header_with_count(const DbfSource& source, std::size_t count) {
    std::string header = dbf::read_bytes(*source.file, 0, static_cast<std::size_t>(source.header.start));
    const bool is_of_dbase2 = source.header.dialect == dbf::Dialect::dbase2;
    const std::size_t offset = is_of_dbase2 ? 1 : count_offset;
    for (std::size_t i = 0; i < (is_of_dbase2 ? 2U : 4U); ++i)
        header[offset + i] = static_cast<char>(count >> (8 * i) & 0xFF);
    return header;
}

}  // namespace

std::string reasons_beside(const std::string& path) { return beside(path, ".csv"); }

std::vector<std::string> set_aside_files(const DbfSource& source, const std::string& path) {
    std::vector<std::string> files{path, reasons_beside(path), memo_beside(source, path),
                                   code_page_beside(source, path)};
    std::erase_if(files, [](const std::string& one) { return one.empty() || !fs::exists(one); });
    return files;
}

void write_set_aside(const DbfSource& source, const std::vector<std::uint64_t>& records,
                     const std::string& path) {
    const std::size_t size = source.header.record_size;
    OutputFile file(path);
    file.write(header_with_count(source, records.size()));
    for (const std::uint64_t number : records)
        file.write(dbf::read_bytes(*source.file, source.header.start + (number - 1) * size, size));
    file.write("\x1A");
    if (!source.memo_path.empty()) copy_file(source.memo_path, memo_beside(source, path));
    const std::string code_page = code_page_beside(source, path);
    if (!code_page.empty()) write_file(code_page, source.code_page);
    file.close();
}

}  // namespace zmfb::tool
