#include "host/text.h"
#include "transfer/methods.h"

namespace zmfb::transfer {

Value getfilename(Self&, Args args) {
    const Value& path = args[0];
    return host::substr(path, host::rat("/", path) + 1);
}

Value removefilenameext(Self&, Args args) {
    const Value& name = args[0];
    const Value dot = host::at(".", name);
    return dot.number() > 0 ? host::left(name, dot - 1) : name;
}

Value removezerobytes(Self&, Args args) {
    const Value& line = args[0];
    const std::size_t zero = line.text().find('\0');
    return zero == std::string_view::npos ? line : host::substr(line, 1, zero);
}

}  // namespace zmfb::transfer
