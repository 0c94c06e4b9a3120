/// What work areas throw beside SqlError.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace zmfb {

/// Who has a table or a record.
struct Holder {
    /// Takes an area's id apart, whose name may hold colons.
    explicit Holder(std::string_view area_id);
    /// "DESK, process 4242 on host1"; the id when it is none.
    [[nodiscard]] std::string words() const;

    std::string id;       ///< as it stands in the system tables
    std::string table;    ///< upper case; "" when the id is none
    std::string area;     ///< what its program calls it, or what cannot be told apart
    std::string process;  ///< its number; "" when it was cut off, or the id is none
    std::string host;     ///< its name, cut when it is long
};

/// Another work area has the table or the record, and did not give it back within the time.
class InUse : public std::runtime_error {
  public:
    /// `what` is had by `holder`.
    InUse(std::string_view what, Holder holder);
    /// Who has it.
    [[nodiscard]] const Holder& holder() const noexcept { return holder_; }

  private:
    Holder holder_;
};

/// Something that a program may not do with a work area as it is.
class AreaError : public std::runtime_error {
  public:
    /// What is wrong.
    enum class Reason : std::uint8_t {
        closed,         ///< the area is closed, or was moved elsewhere
        no_table,       ///< the table is none of the driver's layout
        no_field,       ///< there is no field of that name, or it is one of another area
        no_record,      ///< there is no current record
        gone,           ///< the record was deleted meanwhile
        wrong_type,     ///< the field does not hold that type, or not that value
        is_null,        ///< NULL where std::optional was not asked for
        read_only,      ///< the area is open to read
        not_locked,     ///< neither the record nor the table is locked, and the area is not exclusive
        not_exclusive,  ///< only an exclusive area may do that
        unwritten,      ///< values were assigned and not written
        no_order,       ///< there is no such order, or it cannot be one; the key is none of it
        together,       ///< writes are held together already, or no longer
        refused,        ///< the database did not take a lock or a registration; what() has why
    };

    /// One for that reason, told in `message`.
    AreaError(Reason reason, const std::string& message) : std::runtime_error(message), reason_(reason) {}
    /// See Reason.
    [[nodiscard]] Reason reason() const noexcept { return reason_; }

  private:
    Reason reason_;
};

}  // namespace zmfb

#pragma GCC visibility pop
