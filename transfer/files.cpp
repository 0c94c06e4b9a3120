#include "host/compare.h"
#include "host/file.h"
#include "host/screen.h"
#include "host/text.h"
#include "transfer/methods.h"

namespace zmfb::transfer {

namespace {

constexpr int read_only = 0;
constexpr int read_and_write = 2;
constexpr int unlock = 0;
constexpr int lock_for_writing = 2;
constexpr int lock_waits = 6;

// The handle of a file that could not be locked in time is returned all the same, closed; and a lock that
// came only after the fifth wait counts as one that never came. Callers are written for both.
Value open_locked(const Value& name) {
    Value handle = host::fopen(name, read_and_write);
    if (handle.number() < 0) return handle;
    int waits = 0;
    while (host::flockf(handle, lock_for_writing).number() != 0 && waits < lock_waits) {
        host::inkey(0.5);
        ++waits;
    }
    if (waits >= lock_waits - 1) host::fclose(handle);
    return handle;
}

}  // namespace

Value fcrtfile(Self&, Args args) { return host::fcreate(args[0], 0); }

Value fopnfile(Self&, Args args) {
    const Value& name = args[0];
    const Value mode = host::empty(args[1]) ? Value("r") : args[1];
    if (host::exactly_equal(mode, "rw")) return open_locked(name);
    if (host::exactly_equal(mode, "r")) return host::fopen(name, read_only);
    return -1;
}

Value fclsfile(Self&, Args args) {
    const Value& handle = args[0];
    if (handle.number() >= 0) {
        host::flockf(handle, unlock);
        host::fclose(handle);
    }
    return {};
}

}  // namespace zmfb::transfer
