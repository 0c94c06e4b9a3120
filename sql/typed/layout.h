/// How values lie in the messages that go to the engine and come from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "sql/object_client.h"
#include "zmfbconn/transaction.h"

namespace zmfb::typed {

/// How the bytes of a text are to be read.
enum class Script : std::uint8_t {
    utf8,
    database,  ///< in the encoding of the database
    latin1,
    names,    ///< of the engine's own tables: UTF-8, or as the program gave them
    as_kept,  ///< not at all: they are left as they are
    octets,   ///< no text
};

/// The engine's number of UTF-8.
inline constexpr unsigned utf8_character_set = 4;

/// Whether the engine has to convert a text of that character set so that it can be read.
bool is_foreign(Script script, unsigned character_set);

/// Whether the engine writes out a value that is no text, since the client need not know its type.
bool is_written_out(unsigned type, SqlType kind);

/// One value in a message.
struct Slot {
    unsigned type = 0;  ///< SQL_VARYING and the like
    SqlType kind = SqlType::other;
    Script script = Script::database;
    int decimals = 0;
    unsigned length = 0;  ///< in bytes
    unsigned character_set = 0;
    unsigned offset = 0;
    unsigned null_offset = 0;
};

/// The bytes of one message, at an address that suits every type.
class Message {
  public:
    explicit Message(std::size_t size) : bytes_(new std::byte[size]()) {}
    [[nodiscard]] std::byte* data() const { return bytes_.get(); }

  private:
    std::unique_ptr<std::byte[]> bytes_;
};

/// The description of a message: as the engine gives it, but for texts of character sets that the engine is
/// to convert from and to UTF-8.
class Layout {
  public:
    /// Texts of parameters have no fixed length: one that is filled with blanks is another text for LIKE.
    enum class Of { rows, parameters };

    /// Takes the description over. Throws.
    Layout(Firebird::IMessageMetadata* described, Of what, TextForm form, std::string_view statement);

    [[nodiscard]] Firebird::IMessageMetadata* metadata() const { return metadata_.get(); }
    [[nodiscard]] const std::vector<Slot>& slots() const { return slots_; }
    [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }
    [[nodiscard]] std::size_t size() const { return size_; }

  private:
    void describe(std::vector<sql::MessageItem>& items, std::string_view statement);

    sql::Held<Firebird::IMessageMetadata> metadata_;
    unsigned size_ = 0;
    std::vector<Slot> slots_;
    std::vector<Column> columns_;
};

}  // namespace zmfb::typed
