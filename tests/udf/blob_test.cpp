#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <string_view>
#include <vector>

#include "result.h"

namespace zmfb::test {
namespace {

constexpr ISC_LONG lowest = std::numeric_limits<ISC_LONG>::min();
constexpr ISC_LONG highest = std::numeric_limits<ISC_LONG>::max();

/** A blob as the engine hands it to a function: segments, read in fragments of at most the buffer's size. */
class fake_blob {
  public:
    explicit fake_blob(std::vector<std::string> segments) : segments_(std::move(segments)) {
        const auto add = [](size_t sum, const std::string& segment) { return sum + segment.size(); };
        callback_.blob_get_segment = get_segment;
        callback_.blob_handle = this;
        callback_.blob_number_segments = static_cast<ISC_LONG>(segments_.size());
        callback_.blob_total_length =
            static_cast<ISC_LONG>(std::accumulate(segments_.begin(), segments_.end(), size_t{0}, add));
    }

    blobcallback& callback() { return callback_; }
    size_t reads() const { return reads_; }

  private:
    static short get_segment(void* handle, ISC_UCHAR* buffer, ISC_USHORT size, ISC_USHORT* length) {
        auto& blob = *static_cast<fake_blob*>(handle);
        ++blob.reads_;
        *length = 0;
        if (blob.segment_ == blob.segments_.size()) return blb_got_eof;
        const std::string& segment = blob.segments_[blob.segment_];
        const size_t count = std::min<size_t>(size, segment.size() - blob.offset_);
        std::copy_n(segment.data() + blob.offset_, count, buffer);
        *length = static_cast<ISC_USHORT>(count);
        blob.offset_ += count;
        if (blob.offset_ < segment.size()) return blb_got_fragment;
        ++blob.segment_;
        blob.offset_ = 0;
        return blb_got_full_segment;
    }

    std::vector<std::string> segments_;
    size_t segment_ = 0;
    size_t offset_ = 0;
    size_t reads_ = 0;
    blobcallback callback_{};
};

std::string digits(size_t count) {
    std::string text(count, '0');
    for (size_t i = 0; i < count; ++i) text[i] = static_cast<char>('0' + i % 10);
    return text;
}

struct blob_case {
    std::string_view name;
    std::vector<std::string> segments;
    integer start;
    integer length;
    std::string expected;
};

class BlobSubstr : public testing::TestWithParam<blob_case> {};

TEST_P(BlobSubstr, Gives) {
    const auto& given = GetParam();
    fake_blob blob(given.segments);
    EXPECT_EQ(take(zmblobsubstr(&blob.callback(), pointer(given.start), pointer(given.length))),
              given.expected);
}

const blob_case blob_cases[] = {
    {"WholeDescription", {"Created by ZMRDDFIRE"}, 1, 255, "Created by ZMRDDFIRE"},
    {"PieceOfOneSegment", {"abcdef"}, 2, 3, "bcd"},
    {"PieceOverSeveralSegments", {"ab", "cd", "ef"}, 2, 4, "bcde"},
    {"AllSegments", {"ab", "cd", "ef"}, 1, 255, "abcdef"},
    {"StartInALaterSegment", {"ab", "cd", "ef"}, 5, 2, "ef"},
    {"StartAtASegmentsBeginning", {"ab", "cd"}, 3, 1, "c"},
    {"EmptySegmentsBetween", {"ab", "", "cd", ""}, 2, 10, "bcd"},
    {"CutAt255", {digits(300)}, 1, 255, digits(255)},
    {"CutAt255OverSegments", {digits(200), digits(100)}, 1, 255, digits(200) + digits(55)},
    {"SegmentLongerThanAnyBuffer", {digits(70000)}, 65001, 12, "012345678901"},
    {"FarSegment", {digits(30000), digits(30000), "end"}, 60001, 10, "end"},
    {"StartBehindTheEnd", {"abc"}, 4, 10, ""},
    {"HighestStart", {"abc"}, highest, highest, ""},
    {"StartZeroCountsAsOne", {"abc"}, 0, 2, "ab"},
    {"NullStartCountsAsOne", {"abc"}, std::nullopt, 2, "ab"},
    {"NegativeStartCountsFromTheEnd", {"abc", "def"}, -4, 3, "cde"},
    {"LowestStart", {"abc"}, lowest, 2, "ab"},
    {"LengthZero", {"abc"}, 1, 0, ""},
    {"NegativeLength", {"abc"}, 1, -5, ""},
    {"LowestLength", {"abc"}, 1, lowest, ""},
    {"NullLength", {"abc"}, 1, std::nullopt, ""},
    {"LengthAboveTheLimit", {digits(9000)}, 1, highest, digits(ZMRDDUDFS_TEXT_MAX)},
    {"EmptyBlob", {}, 1, 255, ""},
    {"BlobOfOneEmptySegment", {""}, 1, 255, ""},
    {"EmptyBlobFromTheEnd", {}, -1, 255, ""},
    {"TextEndsAtAZeroByte", {std::string("ab\0cd", 5)}, 1, 255, "ab"},
};

INSTANTIATE_TEST_SUITE_P(Udf, BlobSubstr, testing::ValuesIn(blob_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(BlobUdf, NullBlobGivesNull) {
    const ISC_LONG start = 1;
    const ISC_LONG length = 255;
    fake_blob blob({"abc"});
    blob.callback().blob_handle = nullptr;
    EXPECT_EQ(take(zmblobsubstr(&blob.callback(), &start, &length)), sql_null);
    EXPECT_EQ(take(zmblobsubstr(nullptr, &start, &length)), sql_null);
    EXPECT_EQ(blob.reads(), 0U);
}

TEST(BlobUdf, ReadsNoFurtherThanThePieceNeeds) {
    const ISC_LONG start = 2;
    const ISC_LONG length = 3;
    fake_blob blob({"ab", "cd", "ef", "gh"});
    EXPECT_EQ(take(zmblobsubstr(&blob.callback(), &start, &length)), "bcd");
    EXPECT_EQ(blob.reads(), 2U);
}

TEST(BlobUdf, BytesReportedTogetherWithTheEndCount) {
    const ISC_LONG start = 1;
    const ISC_LONG length = 255;
    const auto all_at_once = [](void*, ISC_UCHAR* buffer, ISC_USHORT, ISC_USHORT* count) -> short {
        std::copy_n("abc", 3, buffer);
        *count = 3;
        return blb_got_eof;
    };
    fake_blob blob({"abc"});
    blob.callback().blob_get_segment = all_at_once;
    EXPECT_EQ(take(zmblobsubstr(&blob.callback(), &start, &length)), "abc");
}

TEST(BlobUdf, NegativeTotalLengthCountsAsEmpty) {
    const ISC_LONG start = -2;
    const ISC_LONG length = 255;
    fake_blob blob({"abc"});
    blob.callback().blob_total_length = -1;
    EXPECT_EQ(take(zmblobsubstr(&blob.callback(), &start, &length)), "abc");
}

}  // namespace
}  // namespace zmfb::test
