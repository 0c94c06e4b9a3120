#include "tests/support/bare_client.h"

#include <cstring>
#include <memory>
#include <stdexcept>

#include "tests/support/environment.h"

namespace zmfb::test {

namespace {

constexpr short text_limit = 8192;

struct Status {
    ISC_STATUS_ARRAY vector{};

    void check(const char* doing) const {
        if (vector[0] != isc_arg_gds || vector[1] == 0) return;
        std::string message = std::string(doing) + ":";
        const ISC_STATUS* next = vector;
        char line[1024];
        while (fb_interpret(line, sizeof line, &next) != 0) message.append(" ").append(line);
        throw std::runtime_error(message);
    }
};

class ReadTransaction {
  public:
    explicit ReadTransaction(isc_db_handle* database) {
        const char block[] = {isc_tpb_version1, isc_tpb_read, isc_tpb_concurrency, isc_tpb_nowait};
        Status status;
        isc_start_transaction(status.vector, &handle, 1, database, static_cast<unsigned short>(sizeof block),
                              block);
        status.check("start");
    }
    ~ReadTransaction() {
        Status ignored;
        isc_rollback_transaction(ignored.vector, &handle);
    }
    isc_tr_handle handle{};
};

struct Statement {
    ~Statement() {
        Status ignored;
        if (handle != isc_stmt_handle()) isc_dsql_free_statement(ignored.vector, &handle, DSQL_drop);
    }
    isc_stmt_handle handle{};
};

struct FreeArea {
    void operator()(XSQLDA* area) const { ::operator delete(area); }
};
using Area = std::unique_ptr<XSQLDA, FreeArea>;

Area make_area(short columns) {
    const auto size = static_cast<std::size_t>(XSQLDA_LENGTH(columns));
    Area area(static_cast<XSQLDA*>(::operator new(size)));
    std::memset(static_cast<void*>(area.get()), 0, size);
    area->version = SQLDA_VERSION1;
    area->sqln = columns;
    return area;
}

// A column fetched as VARCHAR: the client converts.
struct TextColumn {
    short length = 0;
    char text[text_limit] = {};
    short indicator = 0;

    [[nodiscard]] std::string value() const {
        if (indicator < 0) return "NULL";
        std::string result(text, static_cast<std::size_t>(length));
        return result.erase(result.find_last_not_of(' ') + 1);
    }
};

}  // namespace

BareClient::BareClient(const std::string& database, const std::string& options) {
    std::string block(1, isc_dpb_version1);
    const auto add = [&block](char item, const std::string& text) {
        block.push_back(item);
        block.push_back(static_cast<char>(text.size()));
        block += text;
    };
    add(isc_dpb_user_name, sysdba);
    add(isc_dpb_password, sysdba_password);
    block += options;
    Status status;
    isc_attach_database(status.vector, 0, database.c_str(), &database_, static_cast<short>(block.size()),
                        block.data());
    status.check("attach");
}

BareClient::~BareClient() {
    Status ignored;
    isc_detach_database(ignored.vector, &database_);
}

void BareClient::execute(const std::string& statement) {
    Status status;
    isc_tr_handle transaction{};
    isc_start_transaction(status.vector, &transaction, 1, &database_, 0, nullptr);
    status.check("start");
    isc_dsql_execute_immediate(status.vector, &database_, &transaction, 0, statement.c_str(), SQL_DIALECT_V6,
                               nullptr);
    if (status.vector[1] != 0) {
        Status ignored;
        isc_rollback_transaction(ignored.vector, &transaction);
        status.check(statement.c_str());
    }
    isc_commit_transaction(status.vector, &transaction);
    status.check("commit");
}

Rows BareClient::rows(const std::string& query) {
    Status status;
    ReadTransaction transaction(&database_);
    Statement statement;
    isc_dsql_allocate_statement(status.vector, &database_, &statement.handle);
    status.check("allocate");
    Area area = make_area(1);
    isc_dsql_prepare(status.vector, &transaction.handle, &statement.handle, 0, query.c_str(), SQL_DIALECT_V6,
                     area.get());
    status.check(query.c_str());
    if (area->sqld > area->sqln) {
        area = make_area(area->sqld);
        isc_dsql_describe(status.vector, &statement.handle, SQL_DIALECT_V6, area.get());
        status.check("describe");
    }
    const auto columns = static_cast<std::size_t>(area->sqld);
    std::vector<TextColumn> values(columns);
    for (std::size_t i = 0; i < columns; ++i) {
        XSQLVAR& column = area->sqlvar[i];
        column.sqltype = SQL_VARYING | 1;
        column.sqlscale = 0;
        column.sqllen = text_limit;
        column.sqldata = reinterpret_cast<char*>(&values[i]);
        column.sqlind = &values[i].indicator;
    }
    isc_dsql_execute(status.vector, &transaction.handle, &statement.handle, SQL_DIALECT_V6, nullptr);
    status.check(query.c_str());
    Rows result;
    while (isc_dsql_fetch(status.vector, &statement.handle, SQL_DIALECT_V6, area.get()) == 0) {
        Row& row = result.emplace_back();
        for (const TextColumn& value : values) row.push_back(value.value());
    }
    status.check("fetch");
    return result;
}

}  // namespace zmfb::test
