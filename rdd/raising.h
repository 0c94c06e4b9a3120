/// Handing what is thrown here on to the error block of the program.
#pragma once

#include <string>
#include <string_view>

#include "host/table_error.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/sql_error.h"

namespace zmfb::rdd {

/// host::raise_table_error() of the subsystem "ZMRDDFIRE".
void raise_failure(host::TableFailure failure);

/// What is raised where nothing better is known.
struct Otherwise {
    host::GenCode gencode;
    host::Subcode subcode;
    std::string_view operation;
    std::string_view table;
};
/// @{
/// Raises it.
void raise_thrown(const AreaError& error, const Otherwise& otherwise);
void raise_thrown(const SqlError& error, const Otherwise& otherwise);
/// @}

/// Whether `action` throws neither; what it throws is raised. InUse is the caller's.
template <class Action>
bool raising(const Otherwise& otherwise, const Action& action) {
    try {
        action();
        return true;
    } catch (const AreaError& error) {
        raise_thrown(error, otherwise);
    } catch (const SqlError& error) {
        raise_thrown(error, otherwise);
    }
    return false;
}

/// Raises that somebody is in the way, as `failure` says where, told with `before` in front; NETERR() and
/// neterrholder() tell of it, so that a program may go on.
void raise_in_use(const InUse& in_use, host::TableFailure failure, std::string_view before = {});

/// Who has something: "DESK, process 4711 on workshop".
std::string holder_text(const Holder& holder);
/// A text in UTF-8 as the runtime has it, with "?" for what it has no letter for.
std::string in_program_text(std::string_view utf8);

}  // namespace zmfb::rdd
