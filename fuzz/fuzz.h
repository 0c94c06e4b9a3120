/// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"

/// Runs one input; returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zmfb::fuzz {

using host::Value;

/// Aborts, with `what` on standard error, unless `holds`.
void require(bool holds, std::string_view what);

/// Takes the bytes of an input from its front; zeros when there are none left.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), data == nullptr ? 0 : size) {}

    std::uint8_t byte();
    bool flag() { return (byte() & 1) != 0; }
    /// 0 to `limit` - 1.
    std::size_t below(std::size_t limit) { return byte() % limit; }
    /// A T of its own bytes, low ones first.
    template <class T>
    T number() {
        T made{};
        for (std::size_t i = 0; i < sizeof made; ++i) reinterpret_cast<unsigned char*>(&made)[i] = byte();
        return made;
    }
    /// So many bytes, or what is left.
    std::string_view bytes(std::size_t size);
    /// A text behind a byte that tells its length.
    std::string_view text() { return bytes(byte()); }
    std::string_view rest() { return bytes(rest_.size()); }
    [[nodiscard]] bool at_end() const { return rest_.empty(); }

  private:
    std::string_view rest_;
};

/// What a target defines: tries one input, with errors quiet; aborts when something that must hold does not.
void try_input(Input& input);

/// A value of any kind, arrays up to `depth` levels deep.
Value value_of(Input& input, int depth = 3);

/// How many errors were raised: the error handler counts them and answers NIL, and the log is not written.
std::size_t raised();

/// A folder of this process for the files of a target, gone when the process ends.
const std::filesystem::path& scratch_folder();
/// The path of a file in it, which is made or emptied and filled with `content`.
std::string scratch_file(const std::string& name, std::string_view content);
std::string content_of(const std::string& path);

}  // namespace zmfb::fuzz
