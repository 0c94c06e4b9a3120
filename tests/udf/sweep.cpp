#include "tests/udf/sweep.h"

#include <fmt/format.h>

#include <random>
#include <string_view>

namespace zmfb::test {
namespace {

std::string in_hexadecimal(std::string_view bytes) {
    std::string text = "x'";
    for (const char byte : bytes) text += fmt::format("{:02X}", byte & 0xFF);
    return text + "'";
}

// Behind the mark of a date.
constexpr std::string_view dates[] = {"",
                                      " ",
                                      "     ",
                                      "2007-03-01",
                                      "2007-03-01 ",
                                      "2007-03-01  ",
                                      "2007-03-01 14:05:09",
                                      "2007-03-01 14:05:09   ",
                                      "2007-03-01 14:05:09.1234",
                                      "2007-03-01 14:05:09.1234 ",
                                      "2007-03-01 14:05:09.123",
                                      "2007-03-01 14:05",
                                      "2007-03-01T14:05:09",
                                      "2007-02-29",
                                      "2008-02-29",
                                      "2000-02-29",
                                      "1900-02-29",
                                      "0000-01-01",
                                      "0001-01-01",
                                      "9999-12-31",
                                      "2007-13-01",
                                      "2007-00-10",
                                      "2007-01-00",
                                      "2007-01-32",
                                      "2007-04-31",
                                      "2007-1-1",
                                      "20070301",
                                      "2007/03/01",
                                      "99:99",
                                      "2007-03-01 99:99:99.9999",
                                      "2007-03-01 00:00:00.00000",
                                      " 2007-03-01",
                                      "abc",
                                      "2007-03-01x",
                                      "2007-03-01 14:05:09.1234x",
                                      "-007-03-01",
                                      "+007-03-01",
                                      "2007-03- 1",
                                      "NULL"};

constexpr std::string_view few_numbers[] = {"0e0",
                                            "-0e0",
                                            "1e0",
                                            "-1e0",
                                            "0.5e0",
                                            "-0.5e0",
                                            "1.5e0",
                                            "2.5e0",
                                            "0.05e0",
                                            "-0.05e0",
                                            "1.005e0",
                                            "-1.005e0",
                                            "2.675e0",
                                            "0.1e0",
                                            "0.125e0",
                                            "0.375e0",
                                            "99.995e0",
                                            "999.9995e0",
                                            "9.5e0",
                                            "99.5e0",
                                            "-9.5e0",
                                            "-0.004e0",
                                            "0.004e0",
                                            "0.005e0",
                                            "0.0049999999999999e0",
                                            "1e15",
                                            "1e16",
                                            "1e17",
                                            "123456789012345678e0",
                                            "9007199254740993e0",
                                            "1e-5",
                                            "1e-10",
                                            "1.23456789e-7",
                                            "1e-300",
                                            "-1e-300",
                                            "1e300",
                                            "1.7976931348623157e308",
                                            "1e-307",
                                            "0.3333333333333333e0",
                                            "0.6666666666666666e0",
                                            "1234567.891e0",
                                            "-1234567.891e0",
                                            "9999999999.99e0",
                                            "-999999999.99e0",
                                            "999999999999999.9e0",
                                            "9999999999999999e0",
                                            "99999999999999999e0",
                                            "1e100",
                                            "1.2345678901234e19",
                                            "1.15e0",
                                            "1.25e0",
                                            "1.35e0",
                                            "4.35e0",
                                            "0.285e0",
                                            "1.45e0",
                                            "8.325e0",
                                            "5e-17",
                                            "1e-18",
                                            "1e-19",
                                            "1e-20",
                                            "0.4999999999999999e0",
                                            "0.49999999999999994e0"};

constexpr std::string_view few_moments[] = {"0001-01-01",
                                            "0001-12-31 23:59:59.9999",
                                            "9999-12-31",
                                            "1858-11-17",
                                            "1858-11-16",
                                            "1582-10-04",
                                            "1582-10-15",
                                            "2000-02-29",
                                            "1900-02-28",
                                            "1900-03-01",
                                            "2007-03-01 14:05:09.1234"};

// Those of a run are the same each time.
class Chance {
  public:
    int up_to(int last) { return std::uniform_int_distribution(0, last)(engine_); }
    double between(double first, double last) { return std::uniform_real_distribution(first, last)(engine_); }

