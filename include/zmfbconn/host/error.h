/// Errors of the runtime: the error object, the error block, and the ways of raising.
///
/// Raising hands an error object to the error block. The default block answers .F. to an error with
/// `candefault` set, an open or append that another use of the table is in the way of: a program meets that
/// one by looking at NETERR(). For any other it leaves the full screen, prints the description to standard
/// error, a line for each piece between ";", and ends the program with status 1, by std::exit() and on the
/// spot: no destructor of what the functions on the way hold is run, and what one of them would give back,
/// such as a lock, stays taken. A program installs its own, for a while with ScopedErrorBlock and for good
/// with error_block(); that one may return (the operation then answers with what it returned, or NIL) or
/// throw a C++ exception, which passes through every operation of the runtime and every method without harm,
/// and runs the destructors on its way. ThrowingErrors is the one that throws.
#pragma once

#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// Class of a runtime error, the field `gencode` of an error object.
enum class GenCode : int {
    argument = 1,
    bound = 2,
    string_overflow = 3,
    zero_divide = 5,
    no_method = 13,
    no_variable = 16,
    duplicate_alias = 19,
    create = 20,
    open = 21,
    close = 22,
    read = 23,
    write = 24,
    unsupported = 30,
    corrupt = 32,
    data_width = 33,
    data_type = 34,
    no_table = 35,
    no_order = 36,
    shared = 37,
    unlocked = 38,
    read_only = 39,
    append_lock = 40,
};

/// Number of one kind of failure, the field `subcode` of an error object.
enum class Subcode : int {
    no_method = 1004,
    no_variable = 1005,
    wrong_kind = 2000,
    array_access = 1132,
    array_assign = 1133,
    array_dimension = 1131,
    eval = 1004,
    exactly_equal = 1070,
    equal = 1071,
    unequal = 1072,
    less = 1073,
    less_or_equal = 1074,
    greater = 1075,
    greater_or_equal = 1076,
    plus = 1081,
    minus = 1082,
    times = 1083,
    divide = 1084,
    val = 1098,
    str = 1099,
    trim = 1100,
    ltrim = 1101,
    upper = 1102,
    lower = 1103,
    chr = 1104,
    space = 1105,
    replicate = 1106,
    asc = 1107,
    at = 1108,
    contained = 1109,
    substr = 1110,
    len = 1111,
    year = 1112,
    month = 1113,
    day = 1114,
    dtos = 1120,
    dtoc = 1118,
    ctod = 1119,
    abs = 1089,
    integer = 1090,
    aadd = 1123,
    left = 1124,
    strtran = 1126,
    string_overflow = 1234,
    zero_divide = 1340,
    strpeek = 2006,
    set = 2020,
    file = 2021,
    alltrim = 2022,
    table_open = 1001,
    table_structure = 1003,
    table_create = 1004,
    index_files = 1006,
    table_read = 1010,
    table_write = 1011,
    table_corrupt = 1012,
    alias_in_use = 1011,
    structure = 1014,
    driver_unknown = 1015,
    data_type = 1020,
    data_width = 1021,
    record_unlocked = 1022,
    exclusive_use = 1023,
    append_lock = 1024,
    table_read_only = 1025,
    no_order = 1201,
    unsupported = 1000,
    area_not_in_use = 2001,
};

/// ERRORNEW(): an error object with the fields args, candefault, canretry, cansubstitute, cargo, description,
/// filename, gencode, operation, oscode, severity, subcode, subsystem and tries, at their fresh values.
Value error_new();

/// ERRORBLOCK(): the current error handler, a block that takes an error object.
Value error_block();
/// Makes `handler` the error handler and returns the one before it. NIL brings the default handler back.
Value error_block(const Value& handler);

/// While it lives, `handler` is the error handler; afterwards the one before it is again.
class ScopedErrorBlock {
  public:
    /// Puts it in.
    explicit ScopedErrorBlock(const Value& handler) : before_(error_block(handler)) {}
    ~ScopedErrorBlock() { error_block(before_); }
    ScopedErrorBlock(const ScopedErrorBlock&) = delete;
    ScopedErrorBlock& operator=(const ScopedErrorBlock&) = delete;

  private:
    Value before_;
};

/// What ThrowingErrors throws. what() is the description, in UTF-8.
class RaisedError : public std::runtime_error {
  public:
    /// One that keeps the error object.
    explicit RaisedError(Value error);
    ~RaisedError() override;

    /// The error object.
    [[nodiscard]] const Value& error() const noexcept { return error_; }

  private:
    Value error_;
};

/// While it lives, what is raised is thrown as a RaisedError.
class ThrowingErrors {
  public:
    ThrowingErrors();

  private:
    ScopedErrorBlock block_;
};

/// The description of an error object; "unknown error" for any other value.
std::string error_description(const Value& error);

/// Hands `error` to the error handler; returns what the handler returns.
Value raise(const Value& error);

/// Raises "Argument error: <operation>" (gencode 1, severity 2, subsystem BASE, cansubstitute), with `args`
/// as the operation's arguments. Returns what the handler returns, which is the operation's result then.
Value argument_error(Subcode subcode, std::string_view operation, std::span<const Value> args);
/// The same, with the arguments one by one.
inline Value argument_error(Subcode subcode, std::string_view operation, std::initializer_list<Value> args) {
    return argument_error(subcode, operation, std::span<const Value>(args.begin(), args.size()));
}
/// Raises "Bound error: array access" for `index` of `array`.
void bound_error(Subcode subcode, const Value& array, std::size_t index);
/// Raises "String overflow: <operation>" (gencode 3): the text asked for is longer than a text may be.
Value string_overflow(std::string_view operation);
/// Raises a runtime error of another class; `description` is its text.
Value runtime_error(GenCode code, Subcode subcode, std::string_view description);

/// The name of a kind as the error texts have it: "character", "array" and the like.
std::string_view kind_name(Kind kind);

}  // namespace zmfb::host

#pragma GCC visibility pop
