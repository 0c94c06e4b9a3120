#include "tests/interleavings/explore.h"

#include <deque>

namespace zmfb::test {
namespace {

// The schedules that are still to be run, by how often they break off a session.
class Waiting {
  public:
    void add(int breaks, Schedule begin) { by_breaks_[breaks].push_back(std::move(begin)); }
    [[nodiscard]] bool empty() const { return by_breaks_.empty(); }
    [[nodiscard]] int breaks() const { return by_breaks_.begin()->first; }
    Schedule take() {
        const auto first = by_breaks_.begin();
        Schedule begin = std::move(first->second.front());
        first->second.pop_front();
        if (first->second.empty()) by_breaks_.erase(first);
        return begin;
    }

  private:
    std::map<int, std::deque<Schedule>> by_breaks_;
};

// Each way to leave the run behind what was given is a schedule of its own, which no other run leads to.
void add_branches(const Ran& ran, std::size_t given, int breaks, Waiting& waiting) {
    Schedule begin;
    for (std::size_t at = 0; at < ran.choices.size(); ++at) {
        const Chosen& chosen = ran.choices[at];
        if (at >= given) {
            for (const std::size_t other : chosen.others) {
                Schedule branch = begin;
                branch.push_back(other);
                waiting.add(breaks + (chosen.breaks_off ? 1 : 0), std::move(branch));
            }
        }
        begin.push_back(chosen.session);
    }
}

}  // namespace

Walked walk_interleavings(const std::function<Ran(const Schedule& begin)>& run, long limit) {
    Walked walked;
    Waiting waiting;
    waiting.add(0, {});
    while (!waiting.empty() && walked.runs < limit) {
        const int breaks = waiting.breaks();
        const Schedule begin = waiting.take();
        const Ran ran = run(begin);
        ++walked.runs;
        walked.blocked += ran.blocked;
        walked.not_followed += ran.followed ? 0 : 1;
        walked.most_breaks = breaks;
        Schedule whole;
        for (const Chosen& chosen : ran.choices) whole.push_back(chosen.session);
        walked.outcomes.try_emplace(ran.outcome, whole);
        if (ran.followed) add_branches(ran, begin.size(), breaks, waiting);
    }
    walked.whole = waiting.empty() && walked.not_followed == 0;
    return walked;
}

}  // namespace zmfb::test
