#include "tool/transfer/converted_copy.h"

#include <fmt/format.h>
#include <iconv.h>

#include <cerrno>
#include <fstream>
#include <optional>

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/transfer/dbf_check.h"
#include "tool/transfer/dbf_records.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t count_offset = 4;

class Iconv {
  public:
    explicit Iconv(const std::string& encoding) : handle_(iconv_open("UTF-8", encoding.c_str())) {}
    ~Iconv() {
        if (is_open()) iconv_close(handle_);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    [[nodiscard]] bool is_open() const {
        // iconv_open() answers with the address -1.
        return reinterpret_cast<std::intptr_t>(handle_) != -1;
    }

    // The text in UTF-8; nothing when it is none in the encoding.
    std::optional<std::string> convert(std::string_view text) {
        constexpr std::size_t longest_character = 4;
        std::string source(text);
        std::string utf8(source.size() * longest_character, '\0');
        char* from = source.data();
        char* to = utf8.data();
        std::size_t from_left = source.size();
        std::size_t to_left = utf8.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &from, &from_left, &to, &to_left) != 0) return std::nullopt;
        utf8.resize(utf8.size() - to_left);
        return utf8;
    }

  private:
    iconv_t handle_;
};

std::string_view without_blanks_at_end(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

void convert_field(Iconv& iconv, const std::string& encoding, const DbfField& field, std::uint64_t number,
                   std::string& record) {
    const std::string_view bytes =
        without_blanks_at_end(std::string_view(record).substr(field.offset, field.length));
    const auto refuse = [&](std::string_view why, const std::string& hint = {}) {
        throw Failure{Exit::failed,
                      fmt::format("record {}, field {}: {}", number, shown_bytes(field.name), why),
                      fmt::format("its bytes are {}", shown_bytes(bytes)), hint};
    };
    const std::optional<std::string> utf8 = iconv.convert(bytes);
    if (!utf8) refuse(fmt::format("the text cannot be converted from {}", encoding));
    std::optional<std::string> text = to_latin1(*utf8);
    if (!text) {
        refuse(fmt::format("the text has a character outside {}", encoding_name()),
               is_single_byte(encoding)
                   ? fmt::format("--encoding {0} is for a database whose texts are in {0}", encoding)
                   : "");
    }
    if (text->size() > field.length) refuse("the converted text is longer than the field");
    text->resize(field.length, ' ');
    record.replace(field.offset, field.length, *text);
}

}  // namespace

void check_encoding(const std::string& encoding) {
    if (encoding.empty() || Iconv(encoding).is_open()) return;
    throw Failure{Exit::usage, fmt::format("there is no encoding {}", encoding),
                  "\"iconv -l\" lists them; old DOS files are mostly CP437 or CP850."};
}

void write_converted(const DbfFile& file, const Conversion& conversion, const std::string& path) {
    Iconv iconv(conversion.encoding.empty() ? "ISO-8859-1" : conversion.encoding);
    std::ofstream target(path, std::ios::binary | std::ios::trunc);
    target << file.header;
    std::uint32_t written = 0;
    for_each_record(file, [&](std::uint64_t number, std::string_view bytes) {
        require_uninterrupted();
        if (conversion.skip_deleted && bytes[0] == '*') return;
        std::string record(bytes);
        for (const DbfField& field : file.fields) {
            if (field.type == 'C' && !conversion.encoding.empty())
                convert_field(iconv, conversion.encoding, field, number, record);
        }
        target << record;
        ++written;
    });
    target << '\x1A';
    target.seekp(count_offset);
    for (int shift = 0; shift < 32; shift += 8) target.put(static_cast<char>(written >> shift & 0xFF));
    if (!target.flush()) throw Failure{Exit::failed, fmt::format("cannot write {}", path)};
}

}  // namespace zmfb::tool
