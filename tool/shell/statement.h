/// Telling apart what people type, and finding the end of a statement.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// What a line that begins an input is.
enum class Input {
    nothing,      ///< blank, or only a comment
    dot_command,  ///< .tables, or \d as psql has it
    call,         ///< istable("CUSTOMER"), or the name of a method alone
    statement,    ///< SQL, which may go on over several lines
    unknown,
};

/// Tells by the beginning of `line`; a word with "(" behind it that does not begin a statement is a call.
Input input_of(std::string_view line);

/// Finds where statements end in a text that comes piece by piece, parted between its lines. Semicolons in
/// quotes, in comments and in a body from BEGIN to END do not end one.
class StatementScan {
  public:
    /// Where in `piece` the statement ends, behind its ";": what follows there begins the next one. Nothing
    /// when it goes on in the next piece.
    std::optional<std::size_t> end_in(std::string_view piece);
    /// Whether there was nothing yet but blanks and whole comments.
    [[nodiscard]] bool is_blank() const;

  private:
    bool ends_with(const std::string& token);
    void note_beginning(const std::string& token);

    std::array<std::string, 4> beginning_;  // its first tokens
    std::size_t tokens_ = 0;                // as many as were kept of them
    std::string_view open_;                 // the end of what the last piece left open
    int parentheses_ = 0;
    int blocks_ = 0;
    bool may_have_body_ = false;
    bool body_expected_ = false;
};

/// What begins and ends the transaction that is open in the shell.
enum class Step { none, begin, commit, roll_back };

/// Whether `statement`, with or without its ";", is one of them: BEGIN, START TRANSACTION, SET TRANSACTION;
/// COMMIT; ROLLBACK; each as other shells have it, with TRANSACTION or WORK behind it.
Step step_of(std::string_view statement);

/// Whether it is about a part of a transaction: SAVEPOINT, RELEASE SAVEPOINT, ROLLBACK TO.
bool is_about_a_savepoint(std::string_view statement);

/// Whether it changes what statements end with, as isql has it.
bool is_set_term(std::string_view statement);

/// Whether a statement is a query: SELECT or WITH.
bool is_query(std::string_view statement);

/// A statement with the text of `area` in quotes in the place of each `:area`. Quotes and comments are left
/// alone, and so are statements with a body, which may have a variable of that name.
std::string with_area(const std::string& statement, const std::function<std::string()>& area);

/// What a statement does, for a person: "create table", "update".
std::string action_of(std::string_view statement);

/// The first word of `text`, in lower case; "" when it begins with something else.
std::string first_word(std::string_view text);

/// The names in double quotes that stand in a statement, with their quotes.
std::vector<std::string_view> quoted_names(std::string_view statement);

/// The tables that a statement names, or the beginning of one, as they are typed: behind FROM, JOIN, INTO,
/// UPDATE and TABLE.
std::vector<std::string_view> tables_in(std::string_view statement);

/// Whether what comes behind `beginning`, a beginning of a statement, is the name of a table.
bool expects_table(std::string_view beginning);

/// The words that statements begin with, in lower case, parted by blanks.
inline constexpr std::string_view statement_words =
    "alter begin comment commit create delete drop execute grant insert merge recreate release revoke "
    "rollback savepoint select set start update with";

}  // namespace zmfb::tool
