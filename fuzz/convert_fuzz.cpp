// A query whose every answer of the client comes from the input: columns of any type, length and scale,
// names, values, NULLs and failures.
//
// As the client library does, this one writes no more into a column than its description says.
#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

#include "conn/class.h"
#include "conn/self.h"
#include "fuzz/fuzz.h"
#include "host/class.h"
#include "sql/client.h"
#include "sql/row_buffer.h"
#include "sql/state.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;

constexpr short most_columns = 12;
constexpr int most_rows = 4;
constexpr ISC_STATUS end_of_rows = 100;

constexpr ISC_SHORT known_types[] = {SQL_TEXT,  SQL_VARYING, SQL_SHORT,     SQL_LONG,      SQL_INT64,
                                     SQL_FLOAT, SQL_DOUBLE,  SQL_TIMESTAMP, SQL_TYPE_DATE, SQL_TYPE_TIME,
                                     SQL_BLOB,  SQL_ARRAY,   SQL_BOOLEAN,   SQL_D_FLOAT,   SQL_QUAD,
                                     SQL_NULL,  32752,       32754,         32760,         32762};

// Handles are numbers or pointers, as the client's header has them.
template <class Handle>
void make_handle(Handle* handle) {
    if constexpr (std::is_pointer_v<Handle>) {
        *handle = reinterpret_cast<Handle>(std::uintptr_t{2});
    } else {
        *handle = 2;
    }
}

class InventingClient final : public sql::Client {
  public:
    explicit InventingClient(Input& input) : input_(input), before_(sql::set_client(this)) {}
    ~InventingClient() override { sql::set_client(before_); }

    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle*,
                                 unsigned short, const char*) override {
        make_handle(transaction);
        ++open_transactions;
        return answer(status);
    }
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override {
        const ISC_STATUS outcome = answer(status);
        if (outcome == 0) end(transaction);
        return outcome;
    }
    ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override {
        end(transaction);
        return good(status);
    }
    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle*, isc_tr_handle*, const char*, const char*,
                       XSQLDA* area) override {
        columns_ = static_cast<short>(input_.below(most_columns + 2) - 1);
        fill(area);
        return answer(status);
    }
    ISC_STATUS describe(ISC_STATUS* status, const char*, XSQLDA* area) override {
        fill(area);
        return answer(status);
    }
    ISC_STATUS declare(ISC_STATUS* status, const char*, const char*) override { return answer(status); }
    ISC_STATUS open(ISC_STATUS* status, isc_tr_handle*, const char*) override { return answer(status); }
    ISC_STATUS fetch(ISC_STATUS* status, const char*, XSQLDA* area) override {
        if (rows >= most_rows || input_.at_end()) return good(status), end_of_rows;
        if (const ISC_STATUS outcome = answer(status); outcome != 0) return outcome;
        ++rows;
        for (short i = 0; i < std::min(area->sqld, area->sqln); ++i) fetch_column(area->sqlvar[i]);
        return 0;
    }
    ISC_STATUS close(ISC_STATUS* status, const char*) override { return answer(status); }
    ISC_STATUS release(ISC_STATUS* status, const char*) override { return answer(status); }

    int rows = 0;
    int open_transactions = 0;

  private:
    static ISC_STATUS good(ISC_STATUS* status) {
        status[0] = isc_arg_gds;
        status[1] = 0;
        status[2] = isc_arg_end;
        return 0;
    }
    // One answer in sixteen is a failure.
    ISC_STATUS answer(ISC_STATUS* status) {
        good(status);
        if (input_.below(16) != 15) return 0;
        status[1] = input_.flag() ? ISC_STATUS{isc_io_error} : ISC_STATUS{isc_deadlock};
        return status[1];
    }
    void end(isc_tr_handle* transaction) {
        if (*transaction != isc_tr_handle()) --open_transactions;
        *transaction = isc_tr_handle();
    }

    void fill(XSQLDA* area) {
        area->sqld = columns_;
        for (short i = 0; i < std::min(columns_, area->sqln); ++i) describe_column(area->sqlvar[i]);
    }
    void describe_column(XSQLVAR& column) {
        const bool known = input_.below(8) != 0;
        column.sqltype =
            known ? known_types[input_.below(std::size(known_types))] : input_.number<ISC_SHORT>();
        if (input_.flag()) column.sqltype = static_cast<ISC_SHORT>(column.sqltype | 1);
        column.sqlscale = input_.flag() ? input_.number<ISC_SHORT>() : input_.number<std::int8_t>();
        column.sqlsubtype = input_.number<std::int8_t>();
        column.sqllen = input_.flag() ? input_.number<ISC_SHORT>() : static_cast<ISC_SHORT>(input_.byte());
        describe_name(column.sqlname, column.sqlname_length);
        describe_name(column.aliasname, column.aliasname_length);
    }
    template <std::size_t Size>
    void describe_name(ISC_SCHAR (&name)[Size], ISC_SHORT& length) {
        length = input_.number<std::int8_t>();
        const std::string_view given = input_.bytes(std::min<std::size_t>(input_.byte(), Size));
        std::memcpy(name, given.data(), given.size());
    }
    void fetch_column(XSQLVAR& column) {
        *column.sqlind = static_cast<ISC_SHORT>(input_.below(4) == 0 ? -1 : 0);
        const auto length = static_cast<std::size_t>(std::max<ISC_SHORT>(column.sqllen, 0));
        const bool varying = (column.sqltype & ~1) == SQL_VARYING;
        const std::string_view given = input_.bytes(std::min<std::size_t>(length + (varying ? 2 : 0), 40));
        std::memcpy(column.sqldata, given.data(), given.size());
    }

    Input& input_;
    sql::Client* before_;
    short columns_ = 0;
};

bool is_number(std::string_view text) { return text.find_first_not_of("0123456789.-+eEinfa") == text.npos; }

// A value of the plain conversion: a text of the length that its column says.
void check_value(const Value& value, const Value& column) {
    require(value.is(Kind::character), "a value is a text");
    const std::string_view text = value.text(), letter = column[2].text();
    if (text == "NULL") return;
    const auto length = static_cast<std::size_t>(std::max(column[3].number(), 0.0));
    if (letter == "C") require(text.size() <= length, "a text is no longer than its column");
    if (letter == "N") require(!text.empty() && is_number(text), "a number reads as one");
    if (letter == "D") require(text.size() >= 24, "a timestamp is complete");
}

void check_rows(const Value& result) {
    for (std::size_t row = 1; row <= result.size(); ++row) {
        require(result[row].size() == result[1].size(), "every row has all columns");
        for (std::size_t i = 1; i <= result[row].size(); ++i) {
            if (row == 1) {
                require(result[1][i].size() == 4U, "a column is described");
            } else {
                check_value(result[row][i], result[1][i]);
            }
        }
    }
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const Value object(new host::Instance(conn::zmfbconn_class()));
    auto& self = static_cast<Self&>(*object.object());
    var(self, Var::dbhndl) = 1;
    {
        InventingClient client(input);
        const Value result = call(self, "internalselect", "select");
        require(result.is(Kind::array), "a query gives an array");
        require(result.size() <= static_cast<std::size_t>(client.rows) + 1, "no row comes from nowhere");
        require(client.open_transactions == 0, "a query ends its transaction");
        check_rows(result);
    }
    var(self, Var::dbhndl) = 0;
}
