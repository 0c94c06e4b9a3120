// The driver of the runtime, whose bytes are fixed, and the writer: the same files of the same values.
#include <fmt/format.h>

#include <random>

#include "dbf/writer.h"
#include "host/sdf.h"
#include "host/workarea.h"
#include "tests/support/runtime.h"

namespace zmfb::dbf_test {
namespace {

// A field that an export of the driver's tables has.
struct Column {
    std::string name;
    char type;
    int length;
    int decimals;
};

const Column columns[] = {
    {"NAME", 'C', 1, 0},   {"LONGER", 'C', 40, 0}, {"ABCDEFGHIJ", 'C', 700, 0}, {"CODE", 'N', 1, 0},
    {"PRICE", 'N', 10, 2}, {"RATE", 'N', 12, 9},   {"MANY", 'N', 19, 0},        {"WIDE", 'N', 20, 4},
    {"BORN", 'D', 8, 0},   {"PAID", 'L', 1, 0},
};

std::string digits(std::int64_t unscaled, int decimals) {
    std::string text = fmt::format("{:0{}}", std::abs(unscaled), decimals + 1);
    if (decimals > 0) text.insert(text.size() - static_cast<std::size_t>(decimals), ".");
    return (unscaled < 0 ? "-" : "") + text;
}

// Rows with the same values each time, set in the writer and returned as the engine writes their columns
// into the text file.
class Rows {
  public:
    std::string next(dbf::Writer& writer) {
        std::string line;
        for (std::size_t i = 0; i < std::size(columns); ++i) {
            const std::string text = set(writer, i, columns[i]);
            line += text + std::string(static_cast<std::size_t>(columns[i].length) - text.size(), ' ');
        }
        writer.append();
        return line + "\n";
    }

  private:
    std::int64_t below(std::int64_t count) {
        return std::uniform_int_distribution<std::int64_t>(0, count - 1)(random_);
    }

    std::string set(dbf::Writer& writer, std::size_t index, const Column& column) {
        switch (column.type) {
            case 'C': {
                std::string text;
                for (auto size = below(column.length + 1); size > 0; --size)
                    text += static_cast<char>(' ' + below(224));
                writer.text(index, text);
                return text;
            }
            case 'N': {
                std::int64_t unscaled = 0;
                const int most = column.length - (column.length > 1 ? 1 : 0) - (column.decimals > 0 ? 2 : 0);
                for (auto size = below(most + 1); size > 0; --size) unscaled = unscaled * 10 + below(10);
                if (column.length > 1 && below(2) == 0) unscaled = -unscaled;
                writer.number(index, unscaled, column.decimals);
                return digits(unscaled, column.decimals);
            }
            case 'D': {
                if (below(5) == 0) {
                    writer.null(index);
                    return "        ";
                }
                const auto day = std::chrono::year(static_cast<int>(below(9999)) + 1) /
                                 static_cast<int>(below(12) + 1) / static_cast<int>(below(28) + 1);
                writer.date(index, day);
                return fmt::format("{:04}{:02}{:02}", int{day.year()}, unsigned{day.month()},
                                   unsigned{day.day()});
            }
            default: {
                const std::string letter(1, "TF ?"[below(4)]);
                writer.text(index, letter);
                return letter;
            }
        }
    }

    std::mt19937_64 random_{20070301};
};

class DriverBytes : public test::Runtime {};

TEST_F(DriverBytes, AreThoseOfTheWriter) {
    std::vector<dbf::NewField> fields;
    const host::Value structure = host::array_of();
    for (const Column& column : columns) {
        fields.push_back(
            {column.name, column.type, static_cast<std::size_t>(column.length), column.decimals});
        structure.push(
            host::array_of(column.name, std::string(1, column.type), column.length, column.decimals));
    }
    Rows rows;
    std::string lines;
    dbf::Writer writer(file("written.dbf"), fields);
    for (int i = 0; i < 2000; ++i) lines += rows.next(writer);
    const std::string data_file = write_file("rows.dat", lines);
    ASSERT_TRUE(host::dbcreate(file("driver.dbf"), structure, "DBFIDX").logical());
    host::dbusearea(true, "DBFIDX", file("driver.dbf"), "driver", host::Value(), false);
    ASSERT_TRUE(host::dbappsdf_exactly(data_file).logical());
    host::dbclosearea("driver");
    writer.finish();
    const std::string written = read_file(file("written.dbf"));
    const std::string by_driver = read_file(file("driver.dbf"));
    ASSERT_EQ(written.size(), by_driver.size());
    const auto [one, other] = std::mismatch(written.begin(), written.end(), by_driver.begin());
    EXPECT_EQ(one - written.begin(), static_cast<std::ptrdiff_t>(written.size()))
        << "the first byte that differs";
}

}  // namespace
}  // namespace zmfb::dbf_test
