// What a program may not do with values: tests/support/refused.py compiles each case.
#include <string>
#include <string_view>

#include "host/text.h"
#include "host/value.h"

using zmfb::host::Value;

Value answer();

void refused() {
    Value kept = answer();
    const std::string_view text = kept.text();
    const std::string copy = answer().string();
    kept[1] = Value();
    const Value element = answer()[1];
    kept.writable_text()[0] = 'x';
    static_cast<void>(text);
    static_cast<void>(copy);
    static_cast<void>(element);

#if CASE == 1  // use of deleted function
    const Value from_null(nullptr);
#endif
#if CASE == 2  // use of deleted function
    kept = nullptr;
#endif
#if CASE == 3  // use of deleted function
    zmfb::host::upper(nullptr);
#endif
#if CASE == 4  // use of deleted function
    const std::string_view dangling = answer().text();
#endif
#if CASE == 5  // use of deleted function
    const std::string_view dangling = answer()[1].text();
#endif
#if CASE == 6  // use of deleted function
    for (const Value& item : answer().items()) static_cast<void>(item);
#endif
#if CASE == 7  // passing
    answer()[1] = Value();
#endif
#if CASE == 8  // passing
    answer() = kept;
#endif
#if CASE == 9  // passing
    answer().writable_text();
#endif
}
