#include "host/value.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "host/error.h"

namespace zmfb::host {

// What stands at the beginning of memory that texts lie in: how many texts hold it, and an array that it is.
struct Holders {
    std::uint32_t holders;

    static void let_go(Holders* memory) {
        if (--memory->holders == 0) std::free(static_cast<void*>(memory));
    }
};

namespace {

void* allocate(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// A text that has memory of its own, which begins with this. One that was appended to has room for more.
struct TextBlock : Holders {
    std::uint32_t capacity;

    static char* make(std::size_t capacity) {
        if (capacity > std::numeric_limits<std::uint32_t>::max() - sizeof(TextBlock)) throw std::bad_alloc();
        auto* const block =
            new (allocate(sizeof(TextBlock) + capacity)) TextBlock{{1}, static_cast<std::uint32_t>(capacity)};
        return reinterpret_cast<char*>(block + 1);
    }
    static TextBlock& before(char* bytes) { return *(reinterpret_cast<TextBlock*>(bytes) - 1); }
};

Holders* memory_of(char* bytes, std::size_t offset) { return reinterpret_cast<Holders*>(bytes - offset); }

// Arrays that are to be freed while another one is.
ArrayBlock* waiting = nullptr;
bool draining = false;

}  // namespace

// An array of a size known when it is made holds its elements right behind its header, in one allocation, and
// an array of texts their bytes behind those: the rows of a result are such. One that grows moves its
// elements to storage of their own, whose place stands where they were.
struct ArrayBlock : Holders {
    struct Use {
        std::uint32_t references;
        std::uint32_t capacity;
    };

    std::uint32_t size : 31;
    std::uint32_t own_storage : 1;
    union {
        Use use;
        ArrayBlock* next_waiting;  // once nobody refers to it
    };

    [[nodiscard]] Value* inside() { return reinterpret_cast<Value*>(this + 1); }
    [[nodiscard]] Value* elements() {
        if (own_storage == 0) return inside();
        Value* outside = nullptr;
        std::memcpy(&outside, static_cast<void*>(this + 1), sizeof outside);
        return outside;
    }
    // Where the bytes of texts begin.
    static constexpr std::size_t size_of(std::size_t capacity) {
        return sizeof(ArrayBlock) + std::max(capacity * sizeof(Value), sizeof(Value*));
    }

    // Has no element yet.
    static ArrayBlock* make(std::size_t capacity, std::size_t text_size) {
        if (capacity > std::numeric_limits<std::uint32_t>::max() / sizeof(Value)) throw std::bad_alloc();
        return new (allocate(size_of(capacity) + text_size))
            ArrayBlock{{1}, 0, 0, {{1, static_cast<std::uint32_t>(capacity)}}};
    }
    // An element more, of which there is room.
    template <class... From>
    void add(From&&... from) {
        new (elements() + size) Value(std::forward<From>(from)...);
        be_of_size(size + std::size_t{1});
    }
    void be_of_size(std::size_t elements) { size = elements & largest; }

    void grow() {
        const std::size_t wanted = use.capacity < 4 ? 8 : std::size_t{use.capacity} * 2;
        if (wanted > std::min<std::size_t>(largest, std::numeric_limits<std::size_t>::max() / sizeof(Value)))
            throw std::bad_alloc();
        // Values are moved as bytes: they hold no pointer into themselves.
        void* const before = elements();
        void* const memory = own_storage != 0 ? std::realloc(before, wanted * sizeof(Value))
                                              : std::malloc(wanted * sizeof(Value));
        if (memory == nullptr) throw std::bad_alloc();
        if (own_storage == 0) std::memcpy(memory, before, size * sizeof(Value));
        std::memcpy(static_cast<void*>(this + 1), &memory, sizeof memory);
        own_storage = 1;
        use.capacity = static_cast<std::uint32_t>(wanted);
    }

