/// Database drivers: what serves a work area.
///
/// A program brings a driver of its own in by deriving from Driver and Table and registering the driver under
/// a name; from then on DBUSEAREA and DBCREATE find it under that name, whatever the letter case.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

/// One of the orders that a table can be walked in.
struct TableOrder {
    std::string name;        ///< upper case
    std::string expression;  ///< of its key, as the program wrote it
    /// Whether both are the same.
    bool operator==(const TableOrder&) const = default;
};

/// What DBSEEK() does besides looking for a record with the key.
struct SeekOptions {
    bool soft = false;  ///< without one: to the next record in the order, else to the end
    bool last = false;  ///< to the last one with the key, else to the first
};

/// An open table and its current record. Behind the last record, and in an empty table, eof() holds and the
/// fields read as empty values.
///
/// What fails is raised as a runtime error first; the operation answers false when the error handler returns.
/// What has a default here raises "unsupported" by it, where nothing else is said.
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
    /// LASTREC(): the highest number of a record; by default there are as many records.
    [[nodiscard]] virtual std::int64_t last_record() { return record_count(); }
    /// RECNO(): from 1; at the end of the table the highest number, as it was then, and one more.
    [[nodiscard]] virtual std::int64_t record_number() const = 0;
    /// BOF(): whether a skip went to before the first record; also in an empty table, from its opening on.
    [[nodiscard]] virtual bool bof() const = 0;
    /// EOF(): whether there is no current record, behind the last one.
    [[nodiscard]] virtual bool eof() const = 0;

    /// To the first record; to the end of an empty table.
    virtual bool go_top() = 0;
    /// To the last record, to the end of an empty table; by default the one whose number is
    /// last_record().
    virtual bool go_bottom() { return go_to(last_record()); }
    /// To a record by its number; to the end of the table when there is none of that number.
    virtual bool go_to(std::int64_t record) = 0;
    /// Forward by `count` records, or back when it is negative; not beyond the ends. By 0: reads the record
    /// anew.
    virtual bool skip(std::int64_t count) = 0;
    /// Whether set_filter() takes conditions; by default not.
    [[nodiscard]] virtual bool takes_conditions() const { return false; }
    /// From here on the moves meet only the records that fulfil `condition`, a text in the database's
    /// language; "" lets them meet all again, which is all that the default does.
    virtual bool set_filter(std::string_view condition);

    /// DELETED(): whether the current record is marked as deleted.
    [[nodiscard]] virtual bool deleted() = 0;
    /// Marks the current record as deleted, or takes the mark away. In shared use this and put() need its
    /// lock, or the table's; one that is missing is raised (gencode unlocked).
    virtual bool set_deleted(bool deleted) = 0;
    /// The value of field `index`, counted from 0; NIL when there is none.
    [[nodiscard]] virtual Value get(std::size_t index) = 0;
    /// Stores a value in field `index`, counted from 0; false, and raised, when it does not fit there.
    virtual bool put(std::size_t index, const Value& value) = 0;
    /// Stores the columns of a text file in a field: C as they are, N their leading number, D as YYYYMMDD, L
    /// .T. for T, t, Y and y. The digits of a number are kept as written, as far as the field holds them, if
    /// the driver can.
    virtual bool put_columns(std::size_t index, std::string_view columns);

    /// Adds an empty record and makes it the current one; in shared use its lock is held then, besides
    /// others. Sets neterr() when another use of the table is in the way.
    virtual bool append() = 0;
    /// Takes the record back that append() added last. A driver that cannot marks it deleted.
    virtual bool take_back() { return set_deleted(true); }
    /// Removes all records; needs exclusive use.
    virtual bool zap();
    /// Removes the records marked as deleted; needs exclusive use.
    virtual bool pack();
    /// Hands everything on to the file or the database.
    virtual bool commit() = 0;

    /// Locks a record besides those that are locked, or the table in their place, and reads the current
    /// record anew. Tries for as long as `wait`; false when another use of the table is in the way for all
    /// that time. In exclusive use nothing is in the way.
    virtual bool lock_record(std::int64_t record, std::chrono::milliseconds wait);
    /// As lock_record().
    virtual bool lock_table(std::chrono::milliseconds wait);
    /// Writes what was changed and gives a record's lock back; one that is not locked stays so.
    virtual bool unlock_record(std::int64_t) { return true; }
    /// Writes what was changed and gives all locks back.
    virtual bool unlock() { return true; }
    /// The records that are locked one by one, in the order of their numbers.
    [[nodiscard]] virtual std::vector<std::int64_t> locked_records() { return {}; }

    /// Its orders; by default none.
    [[nodiscard]] virtual std::vector<TableOrder> orders() { return {}; }
    /// The order that the moves follow, counted from 1; 0 for that of the record numbers.
    [[nodiscard]] virtual std::size_t order() const { return 0; }
    /// Makes the moves follow that order; the current record stays.
    virtual bool set_order(std::size_t order);
    /// Makes a new order, which the moves follow then; a unique one has of all records with the same key the
    /// first one only.
    virtual bool create_order(std::string_view name, std::string_view expression, bool unique);
    /// Removes an order, for all uses of the table.
    virtual bool destroy_order(std::size_t order);
    /// Builds the orders anew.
    virtual bool rebuild_orders();
    /// To a record whose key in the present order is `key`, or begins with it; else to the end. Whether there
    /// is one.
    virtual bool seek(const Value& key, SeekOptions options);
    /// Whether the current record is one that seek() looks for.
    [[nodiscard]] virtual bool has_key(const Value&) { return false; }
    /// The place of the current record in the present order, counted from 1; 0 at the end. By default the
    /// record's number.
    [[nodiscard]] virtual std::int64_t key_number() { return eof() ? 0 : record_number(); }
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
