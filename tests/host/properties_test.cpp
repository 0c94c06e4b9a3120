// Properties that hold for any values, checked on random ones.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "host/array.h"
#include "host/compare.h"
#include "host/date.h"
#include "host/number.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

// Texts of few different letters, so that searches find something, of all lengths around what a value holds
// inside.
rc::Gen<std::string> small_alphabet() {
    return rc::gen::scale(0.4, rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab \0", 4))));
}

rc::Gen<std::string> any_text() { return rc::gen::container<std::string>(rc::gen::arbitrary<char>()); }

std::string naive_strtran(std::string_view s, std::string_view search, std::string_view replace, int start,
                          int count) {
    std::string made;
    int occurrence = 0;
    for (std::size_t i = 0; i < s.size();) {
        if (search.empty() || s.substr(i, search.size()) != search) {
            made += s[i++];
            continue;
        }
        ++occurrence;
        const bool chosen = occurrence >= start && occurrence < std::max(start, 1) + count;
        made += chosen ? replace : search;
        i += search.size();
    }
    return made;
}

RC_GTEST_PROP(StrtranProperty, IsTheNaiveReplacement, ()) {
    const auto s = *small_alphabet();
    const auto search = *rc::gen::scale(0.1, small_alphabet());
    const auto replace = *rc::gen::scale(0.3, small_alphabet());
    const int start = *rc::gen::inRange(-1, 5);
    const int count = *rc::gen::inRange(0, 9);
    RC_ASSERT(strtran(s, search, replace, start, count).string() ==
              naive_strtran(s, search, replace, start, count));
    RC_ASSERT(strtran(s, search, replace).string() == naive_strtran(s, search, replace, 1, 1'000'000));
}

RC_GTEST_PROP(SearchProperty, AtAndRatFindTheFirstAndLast, ()) {
    const auto s = *small_alphabet();
    const auto search = *rc::gen::scale(0.2, small_alphabet());
    std::size_t first = 0;
    std::size_t last = 0;
    for (std::size_t i = 0; !search.empty() && i + search.size() <= s.size(); ++i) {
        if (s.compare(i, search.size(), search) != 0) continue;
        if (first == 0) first = i + 1;
        last = i + 1;
    }
    RC_ASSERT(at(search, s).number() == static_cast<double>(first));
    RC_ASSERT(rat(search, s).number() == static_cast<double>(last));
    RC_ASSERT(contained(search, s) == (first != 0));
}

RC_GTEST_PROP(PadProperty, HasTheLengthAndKeepsTheText, (unsigned char wanted)) {
    const auto s = *any_text();
    const std::size_t length = wanted;
    const Value right_padded = padr(s, length, "*");
    const Value left_padded = padl(s, length, "*");
    RC_ASSERT(right_padded.text().size() == length);
    RC_ASSERT(left_padded.text().size() == length);
    const std::string stars(length - std::min(length, s.size()), '*');
    RC_ASSERT(right_padded.text() == s.substr(0, length) + stars);
    RC_ASSERT(left_padded.text() == stars + s.substr(0, length));
}

RC_GTEST_PROP(SliceProperty, LeftAndTheRestAreTheWhole, (int place)) {
    const auto s = *any_text();
    const int n = place % (static_cast<int>(s.size()) + 3);
    const Value front = left(s, n);
    RC_ASSERT((front + substr(s, std::max(n, 0) + 1)).string() == s);
    RC_ASSERT((left(s, static_cast<double>(s.size()) - n) + right(s, n)).string() ==
              (n < 0 ? s : s.substr(0, s.size())));
    RC_ASSERT(substr(s, 1, n).same(front));
    if (n > 0) RC_ASSERT(substr(s, -n).same(right(s, n)));
}

RC_GTEST_PROP(TrimProperty, CanBeRepeatedAndTouchesOnlyTheEnds, ()) {
    const auto s = *rc::gen::container<std::string>(rc::gen::elementOf(std::string(" \t\n\rab")));
    const Value once = alltrim(s);
    RC_ASSERT(trim(once).same(once));
    RC_ASSERT(ltrim(once).same(once));
    RC_ASSERT(empty(once) == empty(Value(s)) || !once.text().empty());
    RC_ASSERT(once.text().empty() || s.find(once.text()) != std::string::npos);
    RC_ASSERT(alltrim(once).same(once));
}

RC_GTEST_PROP(CaseProperty, UpperAndLowerKeepLengthAndOtherBytes, ()) {
    const auto s = *any_text();
    const Value big = upper(s);
    RC_ASSERT(big.text().size() == s.size());
    for (std::size_t i = 0; i < s.size(); ++i) {
        const bool small = s[i] >= 'a' && s[i] <= 'z';
        RC_ASSERT(big.text()[i] == (small ? static_cast<char>(s[i] - 32) : s[i]));
    }
    RC_ASSERT(upper(lower(s)).same(big));
}

RC_GTEST_PROP(DateProperty, StodAndDtosRoundTrip, ()) {
    const Date day{*rc::gen::inRange(1721426, 5373485)};
    const Value text = dtos(day);
    RC_ASSERT(text.text().size() == 8U);
    RC_ASSERT(stod(text).date() == day);
    RC_ASSERT((Value(day) + Value(1)).date().day == (day.day == 5373484 ? 0 : day.day + 1));
}

RC_GTEST_PROP(DateProperty, StodOfAnyDigitsIsADayThatShowsThemOrEmpty, ()) {
    const auto digits =
        *rc::gen::container<std::string>(8, rc::gen::inRange('0', static_cast<char>('9' + 1)));
    const Value day = host::stod(digits);
    RC_ASSERT(empty(day) || dtos(day).string() == digits);
}

RC_GTEST_PROP(StrProperty, WholeNumbersReadBack, (int n)) {
    const Value text = str(n, 12);
    RC_ASSERT(text.text().size() == 12U);
    RC_ASSERT(alltrim(text).string() == std::to_string(n));
    RC_ASSERT(val(text).number() == n);
    RC_ASSERT(val(strzero(n, 12)).number() == n);
}

RC_GTEST_PROP(StrProperty, DecimalsAreRoundedHalfAwayFromZero, (int n)) {
    // n / 1000 as decimal text rounds to two decimals by its last digit.
    const std::int64_t magnitude = std::abs(static_cast<std::int64_t>(n));
    const std::int64_t hundredths = magnitude / 10 + (magnitude % 10 >= 5 ? 1 : 0);
    std::string fraction = std::to_string(hundredths % 100);
    if (fraction.size() < 2) fraction.insert(0, "0");
    const std::string expected =
        (n < 0 && hundredths != 0 ? "-" : "") + std::to_string(hundredths / 100) + "." + fraction;
    RC_ASSERT(alltrim(str(n / 1000.0, 20, 2)).string() == expected);
}

RC_GTEST_PROP(StrProperty, AnyNumberFillsItsLength,
              (double n, unsigned char length, unsigned char decimals)) {
    const Value text = str(n, length, decimals);
    RC_ASSERT(text.text().size() == (length == 0 ? 10U : length));
    RC_ASSERT(strzero(n, length, decimals).string().size() == text.text().size());
    const std::string_view shown = text.text();
    const bool overflow = shown.find('*') != std::string_view::npos;
    RC_ASSERT(overflow == (shown.find_first_not_of('*') == std::string_view::npos));
    if (overflow || decimals > 250) return;
    // As many digits as count: close to the number, to half of the last place shown.
    const double error = std::fabs(val(shown).number() - n);
    RC_ASSERT(error <= 0.5000001 * std::pow(10.0, -decimals) + std::fabs(n) * 1e-15);
}

RC_GTEST_PROP(ValProperty, OfShortestFormIsTheNumber, (int whole, unsigned short thousandths)) {
    const double n = whole + (thousandths % 1000) / 1000.0;
    RC_ASSERT(std::fabs(val(str(n, 20, 3)).number() - n) < 1e-6);
}

RC_GTEST_PROP(CompareProperty, OneOfThreeOrdersHoldsAndUnequalIsNotEqual, (bool exact)) {
    const auto first = *small_alphabet();
    const auto second = *small_alphabet();
    set_exact(exact);
    const bool is_equal = equal(first, second);
    const bool is_less = less(first, second);
    const bool is_greater = greater(first, second);
    const bool not_greater = less_or_equal(first, second);
    const bool not_less = greater_or_equal(first, second);
    const bool is_unequal = unequal(first, second);
    set_exact(false);
    RC_ASSERT(is_unequal == !is_equal);
    RC_ASSERT(static_cast<int>(is_equal) + static_cast<int>(is_less) + static_cast<int>(is_greater) == 1);
    RC_ASSERT(not_greater == !is_greater);
    RC_ASSERT(not_less == !is_less);
    if (!exact) RC_ASSERT(is_equal == (first.compare(0, second.size(), second) == 0));
    RC_ASSERT(exactly_equal(first, second) == (first == second));
}

RC_GTEST_PROP(ArrayProperty, AscanFindsTheFirstThatIsSame, ()) {
    const auto numbers = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6));
    const int wanted = *rc::gen::inRange(0, 6);
    const Value list = array_of();
    for (const int n : numbers) list.push(n);
    const auto place = std::find(numbers.begin(), numbers.end(), wanted);
    const auto expected = place == numbers.end() ? 0 : place - numbers.begin() + 1;
    RC_ASSERT(ascan(list, wanted).number() == static_cast<double>(expected));
    RC_ASSERT(host_test::same_value(aclone(list), list));
}

