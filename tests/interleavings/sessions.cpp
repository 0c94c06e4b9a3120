#include "tests/interleavings/sessions.h"

#include <fmt/format.h>

#include <algorithm>
#include <regex>
#include <set>
#include <stdexcept>

#include "tests/support/environment.h"
#include "tests/support/show.h"
#include "tool/literal.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

// Behind it a step that another session's change may be in the way of counts as one that waits for it. One
// that is only slow goes on beside the others then, which may change what is walked, and nothing else.
constexpr auto patience = 40ms;
// Nothing takes so long: the engine looks for deadlocks every ten seconds at most.
constexpr auto hangs = 60s;

// Puts the id of a session's work area in the place of $A, $B and $C.
void put_ids(std::string& call, const std::vector<std::string>& ids) {
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::string place = fmt::format("${}", session_name(i)), id = '"' + ids[i] + '"';
        for (std::size_t at = 0; (at = call.find(place, at)) != std::string::npos; at += id.size())
            call.replace(at, place.size(), id);
    }
}

}  // namespace

Sessions::Sessions(const InterleavingCase& of, const std::string& database) : shows_(of.shows) {
    preparing_ = "execute block as begin ";
    for (const char* table : {"RDDSYS_RLK", "RDDSYS_FLK", "RDDSYS_OPN"})
        preparing_ += fmt::format("delete from {}; ", table);
    for (const std::string& statement : of.before) preparing_ += statement + "; ";
    preparing_ += "end";
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < of.sessions.size() && !of.sessions[i].empty(); ++i) {
        Session session;
        if (!session.process.call("attach", database, sysdba, sysdba_password).logical())
            throw std::runtime_error("a session could not attach");
        ids.push_back(session.process.call("getuniqueareaid", "T", "1").string());
        session.calls = of.sessions[i];
        if (!of.first.empty()) session.first = of.first[i];
        if (!of.last.empty()) session.last = of.last[i];
        sessions_.push_back(std::move(session));
    }
    for (Session& session : sessions_) {
        for (std::vector<std::string>* calls : {&session.first, &session.calls, &session.last}) {
            for (std::string& call : *calls) put_ids(call, ids);
        }
    }
}

std::string Sessions::with_names(std::string text) const {
    for (std::size_t i = 0; i < sessions_.size(); ++i) {
        const std::regex id(fmt::format("\\w+:[^:\"]*:{}:[\\w.-]*", sessions_[i].process.pid()));
        text = std::regex_replace(text, id, std::string(1, session_name(i)));
    }
    return text;
}

// The first session's process does it, which others then have the least to do with.
void Sessions::prepare() {
    const Value failure = sessions_.front().process.call("executeupdate", preparing_);
    if (failure.string() != "") throw std::runtime_error(failure.string() + ": " + preparing_);
}

std::string Sessions::shown(const std::string& query) {
    std::set<std::string> texts;  // in the order of the names of the sessions, not of their processes
    for (const auto& row : row_texts(sessions_.front().process.call("executequery", query))) {
        std::string text;
        for (const std::string& value : row) {
            text += text.empty() ? "" : " ";
            text += value.substr(0, value.find_last_not_of(' ') + 1);
        }
        texts.insert(with_names(text));
    }
    return texts.empty() ? "nothing" : fmt::format("{}", fmt::join(texts, "; "));
}

Ran Sessions::run(const Schedule& begin, bool whole_calls) {
    Ran ran;
    blocked_ = 0;
    prepare();
    for (Session& session : sessions_) call_at_once(session, session.first);
    for (Session& session : sessions_) begin_calls(session);
    std::size_t current = 0;
    while (any(State::stopped) || any(State::waits)) {
        if (!any(State::stopped)) {
            wait_for_the_waiting();
            continue;
        }
        const Chosen chosen = choose(begin, ran.choices.size(), current, whole_calls, ran.followed);
        current = chosen.session;
        ran.choices.push_back(chosen);
        let_go(sessions_[current]);
    }
    for (std::size_t i = 0; i < sessions_.size(); ++i)
        ran.outcome += fmt::format("{}{}{}", i == 0 ? "" : ", ", session_name(i), sessions_[i].answers);
    ran.outcome = with_names(ran.outcome);
    for (Session& session : sessions_) session.process.call("stepwise", false);
    for (const std::string& query : shows_) ran.outcome += ": " + shown(query);
    for (Session& session : sessions_) call_at_once(session, session.last);
    ran.blocked = blocked_;
    return ran;
}

