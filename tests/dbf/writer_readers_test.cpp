// Files of the writer as programs that have nothing to do with it read them: every value of every record.
#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "tests/support/process.h"
#include "written.h"

namespace zmfb::dbf_test {
namespace {

using dbf::Format;
using dbf::NewField;
using dbf::Writer;

using Rows = std::vector<Lines>;

// Makes values, the same ones each time: sets them, and returns how read_by_others.py shows them.
class Values {
  public:
    std::string set(Writer& writer, std::size_t index, const NewField& field) {
        switch (field.type) {
            case 'C':
                return text(writer, index, field.length);
            case 'N':
            case 'F':
                return number(writer, index, static_cast<int>(field.length) - 2, field.decimals);
            case 'D':
                return day(writer, index);
            case 'L':
                return logical(writer, index);
            case 'M':
                return field.binary ? bytes(writer, index) : text(writer, index, 2000);
            case 'G':
            case 'P':
                return bytes(writer, index);
            case 'I':
                return number(writer, index, 9, 0);
            case 'Y':
                return number(writer, index, 18, 4);
            case 'B':
                return real(writer, index);
            default:
                return time(writer, index);
        }
    }

  private:
    std::int64_t below(std::int64_t count) {
        return std::uniform_int_distribution<std::int64_t>(0, count - 1)(random_);
    }

    std::string text(Writer& writer, std::size_t index, std::size_t most) {
        // Neither the ends of lines nor what dbview parts values by.
        static const std::string letters[] = {"a",  "Z", "0", ",", ";", "\"", "'",
                                              "\\", "ä", "ß", "É", "€", "-"};
        std::string made;
        const auto size = below(static_cast<std::int64_t>(most) + 1);
        for (std::int64_t i = 0; i < size; ++i) made += letters[below(std::size(letters))];
        writer.text(index, made);
        return made;
    }
    std::string number(Writer& writer, std::size_t index, int digits, int decimals) {
        std::int64_t unscaled = 0;
        const auto size = below(digits + 1);
        for (std::int64_t i = 0; i < size; ++i) unscaled = unscaled * 10 + below(10);
        if (below(2) == 0) unscaled = -unscaled;
        writer.number(index, unscaled, decimals);
        std::string shown = fmt::format("{:0{}}", std::abs(unscaled), decimals + 1);
        if (decimals > 0) {
            shown.insert(shown.size() - static_cast<std::size_t>(decimals), ".");
            shown.resize(shown.find_last_not_of('0') + 1);
            if (shown.back() == '.') shown.pop_back();
        }
        return (unscaled < 0 ? "-" : "") + shown;
    }
    std::string real(Writer& writer, std::size_t index) {
        const std::int64_t eighths = below(2'000'000) - 1'000'000;
        writer.real(index, static_cast<double>(eighths) / 8);
        return fmt::format("{}", static_cast<double>(eighths) / 8);
    }
    dbf::Date any_day() {
        // From the first day that all readers take on.
        const std::chrono::local_days first(std::chrono::year(1) / 1 / 1);
        return dbf::Date(first + std::chrono::days(below(3'652'059)));
    }
    std::string day(Writer& writer, std::size_t index) {
        const dbf::Date made = any_day();
        writer.date(index, made);
        return shown_day(made);
    }
    std::string logical(Writer& writer, std::size_t index) {
        const bool made = below(2) == 0;
        writer.logical(index, made);
        return made ? "T" : "F";
    }
    std::string time(Writer& writer, std::size_t index) {
        const dbf::Timestamp made =
            std::chrono::local_days(any_day()) + std::chrono::milliseconds(below(86'400'000));
        writer.timestamp(index, made);
        return shown_time(made);
    }
    std::string bytes(Writer& writer, std::size_t index) {
        std::string made;
        std::string shown;
        const auto size = below(300) + 1;
        for (std::int64_t i = 0; i < size; ++i) {
            made += static_cast<char>(below(256));
            shown += fmt::format("{:02x}", static_cast<unsigned char>(made.back()));
        }
        writer.bytes(index, made);
        return shown;
    }

