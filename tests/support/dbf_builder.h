/// DBF files made byte by byte, sound ones and broken ones.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::test {

/// Builds the bytes of a DBF file. What is not set is computed as a sound file has it.
///
///     DbfBuilder().field("NAME", 'C', 10).field("BORN", 'D', 8).record({"Ana", "20070301"}).write(path);
///
/// Texts are bytes; a value is padded with blanks at the right, for type N at the left, or cut to its field.
class DbfBuilder {
  public:
    /// Adds a field; a length of 256 and more of type C goes into the file as a long field's does,
    /// and type C has no decimals.
    DbfBuilder& field(std::string_view name, char type, int length, int decimals = 0, int flags = 0);
    DbfBuilder& record(const std::vector<std::string>& values, char flag = ' ');
    /// Adds the bytes of a record as they are, deletion flag included, of any length.
    DbfBuilder& raw_record(std::string_view bytes);

    /// The first byte. With 2 the header is that of dBASE II, with 4 and 8C that of dBASE 7, with 30 to 32 it
    /// has the 263 bytes more of Visual FoxPro.
    DbfBuilder& type(int byte);
    DbfBuilder& language(int byte);
    DbfBuilder& record_count(std::uint32_t count);
    DbfBuilder& header_length(int length);
    DbfBuilder& record_length(int length);
    /// The byte behind the descriptors.
    DbfBuilder& terminator(char byte);
    /// Leaves it out.
    DbfBuilder& no_terminator();
    /// Leaves out the 0x1A behind the records.
    DbfBuilder& no_end_mark();
    /// Keeps only the first `size` bytes.
    DbfBuilder& cut(std::size_t size);

    [[nodiscard]] std::string bytes() const;
    void write(const std::string& path) const;

  private:
    struct Field {
        std::string name;
        char type;
        int length;
        int decimals;
        int flags;
    };

    [[nodiscard]] bool is_type(std::initializer_list<int> bytes) const;
    [[nodiscard]] std::string descriptor(const Field& field) const;
    [[nodiscard]] std::string header() const;

    std::vector<Field> fields_;
    std::string records_;
    std::uint32_t written_ = 0;
    int type_ = 3;
    std::optional<std::uint32_t> record_count_;
    std::optional<int> header_length_;
    std::optional<int> record_length_;
    std::optional<char> terminator_ = '\r';
    int language_ = 0;
    bool end_mark_ = true;
    std::optional<std::size_t> cut_;
};

/// @{
/// The `size` bytes of a number, the low one first or last.
std::string low_first(std::uint64_t number, int size);
std::string high_first(std::uint64_t number, int size);
/// @}

}  // namespace zmfb::test
