#include "host/file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "host/descriptor.h"
#include "host/error.h"

namespace zmfb::host {
namespace {

constexpr int not_found = 2;
constexpr int access_denied = 5;
constexpr int path_not_found = 3;
constexpr int invalid_handle = 6;
constexpr int seek_error = 25;
constexpr int write_fault = 29;
constexpr int read_fault = 30;
constexpr int lock_violation = 33;
constexpr int end_of_file = 38;

// An open file and what freadtxt() has read of it beyond the position that the program knows of.
struct File {
    Descriptor descriptor;
    std::string ahead;
    std::size_t used = 0;

    [[nodiscard]] std::string_view rest() const { return std::string_view(ahead).substr(used); }

    // Moves the system's position back to the program's.
    void drop_ahead() {
        const auto unread = static_cast<std::int64_t>(rest().size());
        if (unread > 0) descriptor.seek(-unread, SEEK_CUR);
        ahead.clear();
        used = 0;
    }
};

// Numbers are not used again, so that a handle kept after its file was closed names no other file. They begin
// behind those of the standard streams. Never destroyed: objects may close files while the program ends.
std::map<int, File>& files() {
    static auto& table = *new std::map<int, File>;
    return table;
}

int last_handle = 2;
int last_error = 0;

template <class Result>
Value finish(int error, Result result) {
    last_error = error;
    return result;
}

File* find(const Value& handle) {
    if (!handle.is(Kind::numeric)) return nullptr;
    const std::int64_t number = handle.integer();
    if (number < 0 || number > last_handle) return nullptr;
    const auto found = files().find(static_cast<int>(number));
    return found == files().end() ? nullptr : &found->second;
}

Value keep(Descriptor&& descriptor) {
    files()[++last_handle].descriptor = std::move(descriptor);
    return finish(0, last_handle);
}

std::int64_t integer_or(const Value& value, std::int64_t otherwise) {
    return value.is(Kind::numeric) ? value.integer() : otherwise;
}

// Reads the decimal digits of an attribute such as 666 as octal ones; 0 when they are not three octal
// digits.
unsigned octal_permissions(std::int64_t attribute) {
    if (attribute < 100 || attribute > 777) return 0;
    const auto hundreds = static_cast<unsigned>(attribute / 100);
    const auto tens = static_cast<unsigned>(attribute / 10 % 10);
    const auto ones = static_cast<unsigned>(attribute % 10);
    return tens > 7 || ones > 7 ? 0 : hundreds * 64 + tens * 8 + ones;
}

// A file of another user keeps its permissions: it could be opened, which is what was asked for. Devices do
// too.
void set_permissions(const Descriptor& file, unsigned permissions) {
    if (file.is_regular()) static_cast<void>(::fchmod(file.number(), permissions));
}

Value write_bytes(const Value& handle, std::string_view bytes) {
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, 0);
    file->drop_ahead();
    const std::size_t written = file->descriptor.write(bytes);
    return finish(written == bytes.size() ? 0 : dos_write_error(errno), written);
}

std::string random_name() {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz234567";
    std::string name(16, '\0');
    if (::getrandom(name.data(), name.size(), 0) != static_cast<ssize_t>(name.size())) return {};
    for (char& c : name) c = letters[static_cast<unsigned char>(c) % letters.size()];
    return name;
}

std::string temporary_directory(const Value& directory) {
    if (directory.is(Kind::character) && !directory.text().empty()) return std::string(directory.text());
    const char* from_environment = std::getenv("TMPDIR");
    return from_environment == nullptr || *from_environment == '\0' ? "/tmp" : from_environment;
}

}  // namespace

Value ferror() { return last_error; }

Value fopen(const Value& name, const Value& mode) {
    if (!name.is(Kind::character)) {
        const Value args[] = {name, mode};
        return argument_error(Subcode::file, "FOPEN", args);
    }
    constexpr int access_flags[] = {O_RDONLY, O_WRONLY, O_RDWR};
    const auto access = static_cast<std::size_t>(integer_or(mode, 0) & 3);
    if (access >= std::size(access_flags)) return finish(access_denied, -1);
    Descriptor opened(name.text(), access_flags[access]);
    return opened.is_open() ? keep(std::move(opened)) : finish(dos_error(errno), -1);
}

Value fcreate(const Value& name, const Value& attribute) {
    if (!name.is(Kind::character)) {
        const Value args[] = {name, attribute};
        return argument_error(Subcode::file, "FCREATE", args);
    }
    const std::int64_t given = integer_or(attribute, 0);
    const unsigned permissions = octal_permissions(given);
    const bool read_only = given > 0 && given < 8 && (given & 1) != 0;
    Descriptor created = create_file(name.text(), O_TRUNC,
                                     permissions != 0 ? 0600U
                                     : read_only      ? 0444U
                                                      : 0666U);
    if (!created.is_open()) return finish(dos_error(errno), -1);
    if (permissions != 0) set_permissions(created, permissions);
    return keep(std::move(created));
}

Value fclose(const Value& handle) {
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, false);
    const int error = file->descriptor.close() ? 0 : dos_write_error(errno);
    files().erase(static_cast<int>(handle.integer()));
    return finish(error, true);
}

