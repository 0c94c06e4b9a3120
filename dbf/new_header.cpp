#include "dbf/new_header.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

#include "dbf/code_page.h"
#include "dbf/companion.h"
#include "dbf/descriptors.h"
#include "dbf/layout.h"
#include "dbf/put_value.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t longest_name = 10;
constexpr std::size_t widest_number = 255;
constexpr std::size_t longest_foxpro_text = 254;
constexpr std::size_t widest_foxpro_number = 20;
constexpr std::size_t most_foxpro_fields = 255;
// The path of the database that a table belongs to: of none.
constexpr std::size_t database_path_size = 263;
constexpr std::size_t table_flags_at = 28;
constexpr char has_memo_file = 0x02;
constexpr std::size_t language_at = 29;
constexpr std::size_t displacement_at = 12;

bool is_foxpro(Format format) { return format != Format::dbase3; }

std::string_view types_of(Format format) {
    switch (format) {
        case Format::dbase3:
            return "CNDLM";
        case Format::foxpro:
            return "CNFDLMGP";
        default:
            return "CNFDLMGPIBYTVQ";
    }
}

std::string_view name_of(Format format) {
    switch (format) {
        case Format::dbase3:
            return "dBASE III";
        case Format::foxpro:
            return "FoxPro 2";
        default:
            return "Visual FoxPro";
    }
}

std::size_t length_of(const NewField& field, Format format) {
    switch (field.type) {
        case 'D':
        case 'B':
        case 'Y':
        case 'T':
            return 8;
        case 'L':
            return 1;
        case 'I':
            return 4;
        case 'M':
        case 'G':
        case 'P':
            return format == Format::visual_foxpro ? 4 : 10;
        default:
            return field.length;
    }
}

std::size_t longest(char type, Format format) {
    if (type == 'N' || type == 'F') return is_foxpro(format) ? widest_foxpro_number : widest_number;
    return is_foxpro(format) ? longest_foxpro_text : std::numeric_limits<std::uint16_t>::max() - 1;
}

// Makes the fields of a file of the new ones, and collects what is wrong with them.
class Fields {
  public:
    Fields(Format format, std::span<const NewField> fields, const std::string& code_page) : format_(format) {
        if (!code_page.empty()) {
            from_utf8_.emplace(code_page);
            if (!from_utf8_->known()) {
                problem("cannot be written in {}: there is no such code page that has ASCII in it",
                        code_page);
                from_utf8_.reset();
            }
        }
        if (fields.empty()) problem("would have no fields");
        for (const NewField& field : fields) add(field);
        check_size();
    }

    std::vector<Field> fields;
    std::vector<std::string> problems;

  private:
    void add(const NewField& asked) {
        const std::string name = name_in_file(asked);
        if (!names_.insert(lower(name)).second) problem("would have two fields {}", asked.name);
        if (types_of(format_).find(asked.type) == std::string_view::npos) {
            return problem("would have a field {} of type {}, which {} does not have", asked.name, asked.type,
                           name_of(format_));
        }
        Field field;
        field.name = name;
        field.type = asked.type;
        field.length = length_of(asked, format_);
        field.decimals = asked.type == 'N' || asked.type == 'F' ? asked.decimals : 0;
        add_flags(asked, field);
        field.kind = kind_of(field);
        check_length(asked, field);
        field.offset = record_size_;
        record_size_ += field.length;
        fields.push_back(std::move(field));
    }

    std::string name_in_file(const NewField& field) {
        std::string name = field.name;
        if (from_utf8_) {
            const FromUtf8::Text converted = from_utf8_->convert(field.name);
            if (converted.replaced)
                problem("would have a field {}, a name with characters that its code page does not have",
                        field.name);
            name = converted.bytes;
        }
        if (name.find('\0') != std::string::npos || name.find_first_not_of(' ') == std::string::npos) {
            problem("would have a field without a name");
        } else if (name.size() > longest_name) {
            problem("would have a field {}, a name longer than {} bytes", field.name, longest_name);
        }
        return name;
    }

    void add_flags(const NewField& asked, Field& field) {
        const bool has_flags = format_ == Format::visual_foxpro;
        if (asked.nullable && !has_flags) {
            problem("would have a field {} that may be NULL, which {} does not have", asked.name,
                    name_of(format_));
        }
        const bool may_be_binary = has_flags && (asked.type == 'C' || asked.type == 'V' || asked.type == 'M');
        if (asked.binary && !may_be_binary) {
            problem("would have a field {} of type {} for bytes, which {} does not have", asked.name,
                    asked.type, name_of(format_));
        }
        if (asked.nullable) field.flags |= may_be_null;
        const bool are_bytes = asked.type == 'G' || asked.type == 'P' || asked.type == 'Q';
        if (asked.binary || are_bytes) field.flags |= is_binary;
    }

    void check_length(const NewField& asked, const Field& field) {
        if (std::string_view("CVQNF").find(field.type) == std::string_view::npos) return;
        if (field.length == 0) problem("would have a field {} of no length", asked.name);
        if (const std::size_t most = longest(field.type, format_); field.length > most)
            problem("would have a field {} longer than {} bytes", asked.name, most);
        const bool too_many =
            field.decimals < 0 ||
            (field.decimals > 0 && static_cast<std::size_t>(field.decimals) >= field.length);
        if (too_many)
            problem("would have a field {} of {} digits with {} decimals", asked.name, field.length,
                    field.decimals);
    }

