/// The Firebird client used plainly: what the same work costs without anything of ours.
#pragma once

#include <ibase.h>

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::bench {

/// How a query is sent: by the calls that come first to mind, or by those that the product is bound to, which
/// name statement and cursor and ask for the columns once more after the prepare, twice where there are
/// several.
enum class Calls { plain, as_ours };

/// An attachment as SYSDBA. Every failure throws std::runtime_error with the engine's message.
class BareSession {
  public:
    explicit BareSession(const std::string& database);
    /// How queries are sent from here on; at first plain.
    void send_by(Calls calls) { calls_ = calls; }
    BareSession(BareSession&&) = delete;
    ~BareSession();

    /// Runs a query in a transaction with that parameter block and calls `take` with the columns of each row,
    /// whose data are where the client put them.
    template <class Take>
    void query(const std::string& statement, std::string_view block, const Take& take) {
        Cursor cursor(*this, statement, block);
        while (cursor.fetch()) take(cursor.columns());
        cursor.finish();
    }
    /// Runs a query with one "?" for a text, prepared once, for each of the values in one transaction.
    template <class Take>
    void query_each(const std::string& statement, std::span<const std::string> values, std::string_view block,
                    const Take& take) {
        Cursor cursor(*this, statement, block, values.front());
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0) cursor.open_again(values[i]);
            while (cursor.fetch()) take(cursor.columns());
        }
        cursor.finish();
    }
    /// Runs a statement that returns no rows in a transaction with that parameter block.
    void execute(const std::string& statement, std::string_view block) {
        execute_together({&statement, 1}, block);
    }
    /// Runs several in one transaction.
    void execute_together(std::span<const std::string> statements, std::string_view block);

  private:
    class Cursor {
      public:
        Cursor(BareSession& session, const std::string& statement, std::string_view block);
        Cursor(BareSession& session, const std::string& statement, std::string_view block,
               const std::string& value);
        void open_again(const std::string& value);
        Cursor(const Cursor&) = delete;
        ~Cursor();
        bool fetch();
        void finish();
        [[nodiscard]] std::span<const XSQLVAR> columns() const {
            return {area_->sqlvar, static_cast<std::size_t>(area_->sqld)};
        }

      private:
        void make_area(short columns);
        void lay_out();
        void prepare(const std::string& statement);
        void open_plainly(const std::string& statement);
        void execute(const std::string& value);
        void open_as_ours(const std::string& statement);

        BareSession& session_;
        isc_tr_handle transaction_{};
        isc_stmt_handle statement_{};
        std::vector<char> area_bytes_;
        XSQLDA* area_ = nullptr;
        std::vector<std::int64_t> row_;
    };

    isc_db_handle database_{};
    Calls calls_ = Calls::plain;
};

/// The parameter block of an attachment as SYSDBA.
std::string attachment_block();

/// The parameter block of a transaction that only reads.
inline constexpr std::string_view read_block = "\x01\x08\x02\x06";
static_assert(isc_tpb_version1 == 1 && isc_tpb_read == 8 && isc_tpb_concurrency == 2 && isc_tpb_wait == 6);

/// The T at a column's place.
template <class T>
T value_at(const XSQLVAR& column) {
    T value;
    std::memcpy(&value, column.sqldata, sizeof value);
    return value;
}

inline bool is_null(const XSQLVAR& column) { return (column.sqltype & 1) != 0 && *column.sqlind < 0; }

/// Reads each value of a row where it lies: numbers whole, of texts the length and both ends. Something to
/// keep a compiler from leaving it out.
std::uint64_t touch(std::span<const XSQLVAR> row);

}  // namespace zmfb::bench
