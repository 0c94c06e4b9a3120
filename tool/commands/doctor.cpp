#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tool/commands.h"
#include "tool/doctor/checks.h"
#include "tool/hints.h"
#include "tool/json.h"
#include "tool/output.h"
#include "tool/rows/shown_text.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

std::string_view colour_of(State state) {
    if (!output_has_colours()) return "";
    constexpr std::array<std::string_view, 3> colours{"\x1b[32m", "\x1b[33m", "\x1b[31m"};
    return colours.at(static_cast<std::size_t>(state));
}

// Prints findings as they come, or keeps them for the end.
class Report {
  public:
    explicit Report(bool json) : json_(json) {}

    void add(Finding finding) {
        std::ranges::replace(finding.text, '\n', ' ');  // the engine's messages have several lines
        if (finding.state == State::bad) well_ = false;
        if (json_) {
            list_.push_back({{"check", finding.check},
                             {"state", state_name(finding.state)},
                             {"text", finding.text},
                             {"advice", finding.advice}});
            return;
        }
        const std::string_view colour = colour_of(finding.state);
        fmt::print("{}[{}]{} {}: {}\n", colour, state_name(finding.state), colour.empty() ? "" : "\x1b[0m",
                   finding.check, without_controls(finding.text));
        if (!finding.advice.empty()) fmt::print("       {}\n", without_controls(finding.advice));
        flush_output();
    }
    Exit end(Exit status_when_bad) const {
        if (json_) fmt::print("{}\n", json_lines(Json{{"ok", well_}, {"checks", list_}}));
        return well_ ? Exit::ok : status_when_bad;
    }

  private:
    bool json_;
    bool well_ = true;
    Json list_ = Json::array();
};

Exit doctor_command(Session& session) {
    session.require_database();
    session.show_raised(Raised::silent);
    Report report(session.options().json);
    for (const auto check : checks_before_attaching) report.add(check(session));
    const Finding attached = check_attach(session);
    report.add(attached);
    if (attached.state == State::bad) return report.end(Exit::not_attached);
    for (const auto check : checks_of_database) {
        try {
            report.add(check(session));
        } catch (const Failure& failure) {
            report.add({"database", State::bad, failure.message + ": " + failure.detail,
                        failure.hint.empty() ? hint_for(failure.detail) : failure.hint});
        }
    }
    session.forget_raised();  // the findings tell of it
    return report.end(Exit::failed);
}

}  // namespace

void add_doctor(CommandLine& line) {
    line.add(line.app(), "doctor", "Check everything the driver needs, and say what to do about it",
             "zmfb --db shop.fdb doctor", doctor_command);
}

}  // namespace zmfb::tool
