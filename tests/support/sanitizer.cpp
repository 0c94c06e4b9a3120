// What LeakSanitizer is to pass over, in a build that has it: memory that the engine and the libraries it
// loads keep until the process ends, and ncurses for a terminal of a kind that it does not know. Nothing of
// ours allocates through them without giving back: our own frames come first then.
extern "C" {
[[gnu::visibility("default")]] const char* __lsan_default_suppressions();
[[gnu::visibility("default")]] const char* __lsan_default_options();
}

const char* __lsan_default_suppressions() {
    return "leak:libEngine12\n"
           "leak:libfbclient\n"
           "leak:libfbintl\n"
           "leak:libicu\n"
           "leak:libtommath\n"
           "leak:__gconv_lookup_cache\n"
           "leak:new_prescr\n";
}

// The engine is loaded and unloaded again, which LeakSanitizer's look into thread-local memory does not
// survive.
const char* __lsan_default_options() { return "use_tls=0:print_suppressions=0"; }
