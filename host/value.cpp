#include "host/value.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "host/error.h"

namespace zmfb::host {

// A text that was appended to has room for more and its capacity in front of it. The others, which a result
// has millions of, have room for their size and no field for it.
struct TextBlock {
    std::uint32_t references : 31;
    std::uint32_t can_grow : 1;
    std::uint32_t size;

    char* bytes() { return reinterpret_cast<char*>(this + 1); }
    [[nodiscard]] std::size_t capacity() const { return can_grow != 0 ? capacity_in_front() : size; }

    static TextBlock* make(std::size_t size) {
        return new (allocate(size)) TextBlock{1, 0, static_cast<std::uint32_t>(size)};
    }
    static TextBlock* make_growing(std::size_t size) {
        const std::size_t capacity = size + size / 2;
        char* const memory = static_cast<char*>(allocate(front + capacity));
        std::memcpy(memory, &capacity, sizeof capacity);
        return new (memory + front) TextBlock{1, 1, static_cast<std::uint32_t>(size)};
    }
    static void destroy(TextBlock* block) {
        std::free(reinterpret_cast<char*>(block) - (block->can_grow != 0 ? front : 0));
    }

  private:
    static constexpr std::size_t front = sizeof(std::size_t);

    static void* allocate(std::size_t size) {
        constexpr std::size_t largest = std::numeric_limits<std::uint32_t>::max() - sizeof(TextBlock) - front;
        void* const memory = size > largest ? nullptr : std::malloc(sizeof(TextBlock) + size);
        if (memory == nullptr) throw std::bad_alloc();
        return memory;
    }
    [[nodiscard]] std::size_t capacity_in_front() const {
        std::size_t capacity = 0;
        std::memcpy(&capacity, reinterpret_cast<const char*>(this) - front, sizeof capacity);
        return capacity;
    }
};

namespace {

// Arrays that are to be freed while another one is.
ArrayBlock* waiting = nullptr;
bool draining = false;

}  // namespace

// An array of a size known when it is made holds its elements right behind its header, in one allocation: the
// rows of a result are such. One that grows moves its elements to storage of their own.
struct ArrayBlock {
    std::uint32_t references;
    std::uint32_t capacity;
    std::uint32_t size;
    std::uint32_t own_storage;
    Value* elements;

    static constexpr std::size_t header_size() {
        return (sizeof(ArrayBlock) + alignof(Value) - 1) / alignof(Value) * alignof(Value);
    }

    static ArrayBlock* make(std::size_t size) {
        if (size > std::numeric_limits<std::uint32_t>::max() / sizeof(Value)) throw std::bad_alloc();
        void* memory = std::malloc(header_size() + size * sizeof(Value));
        if (memory == nullptr) throw std::bad_alloc();
        auto* elements = reinterpret_cast<Value*>(static_cast<char*>(memory) + header_size());
        const auto count = static_cast<std::uint32_t>(size);
        auto* block = new (memory) ArrayBlock{1, count, count, 0, elements};
        for (std::size_t i = 0; i < size; ++i) new (elements + i) Value();
        return block;
    }

