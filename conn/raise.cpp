#include "conn/raise.h"

#include "host/error.h"
#include "host/text.h"

namespace zmfb::conn {
namespace {

constexpr int own_gencode = -1;
constexpr int severity_error = 2;

}  // namespace

host::Value raiseerror(const host::Value& message) {
    using host::operator+;
    const host::Value error = host::error_new();
    error.object()->set("description", "[FBCONN Error];" + message);
    error.object()->set("gencode", own_gencode);
    error.object()->set("severity", severity_error);
    host::raise(error);
    return {};
}

}  // namespace zmfb::conn
