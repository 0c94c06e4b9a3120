// What the code of a method, and a program, may not do with names of methods: tests/support/refused.py
// compiles each case.
#include "conn/self.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/methods.h"

namespace m = zmfb::m;

void refused(zmfb::Self& self) {
    zmfb::call(self, "istable", "CUSTOMER");
    zmfb::call(self, "istable");
#if CASE == 1  // no method of that name
    zmfb::call(self, "istabel", "CUSTOMER");
#endif
#if CASE == 2  // no method of that name
    zmfb::ask(self, "isTable", "CUSTOMER");
#endif
#if CASE == 3  // more arguments than the method takes
    zmfb::call(self, "istable", "CUSTOMER", 1);
#endif
}

void refused(zmfb::zmFBConn& connection, const zmfb::AreaId& area) {
    const std::string name = "CUSTOMER";
    bool done = connection(m::istable, "CUSTOMER");
    done = connection(m::istable, name);
    done = connection(m::setrecordaslocked, name, area, zmfb::RecordNumber(17));
    done = connection(m::settableusedbyarea, true, "CUSTOMER", area, false);
    connection(m::setloglevel, 1U);
    static_cast<void>(connection(m::fopnfile, "a.dbf", std::nullopt));
#if CASE == 4  // is not a member of
    done = connection(m::istabel, "CUSTOMER");
#endif
#if CASE == 5  // fewer arguments than the method needs
    done = connection(m::istable);
#endif
#if CASE == 6  // more arguments than the method takes
    done = connection(m::istable, "CUSTOMER", "RECNO");
#endif
#if CASE == 7  // does not become the type of the parameter
    done = connection(m::istable, 17);
#endif
#if CASE == 8  // does not become the type of the parameter
    done = connection(m::istable, nullptr);
#endif
#if CASE == 9  // does not become the type of the parameter
    done = connection(m::istable, area);
#endif
#if CASE == 10  // does not become the type of the parameter
    done = connection(m::setrecordaslocked, "CUSTOMER", area, 17);
#endif
#if CASE == 11  // does not become the type of the parameter
    done = connection(m::setrecordaslocked, "CUSTOMER", area, "17");
#endif
#if CASE == 12  // does not become the type of the parameter
    done = connection(m::setrecordaslocked, area, "CUSTOMER", zmfb::RecordNumber(17));
#endif
#if CASE == 13  // does not become the type of the parameter
    done = connection(m::settableaslocked, "CUSTOMER", "CUSTOMER:1:2:host");
#endif
#if CASE == 14  // the parameter is a logical
    done = connection(m::settableusedbyarea, 1, "CUSTOMER", area, true);
#endif
#if CASE == 15  // the parameter is a whole number
    connection(m::setloglevel, "1");
#endif
#if CASE == 16  // the parameter is a whole number
    connection(m::setloglevel, 1.5);
#endif
#if CASE == 17  // the parameter is a whole number
    connection(m::setloglevel, true);
#endif
#if CASE == 18  // the parameter is a text
    done = connection(m::isindex, 17);
#endif
#if CASE == 19  // conversion from
    const std::string text = connection(m::istable, "CUSTOMER");
#endif
#if CASE == 20  // nodiscard
    connection(m::executeupdate, "delete from CUSTOMER");
#endif
#if CASE == 21  // no matching function for call to
    const zmfb::RecordNumber number(1.5);
#endif
    static_cast<void>(done);
}
