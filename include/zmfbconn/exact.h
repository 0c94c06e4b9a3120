/// Queries whose values come as they are stored, for programs that show them to people.
///
/// The texts that queries of the object give are made for its own methods: 32 bits of a 64-bit number, the
/// sign of a negative number twice, some types not at all. While an ExactQueries lives, the queries of every
/// object give these values instead:
///
/// - NULL: NIL.
/// - SMALLINT, INTEGER, BIGINT, NUMERIC, DECIMAL: all digits, "12345678901.25", "-0.05".
/// - FLOAT, DOUBLE PRECISION: the fewest digits that read back as the same number; from 1e16 on, and below
///   0.00001, with an exponent.
/// - BOOLEAN: "true", "false". DATE: "2007-03-01". TIME: "14:05:09.1234". TIMESTAMP: both with a blank
///   between.
/// - CHAR: without the blanks at its end. VARCHAR: as stored. Of the character set OCTETS: in hexadecimal.
/// - BLOB: a text blob of up to 64 MiB whole, any other by its size: "<blob 123 bytes>".
/// - Any other type: its name, "<DECFLOAT(34)>", or its number, "<type 32000>".
///
/// A column of the header is then {name, letter, length, decimals, whether its texts are UTF-8}: the name is
/// the alias, and the letter also "L" for BOOLEAN, "D" for DATE and "M" for a text blob. Texts that are not
/// UTF-8 are bytes as everywhere else.
#pragma once

#include "host/value.h"

#pragma GCC visibility push(default)

namespace zmfb {

/// Takes in the rows of a query one after another. It must not use an object while it does.
class RowReader {
  public:
    RowReader() = default;
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;
    virtual ~RowReader() = default;

    /// Called once, when the columns are known.
    virtual void header(const host::Value& columns) = 0;
    /// Called for each row. With .F. for an answer the query ends there, and has not failed.
    virtual bool row(const host::Value& values) = 0;
};

/// Puts the exact conversion in force from its making to its end; the last one made counts. Nothing else
/// about queries changes.
class ExactQueries {
  public:
    /// Rows are handed to `reader` as they are fetched, and are not in the result, which is {header} then;
    /// without a reader they are in the result. What the reader throws ends the query and comes through.
    explicit ExactQueries(RowReader* reader = nullptr);
    ~ExactQueries();
    ExactQueries(const ExactQueries&) = delete;
    ExactQueries& operator=(const ExactQueries&) = delete;

    /// The SQLCODE of the last query made meanwhile; 0 when it came to its end, or none was made.
    [[nodiscard]] int sqlcode() const { return sqlcode_; }

    /// The one in force; null for none.
    static ExactQueries* current();
    /// What takes in the rows; null for none.
    [[nodiscard]] RowReader* reader() const { return reader_; }
    /// For the queries made meanwhile: notes how the last one ended.
    void set_sqlcode(int sqlcode) { sqlcode_ = sqlcode; }

  private:
    RowReader* reader_;
    ExactQueries* before_;
    int sqlcode_ = 0;
};

}  // namespace zmfb

#pragma GCC visibility pop
