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

/// The bytes before the first record, which count none.
std::string header_bytes(const Header& header, Date changed);

/// A record of which no field is set.
std::string empty_record(const Header& header);

/// The longest C and V of FoxPro, and the widest N and F.
inline constexpr std::size_t longest_foxpro_text = 254;
inline constexpr std::size_t widest_foxpro_number = 20;

}  // namespace zmfb::dbf
