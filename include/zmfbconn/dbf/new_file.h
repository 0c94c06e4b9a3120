/// Files that take their names when they are finished.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// A file that is written under another name beside its place, ".zmfb-" and 16 digits: until it takes its
/// name, what was there stays as it is, and so it does when anything fails. It is locked (flock) as long as
/// its process lives. The functions throw std::filesystem::filesystem_error, which names the place.
class NewFile {
  public:
    /// One that was there has to be a file that may be written; it gives the new one its permissions.
    explicit NewFile(std::string place);
    /// What has not taken its name goes.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Behind what was written before.
    void write(std::string_view bytes);
    /// At a position, over what is there.
    void write_at(std::uint64_t position, std::string_view bytes);
    /// Everything is on the disk when it returns.
    void sync();
    /// In the place of what was there. Nothing more can be written then.
    void take_name();

    /// Where it is to be.
    [[nodiscard]] const std::string& place() const { return place_; }

  private:
    void begin();
    [[noreturn]] void fail() const;

    std::string place_;
    std::string temporary_;  // "" when it has taken its name
    int descriptor_ = -1;
    std::uint64_t written_ = 0;
};

/// Removes files of this user's that processes which no longer live have begun in a folder. Returns how many
/// there were.
std::size_t remove_unfinished(const std::string& folder);

}  // namespace zmfb::dbf

#pragma GCC visibility pop
