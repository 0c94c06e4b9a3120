/// Files with holes: as long as one likes, and no disk is taken by what nobody wrote.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zmfb::test {

/// Where numbers of 31 and of 32 bits end.
constexpr std::uint64_t two_gigabytes = std::uint64_t{1} << 31;
constexpr std::uint64_t four_gigabytes = std::uint64_t{1} << 32;

/// Puts bytes at a place of a file, which is made when it is not there; what is skipped stays a hole.
inline void put_bytes(const std::string& path, std::uint64_t place, std::string_view bytes) {
    if (!std::filesystem::exists(path)) std::ofstream(path, std::ios::binary);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(place));
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
        throw std::runtime_error("cannot write " + path);
}

/// The bytes at a place of a file, as many as it has.
inline std::string bytes_at(const std::string& path, std::uint64_t place, std::size_t size) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(place));
    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace zmfb::test
