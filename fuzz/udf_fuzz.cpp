// The functions that the engine loads, called as the engine calls them.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "fuzz/fuzz.h"
#include "zmrddudfs.h"

namespace zmfb::fuzz {
namespace {

using Text = std::optional<std::string>;

// Outside the engine ib_util_malloc is malloc.
Text take(char* text) {
    if (text == nullptr) return std::nullopt;
    Text taken = text;
    std::free(text);
    require(taken->size() <= ZMRDDUDFS_TEXT_MAX, "no text is longer than declared");
    return taken;
}

std::string cut(std::string_view text) { return std::string(text.substr(0, ZMRDDUDFS_TEXT_MAX)); }

std::string trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    return std::string(text.substr(first, text.find_last_not_of(' ') + 1 - first));
}

// The piece that a start and a length mean, in numbers that do not overflow.
std::string piece(const std::string& text, long long start, long long length) {
    const auto size = static_cast<long long>(text.size());
    long long before = start > 0 ? start - 1 : start == 0 ? 0 : std::max(size + start, 0LL);
    before = std::min(before, size);
    length = std::clamp(length, 0LL, size - before);
    return text.substr(static_cast<std::size_t>(before), static_cast<std::size_t>(length));
}

void check_texts(const std::string& text, const ISC_LONG* start, const ISC_LONG* length) {
    const char* const given = text.c_str();
    const std::string known = cut(text);
    require(take(zmtrim(given)) == trimmed(known), "zmtrim takes the outer blanks");
    const Text lower = take(zmlower(given)), upper = take(zmupper(given));
    require(lower->size() == known.size() && upper->size() == known.size(), "letters keep their number");
    require(take(zmlower(upper->c_str())) == take(zmlower(lower->c_str())), "cases are two of each letter");
    const long long from = start == nullptr ? 0 : *start, count = length == nullptr ? 0 : *length;
    require(take(zmsubstr(given, start, length)) == piece(known, from, count), "zmsubstr gives the piece");
    const auto width = static_cast<std::size_t>(std::clamp<long long>(count, 0, ZMRDDUDFS_TEXT_MAX));
    const std::string kept = known.substr(0, width);
    const std::string blanks(width - kept.size(), ' ');
    require(take(zmpadr(given, length)) == kept + blanks, "zmpadr fills up on the right");
    require(take(zmpadl(given, length)) == blanks + kept, "zmpadl fills up on the left");
}

bool is_day(std::string_view text) {
    return text.size() == ZMRDDUDFS_DATE_LENGTH &&
           (text.find_first_not_of("0123456789") == text.npos || text.find_first_not_of(' ') == text.npos);
}

void check_dates(const std::string& text, const ISC_TIMESTAMP& stamp) {
    require(is_day(*take(zmdtos(&stamp))), "zmdtos gives a day or blanks");
    const Text skipped = take(skippad(text.c_str()));
    require(skipped == cut(text) || (text.starts_with("{{D}}") && is_day(*skipped)),
            "skippad gives a day or the text as it is");
}

void check_number(double number, const ISC_LONG* length, const ISC_LONG* decimals) {
    const Text text = take(zmstr(&number, length, decimals)),
               zeros = take(zmstrzero(&number, length, decimals));
    const long long asked = length == nullptr ? 0 : *length;
    const auto width =
        static_cast<std::size_t>(asked < 1 ? 10 : std::min<long long>(asked, ZMRDDUDFS_NUMBER_MAX));
    require(text->size() == width && zeros->size() == width, "a number fills its columns");
    if (text->find_first_not_of('*') == std::string::npos) return;
    require(zeros->find(' ') == std::string::npos, "zmstrzero leaves no blank");
    const double shown = std::strtod(text->c_str(), nullptr);
    const long long places = decimals == nullptr ? 0 : std::clamp<long long>(*decimals, 0, 20);
    const double off = 0.5000001 * std::pow(10.0, -static_cast<double>(places)) + std::fabs(number) * 1e-14;
    require(std::fabs(shown - number) <= off, "a number is shown rounded");
    require(std::strtod(zeros->c_str(), nullptr) == shown, "zeros change no number");
}

// A blob that hands out its segments as the input says, lies about their sizes and about its own.
struct InventedBlob {
    explicit InventedBlob(Input& from) : input(from) {}
    Input& input;
    int left = 16;
};

short get_segment(void* handle, ISC_UCHAR* buffer, ISC_USHORT size, ISC_USHORT* got) {
    auto& blob = *static_cast<InventedBlob*>(handle);
    const std::string_view given = blob.input.bytes(std::min<std::size_t>(blob.input.byte(), size));
    std::memset(buffer, '?', size);  // what a lie lays open
    std::memcpy(buffer, given.data(), given.size());
    const bool lies = blob.input.below(8) == 0;
    *got = lies ? blob.input.number<ISC_USHORT>() : static_cast<ISC_USHORT>(given.size());
    if (--blob.left <= 0 || blob.input.at_end()) return blb_got_eof;
    return blob.input.flag() ? blb_got_fragment : blb_got_full_segment;
}

void check_blob(Input& input, const ISC_LONG* start, const ISC_LONG* length) {
    blobcallback callback{};
    callback.blob_get_segment = get_segment;
    callback.blob_total_length = input.number<ISC_LONG>();
    InventedBlob blob(input);
    callback.blob_handle = input.below(8) == 0 ? nullptr : &blob;
    const Text text = take(zmblobsubstr(&callback, start, length));
    require(text.has_value() == (callback.blob_handle != nullptr), "a blob without a handle is NULL");
    const long long asked = length == nullptr ? 0 : *length;
    require(!text || static_cast<long long>(text->size()) <= std::max(asked, 0LL), "no more than asked for");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::uint8_t given = input.byte();
    const auto small = [&]() -> ISC_LONG { return input.number<std::int16_t>(); };
    const ISC_LONG first = (given & 1) != 0 ? input.number<ISC_LONG>() : small();
    const ISC_LONG second = (given & 2) != 0 ? input.number<ISC_LONG>() : small();
    const ISC_LONG* const start = (given & 4) != 0 ? nullptr : &first;
    const ISC_LONG* const length = (given & 8) != 0 ? nullptr : &second;
    check_number((given & 16) != 0 ? input.number<double>() : first / 1000.0, start, length);
    // A text of the engine ends at its zero byte.
    const auto ended = [](std::string_view bytes) { return std::string(bytes.substr(0, bytes.find('\0'))); };
    check_dates("{{D}}" + ended(input.text()), {first, static_cast<ISC_TIME>(second)});
    const std::size_t blob_size = input.byte();
    const std::string_view segments = input.bytes(blob_size * 8);
    Input blob(reinterpret_cast<const std::uint8_t*>(segments.data()), segments.size());
    check_blob(blob, start, length);
    std::string text = ended(input.rest());
    for (int doubled = given >> 5; doubled > 0; --doubled) text += text;
    check_texts(text, start, length);
    check_dates(text, {second, static_cast<ISC_TIME>(first)});
}
