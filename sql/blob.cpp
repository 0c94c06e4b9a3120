#include "sql/blob.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "sql/state.h"

namespace zmfb::sql {

namespace {

constexpr std::size_t segment_size = 32768;

// A blob open for reading; closed when it goes out of scope.
class Blob {
  public:
    Blob(Transaction& transaction, ISC_QUAD id) {
        client().open_blob(status(), transaction.database(), transaction.handle(), &handle_, &id);
        opened_ = outcome();
    }
    Blob(const Blob&) = delete;
    Blob& operator=(const Blob&) = delete;
    ~Blob() {
        if (handle_ != isc_blob_handle()) client().close_blob(status(), &handle_);
    }

    /// How opening it ended.
    const Status& opened() const { return opened_; }

    // The answer is: the item, the size of its number in two bytes, and the number, low bytes first.
    Status read_size(std::size_t& size) {
        constexpr char item[] = {isc_info_blob_total_length};
        std::array<char, 16> answer{};
        client().blob_info(status(), &handle_, sizeof item, item, answer.size(), answer.data());
        if (Status done = outcome(); !done.ok()) return done;
        const auto byte = [&answer](std::size_t i) { return static_cast<unsigned char>(answer[i]); };
        size = 0;
        const std::size_t bytes = std::min<std::size_t>(byte(1), sizeof size);
        for (std::size_t i = 0; i < bytes; ++i) size |= std::size_t{byte(3 + i)} << (8 * i);
        return {};
    }

    Status read(std::string& text) {
        for (std::size_t have = 0;;) {
            text.resize(have + segment_size);
            unsigned short got = 0;
            const ISC_STATUS answer =
                client().get_segment(status(), &handle_, &got, segment_size, text.data() + have);
            have += got;
            text.resize(have);
            if (answer == isc_segstr_eof) return {};
            if (answer != 0 && answer != isc_segment) return outcome();
        }
    }

  private:
    static ISC_STATUS* status() { return state().status; }

    isc_blob_handle handle_{};
    Status opened_;
};

}  // namespace

Status describe_blob(Transaction& transaction, const ISC_QUAD& id, bool is_text, std::string& text) {
    Blob blob(transaction, id);
    std::size_t size = 0;
    Status done = blob.opened();
    if (done.ok()) done = blob.read_size(size);
    if (!done.ok()) return done;
    text.clear();
    if (is_text && size <= largest_text_blob) return blob.read(text);
    text = fmt::format("<blob {} bytes>", size);
    return {};
}

}  // namespace zmfb::sql
