/// Transactions, statements and rows: the database as C++ types.
///
///     zmfb::zmFBConn connection("shop.fdb", "SYSDBA", "masterkey");
///     zmfb::Transaction work(connection);  // rolled back unless it is committed
///     for (auto& [name, credit] : work.query<std::string, std::optional<zmfb::Decimal>>(
///              "select name, credit from customers where city = ?", "Cork"))
///         std::cout << name << ' ' << credit.value_or(0) << '\n';
///     auto pay = work.prepare("update customers set credit = credit - ? where code = ?");
///     pay.execute(zmfb::Decimal("10.50"), 3);
///     work.commit();
///
/// It works on the attachment of the connection object, beside its methods, whose texts and results stay what
/// they are. Every failure is thrown as SqlError, half-way through the rows too. Texts are UTF-8; what the
/// database holds them in is named by set_database_encoding(). One thread at a
/// time; cancel() (zmfbconn/cancel.h) has the call that runs throw, from another one.
///
/// Objects may go in any order: those of statements, rows, fields and blobs that remain keep what they need.
/// When a transaction has ended, or its connection is detached, they throw when they are used: statements and
/// blobs 25000, rows and fields 24000. A transaction itself is rolled back when its connection is detached.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "connection.h"
#include "rows.h"
#include "sql_error.h"

/// What is behind the public classes; their members are the library's own.
namespace zmfb::typed {
class Work;
}  // namespace zmfb::typed
namespace zmfb::rdd {
class Query;
}  // namespace zmfb::rdd

#pragma GCC visibility push(default)

namespace zmfb {

namespace typed {

/// The values of a call, as a span of Parameter can be made of: one that is given stays as it is.
template <class... Values>
auto parameters(const Values&... values) {
    return std::array<Parameter, sizeof...(Values)>{Parameter(values)...};
}
template <std::convertible_to<std::span<const Parameter>> List>
std::span<const Parameter> parameters(const List& list) {
    return list;
}

/// T for one type, a tuple for several.
template <class... T>
using One =
    std::conditional_t<sizeof...(T) == 1, std::tuple_element_t<0, std::tuple<T...>>, std::tuple<T...>>;

template <class... T>
One<T...> one_of(std::tuple<T...>&& row) {
    if constexpr (sizeof...(T) == 1) {
        return std::get<0>(std::move(row));
    } else {
        return std::move(row);
    }
}

}  // namespace typed

/// A statement that is prepared once and run often, each time with other values for its "?". What takes
/// `values` takes as many as there are, or one std::span of Parameter.
class Statement {
  public:
    /// @{
    /// Copies are the same statement; one that was moved from still is it.
    Statement(const Statement&) = default;
    Statement& operator=(const Statement&) = default;
    /// @}
    ~Statement() = default;

    /// Runs a statement that returns no rows. Returns how many rows it changed.
    template <class... Values>
    std::int64_t execute(const Values&... values) {
        return run(typed::parameters(values...));
    }
    /// The same without counting them, for which a server is asked once more.
    template <class... Values>
    void execute_uncounted(const Values&... values) {
        run_uncounted(typed::parameters(values...));
    }
    /// Runs a query, or a statement with RETURNING. Throws when the number of types is not that of the
    /// columns, or one does not fit. Rows of an earlier call that were not read yet are given up.
    template <class... T, class... Values>
    TypedRows<T...> query(const Values&... values) {
        return {statement_, typed::parameters(values...)};
    }
    /// The same with fields by name.
    template <class... Values>
    Rows rows(const Values&... values) {
        return {statement_, typed::parameters(values...)};
    }
    /// Its only row, as a T or as a tuple of several. Throws when there is none (02000) or more (21000).
    template <class... T, class... Values>
    typed::One<T...> one(const Values&... values) {
        auto found = query<T...>(values...);
        auto row = single_row(found);
        if (!row) found.throw_no_row();
        return typed::one_of(std::move(*row));
    }
    /// The same, empty when there is none.
    template <class... T, class... Values>
    std::optional<typed::One<T...>> maybe_one(const Values&... values) {
        auto found = query<T...>(values...);
        auto row = single_row(found);
        if (!row) return std::nullopt;
        return typed::one_of(std::move(*row));
    }

    /// The columns of its rows; none when it returns no rows.
    [[nodiscard]] const std::vector<Column>& columns() const { return typed::columns_of(*statement_); }
    /// How many values it takes.
    [[nodiscard]] std::size_t parameter_count() const;

