#include "tool/in_english.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "host/latin1.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

using host::operator""_l1;

constexpr std::array texts{
    RaisedText{"A tabela já existe; Tabela: *"_l1, "there is a table * already"},
    RaisedText{"Arquivo não encontrado; Arquivo: *"_l1, "the file * was not found"},
    RaisedText{"Arquivos .dbt e memo não suportados"_l1, "memos and their .dbt files are not supported"},
    RaisedText{"Erro ao adicionar Campo: * Tabela: *;FB Error: *", "cannot add the field * to the table *"},
    RaisedText{"Erro ao deletar Campo: * Tabela: *;FB Error: *", "cannot drop the field * of the table *"},
    RaisedText{"Erro ao deletar registro; Tabela: * Recno: *;FB Error: *",
               "cannot delete from the table * the record *"},
    RaisedText{"Erro ao popular AuxCampo: * Tabela: *;FB Error: *",
               "cannot fill the auxiliary field * of the table *"},
    RaisedText{"Erro ao renomear Campo: * Tabela: *;FB Error: *", "cannot rename the field * of the table *"},
    RaisedText{"Erro ao reposicionar Campo: * Tabela: *;FB Error: *",
               "cannot move the field * of the table *"},
    RaisedText{"Erro ao zerar tabela; Tabela: *;FB Error: *", "cannot empty the table *"},
    RaisedText{"Erro durante a transferência dos dados da tabela externa para tabela oficial; FB Error: *"_l1,
               "cannot bring the data of the external table into the table itself"},
    RaisedText{"Erro durante a transferência dos dados da tabela oficial para tabela externa; FB Error: *"_l1,
               "cannot bring the data of the table itself into the external table"},
    RaisedText{"Erro na criação da trigger Deletes; FB Error: *"_l1,
               "cannot make the trigger that counts deletions"},
    RaisedText{"Erro na criação da trigger Recno; FB Error: *"_l1,
               "cannot make the trigger that numbers records"},
    RaisedText{"Erro na criação do generator D; FB Error: *"_l1, "cannot make the generator of deletions"},
    RaisedText{"Erro na criação do generator I; FB Error: *"_l1,
               "cannot make the generator of record numbers"},
    RaisedText{"Erro na criação do índice recno; FB Error: *"_l1, "cannot make the index of record numbers"},
    RaisedText{"Erro na descrição da tabela; Tabela: *"_l1, "cannot write the description of the table *"},
    RaisedText{"Erro na descrição do Campo: * Tabela: *;FB Error: *"_l1,
               "cannot write the description of the field * of the table *"},
    RaisedText{"Erro na descrição do campo; Tabela: * Campo: *"_l1,
               "cannot write the description, in the table *, of the field *"},
    RaisedText{"Erro na gravação do arquivo matriz"_l1, "cannot write the matrix file"},
    RaisedText{"Impossível criar arq temporário para importação"_l1,
               "cannot make the temporary file of an import"},
    RaisedText{"Impossível eliminar a Tabela: *; FB Error: *"_l1, "cannot drop the table *"},
    RaisedText{"Impossível eliminar dependente: *;O nome exige aspas"_l1,
               "cannot drop *, which depends on it: its name needs double quotes"},
    RaisedText{"Impossível eliminar generator; Generator: *; FB Error: *"_l1, "cannot drop the generator *"},
    RaisedText{"Impossível eliminar trigger; Trigger: *; FB Error: *"_l1, "cannot drop the trigger *"},
    RaisedText{"Impossível eliminar View: *; FB Error: *"_l1, "cannot drop the view *"},
    RaisedText{"Impossível eliminar índice; Índice: *; FB Error: *"_l1, "cannot drop the index *"},
    RaisedText{"Impossível modificar tabelas alienígenas!!;Tabela: *"_l1,
               "a table that the driver did not make cannot be changed: *"},
    RaisedText{"Não foi possível determinar a tabela alvo"_l1, "cannot tell which table is meant"},
    RaisedText{
        "Não foi possível extrair a matriz.; Coloque os nomes das tabelas em um array unidimensional"_l1,
        "cannot extract the matrix: put the names of the tables into an array of one dimension"},
    RaisedText{"Não é um DBF; Arquivo: *"_l1, "this is no DBF file: *"},
    RaisedText{"Os dados para esta tabela parecem corrompidos;Campo: *;Tabela: *",
               "the data for this table seem damaged: field *, table *"},
    RaisedText{"Os dados para esta tabela parecem corrompidos;Registro: *",
               "the data for this table seem damaged: record *"},
    RaisedText{"Os dados para esta tabela parecem corrompidos;Tabela: *",
               "the data for this table seem damaged: table *"},
    RaisedText{"Uma tabela externa com este nome já existe!"_l1,
               "there is an external table of this name already"},
    RaisedText{"Você deseja que eu processe uma matriz vazia?"_l1,
               "the matrix is empty: there is nothing to process"},
};

// What stands in the places of the stars; nothing when the text is another one.
std::optional<std::vector<std::string_view>> parts_of(std::string_view text, std::string_view pattern) {
    std::size_t star = pattern.find('*');
    if (!text.starts_with(pattern.substr(0, star))) return std::nullopt;
    std::vector<std::string_view> parts;
    while (star != std::string_view::npos) {
        text.remove_prefix(star);
        pattern.remove_prefix(star + 1);
        star = pattern.find('*');
        const std::size_t end = pattern.empty() ? text.size() : text.find(pattern.substr(0, star));
        if (end == std::string_view::npos) return std::nullopt;
        const std::string_view part = text.substr(0, end);
        parts.push_back(part.substr(std::min(part.size(), part.find_first_not_of(' '))));
        text.remove_prefix(end);
    }
    if (text != pattern) return std::nullopt;
    return parts;
}

}  // namespace

std::span<const RaisedText> raised_texts() { return texts; }

std::string in_english(std::string_view raised) {
    constexpr std::string_view head = "[FBCONN Error];";
    if (raised.starts_with(head)) raised.remove_prefix(head.size());
    for (const RaisedText& text : texts) {
        const auto parts = parts_of(raised, text.raised);
        if (!parts) continue;
        std::string english;
        auto part = parts->begin();
        for (const char letter : text.english)
            english += letter == '*' ? to_utf8(*part++) : std::string(1, letter);
        return english;
    }
    return {};
}

}  // namespace zmfb::tool
