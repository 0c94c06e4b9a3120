#include "conn/methods.h"
#include "host/compare.h"
#include "host/file.h"
#include "host/number.h"
#include "host/text.h"
#include "host/workarea.h"
#include "rdd/serve_areas.h"

namespace zmfb::conn {

namespace {

constexpr std::string_view driver_name = "ZMRDDFIRE";
constexpr int default_skip_mode = 1;
constexpr int highest_skip_mode = 2;
constexpr int default_skip_cache_size = 11;

}  // namespace

Value savepreviousrdd(Self& self, Args) {
    var(self, Var::previousrd) = host::rddsetdefault();
    host::rddsetdefault(driver_name);
    rdd::serve_areas(self);
    return {};
}

Value restorepreviousrdd(Self& self, Args) {
    host::rddsetdefault(var(self, Var::previousrd));
    return {};
}

Value setibrdd(Self& self, Args) {
    if (!ask(self, "isconnected")) return false;
    host::rddsetdefault(driver_name);
    rdd::serve_areas(self);
    return true;
}

Value setrddactive(Self& self, Args args) {
    var(self, Var::brddativo) = args[0];
    return {};
}

Value isrddactive(Self& self, Args) { return var(self, Var::brddativo); }

Value isfirebirdarea(Self&, Args args) {
    const Value area = host::dbobject(args[0]);
    if (area.object() == nullptr) return false;
    return host::exactly_equal(host::upper(area.object()->get("rddname")), driver_name);
}

Value setfullpathdatfile(Self& self, Args args) {
    const Value& fullpath = args[0];
    const bool kept = fullpath.is(host::Kind::character) && !host::empty(fullpath);
    return var(self, Var::sfullpathd) = kept ? fullpath : host::tempfilename("/tmp", "zmrdd") + ".dat";
}

Value getfullpathdatfile(Self& self, Args) { return var(self, Var::sfullpathd); }

// Unlike a cache size, a mode of 0 is a valid one. What is no number is no valid one of either.
Value setglbskipmode(Self& self, Args args) {
    const Value& vl = args[0];
    const bool kept = vl.is(host::Kind::numeric) && vl.number() >= 0 && vl.number() <= highest_skip_mode;
    Value& mode = var(self, Var::iglbskmode) = kept ? vl : Value(default_skip_mode);
    call(self, "writelog",
         "[SET] Global SkipMode now is: " + host::alltrim(host::str(mode)) +
             " for: " + var(self, Var::sdbname),
         6);
    return {};
}

Value getglbskipmode(Self& self, Args) { return var(self, Var::iglbskmode); }

Value setglbskipcachesize(Self& self, Args args) {
    const Value& sz = args[0];
    const bool kept = sz.is(host::Kind::numeric) && sz.number() > 0;
    Value& size = var(self, Var::iglbskchsz) = kept ? sz : Value(default_skip_cache_size);
    call(self, "writelog",
         "[SET] Global SkipCacheSize now is: " + host::alltrim(host::str(size)) +
             " for: " + var(self, Var::sdbname),
         6);
    return {};
}

Value getglbskipcachesize(Self& self, Args) { return var(self, Var::iglbskchsz); }

}  // namespace zmfb::conn