// Several values that share their texts, changed at random beside plain texts that share nothing.
RC_GTEST_PROP(TextProperty, SharingIsNeverSeen, ()) {
    constexpr int count = 4;
    std::vector<Value> values(count, Value(""));
    std::vector<std::string> texts(count);
    const auto steps = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6 * count * count * 8));
    for (const int step : steps) {
        const auto to = static_cast<std::size_t>(step % count);
        const auto from = static_cast<std::size_t>(step / count % count);
        const int amount = step / (count * count) % 8;
        switch (step / (count * count * 8)) {
            case 0:
                values[to] = values[from], texts[to] = texts[from];
                break;
            case 1:
                values[to].append(values[from].text()), texts[to] += std::string(texts[from]);
                break;
            case 2:
                values[to] = std::move(values[to]) + values[from], texts[to] += std::string(texts[from]);
                break;
            case 3: {
                const std::string more(static_cast<std::size_t>(amount) * 3, static_cast<char>('a' + amount));
                values[to].append(more), texts[to] += more;
                break;
            }
            case 4: {
                if (texts[to].empty()) break;
                const std::size_t place = static_cast<std::size_t>(amount) % texts[to].size();
                values[to].writable_text()[place] = '!', texts[to][place] = '!';
                break;
            }
            default:
                values[to] = left(values[from], amount * 4),
                texts[to] = texts[from].substr(0, static_cast<std::size_t>(amount) * 4);
                break;
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (texts[i].size() > 5000) values[i] = "", texts[i] = "";
            RC_ASSERT(values[i].text() == texts[i]);
        }
    }
}

}  // namespace
}  // namespace zmfb::host
