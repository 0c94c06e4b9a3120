#include <zmfbconn/host/operation.h>

#include <string>
#include <utility>

#include "c/guard.h"

using namespace zmfb::c;

zmfb_status zmfb_call_area(const char* operation, const zmfb_value* const* arguments, size_t count,
                           zmfb_value* result) {
    if (operation == nullptr || (arguments == nullptr && count > 0)) return fail_null();
    return guard([=] {
        const zmfb::host::Operation* found = zmfb::host::find_operation(operation);
        if (found == nullptr) {
            return fail(ZMFB_OUT_OF_RANGE,
                        "there is no operation of work areas named " + std::string(operation));
        }
        if (count > found->parameters) {
            return fail(ZMFB_OUT_OF_RANGE, "too many arguments: " + std::string(found->name) + " takes " +
                                               std::to_string(found->parameters));
        }
        const std::vector<Value> values = copies(arguments, count);
        Value answer = found->run(Args(values));
        if (result != nullptr) result->value = std::move(answer);
        return ZMFB_OK;
    });
}