    void check_size() {
        constexpr std::size_t most = std::numeric_limits<std::uint16_t>::max();
        constexpr std::size_t most_fields = (most - prolog_size - 1) / descriptor_size;
        const std::size_t allowed = is_foxpro(format_) ? most_foxpro_fields : most_fields;
        if (fields.size() > allowed)
            problem("would have {} fields, and {} has at most {}", fields.size(), name_of(format_), allowed);
        // With room for the NULL flags.
        const std::size_t flags = format_ == Format::visual_foxpro ? fields.size() / 4 + 1 : 0;
        if (record_size_ + flags > most)
            problem("would have records of {} bytes, and a DBF file has at most {}", record_size_ + flags,
                    most);
    }

    template <class... Arguments>
    void problem(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
        problems.push_back(fmt::format(text, std::forward<Arguments>(arguments)...));
    }

    Format format_;
    std::optional<FromUtf8> from_utf8_;
    std::set<std::string> names_;
    std::size_t record_size_ = 1;
};

bool is_varying(const Field& field) { return field.type == 'V' || field.type == 'Q'; }

std::uint8_t first_byte_of(Format format, const Header& header) {
    switch (format) {
        case Format::dbase3:
            return header.has_memo() ? 0x83 : 0x03;
        case Format::foxpro:
            return header.has_memo() ? 0xF5 : 0x03;
        default:
            return std::any_of(header.fields.begin(), header.fields.end(), is_varying) ? 0x32 : 0x30;
    }
}

Dialect dialect_of(Format format) {
    if (format == Format::visual_foxpro) return Dialect::visual_foxpro;
    return format == Format::foxpro ? Dialect::foxpro2 : Dialect::dbase3;
}

std::string description(const Field& field, Dialect dialect) {
    constexpr std::size_t unit = 256;
    std::string bytes = make_descriptor(
        {.name = field.name,
         .type = field.type,
         .length = field.length % unit,
         .decimals = field.type == 'C' ? static_cast<int>(field.length / unit) : field.decimals,
         .flags = field.flags});
    if (dialect != Dialect::dbase3) put_little_endian(bytes, displacement_at, 4, field.offset);
    return bytes;
}

std::string description_of_null_flags(const Header& header) {
    Field flags;
    flags.name = "_NullFlags";
    flags.type = '0';
    flags.length = header.null_flags_size;
    flags.offset = *header.null_flags;
    constexpr std::uint8_t hidden = 0x01;
    flags.flags = hidden | is_binary;
    return description(flags, header.dialect);
}

void place_null_flags(Header& header) {
    std::size_t bits = 0;
    for (const Field& field : header.fields) {
        if (is_varying(field)) ++bits;
        if ((field.flags & may_be_null) != 0) ++bits;
    }
    if (bits == 0) return;
    header.null_flags = header.record_size;
    header.null_flags_size = (bits + 7) / 8;
    header.record_size += header.null_flags_size;
    number_null_bits(header.fields, header.null_flags_size);
}

}  // namespace

std::vector<std::string> field_problems(Format format, std::span<const NewField> fields,
                                        const std::string& code_page) {
    return Fields(format, fields, code_page).problems;
}

Header plan_header(Format format, std::span<const NewField> fields, const std::string& code_page,
                   bool names_code_page) {
    Fields made(format, fields, code_page);
    if (!made.problems.empty()) throw Refused(std::move(made.problems));
    Header header;
    header.fields = std::move(made.fields);
    header.dialect = dialect_of(format);
    header.first_byte = first_byte_of(format, header);
    if (names_code_page && !code_page.empty()) header.language = language_of(code_page);
    header.record_size = header.fields.back().offset + header.fields.back().length;
    place_null_flags(header);
    const std::size_t descriptions = header.fields.size() + (header.null_flags ? 1 : 0);
    header.start = prolog_size + descriptor_size * descriptions + 1 +
                   (header.dialect == Dialect::visual_foxpro ? database_path_size : 0);
    return header;
}

std::string changed_bytes(Date changed) {
    return {static_cast<char>(static_cast<int>(changed.year()) - 1900),
            static_cast<char>(static_cast<unsigned>(changed.month())),
            static_cast<char>(static_cast<unsigned>(changed.day()))};
}

std::string header_bytes(const Header& header, Date changed) {
    std::string bytes = make_prolog({.first_byte = header.first_byte,
                                     .header = static_cast<std::uint16_t>(header.start),
                                     .record = static_cast<std::uint16_t>(header.record_size)});
    bytes.replace(changed_at, 3, changed_bytes(changed));
    if (header.dialect == Dialect::visual_foxpro && header.has_memo()) bytes[table_flags_at] = has_memo_file;
    bytes[language_at] = static_cast<char>(header.language);
    for (const Field& field : header.fields) bytes += description(field, header.dialect);
    if (header.null_flags) bytes += description_of_null_flags(header);
    bytes += end_of_descriptors;
    bytes.resize(static_cast<std::size_t>(header.start), '\0');
    return bytes;
}

std::string empty_record(const Header& header) {
    std::string record(header.record_size, ' ');
    for (const Field& field : header.fields) put_nothing(header, field, record.data());
    if (header.null_flags)
        record.replace(*header.null_flags, header.null_flags_size, header.null_flags_size, '\0');
    for (const Field& field : header.fields) {
        if (field.length_bit) put_varying(header, field, record.data(), {});
    }
    return record;
}

}  // namespace zmfb::dbf