Value fread(const Value& handle, Value& buffer, const Value& n) {
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, 0);
    const std::int64_t wanted = integer_or(n, 0);
    if (wanted <= 0 || !buffer.is(Kind::character) || static_cast<std::uint64_t>(wanted) > buffer.size()) {
        return finish(0, 0);
    }
    const std::span<char> target = buffer.writable_text().first(static_cast<std::size_t>(wanted));
    const std::size_t ahead = std::min(file->rest().size(), target.size());
    if (ahead > 0) std::memcpy(target.data(), file->rest().data(), ahead);
    file->used += ahead;
    errno = 0;
    const std::size_t read = ahead == target.size() ? 0 : file->descriptor.read(target.subspan(ahead));
    const int error = errno == 0 ? 0 : errno == EBADF ? access_denied : read_fault;
    return finish(ahead + read == target.size() ? 0 : error, ahead + read);
}

Value fwrite(const Value& handle, const Value& s) {
    if (!s.is(Kind::character)) return finish(find(handle) == nullptr ? invalid_handle : 0, 0);
    if (!s.text().empty()) return write_bytes(handle, s.text());
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, 0);
    file->drop_ahead();
    const std::int64_t here = file->descriptor.seek(0, SEEK_CUR);
    const bool cut = here >= 0 && file->descriptor.truncate(here);
    // A descriptor open for reading is refused with EINVAL here, not with EBADF.
    return finish(cut ? 0 : errno == EINVAL || errno == EBADF ? access_denied : write_fault, 0);
}

Value fwrite(const Value& handle, const Value& s, const Value& n) {
    if (!s.is(Kind::character) || !n.is(Kind::numeric) || s.text().empty()) return fwrite(handle, s);
    const auto count = std::clamp<std::int64_t>(n.integer(), 0, static_cast<std::int64_t>(s.size()));
    return write_bytes(handle, s.text().substr(0, static_cast<std::size_t>(count)));
}

Value fseek(const Value& handle, const Value& offset, const Value& origin) {
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, 0);
    file->drop_ahead();
    const std::int64_t from = integer_or(origin, 0);
    std::int64_t position = -1;
    if (from >= 0 && from <= 2) position = file->descriptor.seek(integer_or(offset, 0), origins[from]);
    if (position >= 0) return finish(0, position);
    return finish(seek_error, std::max<std::int64_t>(file->descriptor.seek(0, SEEK_CUR), 0));
}

Value freadtxt(const Value& handle) {
    constexpr std::size_t block = 65536;
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, "");
    std::size_t searched = 0;
    std::size_t end = file->rest().find('\n');
    while (end == std::string_view::npos) {
        file->ahead.erase(0, file->used);
        file->used = 0;
        searched = file->ahead.size();
        file->ahead.resize(searched + block);
        const std::size_t read = file->descriptor.read(std::span(file->ahead).subspan(searched));
        const int error = errno;
        file->ahead.resize(searched + read);
        if (read < block && error != 0) return finish(error == EBADF ? access_denied : read_fault, "");
        end = file->ahead.find('\n', searched);
        if (read == 0) break;
    }
    std::string_view line = file->rest();
    if (line.empty()) {
        // A file may stay open for good once it is read to its end.
        file->ahead.clear();
        file->ahead.shrink_to_fit();
        file->used = 0;
        return finish(end_of_file, "");
    }
    file->used += end == std::string_view::npos ? line.size() : end + 1;
    if (end != std::string_view::npos) {
        line = line.substr(0, end);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    }
    return finish(0, line);
}

Value flockf(const Value& handle, const Value& mode) {
    File* file = find(handle);
    if (file == nullptr) return finish(invalid_handle, -1);
    const std::int64_t wanted = integer_or(mode, -1);
    if (wanted < 0 || wanted > 2) return finish(1, -1);
    constexpr Lock locks[] = {Lock::none, Lock::shared, Lock::exclusive};
    if (file->descriptor.lock(locks[wanted], {})) return finish(0, 0);
    return finish(errno == EBADF ? access_denied : lock_violation, -1);
}

Value file(const Value& name) {
    struct stat status {};
    if (!name.is(Kind::character) || name.text().find('\0') != std::string_view::npos) return false;
    return ::stat(std::string(name.text()).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

Value ferase(const Value& name) {
    if (!name.is(Kind::character)) return finish(path_not_found, -1);
    if (name.text().find('\0') != std::string_view::npos) return finish(not_found, -1);
    if (::unlink(std::string(name.text()).c_str()) == 0) return finish(0, 0);
    return finish(dos_error(errno), -1);
}

Value tempfilename(const Value& directory, const Value& prefix) {
    std::string start = temporary_directory(directory);
    if (start.back() != '/') start += '/';
    if (prefix.is(Kind::character)) start += prefix.text();
    constexpr int attempts = 100;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::string random = random_name();
        if (random.empty()) break;
        const std::string path = start + random;
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 && errno == ENOENT) return path;
    }
    return "";
}

}  // namespace zmfb::host
