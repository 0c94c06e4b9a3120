// How the values of an invented message lie in it.
#include <algorithm>
#include <utility>

#include "fuzz/invented_client.h"

namespace zmfb::fuzz {

namespace {

// The size of a value in a message, and what it is aligned to.
std::pair<unsigned, unsigned> size_of(const sql::MessageItem& item) {
    switch (item.type) {
        case SQL_TEXT:
            return {item.length, 1};
        case SQL_VARYING:
            return {item.length + 2, 2};
        case SQL_TIMESTAMP:
        case SQL_BLOB:
        case SQL_ARRAY:
        case SQL_QUAD:
            return {item.length, 4};
        case SQL_NULL:
            return {0, 1};
        case SQL_BOOLEAN:
            return {item.length, 1};
        default:
            return {item.length, std::min(item.length, 8U)};
    }
}

unsigned length_of(const sql::MessageItem& item) {
    switch (item.type) {
        case SQL_TEXT:
        case SQL_VARYING:
            return item.length;
        case SQL_BOOLEAN:
            return 1;
        case SQL_SHORT:
            return 2;
        case SQL_LONG:
        case SQL_FLOAT:
        case SQL_TYPE_DATE:
        case SQL_TYPE_TIME:
            return 4;
        case SQL_NULL:
            return 0;
        case SQL_INT64:
        case SQL_DOUBLE:
        case SQL_D_FLOAT:
        case SQL_TIMESTAMP:
        case SQL_BLOB:
        case SQL_ARRAY:
        case SQL_QUAD:
            return 8;
        default:
            return 16;  // types of newer engines
    }
}

}  // namespace

void InventedMessage::add(sql::MessageItem item) {
    items_.push_back(item);
    lay_out();
}

void InventedMessage::change(std::span<const sql::MessageChange> changes) {
    for (const sql::MessageChange& change : changes) {
        sql::MessageItem& item = items_.at(change.index);
        item.type = change.type;
        item.length = change.length;
        item.character_set = change.character_set;
    }
    lay_out();
}

void InventedMessage::lay_out() {
    length_ = 0;
    const auto place = [this](unsigned size, unsigned alignment) {
        if (alignment > 1) length_ = (length_ + alignment - 1) / alignment * alignment;
        return std::exchange(length_, length_ + size);
    };
    for (sql::MessageItem& item : items_) {
        item.length = length_of(item);
        const auto [size, alignment] = size_of(item);
        item.offset = place(size, alignment);
        item.null_offset = place(sizeof(std::int16_t), alignof(std::int16_t));
    }
}

}  // namespace zmfb::fuzz
