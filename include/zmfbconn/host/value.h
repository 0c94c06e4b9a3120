/// The value of the xBase runtime: one of NIL, character, numeric, logical, date, array, object, code block.
///
/// A value is 16 bytes. Numbers, logicals, dates and texts of up to 14 bytes are held inside it; a longer
/// text lives in one reference-counted block, or together with an array of texts in that one's; it is copied
/// when it is written to while shared. Arrays, objects and blocks are references: copying the value names the
/// same thing once more. Moving never allocates, and leaves NIL. Texts are bytes (ISO-8859-1, zero bytes
/// allowed). Everything here belongs to one thread.
///
/// Accessors are checked: asking a value for another kind than it holds raises an argument error through the
/// error block (host/error.h) and, should its handler return, answers "" , 0, .F. or the empty date.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "latin1.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

class Value;
class Args;
class Object;
struct ArrayBlock;
struct CodeBlock;

/// What a value can be. NIL is "no value".
enum class Kind : std::uint8_t { nil, character, numeric, logical, date, array, object, block };

/// A calendar date as a Julian day number; 0 is the empty date.
struct Date {
    std::int32_t day = 0;  ///< Julian day number, 0 for the empty date
    /// In the order of the calendar, the empty date first.
    auto operator<=>(const Date&) const = default;
};

/// How a number shows when no length is given: columns in all, and decimals. 0 columns: the default of ten.
struct Picture {
    std::uint8_t width = 0;     ///< columns in all, 0 for the default of ten
    std::uint8_t decimals = 0;  ///< of those behind the point
    /// Whether both show alike.
    bool operator==(const Picture&) const = default;
};

/// The body of a code block: receives the arguments it is evaluated with.
using BlockFunction = std::function<Value(Args)>;

/// What a numeric value is made of.
template <class T>
concept Number = (std::integral<T> || std::floating_point<T>)&&!std::same_as<T, bool> &&
                 !std::same_as<T, char>;

/// One value of the runtime; see the top of this file for what it costs and who owns what.
class Value {
  public:
    /// NIL.
    Value() noexcept : kind_(Kind::nil) { payload_.number = 0; }
    /// The same value once more: a reference for arrays, objects and blocks.
    Value(const Value& other) noexcept {
        std::memcpy(static_cast<void*>(this), &other, sizeof *this);
        if (counted()) retain();
    }
    /// Takes the value over and leaves NIL.
    Value(Value&& other) noexcept {
        std::memcpy(static_cast<void*>(this), &other, sizeof *this);
        other.kind_ = Kind::nil;
    }
    /// The same value once more; what was here is released. A temporary is not assigned to.
    Value& operator=(const Value& other) & noexcept {
        Value copy(other);
        swap(copy);
        return *this;
    }
    /// Takes the value over and leaves NIL; what was here is released.
    Value& operator=(Value&& other) & noexcept {
        Value moved(std::move(other));
        swap(moved);
        return *this;
    }
    /// Gives its reference back; the last one ends what it referred to.
    ~Value() {
        if (counted()) release();
    }

    /// A text: a copy of the bytes.
    template <class T>
    requires std::convertible_to<const T&, std::string_view> Value(const T& text)
        : Value(std::string_view(text), TextTag{}) {}  // NOLINT(google-explicit-constructor)
    /// .T. or .F.
    template <std::same_as<bool> T>
    Value(T logical) noexcept : kind_(Kind::logical) {  // NOLINT(google-explicit-constructor)
        payload_.number = 0;
        payload_.logical = logical;
    }
    /// A number; integers beyond 2^53 lose digits.
    template <Number T>
    Value(T number) noexcept : Value(static_cast<double>(number), Picture{}) {}  // NOLINT
    /// A number that shows as `picture` says.
    Value(double number, Picture picture) noexcept : kind_(Kind::numeric) {
        inline_[0] = static_cast<char>(picture.width);
        inline_[1] = static_cast<char>(picture.decimals);
        payload_.number = number;
    }
    /// A date.
    Value(Date date) noexcept : kind_(Kind::date) {  // NOLINT(google-explicit-constructor)
        payload_.number = 0;
        payload_.day = date.day;
    }
    /// A null pointer is no text: NIL is Value().
    Value(std::nullptr_t) = delete;
    /// Takes part in the ownership of `object`, which must have been made with new.
    explicit Value(Object* object) noexcept;

