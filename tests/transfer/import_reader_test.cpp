// Imported rows beside what independent readers find in the same file.
#include <algorithm>
#include <cstdlib>

#include "host/latin1.h"
#include "tests/support/samples.h"
#include "tests/transfer/independent_reader.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

// Files with something of everything. Only dbfread knows long fields.
constexpr const char* made = "made";
constexpr const char* made_long = "made_long";

DbfBuilder made_file(int note_length) {
    DbfBuilder file = DbfBuilder()
                          .field("CODE", 'N', 6)
                          .field("NAME", 'C', 20)
                          .field("AMOUNT", 'N', 12, 3)
                          .field("SINCE", 'D', 8)
                          .field("ACTIVE", 'L', 1)
                          .field("NOTE", 'C', note_length);
    for (int i = 0; i < 500; ++i) {
        const std::string number = std::to_string(i);
        file.record({i % 7 == 0 ? "" : number, std::string("São "_l1) + number,
                     i % 5 == 0 ? "" : "-" + number + ".125",
                     i % 3 == 0 ? "" : "200703" + std::to_string(10 + i % 20), i % 2 == 0 ? "T" : "F",
                     std::string(static_cast<std::size_t>(i) % 200, 'x')},
                    i % 11 == 0 ? '*' : ' ');
    }
    return file;
}

class ImportedFile : public TransferOfRows, public ::testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        TransferOfRows::SetUp();
        if (GetParam() == made || GetParam() == made_long) {
            path_ = dbf(GetParam());
            made_file(GetParam() == made ? 200 : 700).write(path_);
        } else {
            path_ = sample(GetParam() + ".dbf");
            if (path_.empty()) GTEST_SKIP() << without_sample(GetParam() + ".dbf");
        }
    }

    [[nodiscard]] const std::string& path() const { return path_; }

    // The rows of the table, written as dbf_rows.py writes them.
    [[nodiscard]] Rows table_rows(const Row& fields) const {
        std::string columns;
        for (const std::string& field : fields) columns += (columns.empty() ? "" : ",") + selected(field);
        Rows found = rows("select " + columns + " from " + GetParam() + " order by RECNO");
        for (Row& row : found) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                if (type_of(fields[i]) == 'N') row[i] = number(row[i]);
            }
        }
        return found;
    }

    // The reader's cells with what the import makes of nothing: 0 for a number.
    static Rows imported(const DbfContent& content) {
        Rows records = content.records;
        for (Row& record : records) {
            for (std::size_t i = 0; i < record.size(); ++i) {
                if (record[i] == "NULL" && type_of(content.fields[i]) == 'N') record[i] = "0";
            }
        }
        return records;
    }

  private:
    static char type_of(const std::string& field) { return field[field.find(':') + 1]; }
    static std::string selected(const std::string& field) {
        const std::string name = field.substr(0, field.find(':'));
        return type_of(field) == 'D' ? "cast(cast(" + name + " as date) as char(10))" : name;
    }
    static std::string number(const std::string& text) {
        char canonical[32];
        std::snprintf(canonical, sizeof canonical, "%.15g", std::strtod(text.c_str(), nullptr) + 0.0);
        return canonical;
    }
    std::string path_;
};

TEST_P(ImportedFile, HasTheRowsThatAnIndependentReaderFinds) {
    EXPECT_TRUE(call("bringdbf", path()).logical());
    for (const char* reader : {"dbfread", "dbf"}) {
        if (GetParam() == made_long && std::string_view(reader) == "dbf") continue;
        SCOPED_TRACE(reader);
        const DbfContent content = read_dbf(reader, path());
        ASSERT_FALSE(content.records.empty());
        Rows wanted = imported(content);
        Rows found = table_rows(content.fields);
        if (content.deleted > 0) {
            std::sort(wanted.begin(), wanted.end());
            std::sort(found.begin(), found.end());
        }
        EXPECT_EQ(found, wanted);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, ImportedFile,
                         ::testing::Values(made, made_long, "blockgroups", "people", "popctr_state1970",
                                           "scale_rank"),
                         [](const auto& instance) { return instance.param; });

struct Refused {
    const char* name;
    std::string_view message;  // what it begins with
};

constexpr Refused files_that_are_refused[] = {
    {"dbase_03", "Error on creating Table; FB Error: [ERROR] SQLCODE=-104 ("},
    {"dbase_30", "Não é um DBF; Arquivo: "_l1},
    {"dbase_83", "Arquivos .dbt e memo não suportados"_l1},
    {"polygon",
     "Erro durante a transferência dos dados da tabela externa para tabela oficial; FB Error: "
     "[ERROR] SQLCODE=-204 ("_l1},
    {"six_counties", "Error on creating Table; FB Error: [ERROR] SQLCODE=-842 ("},
};

class RefusedFile : public Transfer, public ::testing::WithParamInterface<Refused> {};

TEST_P(RefusedFile, IsRaisedAndMakesNoTable) {
    const std::string name = GetParam().name;
    const std::string path = sample(name + ".dbf");
    if (path.empty()) GTEST_SKIP() << without_sample(name + ".dbf");
    EXPECT_FALSE(call("bringdbf", path).logical());
    ASSERT_FALSE(messages().empty());
    EXPECT_TRUE(messages()[0].starts_with(GetParam().message)) << messages()[0];
    EXPECT_EQ(
        rows("select count(*) from rdb$relations where rdb$relation_name like '%" + name.substr(0, 5) + "%'"),
        (Rows{{"0"}}));
}

INSTANTIATE_TEST_SUITE_P(Files, RefusedFile, ::testing::ValuesIn(files_that_are_refused),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace zmfb::test
