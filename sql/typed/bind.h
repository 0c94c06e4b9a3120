/// Putting values into the message that goes to the engine.
#pragma once

#include <span>

#include "sql/typed/layout.h"
#include "sql/typed/work.h"
#include "zmfbconn/sql_value.h"

namespace zmfb::typed {

/// Throws what does not fit, before anything is sent; blobs are made of texts and bytes for blob parameters.
void bind_values(std::span<const Parameter> values, const Layout& layout, Message& message,
                 const std::shared_ptr<Work>& work, std::string_view statement);

}  // namespace zmfb::typed
