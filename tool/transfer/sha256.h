/// SHA-256 sums, as sha256sum shows them.
#pragma once

#include <sys/types.h>
// The header of the library wants the types before it.
#include <sha2.h>

#include <string>
#include <string_view>

namespace zmfb::tool {

class Sha256 {
  public:
    Sha256() { SHA256Init(&context_); }
    void add(std::string_view bytes) {
        SHA256Update(&context_, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    /// 64 digits; nothing more can be added then.
    std::string digits();

  private:
    SHA2_CTX context_{};
};

/// That of a file. Throws std::system_error when it cannot be read.
std::string sha256_of_file(const std::string& path);

}  // namespace zmfb::tool
