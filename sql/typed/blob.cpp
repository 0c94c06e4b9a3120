#include "sql/typed/blob.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "sql/typed/failure.h"
#include "sql/typed/text.h"
#include "zmfbconn/transaction.h"

namespace zmfb {

namespace typed {

using sql::object_client;

namespace {

constexpr std::size_t segment_size = 32768;
constexpr ISC_STATUS end_of_blob = 100;
constexpr char text_subtype = 1;

// A parameter block that has the engine convert a text from one character set to another.
std::string conversion(unsigned from, unsigned to) {
    std::string block(1, char{isc_bpb_version1});
    const auto add = [&block](char item, char value) { block.append({item, 1, value}); };
    add(isc_bpb_source_type, text_subtype);
    add(isc_bpb_target_type, text_subtype);
    add(isc_bpb_source_interp, static_cast<char>(from));
    add(isc_bpb_target_interp, static_cast<char>(to));
    return block;
}

Firebird::IBlob* open(Work& work, ISC_QUAD id, const std::string& block) {
    Firebird::IBlob* blob = nullptr;
    check(object_client().open_blob(status(), work.session().attachment(), work.transaction(), &blob, &id,
                                    block));
    return blob;
}

// The answer is: the item, the size of its number in two bytes, and the number, low bytes first.
std::uint64_t length_of(Firebird::IBlob* blob) {
    constexpr std::array<char, 1> items = {isc_info_blob_total_length};
    std::array<char, 16> answer{};
    check(object_client().blob_info(status(), blob, items, answer));
    const auto byte = [&answer](std::size_t i) { return static_cast<unsigned char>(answer[i]); };
    std::uint64_t length = 0;
    const std::size_t bytes = std::min<std::size_t>(byte(1), sizeof length);
    for (std::size_t i = 0; i < bytes; ++i) length |= std::uint64_t{byte(3 + i)} << (8 * i);
    return length;
}

std::string reading_block(const Slot& slot) {
    return is_foreign(slot.script, slot.character_set) ? conversion(slot.character_set, utf8_character_set)
                                                       : "";
}

}  // namespace

Blob::Blob(std::shared_ptr<Work> work, ISC_QUAD id, const Slot& slot)
    : Dependent(std::move(work)), slot_(slot), id_(id), blob_(open(this->work(), id, reading_block(slot))) {}

Blob::Blob(std::shared_ptr<Work> work, unsigned character_set) : Dependent(std::move(work)), is_new_(true) {
    const std::string block = character_set == 0 ? "" : conversion(utf8_character_set, character_set);
    check(object_client().create_blob(status(), this->work().session().attachment(),
                                      this->work().transaction(), &blob_, &id_, block));
}

// A new one that was not made whole is not kept.
Blob::~Blob() {
    if (blob_ == nullptr) return;
    const ISC_STATUS code =
        is_new_ ? object_client().cancel_blob(status(), blob_) : object_client().close_blob(status(), blob_);
    if (code != 0) sql::ObjectClient::let_go(blob_);
}

void Blob::transaction_ended() noexcept {
    if (blob_ != nullptr) sql::ObjectClient::let_go(std::exchange(blob_, nullptr));
}

Firebird::IBlob* Blob::blob() const {
    work().check_active();
    if (blob_ == nullptr)
        refuse(not_current, "The blob was passed to a statement: nothing more can be written");
    return blob_;
}

// The engine tells another length of a blob that it converts.
std::uint64_t Blob::size() const {
    if (!is_foreign(slot_.script, slot_.character_set)) return length_of(blob());
    const Slot as_stored{.kind = slot_.kind, .script = Script::octets};
    return Blob(shared_work(), id_, as_stored).size();
}

std::string_view Blob::read(OddByte odd) {
    bytes_.resize(segment_size);
    unsigned got = 0;
    while (got == 0) {
        const ISC_STATUS code = object_client().get_segment(status(), blob(), bytes_, &got);
        if (code == end_of_blob) return {};
        check(code);
    }
    const std::string_view piece = std::string_view(bytes_).substr(0, got);
    const Encoding& encoding =
        slot_.script == Script::latin1 ? *Encoding::latin1() : work().session().encoding();
    const bool as_it_is = slot_.script != Script::latin1 && slot_.script != Script::database;
    if (as_it_is || encoding.is_utf8() || is_ascii(piece)) return piece;
    text_.clear();
    decode(piece, encoding, "the blob", odd, text_);
    return text_;
}

void Blob::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view segment = bytes.substr(0, segment_size);
        check(object_client().put_segment(status(), blob(), segment));
        bytes.remove_prefix(segment.size());
    }
}

WrittenBlob Blob::written() {
    if (blob_ != nullptr) {
        check(object_client().close_blob(status(), blob()));
        blob_ = nullptr;
    }
    return {std::bit_cast<std::uint64_t>(id_), &work()};
}

std::shared_ptr<Blob> open_blob(Cursor& cursor, std::size_t column) {
    const Slot& slot = cursor.slot(column);
    return std::make_shared<Blob>(cursor.statement().work(), cursor.load<ISC_QUAD>(slot.offset), slot);
}

}  // namespace typed

std::uint64_t BlobReader::size() const { return blob_ == nullptr ? 0 : blob_->size(); }

std::string_view BlobReader::read() { return blob_ == nullptr ? std::string_view() : blob_->read(); }

BlobWriter::BlobWriter(Transaction& transaction)
    : blob_(std::make_shared<typed::Blob>(transaction.work(), 0)) {}

void BlobWriter::write(std::string_view bytes) { blob_->write(bytes); }

void BlobWriter::write(std::span<const std::byte> bytes) {
    blob_->write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Parameter::Parameter(const BlobWriter& value) : content_(value.blob_->written()) {}

}  // namespace zmfb
