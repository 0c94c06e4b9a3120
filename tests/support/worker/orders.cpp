#include "rdd/orders.h"

#include "tests/support/worker/program.h"
#include "zmfbconn/methods.h"

namespace zmfb::test {

Value makeorder(zmFBConn& connection, Args args) {
    const std::string table(args[0].text());
    rdd::create_order(connection, table, connection(m::gettablestruct, table),
                      {std::string(args[1].text()), std::string(args[2].text())});
    return true;
}

Value dropanyorder(zmFBConn& connection, Args args) {
    try {
        rdd::drop_order(connection, args[0].text(), args[1].text());
    } catch (const rdd::OrderError&) {
        return false;
    }
    return true;
}

void churnorders(zmFBConn& connection, Args args, void (*answer)(const Value&)) {
    answer(makeorder(connection, args));
    for (;;) {
        rdd::drop_order(connection, args[0].text(), args[1].text());
        makeorder(connection, args);
    }
}

}  // namespace zmfb::test
