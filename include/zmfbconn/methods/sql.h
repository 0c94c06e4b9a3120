/// The methods that run SQL and fill its templates.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Queries. Rows of texts. zmfbconn/transaction.h has rows of types.
inline constexpr Method<Array(std::string)> executequery{
    "executequery", {"stmt"}, "Runs a SELECT and returns its header and rows"};
inline constexpr Method<Array(std::string)> internalselect{
    "internalselect", {"stmt"}, "Runs a SELECT and returns its header and rows", MethodKind::protected_};
inline constexpr Method<Texts(TableName, std::string, std::string, std::string, std::int64_t)> getrow{
    "getrow", {"tbl", "cond", "order", "plan", "sk"}, "The row at an offset of an ordered, filtered table"};
inline constexpr Method<Array(TableName, std::string, std::string, std::string, std::int64_t, std::int64_t)>
    getfirstrows{"getfirstrows",
                 {"tbl", "cond", "order", "plan", "qti", "sk"},
                 "Rows from an offset of an ordered, filtered table"};
inline constexpr Method<Texts(std::string, TableName, RecordNumber)> executeudfskippad{
    "executeudfskippad", {"col", "tbl", "recno"}, "Value of the skippad function for one record"};
/// @}

/// @{
/// Statements. Each in a transaction of its own, or in the one batch of the process.
inline constexpr Method<Status(std::string)> executeupdate{
    "executeupdate", {"stmt"}, "Runs a statement in a transaction of its own"};
inline constexpr Method<void()> starttransaction{"starttransaction", {}, "Opens a batch transaction"};
inline constexpr Method<Status(std::string)> cachedupdate{
    "cachedupdate", {"stmt"}, "Runs a statement in the open batch transaction"};
inline constexpr Method<void()> commitchanges{"commitchanges", {}, "Commits the batch transaction"};
/// @}

/// @{
/// Templates and placeholders. Plain replacement: nothing is quoted.
inline constexpr Method<std::string(std::string, std::optional<TextRows>)> assemblestatement{
    "assemblestatement", {"stmt", "param"}, "Fills the placeholders of a statement template"};
inline constexpr Method<Array(std::string, std::string, std::string, std::string)> looptest{
    "looptest", {"tbl", "cond", "order", "cols"}, "Placeholder that raises an error"};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow sql[] = {
    m::assemblestatement, m::cachedupdate,  m::commitchanges,    m::executequery,
    m::executeudfskippad, m::executeupdate, m::getfirstrows,     m::getrow,
    m::internalselect,    m::looptest,      m::starttransaction,
};

}  // namespace zmfb::declared
