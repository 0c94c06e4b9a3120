#include "sql/typed/layout.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "sql/new_types.h"
#include "sql/typed/failure.h"

namespace zmfb::typed {

using sql::MessageItem;
using sql::object_client;

namespace {

// The engine's numbers of character sets.
constexpr unsigned none = 0, octets = 1, ascii = 2, unicode_fss = 3, utf8 = utf8_character_set,
                   iso8859_1 = 21;
constexpr unsigned character_set_bits = 0xFF;

constexpr unsigned longest_utf8_character = 4;
constexpr unsigned longest_text = 32764;  // whole characters of UTF-8

constexpr int text_subtype = 1;

// The types of newer engines are not in the headers of older ones.
constexpr std::pair<unsigned, std::string_view> other_types[] = {
    {SQL_ARRAY, "ARRAY"},
    {32748, "TIMESTAMP WITH TIME ZONE"},
    {32750, "TIME WITH TIME ZONE"},
    {32752, "INT128"},
    {32754, "TIMESTAMP WITH TIME ZONE"},
    {32756, "TIME WITH TIME ZONE"},
    {32760, "DECFLOAT(16)"},
    {32762, "DECFLOAT(34)"},
};

// What an engine gives as a text that is none.
SqlType kind_of_text(const MessageItem& item, unsigned character_set) {
    if (character_set == octets) return SqlType::bytes;
    if (item.type != SQL_VARYING || character_set != ascii) return SqlType::text;
    switch (item.length) {
        case sql::whole_number_length:
            return SqlType::decimal;
        case sql::float_length:
            return SqlType::real;
        case sql::zoned_time_length:
            return SqlType::other;
        default:
            return SqlType::text;
    }
}

bool is_text(unsigned type) { return type == SQL_TEXT || type == SQL_VARYING; }

unsigned character_set_of(const MessageItem& item) { return item.character_set & character_set_bits; }

SqlType kind_of_number(const MessageItem& item) {
    if (item.scale > 0) return SqlType::other;
    return item.scale == 0 ? SqlType::integer : SqlType::decimal;
}

SqlType kind_of_item(const MessageItem& item) {
    switch (item.type) {
        case SQL_TEXT:
        case SQL_VARYING:
            return kind_of_text(item, character_set_of(item));
        case SQL_SHORT:
        case SQL_LONG:
        case SQL_INT64:
            return kind_of_number(item);
        case SQL_FLOAT:
        case SQL_DOUBLE:
        case SQL_D_FLOAT:
            return SqlType::real;
        case SQL_BOOLEAN:
            return SqlType::boolean;
        case SQL_TYPE_DATE:
            return SqlType::date;
        case SQL_TYPE_TIME:
            return SqlType::time;
        case SQL_TIMESTAMP:
            return SqlType::timestamp;
        case SQL_BLOB:
            return item.subtype == text_subtype ? SqlType::text_blob : SqlType::blob;
        default:
            return SqlType::other;
    }
}

Script script_of(const MessageItem& item, TextForm form) {
    if (!is_text(item.type) && kind_of_item(item) != SqlType::text_blob) return Script::octets;
    if (form == TextForm::as_kept && character_set_of(item) != octets) return Script::as_kept;
    switch (character_set_of(item)) {
        case none:
            return Script::database;
        case octets:
            return Script::octets;
        case unicode_fss:
            return Script::names;
        case iso8859_1:
            return Script::latin1;
        default:
            return Script::utf8;
    }
}

// A blob is converted when it is opened.
bool is_foreign_text(const MessageItem& item, TextForm form) {
    return is_text(item.type) && is_foreign(script_of(item, form), character_set_of(item));
}

std::string name_of_text(const MessageItem& item) {
    const unsigned set = character_set_of(item);
    const unsigned width = set == utf8 ? longest_utf8_character : set == unicode_fss ? 3 : 1;
    return fmt::format("{}({})", item.type == SQL_TEXT ? "CHAR" : "VARCHAR", item.length / width);
}

std::string name_of_whole(unsigned type) {
    return type == SQL_SHORT ? "SMALLINT" : type == SQL_LONG ? "INTEGER" : "BIGINT";
}

std::string name_of_type(const MessageItem& item) {
    const SqlType kind = kind_of_item(item);
    if (is_written_out(item.type, kind)) {
        return kind == SqlType::decimal ? "NUMERIC of up to 38 digits"
               : kind == SqlType::real  ? "DECFLOAT"
                                        : "a time WITH TIME ZONE";
    }
    switch (kind) {
        case SqlType::text:
            return name_of_text(item);
        case SqlType::bytes:
            return name_of_text(item) + " CHARACTER SET OCTETS";
        case SqlType::integer:
            return name_of_whole(item.type);
        case SqlType::decimal:
            return fmt::format("NUMERIC with {} decimal{}", -item.scale, item.scale == -1 ? "" : "s");
        case SqlType::real:
            return item.type == SQL_FLOAT ? "FLOAT" : "DOUBLE PRECISION";
        case SqlType::boolean:
            return "BOOLEAN";
        case SqlType::date:
            return "DATE";
        case SqlType::time:
            return "TIME";
        case SqlType::timestamp:
            return "TIMESTAMP";
        case SqlType::text_blob:
            return "BLOB SUB_TYPE TEXT";
        case SqlType::blob:
            return "BLOB";
        case SqlType::other:
            break;
    }
    const auto* const known =
        std::ranges::find(other_types, item.type, &std::pair<unsigned, std::string_view>::first);
    return known == std::end(other_types) ? fmt::format("type {}", item.type) : std::string(known->second);
}

int decimals_of(const MessageItem& item) { return kind_of_item(item) == SqlType::decimal ? -item.scale : 0; }

Column column_of(const MessageItem& item) {
    return {.name = std::string(item.alias.empty() ? item.field : item.alias),
            .type = kind_of_item(item),
            .decimals = decimals_of(item),
            .length = item.length,
            .nullable = item.nullable,
            .type_name = name_of_type(item)};
}

Slot slot_of(const MessageItem& item, TextForm form) {
    return {.type = item.type,
            .kind = kind_of_item(item),
            .script = script_of(item, form),
            .decimals = decimals_of(item),
            .length = item.length,
            .character_set = character_set_of(item),
            .offset = item.offset,
            .null_offset = item.null_offset};
}

std::vector<sql::MessageChange> changes_of(const std::vector<MessageItem>& items, Layout::Of what,
                                           TextForm form) {
    std::vector<sql::MessageChange> changes;
    for (unsigned i = 0; i < items.size(); ++i) {
        const MessageItem& item = items[i];
        const bool fixed = what == Layout::Of::parameters && item.type == SQL_TEXT;
        const bool foreign = is_foreign_text(item, form);
        if (!fixed && !foreign) continue;
        const unsigned wide = std::min(item.length * longest_utf8_character, longest_text);
        changes.push_back({.index = i,
                           .type = fixed ? SQL_VARYING : item.type,
                           .length = foreign ? wide : item.length,
                           .character_set = foreign ? utf8 : character_set_of(item)});
    }
    return changes;
}

}  // namespace

bool is_foreign(Script script, unsigned character_set) {
    return script == Script::utf8 && character_set != utf8 && character_set != ascii;
}

bool is_written_out(unsigned type, SqlType kind) {
    return type == SQL_VARYING && kind != SqlType::text && kind != SqlType::bytes;
}

void Layout::describe(std::vector<MessageItem>& items, std::string_view statement) {
    items.clear();
    check(object_client().describe(status(), metadata_.get(), &items, &size_), statement);
}

Layout::Layout(Firebird::IMessageMetadata* described, Of what, TextForm form, std::string_view statement)
    : metadata_(described) {
    std::vector<MessageItem> items;
    describe(items, statement);
    std::ranges::transform(items, std::back_inserter(columns_), column_of);
    const auto changes = changes_of(items, what, form);
    if (!changes.empty()) {
        Firebird::IMessageMetadata* changed = nullptr;
        check(object_client().change_message(status(), metadata_.get(), changes, &changed), statement);
        metadata_.reset(changed);
        describe(items, statement);
    }
    for (const MessageItem& item : items) slots_.push_back(slot_of(item, form));
}

}  // namespace zmfb::typed
