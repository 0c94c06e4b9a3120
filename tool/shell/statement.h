/// Telling apart what people type, and finding the end of a statement.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// What a line that begins an input is.
enum class Input {
    nothing,      ///< blank, or only a comment
    dot_command,  ///< .tables
    call,         ///< istable("CUSTOMER"), or the name of a method alone
    statement,    ///< SQL, which may go on over several lines
    unknown,
};

/// Tells by the beginning of `line`; a word with "(" behind it that does not begin a statement is a call.
Input input_of(std::string_view line);

/// Where the first statement in `text` ends, behind its ";"; nothing when it goes on. Semicolons in quotes,
/// in comments and in a body from BEGIN to END do not end it.
std::optional<std::size_t> end_of_statement(std::string_view text);

/// Whether a statement is a query: SELECT or WITH.
bool is_query(std::string_view statement);

/// What a statement does, for a person: "create table", "update".
std::string action_of(std::string_view statement);

/// The first word of `text`, in lower case; "" when it begins with something else.
std::string first_word(std::string_view text);

/// The names in double quotes that stand in a statement, with their quotes.
std::vector<std::string_view> quoted_names(std::string_view statement);

/// The words that statements begin with, in lower case, parted by blanks.
inline constexpr std::string_view statement_words =
    "alter comment create delete drop execute grant insert merge recreate revoke select set update with";

}  // namespace zmfb::tool
