/// Values of DBF files as texts, for comparing and for messages.
#pragma once

#include <fmt/format.h>

#include <string>
#include <type_traits>
#include <variant>

#include "dbf/value.h"

namespace zmfb::dbf_test {

inline std::string shown_day(const dbf::Date& date) {
    return fmt::format("{:04}-{:02}-{:02}", int(date.year()), unsigned(date.month()), unsigned(date.day()));
}

inline std::string shown_time(const dbf::Timestamp& time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const auto left = (time - day).count();
    return fmt::format("{} {:02}:{:02}:{:02}.{:03}", shown_day(dbf::Date(day)), left / 3600000,
                       left / 60000 % 60, left / 1000 % 60, left % 1000);
}

/// "blank", "NULL", "bad: why", texts and bytes between quotes, "memo 7", everything else as it is written.
inline std::string shown(const dbf::Value& value) {
    return std::visit(
        [](const auto& held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, dbf::Blank>) return "blank";
            if constexpr (std::is_same_v<Held, dbf::Null>) return "NULL";
            if constexpr (std::is_same_v<Held, dbf::Bad>) return fmt::format("bad: {}", held.reason);
            if constexpr (std::is_same_v<Held, dbf::Text>) return fmt::format("\"{}\"", held.bytes);
            if constexpr (std::is_same_v<Held, dbf::Bytes>) return fmt::format("bytes \"{}\"", held.bytes);
            if constexpr (std::is_same_v<Held, dbf::Number>) return held.text;
            if constexpr (std::is_same_v<Held, dbf::Date>) return shown_day(held);
            if constexpr (std::is_same_v<Held, dbf::Timestamp>) return shown_time(held);
            if constexpr (std::is_same_v<Held, dbf::MemoBlock>) return fmt::format("memo {}", held.block);
            if constexpr (std::is_same_v<Held, dbf::Currency>)
                return fmt::format("{}/10000", held.ten_thousandths);
            if constexpr (std::is_arithmetic_v<Held>) return fmt::format("{}", held);
        },
        value);
}

}  // namespace zmfb::dbf_test
