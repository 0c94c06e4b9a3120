// What holds of every file that is written.
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "write_and_read.h"
#include "written.h"

namespace zmfb::dbf_test {
namespace {

// Choices that are made at random.
struct Random {
    static std::size_t below(std::size_t limit) { return *rc::gen::inRange<std::size_t>(0, limit); }
    static bool flag() { return *rc::gen::arbitrary<bool>(); }
    template <class T>
    static T number() {
        return *rc::gen::arbitrary<T>();
    }
    // UTF-8 mostly, blanks and what ends a memo or a text among it, and bytes that are none.
    static std::string text() {
        static const std::vector<std::string> pieces{"a", "Z",  " ",    "ä",    "ß",
                                                     "€", "は", "\x1A", "\xC3", std::string(1, '\0')};
        std::string made;
        for (const auto& piece : *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(pieces)))
            made += piece;
        return made;
    }
};

RC_GTEST_PROP(DbfWriterProperties, WhatIsWrittenIsReadAndWhatIsRefusedIsNamed, ()) {
    const Folder folder;
    Random source;
    WriteAndRead(source, folder.file("t.dbf"), [](bool holds, std::string_view what) {
        if (!holds) RC_FAIL(std::string(what));
    }).run();
}

}  // namespace
}  // namespace zmfb::dbf_test
