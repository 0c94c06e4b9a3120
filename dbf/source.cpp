#include "dbf/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace zmfb::dbf {
namespace {

[[noreturn]] void throw_error(int error) { throw std::system_error(error, std::generic_category()); }

class File final : public Source {
  public:
    // Not blocked by a pipe that nobody writes to.
    explicit File(const std::string& path)
        : handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (handle_ < 0) throw_error(errno);
        struct stat status {};
        int error = ::fstat(handle_, &status) == 0 ? 0 : errno;
        if (error == 0 && S_ISDIR(status.st_mode)) error = EISDIR;
        if (error == 0 && !S_ISREG(status.st_mode)) error = EINVAL;
        if (error != 0) {
            ::close(handle_);
            throw_error(error);
        }
        size_ = static_cast<std::uint64_t>(status.st_size);
    }
    ~File() override { ::close(handle_); }

    [[nodiscard]] std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t position, std::span<char> bytes) const override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t got = ::pread(handle_, bytes.data() + done, bytes.size() - done,
                                        static_cast<off_t>(position + done));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) throw_error(errno);
            if (got == 0) break;
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

  private:
    int handle_;
    std::uint64_t size_ = 0;
};

class Memory final : public Source {
  public:
    explicit Memory(std::string bytes) : bytes_(std::move(bytes)) {}

    [[nodiscard]] std::uint64_t size() const override { return bytes_.size(); }
    std::size_t read(std::uint64_t position, std::span<char> bytes) const override {
        if (position >= bytes_.size()) return 0;
        const auto from = static_cast<std::size_t>(position);
        const std::size_t size = std::min(bytes.size(), bytes_.size() - from);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(from), size, bytes.begin());
        return size;
    }

  private:
    std::string bytes_;
};

}  // namespace

Source::~Source() = default;

std::unique_ptr<Source> open_file(const std::string& path) { return std::make_unique<File>(path); }

std::unique_ptr<Source> in_memory(std::string bytes) { return std::make_unique<Memory>(std::move(bytes)); }

std::string read_bytes(const Source& source, std::uint64_t position, std::size_t size) {
    if (position >= source.size()) return {};
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size, source.size() - position)),
                      '\0');
    bytes.resize(source.read(position, bytes));
    return bytes;
}

}  // namespace zmfb::dbf
