/// Column types as SQL has them.
#pragma once

#include <string>

namespace zmfb::tool {

/// A type as the engine's own tables describe it; what is NULL there is 0.
struct StoredType {
    int code = 0;
    int sub_type = 0;
    int bytes = 0;
    int scale = 0;  ///< negative for decimals
    int precision = 0;
    int characters = 0;
};

/// The type as a statement names it: "NUMERIC(10,2)", "CHAR(24)", "BLOB SUB_TYPE TEXT"; a code that is not
/// known by its number: "type 32000".
std::string type_name(const StoredType& type);

}  // namespace zmfb::tool
