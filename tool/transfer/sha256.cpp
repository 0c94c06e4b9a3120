#include "tool/transfer/sha256.h"

#include <algorithm>

#include "tool/interrupt.h"
#include "zmfbconn/dbf/source.h"

namespace zmfb::tool {

std::string Sha256::digits() {
    std::string text(SHA256_DIGEST_STRING_LENGTH, '\0');
    SHA256End(&context_, text.data());
    text.pop_back();
    return text;
}

std::string sha256_of_file(const std::string& path) {
    constexpr std::size_t block = 65536;
    const auto file = dbf::open_file(path);
    Sha256 sum;
    for (std::uint64_t at = 0; at < file->size(); at += block) {
        require_uninterrupted();
        sum.add(dbf::read_bytes(*file, at, block));
    }
    return sum.digits();
}

}  // namespace zmfb::tool
