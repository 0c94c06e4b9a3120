#include "tool/browse/query_source.h"

#include <fmt/format.h>

#include <utility>

#include "tool/reading.h"
#include "tool/session.h"

namespace zmfb::tool::browse {

// The database keeps no old versions of rows for such a transaction, however long somebody looks.
struct QuerySource::Run {
    Run(zmFBConn& connection, const std::string& query)
        : work(connection, Access::read_only, Isolation::read_committed), statement(work.prepare(query)) {}

    // Moves on to the next row; .F. when there is none.
    bool next() {
        if (!rows) {
            rows.emplace(statement.rows());
            at.emplace(rows->begin());
        } else {
            ++*at;
        }
        return *at != rows->end();
    }

    Transaction work;
    Statement statement;
    std::optional<zmfb::Rows> rows;
    std::optional<decltype(std::declval<zmfb::Rows&>().begin())> at;
};

QuerySource::QuerySource(zmFBConn& connection, std::string query)
    : connection_(connection), query_(std::move(query)) {
    begin(run(query_));
    for (const Column& column : run_->statement.columns()) columns_.push_back(shown_column(column));
}

QuerySource::QuerySource(zmFBConn& connection, const Name& table)
    : QuerySource(connection, "select * from " + table.quoted()) {
    table_ = table;
}

QuerySource::~QuerySource() = default;

std::unique_ptr<QuerySource::Run> QuerySource::run(const std::string& query) const {
    log_query(connection_, query);
    auto run = std::make_unique<Run>(connection_, query);
    if (run->statement.columns().empty())
        throw Failure{Exit::failed, "the statement returns no rows: exec runs such statements"};
    return run;
}

void QuerySource::begin(std::unique_ptr<Run> run) {
    read_ = std::make_unique<Kept>();
    run_ = std::move(run);
}

// What a person wrote may end with a comment.
std::string QuerySource::query() const {
    if (condition_.empty()) return query_;
    return fmt::format("select * from ({}\n) where ({}\n)", query_, condition_);
}

void QuerySource::filter(const std::string& condition) {
    std::string before = std::exchange(condition_, condition);
    try {
        begin(run(query()));
    } catch (...) {
        condition_ = std::move(before);
        throw;
    }
}

void QuerySource::read_anew() { begin(run(query())); }

bool QuerySource::has(std::int64_t number) {
    while (run_ != nullptr && read_rows() < number) {
        if (!run_->next()) {
            run_.reset();
            break;
        }
        const zmfb::Row& row = **run_->at;
        std::vector<Cell> cells;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            cells.push_back(shortened(row[i].text(), columns_[i].type));
        read_->places.push_back(read_->rows.add(cells));
    }
    return read_rows() >= number;
}

std::int64_t QuerySource::last_number() {
    while (run_ != nullptr) has(read_rows() + 1);
    return read_rows();
}

std::optional<std::int64_t> QuerySource::known_count() const {
    if (run_ != nullptr) return std::nullopt;
    return read_rows();
}

// To be read from that row on.
RowSpool& QuerySource::at(std::int64_t number) {
    read_->rows.go_to(read_->places[static_cast<std::size_t>(number - 1)]);
    return read_->rows;
}

std::vector<Cell> QuerySource::cells(std::int64_t number) {
    RowSpool& rows = at(number);
    std::vector<Cell> cells;
    while (cells.size() < columns_.size()) cells.push_back(rows.read(most_shown));
    return cells;
}

Cell QuerySource::whole(std::int64_t number, std::size_t column) {
    RowSpool& rows = at(number);
    while (column-- > 0) rows.read(0);
    return rows.read();
}

}  // namespace zmfb::tool::browse