  private:
    friend class Transaction;
    friend class rdd::Query;
    explicit Statement(std::shared_ptr<typed::Prepared> statement) : statement_(std::move(statement)) {}
    std::int64_t run(std::span<const Parameter> values);
    void run_uncounted(std::span<const Parameter> values);
    template <class... T>
    static auto single_row(TypedRows<T...>& rows) {
        static_assert((!std::same_as<T, std::string_view> && ...), "the text would be gone with the row");
        return rows.single();
    }

    std::shared_ptr<typed::Prepared> statement_;
};

/// What a transaction may do.
enum class Access { read_write, read_only };

/// What a transaction sees beside its own changes.
enum class Isolation {
    snapshot,        ///< what was committed when it began
    read_committed,  ///< what is committed when it reads. One that is read_only as well may stay open for
                     ///< days: the database keeps no old versions of rows for it
    newest,          ///< the same, but what another one has changed and not committed is waited for when
                     ///< it is read: its newest version is changed then, as `executeupdate` does
};

/// How the texts of a statement, its own, its values and those of its rows, are given.
enum class TextForm {
    utf8,
    as_kept,  ///< the bytes that the database keeps them in, unconverted and unchecked; names in quotes, too
};

/// A transaction. What it changed is rolled back at its end unless it was committed.
///
/// A row that another transaction has changed and not committed is waited for. While this process has
/// another transaction open that could change rows, it is not, since that could not end meanwhile: it is
/// thrown (40001).
class Transaction {
  public:
    /// Begins one. Throws when the object is not attached (08003), or the Firebird client library is older
    /// than 3.0 (0A000).
    explicit Transaction(zmFBConn& connection, Access access = Access::read_write,
                         Isolation isolation = Isolation::snapshot);
    /// The batch that `starttransaction` has opened on the object, to work in it beside `cachedupdate`. It
    /// may be ended here as well as by `commitchanges`, and stays open when this goes. Throws (25000) when
    /// there is none.
    static Transaction batch(zmFBConn& connection);
    /// What was moved from throws (25000) from then on.
    Transaction(Transaction&&) noexcept = default;
    Transaction& operator=(Transaction&&) = delete;
    ~Transaction();

    /// Ends it and keeps what it changed. When that throws, it is rolled back; when the connection was lost
    /// just then, what the database kept has to be looked up.
    void commit();
    /// Ends it and undoes what it changed.
    void roll_back();
    /// Whether it has not ended yet.
    [[nodiscard]] bool active() const;

    /// Throws what the engine has against the statement.
    Statement prepare(std::string_view sql, TextForm form = TextForm::utf8);

    /// @{
    /// Prepares a statement and runs it once: see Statement.
    template <class... Values>
    std::int64_t execute(std::string_view sql, const Values&... values) {
        return prepare(sql).execute(values...);
    }
    template <class... T, class... Values>
    TypedRows<T...> query(std::string_view sql, const Values&... values) {
        return prepare(sql).query<T...>(values...);
    }
    template <class... Values>
    Rows rows(std::string_view sql, const Values&... values) {
        return prepare(sql).rows(values...);
    }
    template <class... T, class... Values>
    typed::One<T...> one(std::string_view sql, const Values&... values) {
        return prepare(sql).one<T...>(values...);
    }
    template <class... T, class... Values>
    std::optional<typed::One<T...>> maybe_one(std::string_view sql, const Values&... values) {
        return prepare(sql).maybe_one<T...>(values...);
    }
    /// @}

  private:
    friend class BlobWriter;
    /// Throws when it was moved from.
    [[nodiscard]] const std::shared_ptr<typed::Work>& work() const;
    explicit Transaction(std::shared_ptr<typed::Work> batch) : work_(std::move(batch)), owns_(false) {}
    std::shared_ptr<typed::Work> work_;
    bool owns_ = true;
};

/// Names what texts in columns without a character set of their own are kept in, as iconv calls it:
/// ISO-8859-1 when nothing is said, a set of one byte a character, or "UTF-8". It holds for all transactions
/// of the connection from then on, until it is detached. Throws when there is no such set (22023).
void set_database_encoding(zmFBConn& connection, std::string_view name);

}  // namespace zmfb

#pragma GCC visibility pop
