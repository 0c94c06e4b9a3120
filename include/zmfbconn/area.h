/// Work areas: tables that are open, shared with other programs, and walked through record by record.
///
///     zmfb::Area stock(connection, "STOCK");
///     const auto onhand = stock.field<std::int64_t>("ONHAND");
///     std::int64_t total = 0;
///     for (const zmfb::Area& at : stock) total += at[onhand];
///     if (stock.go(7)) {
///         auto held = stock.lock(5s);  // throws who has it after that time
///         held[onhand] = held[onhand] - 3;
///         held["NOTE"] = "sold";
///         held.write();
///     }  // unlocked here
///
/// A table is one of the driver's layout (createtable, bringdbf). What programs keep from one another is what
/// the registrations and locks in the database say, which all programs that use work areas go by.
///
/// Failures of the database are thrown as SqlError, what a program may not do as AreaError, what others are
/// in the way of as InUse. One thread at a time. Objects may go in any order: when the connection is
/// detached, or its last handle goes, areas are closed, their locks and registrations taken back.
#pragma once

#include <chrono>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "area_error.h"
#include "area_fields.h"
#include "connection.h"
#include "host/driver.h"
#include "transaction.h"

namespace zmfb::rdd {
class Edit;
class Joint;
class OpenArea;
}  // namespace zmfb::rdd

#pragma GCC visibility push(default)

namespace zmfb {

namespace rdd {

/// Goes through the records of an area, which moves on with it.
template <class Walked>
class RecordIterator {
  public:
    using value_type = Walked;
    using difference_type = std::ptrdiff_t;

    explicit RecordIterator(Walked* area) : area_(area) {}
    const Walked& operator*() const { return *area_; }
    RecordIterator& operator++() {
        area_->skip();
        return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return area_->eof(); }

  private:
    Walked* area_;
};

}  // namespace rdd

/// How an area has its table.
enum class OpenMode : std::uint8_t {
    shared,     ///< others may have it open, too
    exclusive,  ///< nobody else has it open; no lock is needed to write
    read_only,  ///< shared, and nothing is written
};

/// What an area is opened with.
struct AreaOptions {
    OpenMode mode = OpenMode::shared;  ///< see OpenMode
    std::string alias = {};            ///< what others see it called; the table's name when it is ""
    TextForm texts = TextForm::utf8;   ///< how texts are given, names and conditions, too
    /// Whether a work area of the runtime has that alias, whose closing closes this.
    bool of_runtime = false;
};

/// An order of a table.
struct AreaOrder {
    std::string name;        ///< upper case
    std::string expression;  ///< of its key, as the program wrote it
    bool unique;             ///< whether it has of all records with the same key the first one only
    bool complete;           ///< whether both of its indexes are there; without them it only takes longer
};

using host::SeekOptions;

/// A record that is locked, or a new one, to be written. Unlocks when it goes; what was assigned and not
/// written is dropped then.
class Held {
  public:
    /// @{
    /// What was moved from holds nothing.
    Held(Held&& other) noexcept;
    Held& operator=(Held&& other) noexcept;
    /// @}
    ~Held();

    /// A field by name, to read and to assign.
    [[nodiscard]] FieldPlace operator[](std::string_view name);
    /// The same by its place, counted from 0.
    [[nodiscard]] FieldPlace at(std::size_t index);
    /// The same of one that was looked up before.
    template <typed::Readable T>
    [[nodiscard]] TypedPlace<T> operator[](const AreaField<T>& field) {
        rdd::check_field(record(), field.columns_, field.index_);
        return {record(), field.index_};
    }
    /// Writes what was assigned, no other field, in one statement; inserts a new record, which this holds the
    /// lock of from then on. Nothing when nothing was assigned to a record that is there. Throws when the
    /// record was deleted by a program that asks for no locks, or what was assigned is refused: it stays
    /// assigned then.
    void write();
    /// Deletes the record. This holds nothing afterwards.
    void remove();
    /// Its number; of a new record 0 until it is written.
    [[nodiscard]] std::int64_t recno() const;

