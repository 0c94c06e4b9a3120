/// Filling statement templates and running them, as the methods of several folders do.
#pragma once

#include <initializer_list>
#include <string_view>

#include "conn/self.h"

namespace zmfb {

/// One pair of a parameter array.
struct ParameterPair {
    std::string_view placeholder;
    Value value;
};

/// The parameter array of `parameters`, in their order: a value that holds a later placeholder is filled too.
Value parameter_array(std::initializer_list<ParameterPair> parameters);
/// Appends a pair to a parameter array.
void add_parameter(const Value& aparam, std::string_view placeholder, const Value& value);

/// The result of the filled query as internalselect gives it: a header, then the data rows; empty when it
/// failed.
Value select(Self& self, std::string_view sstmt, const Value& aparam);
/// Whether a query result has a data row. A failed query has none.
bool has_row(const Value& result);

/// Runs the filled statement; "" or the SQLCODE error text.
Value update(Self& self, std::string_view sstmt, const Value& aparam);

/// Runs the filled statement; one that fails raises `message` followed by the SQLCODE error text. Whether it
/// ran.
bool update_or_raise(Self& self, std::string_view sstmt, const Value& aparam, const Value& message);

}  // namespace zmfb
