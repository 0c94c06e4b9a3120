#include "conn/methods.h"
#include "conn/unbuilt.h"
#include "host/screen.h"

namespace zmfb::conn {

Value iscurseson(Self&, Args) { return host::standard_screen() != nullptr; }

Value showgreetscr(Self& self, Args) {
    if (!ask(self, "iscurseson")) return {};
    return unbuilt("showgreetscr");
}

Value hidegreetscr(Self& self, Args) {
    if (!ask(self, "iscurseson")) return {};
    return unbuilt("hidegreetscr");
}

}  // namespace zmfb::conn
