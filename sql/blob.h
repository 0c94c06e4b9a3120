/// Blobs as texts.
#pragma once

#include <string>

#include "sql/transaction.h"

namespace zmfb::sql {

/// Text blobs up to this size are read; larger ones only named.
inline constexpr std::size_t largest_text_blob = std::size_t{64} << 20;

/// Makes `text` the content of a text blob, or "<blob 123 bytes>" for a blob that is none (`is_text`) or too
/// large. Fails with the first call that does.
Status describe_blob(Transaction& transaction, const ISC_QUAD& id, bool is_text, std::string& text);

}  // namespace zmfb::sql
