/// Filling the statement templates of the system tables and running them.
#pragma once

#include <initializer_list>
#include <string_view>

#include "conn/statement.h"
#include "locks/names.h"

namespace zmfb::locks {

/// One pair of a parameter array.
struct Parameter {
    Parameter(const SystemName& system) : placeholder(system.placeholder), value(system.name) {}  // NOLINT
    Parameter(std::string_view which, Value what) : placeholder(which), value(std::move(what)) {}

    std::string_view placeholder;
    Value value;
};

/// Pairs in the order in which assemblestatement applies them: a value that holds a later placeholder is
/// filled too.
using Parameters = std::initializer_list<Parameter>;

/// Pairs of values: a table name upper-cased, the others as they are.
Parameter tablename(const Value& tbl);
Parameter recno(const Value& number);
Parameter areaid(const Value& area);
Parameter shared(bool is_shared);

/// The rows of the filled query, as internalselect gives them.
Value select(Self& self, std::string_view sstmt, Parameters parameters);
/// Whether the filled statement ran: executeupdate gave an empty text.
bool update(Self& self, std::string_view sstmt, Parameters parameters);

/// Whether the first value of the first data row is a number above 0.
bool counts_some(const Value& result);

}  // namespace zmfb::locks