  private:
    friend class Area;
    explicit Held(std::unique_ptr<rdd::Edit> edit);
    [[nodiscard]] rdd::Record& record() const;
    std::unique_ptr<rdd::Edit> edit_;
};

/// An open table and its current record; opened, it stands on the first one.
class Area {
  public:
    /// How long to wait for a lock.
    using Wait = std::chrono::milliseconds;

    /// Opens `table`, in any case of letters. Throws InUse when others are in the way; what was made so far
    /// is taken back then.
    Area(zmFBConn& connection, std::string_view table, const AreaOptions& options = {});
    /// @{
    /// What was moved from is closed.
    Area(Area&& other) noexcept;
    Area& operator=(Area&& other) noexcept;
    /// @}
    /// Closes it.
    ~Area();

    /// Gives its locks and its registration back. Everything else is thrown from then on; guards that it gave
    /// hold nothing. While a Together is open they are given back at its end.
    void close();
    /// Whether it is open.
    [[nodiscard]] bool is_open() const;
    /// The table, upper case.
    [[nodiscard]] const std::string& table() const;
    /// The id that its registration and its locks have in the database.
    [[nodiscard]] const std::string& id() const;
    /// Its fields, without those of the driver and those of types that are not read here: blobs that are no
    /// text, numbers of more than 18 digits, times with a zone.
    [[nodiscard]] const std::vector<Column>& fields() const;
    /// Looks a field up, in any case of letters. Throws when there is none, or it is not read as a T.
    template <typed::Readable T>
    [[nodiscard]] AreaField<T> field(std::string_view name) const {
        return {columns(), typed_field(name, typed::kind_of<T>())};
    }

    /// @{
    /// Moves: to the first record of the order, the last one, `count` records on or back. Returns whether
    /// there is one. Behind the last record eof() holds; before the first one bof(), and that record stays
    /// the current one. In an empty table both hold.
    ///
    /// A record that was deleted is left out, a new one met when it lies ahead: positions are keys, so that
    /// each record that others leave alone is met once.
    bool top();
    bool bottom();
    bool skip(std::int64_t count = 1);
    /// @}
    /// To a record by its number, whether or not the filter leaves it in; behind the last one when there is
    /// none.
    bool go(std::int64_t recno);
    /// Reads the current record anew; .F. when it is gone, and what was read of it stays.
    bool refresh();
    /// The same in one query with as many of the records behind it as are read ahead: to the next one when it
    /// is gone. Returns how many were read, 0 at the end.
    std::size_t read_on();
    /// Whether there is no current record.
    [[nodiscard]] bool eof() const;
    /// Whether a skip went to before the first record.
    [[nodiscard]] bool bof() const;
    /// The number of the current record. Throws when there is none.
    [[nodiscard]] std::int64_t recno() const;
    /// Leaves in what a condition in SQL says, such as "CREDIT > 0"; everything when it is "". The area
    /// stands where it stood. Throws what the database has against it, and the filter stays what it was.
    void filter(std::string_view condition);
    /// How many records there are, under the filter.
    [[nodiscard]] std::int64_t count();

    /// The orders of the table, the same for all programs.
    [[nodiscard]] std::vector<AreaOrder> orders();
    /// Moves follow an order from here on, by its name in any case of letters; "" is that of the record
    /// numbers. The area stands where it stood. Throws when there is no such order.
    void order(std::string_view name);
    /// The order that moves follow: upper case, "" for that of the record numbers.
    [[nodiscard]] const std::string& order() const;
    /// To the first record, under the filter, whose key in the order is `key`; of a text that begins with it.
    /// Blanks at the end of a text that keys have no room for do not count; std::nullopt is the empty date.
    /// Returns whether there is one; else the area stands at the end. `last`: to the last one of them.
    /// `soft`: to the next record behind where it would be. Throws when the keys are of another type.
    bool seek(const Parameter& key, SeekOptions options = {});
    /// Whether the current record is one that seek() looks for.
    [[nodiscard]] bool has_key(const Parameter& key);
    /// The place of the current record in the order, under the filter, counted from 1; the rows before it are
    /// counted. Throws when there is none.
    [[nodiscard]] std::int64_t place();
    /// Makes an order. Nothing when there is that order already. A key expression of xBase is made of fields,
    /// texts, numbers, +, UPPER, LOWER, TRIM, SUBSTR, STR, STRZERO, DTOS, PADR and PADL. Texts are ordered
    /// byte by byte, numbers by value, dates with the empty one first. A unique order has of all records with
    /// the same key the first one only. Waits a few seconds for who is changing the table. Throws what was
    /// not understood, and when there is another order of that name; then nothing was made.
    void create_order(std::string_view name, std::string_view expression, bool unique = false);
    /// Drops an order, for all programs. Throws when others go on using it after a few seconds.
    void drop_order(std::string_view name);
    /// Makes the indexes of an order anew; likewise.
    void rebuild_order(std::string_view name);

