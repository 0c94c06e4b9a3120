/// Database drivers: what serves a work area.
///
/// A program brings a driver of its own in by deriving from Driver and Table and registering the driver under
/// a name; from then on DBUSEAREA and DBCREATE find it under that name, whatever the letter case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// A column of a table: type "C", "N", "D", "L", or what the driver knows besides.
struct Field {
    std::string name;  ///< upper case
    char type = 'C';   ///< one letter
    int length = 0;    ///< columns
    int decimals = 0;  ///< of those behind the point
    /// Whether all four are the same.
    bool operator==(const Field&) const = default;
};

/// An open table and its current record. Behind the last record, and in an empty table, eof() holds and the
/// fields read as empty values.
///
/// What fails is raised as a runtime error first; the operation answers false when the error handler returns.
class Table {
  public:
    Table() = default;
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
    /// Closes without a report what close() has not closed.
    virtual ~Table() = default;

    /// Its columns, in order; the span lives as long as the table.
    [[nodiscard]] virtual std::span<const Field> fields() const = 0;
    /// RECCOUNT().
    [[nodiscard]] virtual std::int64_t record_count() = 0;
    /// RECNO(): from 1; at the end of the table the number of records and one more.
    [[nodiscard]] virtual std::int64_t record_number() const = 0;
    /// BOF(): whether a skip went to before the first record; also in an empty table, from its opening on.
    [[nodiscard]] virtual bool bof() const = 0;
    /// EOF(): whether there is no current record, behind the last one.
    [[nodiscard]] virtual bool eof() const = 0;

    /// To the first record; to the end of an empty table.
    virtual bool go_top() = 0;
    /// To a record by its number; to the end of the table when there is none of that number.
    virtual bool go_to(std::int64_t record) = 0;
    /// Forward by `count` records, or back when it is negative; not beyond the ends.
    virtual bool skip(std::int64_t count) = 0;

    /// DELETED(): whether the current record is marked as deleted.
    [[nodiscard]] virtual bool deleted() = 0;
    /// Marks the current record as deleted, or takes the mark away.
    virtual bool set_deleted(bool deleted) = 0;
    /// The value of field `index`, counted from 0; NIL when there is none.
    [[nodiscard]] virtual Value get(std::size_t index) = 0;
    /// Stores a value in field `index`, counted from 0; false, and raised, when it does not fit there.
    virtual bool put(std::size_t index, const Value& value) = 0;
    /// Stores the columns of a text file in a field: C as they are, N their leading number, D as YYYYMMDD, L
    /// .T. for T, t, Y and y. The digits of a number are kept as written, as far as the field holds them, if
    /// the driver can.
    virtual bool put_columns(std::size_t index, std::string_view columns);

    /// Adds an empty record and makes it the current one.
    virtual bool append() = 0;
    /// Takes the record back that append() added last. A driver that cannot marks it deleted.
    virtual bool take_back() { return set_deleted(true); }
    /// Hands everything on to the file or the database.
    virtual bool commit() = 0;
    /// Ends the use of the table; the work area calls it once.
    virtual bool close() = 0;
};

/// What DBUSEAREA asks a driver for.
struct OpenRequest {
    std::string_view file;   ///< the name as it was given
    std::string_view alias;  ///< upper case
    bool shared = false;     ///< whether others may open it meanwhile
    bool readonly = false;   ///< whether nothing will be written
};

/// Opens and creates tables of one kind; known to the runtime by the name that register_driver() gave it.
class Driver {
  public:
    Driver() = default;
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;
    virtual ~Driver() = default;

    /// Opens a table, at its first record. Raises what fails and returns null then; sets neterr() when
    /// another use of the table is in the way.
    virtual std::unique_ptr<Table> open(const OpenRequest& request) = 0;
    /// Creates an empty table, in place of one that exists. Raises what fails and returns false then; so does
    /// a driver that creates none.
    virtual bool create(std::string_view file, std::span<const Field> structure);
};

/// Makes `driver` known under `name`, upper-cased, in place of one that has this name already; tables open
/// through that one stay open. Null takes the name away. "DBFIDX", the native
/// driver of DBF files, is there from the start.
void register_driver(std::string_view name, std::shared_ptr<Driver> driver);
/// The driver of that name, null when there is none.
std::shared_ptr<Driver> find_driver(std::string_view name);

}  // namespace zmfb::host

#pragma GCC visibility pop