void Sessions::call_at_once(Session& session, const std::vector<std::string>& calls) {
    for (const std::string& call : calls) {
        session.process.start_line(call);
        session.process.finish();
    }
}

// Up to the first stop there is nothing that others could see or be seen of.
void Sessions::begin_calls(Session& session) {
    session.process.call("stepwise", true);
    session.next_call = 0;
    session.changed = false;
    session.answers.clear();
    session.state = State::ended;
    take_answer(session);
}

// Takes the answers of calls that stop nowhere, too.
void Sessions::take_answer(Session& session) {
    if (session.next_call > 0) {
        try {
            session.answers += ' ' + tool::to_literal(session.process.finish());
        } catch (const std::runtime_error& error) {
            session.answers += fmt::format(" raised({})", error.what());
        }
    }
    if (session.next_call == session.calls.size()) {
        session.state = State::ended;
        return;
    }
    session.process.start_line(session.calls[session.next_call++]);
    session.call_begins = true;
    if (!come(session, hangs)) throw std::runtime_error("a call hangs before its first step");
}

bool Sessions::come(Session& session, std::chrono::milliseconds limit) {
    const std::optional<std::string> stop = session.process.wait_for_stop(limit);
    if (!stop) return false;
    if (stop->empty()) {
        take_answer(session);
        return true;
    }
    session.state = State::stopped;
    session.stop = *stop;
    session.changed = session.changed || session.stop == "commit";
    return true;
}

void Sessions::let_go(Session& session) {
    const bool other_changed = std::any_of(sessions_.begin(), sessions_.end(), [&](const Session& other) {
        return &other != &session && (other.changed || other.state == State::waits);
    });
    session.call_begins = false;
    const bool ends_change = session.stop == "commit";
    if (session.stop == "change") session.changed = true;
    session.process.go_on();
    if (!come(session, other_changed ? patience : hangs)) {
        if (!other_changed) throw std::runtime_error("a step hangs, and nobody is in its way");
        session.state = State::waits;
        ++blocked_;
        return;
    }
    if (!ends_change) return;
    session.changed = session.state == State::stopped && session.stop == "commit";
    for (Session& other : sessions_) {
        if (other.state == State::waits) come(other, patience);
    }
}

Chosen Sessions::choose(const Schedule& begin, std::size_t at, std::size_t current, bool whole_calls,
                        bool& followed) const {
    Chosen chosen;
    std::vector<std::size_t> ready;
    for (std::size_t i = 0; i < sessions_.size(); ++i) {
        if (sessions_[i].state == State::stopped) ready.push_back(i);
    }
    chosen.breaks_off = sessions_[current].state == State::stopped && at > 0;
    chosen.session = chosen.breaks_off ? current : ready.front();
    if (whole_calls && chosen.breaks_off && !sessions_[current].call_begins) return chosen;
    if (at < begin.size()) {
        const bool is_ready = std::find(ready.begin(), ready.end(), begin[at]) != ready.end();
        followed = followed && is_ready;
        if (is_ready) chosen.session = begin[at];
    }
    std::erase(ready, chosen.session);
    chosen.others = ready;
    return chosen;
}

void Sessions::wait_for_the_waiting() {
    const auto end = std::chrono::steady_clock::now() + hangs;
    while (std::chrono::steady_clock::now() < end) {
        for (Session& session : sessions_) {
            if (session.state == State::waits && come(session, patience)) return;
        }
    }
    throw std::runtime_error("all sessions wait for each other");
}

bool Sessions::any(State state) const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [&](const Session& session) { return session.state == state; });
}

}  // namespace zmfb::test
