/// Blobs as streams, for contents that need not be in memory at once. Those that may be are read and written
/// as std::string and zmfb::Bytes like any other value.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "sql_value.h"

/// What is behind the public classes; their members are the library's own.
namespace zmfb::typed {
class Blob;
}  // namespace zmfb::typed

#pragma GCC visibility push(default)

namespace zmfb {

class Transaction;

/// The content of a blob of a row, piece by piece: `row["photo"].as<BlobReader>()`. It can be read after its
/// row, until its transaction ends; from then on, reading throws.
class BlobReader {
  public:
    /// Nothing to read.
    BlobReader() = default;
    /// Of the library's own.
    explicit BlobReader(std::shared_ptr<typed::Blob> blob) : blob_(std::move(blob)) {}

    /// Bytes in the database.
    [[nodiscard]] std::uint64_t size() const;
    /// The next piece, at most 64 KB; "" when there is no more. A text blob's is UTF-8, where a character may
    /// begin in one piece and end in the next. The view lives until the next call.
    std::string_view read();

  private:
    std::shared_ptr<typed::Blob> blob_;
};

/// A new blob, to be written piece by piece and then passed as a parameter of a statement of the same
/// transaction. One that is never passed goes with its transaction.
class BlobWriter {
  public:
    /// An empty one.
    explicit BlobWriter(Transaction& transaction);

    /// @{
    /// The bytes as they are; for a text blob, those that the column is to have.
    void write(std::string_view bytes);
    void write(std::span<const std::byte> bytes);
    /// @}

  private:
    friend class Parameter;
    std::shared_ptr<typed::Blob> blob_;
};

}  // namespace zmfb

#pragma GCC visibility pop
