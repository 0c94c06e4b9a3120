// What programs may not do with how something ended: tests/support/refused.py compiles each case.
#include "zmfbconn/database.h"

#pragma GCC diagnostic error "-Wunused-result"

void refused() {
    (void)zmfb::prepare_client("shop.fdb");
#if CASE == 1  // nodiscard
    zmfb::prepare_client("shop.fdb");
#endif
#if CASE == 2  // cannot convert
    const bool made = zmfb::prepare_client("shop.fdb");
#endif
}
