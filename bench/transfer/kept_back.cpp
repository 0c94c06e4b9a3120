#include <stdexcept>

#include "bench/support/stand_in_client.h"
#include "bench/transfer/commands.h"
#include "host/error.h"

namespace zmfb::bench {

std::vector<std::string> kept_back_by(const std::function<void()>& transfer) {
    const Holdback holdback(
        [](std::string_view text) { return text.starts_with("INSERT INTO ") || text.starts_with("DROP "); });
    {
        const host::ScopedErrorBlock passed_over(Value::block([](host::Args) { return Value(); }));
        transfer();
    }
    if (holdback.kept_back().empty()) throw std::runtime_error("the transfer stops before its copy");
    return holdback.kept_back();
}

}  // namespace zmfb::bench
