/// Tests on a small full screen.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host/screen.h"
#include "tests/support/terminal.h"

namespace zmfb::host_test {

inline constexpr int rows = 12;
inline constexpr int columns = 40;

/// Runs `body` on a small full screen and expects that it went well.
inline test::Performance on_screen(const std::function<void(const test::Stage&)>& body,
                                   const std::string& kind = "xterm") {
    test::Performance performance = test::perform(rows, columns, kind, [&](const test::Stage& stage) {
        host::screen_begin();
        body(stage);
        host::screen_end();
    });
    EXPECT_EQ(performance.status, 0) << performance.report;
    for (const auto& [name, screen] : performance.snapshots) EXPECT_EQ(screen.unknown(), "") << name;
    return performance;
}

}  // namespace zmfb::host_test