    /// A field of the current record by name; throws when there is none of that name, or no record.
    [[nodiscard]] FieldValue operator[](std::string_view name) const;
    /// The same by its place, counted from 0.
    [[nodiscard]] FieldValue at(std::size_t index) const;
    /// The same of one that was looked up before.
    template <typed::Readable T>
    [[nodiscard]] T operator[](const AreaField<T>& field) const {
        const rdd::Record& current = record();
        rdd::check_field(current, field.columns_, field.index_);
        return rdd::read_as<T>(current, field.index_);
    }

    /// Locks the current record, trying again for so long when somebody has it or the table, and reads it
    /// anew: what is seen of it then is what is there. Throws InUse after that time, and AreaError when the
    /// record is gone.
    [[nodiscard]] Held lock(Wait wait = Wait::zero());
    /// The current record, which is locked by lock_record(), with its table or by exclusive use. Throws when
    /// it is not.
    [[nodiscard]] Held edit();
    /// A new record, to be written; its fields have their defaults where nothing is assigned. It is locked
    /// before others see it, and the current one from then on; write() waits for that lock so long.
    [[nodiscard]] Held append(Wait wait = Wait::zero());

    /// @{
    /// Locks a record by its number until it is unlocked by its number. Locking it twice is locking it once;
    /// unlocking what is not locked, nothing. Nothing is read anew but the current record.
    void lock_record(std::int64_t recno, Wait wait = Wait::zero());
    void unlock_record(std::int64_t recno);
    /// @}
    /// @{
    /// Locks the whole table: others get no lock of it or of a record in it.
    void lock_table(Wait wait = Wait::zero());
    void unlock_table();
    /// @}
    /// Unlocks all that was locked by number, and the table. Guards keep their records.
    void unlock();
    /// The records that are locked, by their numbers, in order.
    [[nodiscard]] std::vector<std::int64_t> locked_records() const;
    /// Whether the table is locked by lock_table().
    [[nodiscard]] bool is_table_locked() const;

    /// Deletes all records. Throws when the area is not exclusive.
    void zap();

    /// @{
    /// From the top to the end: for (const Area& at : area). The area itself moves.
    auto begin() {
        top();
        return rdd::RecordIterator<Area>(this);
    }
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }
    /// @}

  private:
    [[nodiscard]] rdd::OpenArea& open() const;
    [[nodiscard]] const rdd::Columns* columns() const;
    [[nodiscard]] std::size_t typed_field(std::string_view name, typed::Kind kind) const;
    [[nodiscard]] const rdd::Record& record() const;
    std::shared_ptr<rdd::OpenArea> area_;
};

/// While it lives, what the areas of a connection write is one transaction, kept by commit() and undone
/// otherwise. Areas of the connection see it, others not before. Locks that are given up, and areas that are
/// closed, are given back to others at its end.
class Together {
  public:
    /// Begins it. Throws while there is one of that connection.
    explicit Together(zmFBConn& connection);
    Together(const Together&) = delete;
    Together& operator=(const Together&) = delete;
    /// Undoes what was not committed.
    ~Together();

    /// Keeps what was written, and ends it. When that throws, it is undone.
    void commit();
    /// Undoes what was written, and ends it.
    void roll_back();

  private:
    std::unique_ptr<rdd::Joint> joint_;
};

}  // namespace zmfb

#pragma GCC visibility pop
