#include "sql/typed/bind.h"

#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

#include "sql/typed/blob.h"
#include "sql/typed/calendar.h"
#include "sql/typed/failure.h"
#include "sql/typed/text.h"

namespace zmfb::typed {

namespace {

// Puts one value into its place, by what the value is; throws when the place is for something else.
class Binder {
  public:
    Binder(const Layout& layout, std::size_t index, Message& message, const std::shared_ptr<Work>& work,
           std::string_view statement)
        : slot_(layout.slots()[index]),
          type_name_(layout.columns()[index].type_name),
          number_(index + 1),
          message_(message),
          work_(work),
          statement_(statement) {}

    void bind(const Parameter& value) {
        constexpr std::int16_t null = -1, present = 0;
        store_at(slot_.null_offset, std::holds_alternative<std::monostate>(value.content()) ? null : present);
        // Of "? is null" the engine wants to know nothing else.
        if (slot_.type != SQL_NULL) std::visit(*this, value.content());
    }

    void operator()(std::monostate) const {}
    void operator()(bool value) {
        if (slot_.kind == SqlType::boolean) return store(static_cast<char>(value));
        if (slot_.kind != SqlType::text) throw_kind("bool");
        put_text(value ? "T" : "F");
    }
    void operator()(std::int64_t value) {
        if (is_number_written_out()) return put_text(fmt::to_string(value));
        if (slot_.kind == SqlType::real) return put_whole_real(value);
        if (!takes_decimals()) throw_kind("a whole number");
        put_decimal(value);
    }
    void operator()(const Decimal& value) {
        if (is_number_written_out()) return put_text(to_string(value));
        if (!takes_decimals()) throw_kind("zmfb::Decimal");
        put_decimal(value);
    }
    void operator()(double value) {
        if (slot_.kind != SqlType::real) throw_kind("double");
        if (is_number_written_out()) return put_text(fmt::to_string(value));
        put_real(value);
    }
    void operator()(std::string_view value) {
        if (slot_.kind == SqlType::text_blob) return put_text_blob(value);
        if (is_written_out(slot_.type, slot_.kind)) return put_text(value);
        if (slot_.kind != SqlType::text) throw_kind("a text");
        const bool as_it_is =
            slot_.script == Script::utf8 || slot_.script == Script::names || slot_.script == Script::as_kept;
        put_text(as_it_is ? value : std::string_view(bytes_ = in_bytes(value)));
    }
    void operator()(std::span<const std::byte> value) {
        const std::string_view bytes(reinterpret_cast<const char*>(value.data()), value.size());
        if (slot_.kind == SqlType::blob) return put_blob(bytes, 0);
        if (slot_.kind != SqlType::bytes) throw_kind("bytes");
        put_text(bytes);
    }
    void operator()(std::chrono::year_month_day value) {
        if (slot_.kind != SqlType::date && slot_.kind != SqlType::timestamp) throw_kind("a day");
        check_day(value);
        const ISC_DATE date = date_of(value);
        if (slot_.kind == SqlType::date) return store(date);
        store(ISC_TIMESTAMP{date, 0});
    }
    void operator()(TimeOfDay value) {
        if (slot_.kind != SqlType::time) throw_kind("a time of day");
        if (value < TimeOfDay(0) || value >= std::chrono::days(1))
            refuse_it(no_such_day, "is no time of a day");
        store(static_cast<ISC_TIME>(value.count()));
    }
    void operator()(Timestamp value) {
        if (slot_.kind != SqlType::timestamp) throw_kind("a time stamp");
        check_day(std::chrono::sys_days(std::chrono::floor<std::chrono::days>(value).time_since_epoch()));
        store(stamp_of(value));
    }
    void operator()(const WrittenBlob& value) {
        if (slot_.kind != SqlType::blob && slot_.kind != SqlType::text_blob) throw_kind("a blob");
        if (value.transaction != work_.get()) refuse_it(ended, "is a blob of another transaction");
        store(value.id);
    }

  private:
    [[noreturn]] void refuse_it(Refusal refusal, std::string_view what) const {
        refuse(refusal, fmt::format("Parameter {}, {}, {}", number_, type_name_, what), statement_);
    }
    [[noreturn]] void throw_kind(std::string_view given) const {
        refuse(wrong_kind, fmt::format("Parameter {} is {} and does not take {}", number_, type_name_, given),
               statement_);
    }