  private:
    std::mt19937 engine_{7};
};

std::vector<std::string> chosen_texts() {
    using namespace std::string_literals;
    std::vector<std::string> texts{"",
                                   " ",
                                   "   ",
                                   "a",
                                   " a ",
                                   "  a  b ",
                                   "NULL",
                                   "\t a\n",
                                   "\xC1\xC9\xCD\xD3\xDA\xE3\xF5\xE7 \xF1 \xFF\xDF\xF7\xD7\xB5",
                                   "\xC3\xA0\xC3\xA1",
                                   "\0"s,
                                   "a\0b"s,
                                   "  a \0 b "s,
                                   "\0a"s,
                                   "{{D}}\0"s,
                                   "{{D}}2007-03-01\0x"s,
                                   "{{D}}2007-03-01 14:05:09.1234  \0x"s,
                                   "\xE9\0\xE9"s,
                                   std::string(4000, '\0'),
                                   std::string(4000, ' '),
                                   "{{d}}2007-03-01",
                                   "{{D}",
                                   " {{D}}2007-03-01",
                                   "{{D}}{{D}}",
                                   "{{D}}" + std::string(3995, ' '),
                                   "{{D}}2007-03-01" + std::string(3985, ' ')};
    for (const std::size_t length : {9U, 255U, 3999U, 4000U}) texts.emplace_back(length, 'x');
    for (const std::string_view date : dates) texts.push_back("{{D}}" + std::string(date));
    return texts;
}

void add_random_texts(std::vector<std::string>& texts, Chance& chance) {
    for (int byte = 1; byte < 256; ++byte) {
        texts.emplace_back(1, static_cast<char>(byte));
        if (byte % 7 == 0) texts.push_back(" " + texts.back() + " ");
    }
    for (int i = 0; i < 460; ++i) {
        std::string text(static_cast<std::size_t>(chance.up_to(60)), ' ');
        for (char& byte : text) byte = static_cast<char>(chance.up_to(255));
        texts.push_back(text);
    }
}

void add_random_numbers(std::vector<std::string>& numbers, Chance& chance) {
    for (int i = 0; i < 95; ++i) {
        numbers.push_back(fmt::format("{:.2f}e0", chance.between(-1e6, 1e6)));
        numbers.push_back(fmt::format("{}e0", chance.up_to(2'000'000'000) - 1'000'000'000));
        numbers.push_back(fmt::format("{:.4f}e0", (chance.up_to(2'000'000) - 1'000'000) / 1000.0 + 0.0005));
        numbers.push_back(fmt::format("{:.16e}", chance.between(-1, 1)));
    }
}

}  // namespace

Inputs inputs(bool whole) {
    Chance chance;
    std::vector<std::string> texts = chosen_texts();
    if (whole) add_random_texts(texts, chance);
    Inputs all{.texts = {"null"},
               .numbers = {"null"},
               .counts = {"null", "-2147483648", "-4000", "-3", "-1", "0", "1", "2", "10", "255", "4000",
                          "2147483647"},
               .moments = {"null"}};
    for (const std::string& text : texts) all.texts.push_back(in_hexadecimal(text));
    all.numbers.insert(all.numbers.end(), std::begin(few_numbers), std::end(few_numbers));
    for (const std::string_view moment : few_moments) all.moments.push_back(fmt::format("'{}'", moment));
    if (!whole) return all;
    for (const char* count :
         {"-4001", "-256", "-10", "-2", "3", "5", "8", "12", "20", "254", "256", "300", "3999", "4001"})
        all.counts.emplace_back(count);
    add_random_numbers(all.numbers, chance);
    for (int i = 0; i < 200; ++i)
        all.moments.push_back(fmt::format("date '0001-01-01' + {}", chance.up_to(3'652'058)));
    return all;
}

}  // namespace zmfb::test
