/// An open file of the operating system, as the file operations and the DBF driver use it.
///
/// Nothing here raises: a failure is reported through the result, with errno saying why. Calls that a signal
/// breaks off are repeated; a partial transfer goes on until all is done or nothing more can be.
#pragma once

#include <cerrno>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zmfb::host {

/// The error number of the DOS family for a value of errno: 2 not found, 3 path not found, 4 too many files,
/// 5 access denied, 6 invalid handle, 25 seek, 29 write, 30 read, 32 sharing violation, 33 lock violation; 0
/// for 0.
int dos_error(int system_error);
/// The same for a write that fell short: 5 when the file is not open for writing, 29 in every other case.
int dos_write_error(int system_error);

/// What a transfer that fell short reports: errno, or `otherwise` when the system gave no reason.
inline int reason(int otherwise) { return errno == 0 ? otherwise : errno; }

enum class Lock : std::uint8_t { none, shared, exclusive };

/// A range of bytes to lock; `size` 0 means to the end of the file and beyond.
struct ByteRange {
    std::int64_t start = 0;
    std::int64_t size = 0;
};

class Descriptor {
  public:
    Descriptor() = default;
    /// Opens `name` with the flags of open(2), never handed on to a program that is started. A directory, and
    /// a name with a zero byte in it, are refused. A new file gets `permissions`, less the umask.
    Descriptor(std::string_view name, int flags, unsigned permissions = 0666);
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { close(); }

    [[nodiscard]] bool is_open() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    /// False when the system reported an error that a write had left behind. The descriptor is closed in any
    /// case.
    bool close();

    /// Reads at the current position; returns the bytes read, fewer than asked at the end of the file or,
    /// errno then being set, after an error.
    std::size_t read(std::span<char> target);
    std::size_t read_at(std::int64_t position, std::span<char> target);
    /// Writes; returns the bytes written, fewer than asked only after an error.
    std::size_t write(std::string_view bytes);
    std::size_t write_at(std::int64_t position, std::string_view bytes);
    /// The new position, -1 on failure; `origin` as for lseek(2).
    std::int64_t seek(std::int64_t offset, int origin);
    [[nodiscard]] std::int64_t size() const;
    /// Whether this is a file, and not a device or a pipe.
    [[nodiscard]] bool is_regular() const;
    bool truncate(std::int64_t size);
    /// Waits until what was written is on the disk.
    bool sync();

    /// Takes, changes or gives up a lock of this open file, which other opens see, of this process too. With
    /// `wait` false a lock held by another fails at once.
    bool lock(Lock kind, ByteRange range, bool wait = false);

  private:
    int number_ = -1;
};

/// Opens or creates `name` for reading and writing as Descriptor() does, but follows a symbolic link in its
/// last place only if the link belongs to this user or to root: in a directory open to everyone, such as
/// /tmp, another user cannot lead the program to a file of his choice.
Descriptor create_file(std::string_view name, int flags, unsigned permissions = 0666);

}  // namespace zmfb::host