    template <class Stored>
    void store_at(unsigned offset, const Stored& value) {
        std::memcpy(message_.data() + offset, &value, sizeof value);
    }
    template <class Stored>
    void store(const Stored& value) {
        store_at(slot_.offset, value);
    }

    [[nodiscard]] bool is_number_written_out() const {
        return is_written_out(slot_.type, slot_.kind) && slot_.kind != SqlType::other;
    }
    [[nodiscard]] bool takes_decimals() const {
        return slot_.kind == SqlType::integer || slot_.kind == SqlType::decimal;
    }
    template <class Stored>
    void store_whole(std::int64_t value) {
        if (!std::in_range<Stored>(value)) refuse_it(out_of_range, fmt::format("does not hold {}", value));
        store(static_cast<Stored>(value));
    }
    void put_decimal(const Decimal& value) {
        std::int64_t unscaled = 0;
        try {
            unscaled = value.rescaled(slot_.decimals).unscaled();
        } catch (const SqlError&) {
            refuse_it(out_of_range, fmt::format("does not hold {} without a loss", to_string(value)));
        }
        if (slot_.type == SQL_SHORT) return store_whole<std::int16_t>(unscaled);
        if (slot_.type == SQL_LONG) return store_whole<std::int32_t>(unscaled);
        store(unscaled);
    }
    void put_real(double value) {
        if (slot_.type == SQL_FLOAT) return store(static_cast<float>(value));
        store(value);
    }
    void put_whole_real(std::int64_t value) {
        const std::int64_t largest = std::int64_t{1} << (slot_.type == SQL_FLOAT ? 24 : 53);
        if (value > largest || value < -largest)
            refuse_it(out_of_range, fmt::format("does not hold {} without a loss", value));
        put_real(static_cast<double>(value));
    }

    [[nodiscard]] std::string in_bytes(std::string_view utf8) const {
        const Encoding& encoding =
            slot_.script == Script::latin1 ? *Encoding::latin1() : work_->session().encoding();
        return encoded(utf8, encoding, fmt::format("parameter {}", number_), statement_);
    }
    void put_text(std::string_view bytes) {
        if (bytes.size() > slot_.length)
            refuse_it(too_long,
                      fmt::format("does not hold {} bytes: \"{}\"", bytes.size(), bytes.substr(0, 60)));
        store(static_cast<std::uint16_t>(bytes.size()));
        std::memcpy(message_.data() + slot_.offset + sizeof(std::uint16_t), bytes.data(), bytes.size());
    }
    void put_text_blob(std::string_view utf8) {
        if (slot_.script == Script::as_kept) return put_blob(utf8, 0);
        if (slot_.script == Script::database) return put_blob(in_bytes(utf8), 0);
        put_blob(utf8, slot_.character_set);
    }
    void put_blob(std::string_view bytes, unsigned character_set) {
        Blob blob(work_, character_set);
        blob.write(bytes);
        store(blob.written().id);
    }
    void check_day(std::chrono::year_month_day day) const {
        constexpr std::chrono::year first(1), last(9999);
        if (!day.ok() || day.year() < first || day.year() > last)
            refuse_it(no_such_day, "does not hold a day that is none, or not of the years 1 to 9999");
    }

    const Slot& slot_;
    const std::string& type_name_;
    std::size_t number_;
    Message& message_;
    const std::shared_ptr<Work>& work_;
    std::string_view statement_;
    std::string bytes_;
};

}  // namespace

void bind_values(std::span<const Parameter> values, const Layout& layout, Message& message,
                 const std::shared_ptr<Work>& work, std::string_view statement) {
    const std::size_t wanted = layout.slots().size();
    if (values.size() != wanted) {
        refuse(wrong_count,
               fmt::format("The statement takes {} value{}, not {}", wanted, wanted == 1 ? "" : "s",
                           values.size()),
               statement);
    }
    for (std::size_t i = 0; i < wanted; ++i) Binder(layout, i, message, work, statement).bind(values[i]);
}

}  // namespace zmfb::typed

namespace zmfb {

Parameter::Content Parameter::too_large() {
    typed::refuse(typed::out_of_range, "A whole number is larger than any column holds");
}

}  // namespace zmfb
