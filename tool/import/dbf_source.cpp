#include "tool/import/dbf_source.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "tool/file_kind.h"
#include "tool/interrupt.h"
#include "tool/session.h"
#include "zmfbconn/dbf/code_page.h"

namespace zmfb::tool {
namespace {

// What comes from standard input is kept in memory.
constexpr std::size_t longest_input = 256U << 20;

void open_beside(const std::string& path, DbfSource& source) {
    source.code_page = dbf::code_page(path, source.header);
    if (source.header.has_memo()) source.memo_path = dbf::find_memo_file(path, source.header);
    if (source.memo_path.empty()) return;
    if (const std::string_view odd = odd_kind_at(source.memo_path); !odd.empty())
        throw dbf::Refused({fmt::format("has a memo file {} that is {}", source.memo_path, odd)});
    source.memo = std::make_unique<dbf::MemoFile>(source.memo_path, source.header);
}

// What the system said of a file that was to be opened or read.
std::string reason_for(const std::string& path, const std::error_code& error) {
    if (error == std::errc::no_such_file_or_directory) return "does not exist";
    const std::string_view odd = odd_kind_at(path);
    return odd.empty() ? fmt::format("cannot be read: {}", error.message()) : fmt::format("is {}", odd);
}

std::string read_standard_input() {
    std::string bytes;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t got = wait_for([&] { return ::read(STDIN_FILENO, buffer.data(), buffer.size()); });
        if (got < 0) throw std::system_error(errno, std::generic_category());
        if (got == 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(got));
        if (bytes.size() > longest_input)
            throw dbf::Refused({fmt::format("has more than {} bytes: name the file instead", longest_input)});
    }
}

}  // namespace

DbfSource open_dbf(const std::string& path, const std::string& encoding, const std::string& failed) {
    const std::string name = std::filesystem::path(path).filename().string();
    try {
        DbfSource source;
        const bool is_file = path != standard_input;
        source.file = is_file ? dbf::open_file(path) : dbf::in_memory(read_standard_input());
        source.header = dbf::read_header(*source.file);
        if (is_file) {
            open_beside(path, source);
        } else {
            source.code_page = dbf::code_page_of(source.header.language);
        }
        if (!encoding.empty()) source.code_page = encoding;
        return source;
    } catch (const dbf::Refused& refused) {
        std::string reasons;
        for (const std::string& reason : refused.reasons()) reasons += fmt::format("{} {}\n", name, reason);
        throw Failure{Exit::failed, failed, reasons};
    } catch (const std::system_error& problem) {
        throw Failure{Exit::failed, failed, fmt::format("{} {}", name, reason_for(path, problem.code()))};
    }
}

}  // namespace zmfb::tool