    void grow() {
        const std::size_t wanted = capacity < 4 ? 8 : std::size_t{capacity} * 2;
        if (wanted > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
        // Values are moved as bytes: they hold no pointer into themselves.
        void* memory = own_storage != 0 ? std::realloc(static_cast<void*>(elements), wanted * sizeof(Value))
                                        : std::malloc(wanted * sizeof(Value));
        if (memory == nullptr) throw std::bad_alloc();
        if (own_storage == 0) std::memcpy(memory, static_cast<const void*>(elements), size * sizeof(Value));
        elements = static_cast<Value*>(memory);
        own_storage = 1;
        capacity = static_cast<std::uint32_t>(wanted);
    }

    // Nested arrays are freed one after another instead of one inside another, so that depth costs no stack.
    // Those that wait are chained through themselves, so that freeing needs no memory.
    static void destroy(ArrayBlock* block) {
        if (draining) {
            block->wait_before(waiting);
            waiting = block;
            return;
        }
        draining = true;
        for (;;) {
            for (std::uint32_t i = 0; i < block->size; ++i) block->elements[i].~Value();
            if (block->own_storage != 0) std::free(static_cast<void*>(block->elements));
            std::free(static_cast<void*>(block));
            if (waiting == nullptr) break;
            block = waiting;
            waiting = block->next_waiting();
        }
        draining = false;
    }

    // Nobody asks for the references and the capacity of an array that waits: the next one stands there.
    struct Waiting {
        ArrayBlock* next;
    };
    void wait_before(ArrayBlock* next) {
        const Waiting place{next};
        static_assert(sizeof place <= sizeof references + sizeof capacity);
        std::memcpy(static_cast<void*>(this), &place, sizeof place);
    }
    [[nodiscard]] ArrayBlock* next_waiting() const {
        Waiting place{};
        std::memcpy(&place, static_cast<const void*>(this), sizeof place);
        return place.next;
    }
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
        made.payload_.text = TextBlock::make(size);
        made.small_ = long_text;
        std::memset(made.payload_.text->bytes(), 0, size);
    }
    return made;
}

Value Value::array_of_size(std::size_t size) {
    Value made;
    made.payload_.array = ArrayBlock::make(size);
    made.kind_ = Kind::array;
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
    return {payload_.array->elements, payload_.array->size};
}

std::size_t Value::size() const {
    if (kind_ == Kind::array) return payload_.array->size;
    if (kind_ == Kind::character) return raw_text().size();
    wrong_kind(Kind::array);
    return 0;
}

Value& Value::operator[](std::size_t index) const& {
    if (kind_ == Kind::array && index >= 1 && index <= payload_.array->size) {
        return payload_.array->elements[index - 1];
    }
    bound_error(Subcode::array_access, *this, index);
    static Value nobodys;
    return nobodys = Value();
}

void Value::push(Value element) const {
    if (kind_ != Kind::array) return wrong_kind(Kind::array);
    ArrayBlock& block = *payload_.array;
    if (block.size == block.capacity) block.grow();
    new (block.elements + block.size) Value(std::move(element));
    ++block.size;
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
    if (payload_.text->references > 1) set_long_text(std::string(long_view()));
    return {payload_.text->bytes(), payload_.text->size};
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
    if (small_ == long_text && payload_.text->references == 1 && size <= payload_.text->capacity()) {
        std::memmove(payload_.text->bytes() + now.size(), more.data(), more.size());
        payload_.text->size = static_cast<std::uint32_t>(size);
        return;
    }
    // `more` may be a part of this very text, so the old text is let go of last.
    TextBlock* block = TextBlock::make_growing(size);
    std::memcpy(block->bytes(), now.data(), now.size());
    std::memcpy(block->bytes() + now.size(), more.data(), more.size());
    Value grown;
    grown.kind_ = Kind::character;
    grown.small_ = long_text;
    grown.payload_.text = block;
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

std::string_view Value::long_view() const noexcept { return {payload_.text->bytes(), payload_.text->size}; }

void Value::set_long_text(std::string_view text) {
    TextBlock* block = TextBlock::make(text.size());
    std::memcpy(block->bytes(), text.data(), text.size());
    if (counted()) release();
    payload_.text = block;
    kind_ = Kind::character;
    small_ = long_text;
}

void Value::retain() const noexcept {
    switch (kind_) {
        case Kind::character:
            ++payload_.text->references;
            break;
        case Kind::array:
            ++payload_.array->references;
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
            if (--payload_.text->references == 0) TextBlock::destroy(payload_.text);
            break;
        case Kind::array:
            if (--payload_.array->references == 0) ArrayBlock::destroy(payload_.array);
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
