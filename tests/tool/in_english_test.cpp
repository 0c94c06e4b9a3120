#include "tool/in_english.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "host/latin1.h"
#include "tool/encoding.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using tool::in_english;

struct Case {
    std::string_view raised;
    std::string_view english;
};

TEST(InEnglish, KeepsTheNamesAndLeavesTheEnginesWordsOut) {
    const Case cases[] = {
        {"Impossível eliminar a Tabela: LOJA; FB Error: [ERROR] SQLCODE=-607 (x)"_l1,
         "cannot drop the table LOJA"},
        {"Erro ao deletar Campo: PREÇO Tabela: LOJA;FB Error: "_l1,
         "cannot drop the field PREÇO of the table LOJA"},
        {"Impossível eliminar dependente: A;b;O nome exige aspas"_l1,
         "cannot drop A;b, which depends on it: its name needs double quotes"},
        {"Os dados para esta tabela parecem corrompidos;Campo:  x;Tabela: T",
         "the data for this table seem damaged: field x, table T"},
        {"Os dados para esta tabela parecem corrompidos;Tabela: T",
         "the data for this table seem damaged: table T"},
        {"Arquivos .dbt e memo não suportados"_l1, "memos and their .dbt files are not supported"},
        {"Arquivos .dbt e memo não suportados!"_l1, ""},
        {"Table already exists!; Tbl: LOJA", ""},
        {"", ""},
    };
    for (const auto& [raised, english] : cases) {
        EXPECT_EQ(in_english(raised), english) << raised;
        EXPECT_EQ(in_english("[FBCONN Error];" + std::string(raised)), english) << raised;
    }
}

// The texts between double quotes in a source file, those that follow one another as one.
std::vector<std::string> texts_in(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::string code, line;
    while (std::getline(in, line)) code += line.substr(0, line.find("//")) + "\n";
    static const std::regex literal(R"re("((?:[^"\\\n]|\\.)*)"(?:\s*"((?:[^"\\\n]|\\.)*)")*)re");
    std::vector<std::string> found;
    for (std::sregex_iterator at(code.begin(), code.end(), literal), end; at != end; ++at) {
        static const std::regex joint("([^\\\\])\"\\s*\"");
        const std::string whole = std::regex_replace(at->str(), joint, "$1");
        found.push_back(whole.substr(1, whole.size() - 2));
    }
    return found;
}

// By its letters, or by a word that English does not have.
bool is_portuguese(const std::string& text) {
    static const std::regex signs(
        "[\x80-\xFF]|\\b(ao|arquivo|aspas|campo|corrompidos|da|dados|de|erro|este|existe|falha|na|nome|os|"
        "para|"
        "por|registro|tabela|uma|um)\\b",
        std::regex::icase);
    return std::regex_search(text, signs);
}

// A text of the sources may be a piece of one that is raised.
bool is_known(const std::string& text) {
    const std::string bytes = tool::to_latin1(text).value_or(text);
    return std::ranges::any_of(tool::raised_texts(), [&](const tool::RaisedText& one) {
        return one.raised.find(bytes) != std::string_view::npos;
    });
}

TEST(InEnglish, KnowsEveryPortugueseTextInTheSourcesOfTheMethods) {
    std::size_t known = 0;
    for (const char* folder : {"catalog", "conn", "locks", "matrix", "rdd", "schema", "sql", "transfer"}) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::filesystem::path(ZMFB_SOURCE) / folder)) {
            if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") continue;
            for (const std::string& text : texts_in(entry.path())) {
                if (!is_portuguese(text)) continue;
                EXPECT_TRUE(is_known(text)) << entry.path() << ": " << text;
                ++known;
            }
        }
    }
    EXPECT_GE(known, tool::raised_texts().size());
}

}  // namespace
}  // namespace zmfb::test
