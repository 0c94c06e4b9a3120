#include "rdd/query.h"

namespace zmfb::rdd {

namespace {

typed::Kind kind_to_read(CellKind kind) {
    switch (kind) {
        case CellKind::whole:
            return typed::Kind::integer;
        case CellKind::decimal:
            return typed::Kind::decimal;
        case CellKind::real:
            return typed::Kind::real;
        case CellKind::boolean:
            return typed::Kind::boolean;
        case CellKind::text:
            return typed::Kind::view;
        case CellKind::bytes:
            return typed::Kind::bytes;
        case CellKind::day:
            return typed::Kind::date;
        case CellKind::time:
            return typed::Kind::time;
        case CellKind::moment:
            return typed::Kind::timestamp;
        case CellKind::none:
            break;
    }
    return typed::Kind::none;
}

// Into a cell that is NULL so far.
class Filling {
  public:
    Filling(typed::Cursor& rows, Block& block, std::size_t row) : rows_(rows), block_(block), row_(row) {}

    void fill(std::size_t column, CellKind kind, typed::Read read) {
        switch (kind) {
            case CellKind::whole:
                return put<std::int64_t>(column, read, [](std::int64_t number) { return number; });
            case CellKind::decimal:
                return put<Decimal>(column, read, [](const Decimal& number) { return number.unscaled(); });
            case CellKind::real:
                return put<double>(column, read, [](double number) { return number; });
            case CellKind::boolean:
                return put<bool>(column, read, [](bool is) { return std::int64_t{is}; });
            case CellKind::text:
                return put<std::string_view>(column, read, [](std::string_view text) { return text; });
            case CellKind::bytes:
                return put<Bytes>(column, read, [](const Bytes& bytes) {
                    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
                });
            case CellKind::day:
                return put<std::chrono::year_month_day>(column, read, [](std::chrono::sys_days day) {
                    return std::int64_t{day.time_since_epoch().count()};
                });
            case CellKind::time:
                return put<TimeOfDay>(column, read,
                                      [](TimeOfDay time) { return std::int64_t{time.count()}; });
            case CellKind::moment:
                return put<Timestamp>(column, read,
                                      [](Timestamp moment) { return moment.time_since_epoch().count(); });
            case CellKind::none:
                break;
        }
    }

  private:
    template <class T, class Stored>
    void put(std::size_t column, typed::Read read, const Stored& stored) {
        T value{};
        if (read(rows_, column, &value)) block_.put(row_, column, stored(value));
    }

    typed::Cursor& rows_;
    Block& block_;
    std::size_t row_;
};

}  // namespace

Query::Query(Transaction& work, const std::string& sql, TextForm form) : statement_(work.prepare(sql, form)) {
    for (const Column& column : columns()) {
        kinds_.push_back(cell_kind(column));
        reads_.push_back(
            typed::reader_of(*statement_.statement_, reads_.size(), kind_to_read(kinds_.back())));
    }
}

std::shared_ptr<typed::Cursor> Query::run(std::span<const Parameter> values) const {
    return typed::open(statement_.statement_, values);
}

bool Query::read(typed::Cursor& rows, Block& block) const {
    if (!typed::next_row(rows)) return false;
    Filling filling(rows, block, block.add_row());
    for (std::size_t column = 0; column < kinds_.size(); ++column)
        filling.fill(column, kinds_[column], reads_[column]);
    return true;
}

const Query& Queries::get(Transaction& work, const std::string& sql, TextForm form) {
    const auto found = by_text_.find(sql);
    if (found != by_text_.end()) return found->second;
    return by_text_.emplace(sql, Query(work, sql, form)).first->second;
}

}  // namespace zmfb::rdd
