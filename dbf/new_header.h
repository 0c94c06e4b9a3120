/// The header of a file that is to be written.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "dbf/header.h"
#include "dbf/writer.h"

namespace zmfb::dbf {

/// A file of these fields, without a record. Throws Refused, with all that is wrong.
Header plan_header(Format format, std::span<const NewField> fields, const std::string& code_page,
                   bool names_code_page);

/// The three bytes of the day of the last change, from changed_at on.
std::string changed_bytes(Date changed);
inline constexpr std::size_t changed_at = 1;

/// The bytes before the first record, which count none.
std::string header_bytes(const Header& header, Date changed);

/// A record of which no field is set.
std::string empty_record(const Header& header);

}  // namespace zmfb::dbf
