/// Numbers with decimals, exactly.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace zmfb {

class Decimal;
/// Compares by value: 1.50 and 1.5 are equal. A friend that only its class declares would not be exported.
std::strong_ordering operator<=>(const Decimal& a, const Decimal& b);

/// A number of up to 18 digits with up to 18 decimals, as NUMERIC and DECIMAL columns hold it. It never
/// becomes a double by itself, and never loses a digit: what does not fit is thrown as SqlError (22003).
class Decimal {
  public:
    /// How many decimals there can be.
    static constexpr int most_decimals = 18;

    /// Zero.
    constexpr Decimal() = default;
    /// A whole number.
    template <std::integral Whole>
    requires(!std::same_as<Whole, bool> &&
             (std::signed_integral<Whole> || sizeof(Whole) < 8)) constexpr Decimal(Whole number)
        : unscaled_(number) {}  // NOLINT(google-explicit-constructor)
    /// `unscaled` in units of the last of `decimals` decimals: Decimal(1050, 2) is 10.50.
    Decimal(std::int64_t unscaled, int decimals);
    /// "10.50", "-0.05", "7": a sign, digits, a point among them. Anything else is thrown (22018).
    explicit Decimal(std::string_view text);

    /// The number in units of its last decimal: 1050 of 10.50.
    [[nodiscard]] constexpr std::int64_t unscaled() const { return unscaled_; }
    /// How many decimals it has: 2 of 10.50.
    [[nodiscard]] constexpr int decimals() const { return decimals_; }
    /// The same number with so many decimals.
    [[nodiscard]] Decimal rescaled(int decimals) const;
    /// The nearest double.
    [[nodiscard]] double to_double() const;

    /// @{
    /// A sum or difference has as many decimals as the one that has more.
    Decimal operator-() const;
    friend Decimal operator+(const Decimal& a, const Decimal& b);
    friend Decimal operator-(const Decimal& a, const Decimal& b) { return a + -b; }
    Decimal& operator+=(const Decimal& other) { return *this = *this + other; }
    Decimal& operator-=(const Decimal& other) { return *this = *this - other; }
    /// @}
    /// @{
    /// By value: 1.5 equals 1.50.
    friend std::strong_ordering operator<=>(const Decimal& a, const Decimal& b);
    friend bool operator==(const Decimal& a, const Decimal& b) { return (a <=> b) == 0; }
    /// @}

  private:
    std::int64_t unscaled_ = 0;
    int decimals_ = 0;
};

/// @{
/// With all its decimals: "10.50", "-0.05".
std::string to_string(const Decimal& number);
std::ostream& operator<<(std::ostream& out, const Decimal& number);
/// @}

}  // namespace zmfb

#pragma GCC visibility pop
