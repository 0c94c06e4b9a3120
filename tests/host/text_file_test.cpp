// FREADTXT, alone and between the other operations on the same handle.
#include "folder.h"
#include "host/file.h"
#include "tests/support/heap.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::is_same;
using namespace std::string_view_literals;

class TextFile : public host_test::FolderTest {
  protected:
    // The lines of a file of this content, and a mark where the end was reported.
    std::vector<std::string> lines_of(std::string_view content) const {
        const Value handle = fopen(write_file("lines", content));
        std::vector<std::string> lines;
        for (;;) {
            const Value line = freadtxt(handle);
            if (!ferror().same(0)) {
                EXPECT_TRUE(is_same(line, ""));
                EXPECT_TRUE(is_same(ferror(), 38));
                break;
            }
            lines.emplace_back(line.text());
        }
        freadtxt(handle);
        EXPECT_TRUE(is_same(ferror(), 38)) << "the end is reported again";
        fclose(handle);
        return lines;
    }
};

TEST_F(TextFile, LinesComeWithoutTheirEnds) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(lines_of("one\ntwo\n"), (Lines{"one", "two"}));
    EXPECT_EQ(lines_of("one\r\ntwo\r\n"), (Lines{"one", "two"}));
    EXPECT_EQ(lines_of("one\n\n\r\ntwo"), (Lines{"one", "", "", "two"}));
    EXPECT_EQ(lines_of(""), Lines{});
    EXPECT_EQ(lines_of("\n"), (Lines{""}));
    EXPECT_EQ(lines_of("a\rb\r\r\nlast\r"), (Lines{"a\rb\r", "last\r"}));
    EXPECT_EQ(lines_of("a\0b\x1A\nc"sv), (Lines{std::string("a\0b\x1A"sv), "c"}));
}

TEST_F(TextFile, LinesMayBeLongerThanAnyBlock) {
    const std::string longest(300000, 'x');
    EXPECT_EQ(lines_of("short\n" + longest + "\r\n" + longest),
              (std::vector<std::string>{"short", longest, longest}));
    // A line end on either side of the border between two blocks.
    for (const std::size_t size : {65534, 65535, 65536, 65537}) {
        const std::string line(size, 'y');
        EXPECT_EQ(lines_of(line + "\r\nend\n"), (std::vector<std::string>{line, "end"})) << size;
    }
}

TEST_F(TextFile, AFileThatStaysOpenBehindItsEndKeepsNoMemoryForIt) {
    const std::string path = write_file("many", std::string(200000, '\n'));
    const Value handle = fopen(path);
    const std::size_t before = test::heap_in_use();
    while (ferror().same(0)) freadtxt(handle);
    EXPECT_LT(test::heap_in_use(), before + 4096);
    fclose(handle);
}

TEST_F(TextFile, ThePositionIsBehindTheLineThatWasRead) {
    const Value handle = fopen(write_file("a", "one\r\ntwo\nthree"), 2);
    freadtxt(handle);
    EXPECT_TRUE(is_same(fseek(handle, 0, 1), 5));
    EXPECT_TRUE(is_same(freadtxt(handle), "two"));
    EXPECT_TRUE(is_same(fseek(handle, -4, 1), 5));
    EXPECT_TRUE(is_same(freadtxt(handle), "two"));
    EXPECT_TRUE(is_same(fseek(handle, 1), 1));
    EXPECT_TRUE(is_same(freadtxt(handle), "ne"));
    fseek(handle, 0, 2);
    EXPECT_TRUE(is_same(freadtxt(handle), ""));
    EXPECT_TRUE(is_same(ferror(), 38));
    fclose(handle);
}

TEST_F(TextFile, ReadingBytesGoesOnWhereTheLineEnded) {
    const Value handle = fopen(write_file("a", "one\ntwo\nthree\n" + std::string(100000, 'z')));
    freadtxt(handle);
    Value buffer = "..........";
    EXPECT_TRUE(is_same(fread(handle, buffer, 2), 2));
    EXPECT_TRUE(is_same(buffer, "tw........"));
    EXPECT_TRUE(is_same(freadtxt(handle), "o"));
    Value large = Value::text_of_size(90000);
    EXPECT_TRUE(is_same(fread(handle, large, 90000), 90000));
    EXPECT_EQ(large.text().substr(0, 7), "three\nz");
    EXPECT_TRUE(is_same(freadtxt(handle), std::string(100000 - 90000 + 6, 'z')));
    fclose(handle);
}

TEST_F(TextFile, WritingGoesOnWhereTheLineEnded) {
    const Value handle = fopen(write_file("a", "one\ntwo\nthree\n"), 2);
    freadtxt(handle);
    fwrite(handle, "TWO");
    EXPECT_TRUE(is_same(freadtxt(handle), ""));
    EXPECT_TRUE(is_same(freadtxt(handle), "three"));
    fseek(handle, 4);
    freadtxt(handle);
    fwrite(handle, "");
    EXPECT_EQ(content(path("a")), "one\nTWO\n");
    fclose(handle);
}

TEST_F(TextFile, WhatWasAppendedAfterTheEndIsRead) {
    write_file("a", "one\n");
    const Value reader = fopen(path("a"));
    const Value writer = fopen(path("a"), 1);
    freadtxt(reader);
    freadtxt(reader);
    EXPECT_TRUE(is_same(ferror(), 38));
    fseek(writer, 0, 2);
    fwrite(writer, "two\n");
    EXPECT_TRUE(is_same(freadtxt(reader), "two"));
    fclose(reader);
    fclose(writer);
}

}  // namespace
}  // namespace zmfb::host