    /// A text of `size` zero bytes, to be filled through writable_text().
    static Value text_of_size(std::size_t size);
    /// An array of `size` NIL elements.
    static Value array_of_size(std::size_t size);
    /// An array of copies of those texts, in one allocation as long as they are not beyond 64 KB together. A
    /// text that is kept longer than the array keeps that allocation.
    static Value array_of_texts(std::span<const std::string_view> texts);
    /// A code block with that body.
    static Value block(BlockFunction body);

    /// What it is.
    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    /// Whether it is of that kind.
    [[nodiscard]] bool is(Kind kind) const noexcept { return kind_ == kind; }
    /// Whether it is NIL.
    [[nodiscard]] bool is_nil() const noexcept { return kind_ == Kind::nil; }

    /// The bytes of a character value, "" for another kind (raised); the view lives until the value is
    /// changed, moved or destroyed. A temporary gives none: it would be gone before its text is looked at.
    [[nodiscard]] std::string_view text() const& {
        if (kind_ != Kind::character) return wrong_kind(Kind::character), std::string_view{};
        return raw_text();
    }
    std::string_view text() const&& = delete;
    /// The same bytes as a text of the caller's own, of a temporary too.
    [[nodiscard]] std::string string() const { return std::string(text()); }
    /// The number of a numeric value; 0 for another kind (raised).
    [[nodiscard]] double number() const {
        if (kind_ != Kind::numeric) return wrong_kind(Kind::numeric), 0.0;
        return payload_.number;
    }
    /// Whether a logical value is .T.; false for another kind (raised).
    [[nodiscard]] bool logical() const {
        if (kind_ != Kind::logical) return wrong_kind(Kind::logical), false;
        return payload_.logical;
    }
    /// The date of a date value; the empty date for another kind (raised).
    [[nodiscard]] Date date() const {
        if (kind_ != Kind::date) return wrong_kind(Kind::date), Date{};
        return Date{payload_.day};
    }
    /// The number cut toward zero and held within the range of 64-bit integers; NaN gives 0.
    [[nodiscard]] std::int64_t integer() const;
    /// How a numeric value shows; means nothing for another kind.
    [[nodiscard]] Picture picture() const noexcept {
        return {static_cast<std::uint8_t>(inline_[0]), static_cast<std::uint8_t>(inline_[1])};
    }

    /// The elements of an array; the span lives until an element is appended or the last reference to the
    /// array goes. Empty for another kind (raised). A temporary gives none: a range-for would not keep it
    /// alive.
    [[nodiscard]] std::span<Value> items() const&;
    std::span<Value> items() const&& = delete;
    /// The number of elements of an array, or of bytes of a text; 0 for another kind (raised).
    [[nodiscard]] std::size_t size() const;
    /// Element `index` of an array, counted from 1 as everywhere in the language. An index out of range, or a
    /// value that is no array, raises a bound error; should its handler return, a NIL that is nobody's is
    /// given.
    [[nodiscard]] Value& operator[](std::size_t index) const&;
    /// Of a temporary array, the element once more: the array may be gone before it is looked at.
    [[nodiscard]] Value operator[](std::size_t index) const&& { return (*this)[index]; }
    /// Appends to an array (raises for another kind). Amortised constant time.
    void push(Value element) const;

    /// The object of an object value, nullptr for another kind. Lives as long as a value refers to it.
    [[nodiscard]] Object* object() const noexcept {
        return kind_ == Kind::object ? payload_.object : nullptr;
    }
    /// Evaluates a block with `args`; another kind raises an error.
    Value eval(Args args) const;

    /// The bytes of a character value, for writing; makes them this value's own first.
    [[nodiscard]] std::span<char> writable_text() &;
    /// Appends to a character value. Amortised constant time while the text is not shared.
    void append(std::string_view more);

    /// Whether two values are one and the same array, object or block, or hold the same text, number, logical
    /// or date of one kind. NIL is the same as NIL. Raises nothing; no rule of SET EXACT.
    [[nodiscard]] bool same(const Value& other) const noexcept;

    /// Exchanges two values.
    void swap(Value& other) noexcept {
        char hold[sizeof(Value)];
        std::memcpy(hold, static_cast<const void*>(this), sizeof hold);
        std::memcpy(static_cast<void*>(this), &other, sizeof hold);
        std::memcpy(static_cast<void*>(&other), hold, sizeof hold);
    }

    /// Texts up to that many bytes need no block of their own.
    static constexpr std::size_t inline_text_size = 14;

  private:
    struct TextTag {};
    Value(std::string_view text, TextTag) : kind_(Kind::character) {
        if (text.size() <= inline_text_size) {
            small_ = static_cast<std::uint8_t>(text.size());
            payload_.number = 0;
            if (!text.empty()) std::memcpy(short_text(), text.data(), text.size());
        } else {
            set_long_text(text);
        }
    }

