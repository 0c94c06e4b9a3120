// What the code of a method may not do: tests/support/refused.py compiles each case.
#include "conn/self.h"

void refused(zmfb::Self& self) {
    zmfb::call(self, "istable", "CUSTOMER");
#if CASE == 1  // no method of that name
    zmfb::call(self, "istabel", "CUSTOMER");
#endif
#if CASE == 2  // no method of that name
    zmfb::ask(self, "isTable", "CUSTOMER");
#endif
}
