#include "matrix/decide.h"

namespace zmfb::matrix {

Decision decide(Self& self, const Value& left, const Value& rights, const Value& current, std::size_t line) {
    const Value right = rights[line];
    const auto in_table = [&] { return ask(self, "isfieldinstru", left[1], current); };
    if (ask(self, "isfielddropped", right))
        return {in_table() ? Action::drop : Action::already_dropped, false};
    if (!ask(self, "isfieldstructuredifferent", rights, current, line)) return {};
    if (ask(self, "samefieldname", rights, current, line) || ask(self, "hasfieldnamechanged", right, left)) {
        return in_table() ? Decision{Action::alter, true} : Decision{};
    }
    if (!in_table()) return {Action::add, true};
    return {ask(self, "isfieldstructurechanged", right, current) ? Action::alter : Action::none, true};
}

}  // namespace zmfb::matrix