    static constexpr std::uint8_t long_text = 0xFF;
    [[nodiscard]] bool counted() const noexcept {
        return kind_ >= Kind::array || (kind_ == Kind::character && small_ == long_text);
    }
    // A short text spans inline_ and payload_, which follow each other without a gap.
    [[nodiscard]] char* short_text() noexcept { return reinterpret_cast<char*>(this) + 2; }
    [[nodiscard]] const char* short_text() const noexcept { return reinterpret_cast<const char*>(this) + 2; }
    [[nodiscard]] std::string_view raw_text() const noexcept {
        return small_ == long_text ? long_view() : std::string_view(short_text(), small_);
    }
    // Of a long text, inline_ has how far its bytes are from the beginning of their block, and their number.
    [[nodiscard]] std::uint16_t text_offset() const noexcept {
        std::uint16_t offset = 0;
        std::memcpy(&offset, inline_, sizeof offset);
        return offset;
    }
    [[nodiscard]] std::uint32_t long_size() const noexcept {
        std::uint32_t size = 0;
        std::memcpy(&size, inline_ + sizeof(std::uint16_t), sizeof size);
        return size;
    }
    void set_long_size(std::uint32_t size) noexcept {
        std::memcpy(inline_ + sizeof(std::uint16_t), &size, sizeof size);
    }
    [[nodiscard]] std::string_view long_view() const noexcept { return {payload_.text, long_size()}; }
    void be_long_text(char* bytes, std::size_t offset, std::size_t size) noexcept;
    void set_long_text(std::string_view text);
    void retain() const noexcept;
    void release() noexcept;
    void wrong_kind(Kind wanted) const;

    Kind kind_;
    std::uint8_t small_ = 0;
    char inline_[6] = {};
    union Payload {
        double number;
        bool logical;
        std::int32_t day;
        char* text;
        ArrayBlock* array;
        Object* object;
        CodeBlock* block;
    } payload_;
};

static_assert(sizeof(Value) == 16);

/// The arguments of a call: a view of values that the caller owns. A missing one reads as NIL.
class Args {
  public:
    Args() = default;
    /// A view of `values`, which must outlive it.
    Args(std::span<const Value> values) : values_(values) {}  // NOLINT(google-explicit-constructor)
    /// A view of an array of values, which must outlive it.
    template <std::size_t N>
    Args(const Value (&values)[N]) : values_(values, N) {}  // NOLINT(google-explicit-constructor)
    /// A view of one value, which must outlive it.
    explicit Args(const Value& only) : values_(&only, 1) {}
    /// Argument `index`, counted from 0; NIL for one that was left out.
    const Value& operator[](std::size_t index) const noexcept {
        return index < values_.size() ? values_[index] : nil();
    }
    /// How many were given.
    [[nodiscard]] std::size_t size() const noexcept { return values_.size(); }
    /// All that were given.
    [[nodiscard]] std::span<const Value> all() const noexcept { return values_; }

  private:
    static const Value& nil() noexcept;
    std::span<const Value> values_;
};

/// The array {elements...}.
template <class... T>
Value array_of(T&&... elements) {
    Value made = Value::array_of_size(sizeof...(T));
    if constexpr (sizeof...(T) > 0) {
        Value* slot = made.items().data();
        ((*slot++ = Value(std::forward<T>(elements))), ...);
    }
    return made;
}

/// A reference-counted thing with behaviour: an object of a class.
///
/// The count starts at 0; the first Value made of it takes ownership. When the last value is gone,
/// last_release() runs and then the object is deleted, unless last_release() handed out a new reference to
/// it.
class Object {
  public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    /// The name of its class; the view lives as long as the object.
    [[nodiscard]] virtual std::string_view class_name() const = 0;
    /// Calls the method `name` (lower case); an unknown one is the class's affair.
    virtual Value send(std::string_view name, Args args) = 0;
    /// Reads the member `name`; an unknown one is the class's affair.
    virtual Value get(std::string_view name) = 0;
    /// Assigns the member `name`; an unknown one is the class's affair.
    virtual void set(std::string_view name, const Value& value) = 0;
    /// The end-of-life handler; whatever it raises or throws stays in here.
    virtual void last_release() noexcept {}

  private:
    friend class Value;
    std::uint32_t references_ = 0;
};

}  // namespace zmfb::host

#pragma GCC visibility pop
