/// What is thrown by something that has to throw.
#pragma once

#include <gtest/gtest.h>

#include "zmfbconn/sql_error.h"

namespace zmfb::test {

/// The SqlError that `work` throws; one that says nothing, and a failed test, when it throws none.
template <class Work>
SqlError error_of(const Work& work) {
    try {
        work();
    } catch (const SqlError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return SqlError({});
}

/// Its SQLSTATE.
template <class Work>
std::string state_of(const Work& work) {
    return error_of(work).sqlstate();
}

}  // namespace zmfb::test
