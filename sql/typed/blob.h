/// Blobs that are read and written.
#pragma once

#include <ibase.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sql/typed/cursor.h"
#include "sql/typed/text.h"

namespace zmfb::typed {

class Blob final : public Dependent {
  public:
    /// Opens one for reading. Throws.
    Blob(std::shared_ptr<Work> work, ISC_QUAD id, const Slot& slot);
    /// A new one, whose text the engine converts from UTF-8 to a character set; 0 for none. Throws.
    Blob(std::shared_ptr<Work> work, unsigned character_set);
    ~Blob() override;

    [[nodiscard]] std::uint64_t size() const;
    /// As BlobReader::read().
    std::string_view read(OddByte odd = OddByte::is_thrown);
    void write(std::string_view bytes);
    /// Ends the writing, at the first call; the blob as a parameter.
    WrittenBlob written();
    void transaction_ended() noexcept override;

  private:
    /// Throws when it is of no more use.
    [[nodiscard]] Firebird::IBlob* blob() const;

    Slot slot_;
    bool is_new_ = false;
    ISC_QUAD id_{};
    Firebird::IBlob* blob_ = nullptr;
    std::string bytes_, text_;
};

/// The blob of a column of the current row, which is not NULL.
std::shared_ptr<Blob> open_blob(Cursor& cursor, std::size_t column);

}  // namespace zmfb::typed