    // Nested arrays are freed one after another instead of one inside another, so that depth costs no stack.
    // Those that wait are chained through themselves, so that freeing needs no memory.
    static void destroy(ArrayBlock* block) {
        if (draining) {
            block->next_waiting = waiting;
            waiting = block;
            return;
        }
        draining = true;
        for (;;) {
            Value* const elements = block->elements();
            for (std::uint32_t i = 0; i < block->size; ++i) elements[i].~Value();
            if (block->own_storage != 0) std::free(static_cast<void*>(elements));
            let_go(block);
            if (waiting == nullptr) break;
            block = waiting;
            waiting = block->next_waiting;
        }
        draining = false;
    }

  private:
    static constexpr std::uint32_t largest = 0x7FFFFFFF;
};

struct CodeBlock {
    std::uint32_t references;
    BlockFunction body;
};

Value::Value(Object* object) noexcept : kind_(object == nullptr ? Kind::nil : Kind::object) {
    payload_.number = 0;
    if (object == nullptr) return;
    payload_.object = object;
    ++object->references_;
}

Value Value::text_of_size(std::size_t size) {
    Value made{std::string_view{}};
    if (size <= inline_text_size) {
        made.small_ = static_cast<std::uint8_t>(size);
    } else {
        char* const bytes = TextBlock::make(size);
        std::memset(bytes, 0, size);
        made.be_long_text(bytes, sizeof(TextBlock), size);
    }
    return made;
}

Value Value::array_of_size(std::size_t size) {
    Value made;
    made.payload_.array = ArrayBlock::make(size, 0);
    made.kind_ = Kind::array;
    for (std::size_t i = 0; i < size; ++i) made.payload_.array->add();
    return made;
}

Value Value::array_of_texts(std::span<const std::string_view> texts) {
    constexpr std::size_t furthest = std::numeric_limits<std::uint16_t>::max();
    const std::size_t begin = ArrayBlock::size_of(texts.size());
    std::size_t end = begin;
    for (const std::string_view text : texts) {
        if (text.size() > inline_text_size && end <= furthest) end += text.size();
    }
    Value made;
    ArrayBlock& block = *(made.payload_.array = ArrayBlock::make(texts.size(), end - begin));
    made.kind_ = Kind::array;
    std::size_t count = 0;
    std::size_t offset = begin;
    for (const std::string_view text : texts) {
        Value* const place = block.inside() + count;
        if (text.size() <= inline_text_size || offset > furthest) {
            block.be_of_size(count);  // should there be no memory for this one
            new (place) Value(text);
        } else {
            char* const bytes = reinterpret_cast<char*>(&block) + offset;
            std::memcpy(bytes, text.data(), text.size());
            (new (place) Value())->be_long_text(bytes, offset, text.size());
            ++block.holders;
            offset += text.size();
        }
        ++count;
    }
    block.be_of_size(count);
    return made;
}

Value Value::block(BlockFunction body) {
    Value made;
    made.payload_.block = new CodeBlock{1, std::move(body)};
    made.kind_ = Kind::block;
    return made;
}

std::int64_t Value::integer() const {
    const double value = number();
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(value)) return 0;
    if (value >= limit) return std::numeric_limits<std::int64_t>::max();
    if (value <= -limit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::span<Value> Value::items() const& {
    if (kind_ != Kind::array) {
        wrong_kind(Kind::array);
        return {};
    }
    return {payload_.array->elements(), payload_.array->size};
}

std::size_t Value::size() const {
    if (kind_ == Kind::array) return payload_.array->size;
    if (kind_ == Kind::character) return raw_text().size();
    wrong_kind(Kind::array);
    return 0;
}

Value& Value::operator[](std::size_t index) const& {
    if (kind_ == Kind::array && index >= 1 && index <= payload_.array->size) {
        return payload_.array->elements()[index - 1];
    }
    bound_error(Subcode::array_access, *this, index);
    static Value nobodys;
    return nobodys = Value();
}

void Value::push(Value element) const {
    if (kind_ != Kind::array) return wrong_kind(Kind::array);
    ArrayBlock& block = *payload_.array;
    if (block.size == block.use.capacity) block.grow();
    block.add(std::move(element));
}

Value Value::eval(Args args) const {
    if (kind_ != Kind::block) return argument_error(Subcode::eval, "EVAL", {});
    const Value keep_alive = *this;
    return payload_.block->body(args);
}

std::span<char> Value::writable_text() & {
    if (kind_ != Kind::character) {
        wrong_kind(Kind::character);
        return {};
    }
    if (small_ != long_text) return {short_text(), small_};
    if (memory_of(payload_.text, text_offset())->holders > 1) set_long_text(long_view());
    return {payload_.text, long_size()};
}

void Value::append(std::string_view more) {
    if (kind_ != Kind::character) return wrong_kind(Kind::character);
    if (more.empty()) return;
    const std::string_view now = raw_text();
    const std::size_t size = now.size() + more.size();
    if (small_ != long_text && size <= inline_text_size) {
        std::memmove(short_text() + small_, more.data(), more.size());
        small_ = static_cast<std::uint8_t>(size);
        return;
    }
    if (small_ == long_text && text_offset() == sizeof(TextBlock)) {
        const TextBlock& block = TextBlock::before(payload_.text);
        if (block.holders == 1 && size <= block.capacity) {
            std::memmove(payload_.text + now.size(), more.data(), more.size());
            return set_long_size(static_cast<std::uint32_t>(size));
        }
    }
    // `more` may be a part of this very text, so the old text is let go of last.
    char* const bytes = TextBlock::make(size + size / 2);
    std::memcpy(bytes, now.data(), now.size());
    std::memcpy(bytes + now.size(), more.data(), more.size());
    Value grown;
    grown.be_long_text(bytes, sizeof(TextBlock), size);
    swap(grown);
}

bool Value::same(const Value& other) const noexcept {
    if (kind_ != other.kind_) return false;
    switch (kind_) {
        case Kind::nil:
            return true;
        case Kind::character:
            return raw_text() == other.raw_text();
        case Kind::numeric:
            return payload_.number == other.payload_.number;
        case Kind::logical:
            return payload_.logical == other.payload_.logical;
        case Kind::date:
            return payload_.day == other.payload_.day;
        case Kind::array:
            return payload_.array == other.payload_.array;
        case Kind::object:
            return payload_.object == other.payload_.object;
        case Kind::block:
            return payload_.block == other.payload_.block;
    }
    return false;
}

void Value::be_long_text(char* bytes, std::size_t offset, std::size_t size) noexcept {
    const auto distance = static_cast<std::uint16_t>(offset);
    kind_ = Kind::character;
    small_ = long_text;
    std::memcpy(inline_, &distance, sizeof distance);
    set_long_size(static_cast<std::uint32_t>(size));
    payload_.text = bytes;
}

void Value::set_long_text(std::string_view text) {
    char* const bytes = TextBlock::make(text.size());
    std::memcpy(bytes, text.data(), text.size());
    if (counted()) release();
    be_long_text(bytes, sizeof(TextBlock), text.size());
}

void Value::retain() const noexcept {
    switch (kind_) {
        case Kind::character:
            ++memory_of(payload_.text, text_offset())->holders;
            break;
        case Kind::array:
            ++payload_.array->use.references;
            break;
        case Kind::object:
            ++payload_.object->references_;
            break;
        case Kind::block:
            ++payload_.block->references;
            break;
        default:
            break;
    }
}

void Value::release() noexcept {
    switch (kind_) {
        case Kind::character:
            Holders::let_go(memory_of(payload_.text, text_offset()));
            break;
        case Kind::array:
            if (--payload_.array->use.references == 0) ArrayBlock::destroy(payload_.array);
            break;
        case Kind::object:
            if (payload_.object->references_ == 1) payload_.object->last_release();
            if (--payload_.object->references_ == 0) delete payload_.object;
            break;
        case Kind::block:
            if (--payload_.block->references == 0) delete payload_.block;
            break;
        default:
            break;
    }
}

void Value::wrong_kind(Kind wanted) const {
    argument_error(Subcode::wrong_kind, kind_name(wanted), {this, 1});
}

const Value& Args::nil() noexcept {
    static const Value none;
    return none;
}

}  // namespace zmfb::host
