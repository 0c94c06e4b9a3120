/// Where the bytes of DBF and memo files come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// A file, or what stands for one, that can be read from any place.
class Source {
  public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source();

    /// In bytes.
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    /// Fills `bytes` from `position` on. Returns how many there were: fewer at the end only. Throws
    /// std::system_error when the system refuses.
    virtual std::size_t read(std::uint64_t position, std::span<char> bytes) const = 0;
};

/// The file at `path`. Throws std::system_error when it cannot be opened or is no regular file.
std::unique_ptr<Source> open_file(const std::string& path);
/// Bytes in memory.
std::unique_ptr<Source> in_memory(std::string bytes);

/// Up to `size` bytes of a source from `position` on, as many as it has.
std::string read_bytes(const Source& source, std::uint64_t position, std::size_t size);

}  // namespace zmfb::dbf

#pragma GCC visibility pop