    std::mt19937_64 random_{20070301};
};

// A table in a format, and the programs that read it. Fields are named after their types.
struct Table {
    std::string what;
    Format format;
    std::string types;
    Lines readers;
};

void PrintTo(const Table& table, std::ostream* out) { *out << table.what; }

std::vector<NewField> fields_of(const Table& table) {
    std::vector<NewField> fields;
    for (const char type : table.types) {
        const std::string name = fmt::format("{}{}", type, fields.size());
        if (type == 'C') fields.push_back({name, 'C', fields.size() % 2 == 0 ? 20U : 254U});
        if (type == 'N' || type == 'F')
            fields.push_back({name, type, 12, static_cast<int>(fields.size() % 4)});
        // Bytes in a memo that is marked as such.
        if (type == 'm') fields.push_back({fmt::format("M{}", fields.size()), 'M', 0, 0, false, true});
        if (std::string_view("CNFm").find(type) == std::string_view::npos) fields.push_back({name, type});
    }
    return fields;
}

// A reader shows "-" for what it does not know.
void compare(const Rows& found, const Rows& written, const std::vector<NewField>& fields) {
    ASSERT_EQ(found.size(), written.size());
    std::set<char> compared;
    for (std::size_t row = 0; row < written.size(); ++row) {
        ASSERT_EQ(found[row].size(), fields.size()) << "record " << row + 1;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (found[row][i] == "-" &&
                std::string_view("MPGIBYT").find(fields[i].type) != std::string_view::npos)
                continue;
            compared.insert(fields[i].type);
            ASSERT_EQ(found[row][i], written[row][i]) << "record " << row + 1 << ", field " << fields[i].name;
        }
    }
    for (const NewField& field : fields) {
        if (std::string_view("CNFDL").find(field.type) != std::string_view::npos) {
            EXPECT_TRUE(compared.contains(field.type)) << field.type << " was not read";
        }
    }
}

Rows read_with(const std::string& reader, const std::string& path) {
    const test::Finished script =
        test::run({ZMFB_PYTHON, ZMFB_READ_BY_OTHERS, reader, path}, "", {"PATH=/usr/bin:/bin"});
    EXPECT_EQ(script.status, 0) << reader << ": " << script.err;
    std::istringstream out(script.out);
    Rows rows;
    for (std::string line; std::getline(out, line);) rows.push_back(nlohmann::json::parse(line).get<Lines>());
    return rows;
}

class ReadByOthers : public ::testing::Test {
  protected:
    Folder folder_;
};

class TableReadByOthers : public ReadByOthers, public ::testing::WithParamInterface<Table> {};

TEST_P(TableReadByOthers, HasTheValuesThatWereWritten) {
    constexpr int records = 300;
    const Table& table = GetParam();
    const std::vector<NewField> fields = fields_of(table);
    const std::string path = folder_.file("t.dbf");
    Writer writer(path, fields, {.format = table.format, .code_page = "CP1252"});
    Values values;
    Rows written;
    for (int i = 0; i < records; ++i) {
        Lines& row = written.emplace_back();
        for (std::size_t field = 0; field < fields.size(); ++field)
            row.push_back(values.set(writer, field, fields[field]));
        writer.append();
    }
    writer.finish();
    for (const std::string& reader : table.readers) {
        SCOPED_TRACE(reader);
        compare(read_with(reader, path), written, fields);
    }
}

// One reader has a bit for each field, as all of these may be NULL.
TEST_F(ReadByOthers, HasNullWhereItWasWritten) {
    const std::string types = "CNFDLMIYT";
    std::vector<NewField> fields;
    for (const char type : types) fields.push_back({std::string(1, type), type, 10, 0, true});
    const std::string path = folder_.file("t.dbf");
    Writer writer(path, fields, {.format = Format::visual_foxpro, .code_page = "CP1252"});
    Values values;
    Rows written;
    for (std::size_t record = 0; record < 100; ++record) {
        Lines& row = written.emplace_back();
        for (std::size_t field = 0; field < fields.size(); ++field) {
            const bool is_null = record * 7 % (field + 2) == 0;
            if (is_null) writer.null(field);
            row.push_back(is_null ? "NULL" : values.set(writer, field, fields[field]));
        }
        writer.append();
    }
    writer.finish();
    compare(read_with("dbf", path), written, fields);
}

const Table tables[] = {
    {"dbase3", Format::dbase3, "CNDLCNNN", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
    {"dbase3_with_memos", Format::dbase3, "CNMDLM", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
    {"foxpro", Format::foxpro, "CNFDLFC", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
    {"foxpro_with_memos", Format::foxpro, "CMFDLGP", {"dbfread", "gdal", "dbf", "dbfdump"}},
    {"visual_foxpro", Format::visual_foxpro, "CNFDLIBYT", {"dbfread", "gdal", "dbf", "dbfdump"}},
    {"visual_foxpro_with_memos", Format::visual_foxpro, "CMTmYGNP", {"dbfread", "gdal", "dbf", "dbfdump"}},
};

INSTANTIATE_TEST_SUITE_P(DbfWriter, TableReadByOthers, ::testing::ValuesIn(tables),
                         [](const auto& info) { return info.param.what; });

}  // namespace
}  // namespace zmfb::dbf_test
