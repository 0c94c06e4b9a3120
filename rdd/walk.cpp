#include "rdd/walk.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "rdd/desk.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

namespace {

constexpr std::string_view record_number = "RECNO";
constexpr std::size_t most_bytes = 256 * 1024;  // of a block

// How the connection wants rows to be read.
enum class SkipMode { single, blocks, cursor };

SkipMode skip_mode(zmFBConn connection) {
    const std::int64_t mode = connection(m::getglbskipmode);
    return mode == 0 ? SkipMode::single : mode == 1 ? SkipMode::blocks : SkipMode::cursor;
}

std::size_t cache_size(zmFBConn connection) {
    constexpr std::int64_t most_rows = 1000000;
    return static_cast<std::size_t>(
        std::clamp<std::int64_t>(connection(m::getglbskipcachesize), 1, most_rows));
}

// What follows the table in a query; "" when no condition is left.
std::string where_all(std::vector<std::string> conditions) {
    std::erase(conditions, "");
    return conditions.empty() ? "" : fmt::format(" where ({})", fmt::join(conditions, ") and ("));
}

}  // namespace

Walk::Walk(Desk& desk, TextForm form, std::string table)
    : desk_(desk),
      form_(form),
      own_(desk.reading()),
      columns_(std::make_shared<const Columns>(own_, std::move(table))) {}

Transaction& Walk::work() {
    Transaction* const joint = desk_.joint_transaction();
    return joint != nullptr ? *joint : own_;
}

const Query& Walk::query(const std::string& sql) {
    Queries& queries = desk_.joint_transaction() != nullptr ? joint_queries_ : own_queries_;
    return queries.get(work(), sql, form_);
}

bool Walk::is_natural() const { return order_.key == record_number; }

// Where it stands.
Parameter Walk::key() const {
    if (is_natural()) return record_->block().real(record_->row(), 0);
    return bytes_of(key_text());
}

// Record number, key, fields.
std::string Walk::select(std::string_view first, std::vector<std::string> conditions) const {
    return fmt::format("select {}{}{}{} from {}{}", first, record_number,
                       is_natural() ? "" : ", " + key_column(order_), columns_->list(),
                       quoted(columns_->table()), where_all(std::move(conditions)));
}

const Query& Walk::in_order(std::string_view first, Direction direction, const std::string& beyond) {
    return query(select(first, {filter_, order_.only, beyond}) + " " + order_by(order_, direction));
}

// The first of the rows becomes the current one. Without any, nothing is changed.
bool Walk::read(Direction direction, From from) {
    const SkipMode mode = skip_mode(desk_.connection());
    const bool goes_on = from == From::position && direction == direction_;
    if (!goes_on) rows_.reset();
    const std::size_t least = cache_size(desk_.connection());
    if (!goes_on || ahead_ == 0) ahead_ = least;
    if (mode == SkipMode::single) ahead_ = 1;
    if (rows_ == nullptr) {
        const bool limited = mode != SkipMode::cursor;
        const std::string beyond =
            from == From::end ? "" : condition_beyond(order_, direction, from == From::record);
        rows_of_ = &in_order(limited ? "first ? " : "", direction, beyond);
        std::vector<Parameter> values;
        if (limited) values.emplace_back(ahead_);
        if (from != From::end) values.push_back(key());
        rows_ = rows_of_->run(values);
    }
    Block block = rows_of_->block();
    const auto rows = std::exchange(rows_, nullptr);  // given up when reading fails
    bool more = true;
    while (block.rows() < ahead_ && block.bytes() < most_bytes && (more = rows_of_->read(*rows, block))) {
    }
    if (more && mode == SkipMode::cursor) rows_ = rows;
    if (block.rows() == 0) return false;
    grow(block, least);
    stand_on(std::move(block), direction);
    return true;
}

// The row at a key or the next one behind it; what is skipped to from there begins a new block.
bool Walk::read_one(Direction direction, const std::string& from) {
    const Query& one = in_order("first 1 ", direction, condition_beyond(order_, direction, true));
    const Parameter value[] = {bytes_of(from)};
    const auto rows = one.run(value);
    Block block = one.block();
    if (!one.read(*rows, block)) return false;
    rows_.reset();
    ahead_ = 0;
    stand_on(std::move(block), direction);
    return true;
}

void Walk::stand_on(Block block, Direction direction) {
    direction_ = direction;
    if (!record_) record_.emplace(columns_, Block(block.kinds()));
    record_->take(std::move(block), 0);
    doubted_ = false;
    pending_ = 0;
}

void Walk::grow(const Block& block, std::size_t least) {
    const std::size_t most = std::max<std::size_t>(1, most_bytes / (block.bytes() / block.rows() + 1));
    ahead_ = std::clamp<std::size_t>(2 * ahead_, 1, std::max(most, least));
}

std::optional<Record> Walk::look(std::int64_t recno) {
    constexpr std::int64_t most = std::int64_t{1} << 53;  // what the column of doubles has exactly
    if (recno < -most || recno > most) return std::nullopt;
    const Query& one = query(select("", {"RECNO = ?"}));
    const Parameter value[] = {recno};
    const auto rows = one.run(value);
    Block block = one.block();
    if (!one.read(*rows, block)) return std::nullopt;
    return Record(columns_, std::move(block));
}

bool Walk::read_number(std::int64_t recno) {
    std::optional<Record> found = look(recno);
    if (!found) return false;
    leave();
    record_ = std::move(found);
    return true;
}

void Walk::leave() {
    record_.reset();
    rows_.reset();
    pending_ = 0;
    ahead_ = 0;
    doubted_ = false;
}

bool Walk::go_to_end(Direction direction) {
    bof_ = !read(direction, From::end);
    if (bof_) leave();
    return !bof_;
}

bool Walk::top() { return go_to_end(Direction::forward); }
bool Walk::bottom() { return go_to_end(Direction::backward); }

bool Walk::step(Direction direction) {
    const bool on = direction == direction_;
    const std::size_t row = record_->row();
    if (on ? row + 1 == record_->block().rows() : row == 0) return read(direction, From::position);
    record_->stand_on(on ? row + 1 : row - 1);
    return true;
}

// A record that has gone is left standing by what was read of it.
void Walk::settle() {
    if (pending_ != 0) {
        if (!read_number(pending_)) leave();
    } else if (doubted_) {
        doubted_ = false;
        refresh();
    }
}

bool Walk::skip(std::int64_t count) {
    if (!is_natural() || pending_ != 0 || count == 0) settle();
    bof_ = false;
    if (count < 0 && eof()) {
        if (!bottom()) return false;
        ++count;
    }
    for (; count < 0; ++count) {
        if (step(Direction::backward)) continue;
        bof_ = true;
        return false;
    }
    for (; count > 0 && !eof(); --count) {
        if (!step(Direction::forward)) leave();
    }
    return !eof();
}

bool Walk::go(std::int64_t recno) {
    bof_ = false;
    if (read_number(recno)) return true;
    leave();
    return false;
}

bool Walk::refresh() {
    const std::int64_t number = recno();
    if (read_number(number)) return true;
    drop();
    return false;
}

std::size_t Walk::read_on() {
    settle();
    bof_ = false;
    if (!eof() && !read(Direction::forward, From::record)) leave();
    return eof() ? 0 : record_->block().rows();
}

std::int64_t Walk::recno() const {
    if (pending_ != 0) return pending_;
    if (!record_) throw AreaError(AreaError::Reason::no_record, columns_->table() + " is not on a record");
    return std::llround(record_->block().real(record_->row(), 0));
}

const Record& Walk::record() {
    settle();
    (void)recno();
    return *record_;
}

void Walk::set_order(Order order) {
    std::swap(order_, order);
    try {
        (void)in_order("first ? ", Direction::forward);
    } catch (...) {
        std::swap(order_, order);
        throw;
    }
    if (!eof()) stand_on(recno());
}

bool Walk::seek(const KeyRange& keys, SeekOptions options) {
    bof_ = false;
    const bool is_there =
        options.last ? read_one(Direction::backward, keys.high) : read_one(Direction::forward, keys.low);
    if (is_there && keys.holds(key_text())) return true;
    const bool is_next = options.last ? options.soft && read_one(Direction::forward, keys.low) : is_there;
    if (!options.soft || !is_next) leave();
    return false;
}

std::string Walk::kept(std::string_view text) {
    if (form_ == TextForm::as_kept || std::ranges::all_of(text, [](unsigned char c) { return c < 128; }))
        return std::string(text);
    const auto bytes =
        work()
            .prepare(fmt::format("select cast(cast(? as varchar({0})) as varchar({0}) character set octets) "
                                 "from RDB$DATABASE",
                                 text.size()),
                     form_)
            .one<Bytes>(text);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void Walk::release() {
    drop();
    own_queries_.clear();
    joint_queries_.clear();
}

// By itself it has to be a condition, too: one that closes the parentheses around it would undo what it
// stands beside, and a walk would not end.
void Walk::set_filter(std::string filter) {
    std::swap(filter_, filter);
    try {
        if (counting_under_filter().parameter_count() > 0)
            throw SqlError({-804, "07001", "A filter takes no values", filter_});
        (void)in_order("first ? ", Direction::forward);
    } catch (...) {
        std::swap(filter_, filter);
        throw;
    }
    drop();
}

bool Walk::is_in(const KeyRange& keys) {
    (void)record();
    return keys.holds(key_text());
}

std::int64_t Walk::place() {
    (void)record();
    const std::string before = condition_beyond(order_, Direction::backward, true);
    return counting(where_all({before, filter_, order_.only})).one<std::int64_t>(key());
}

Statement Walk::counting(const std::string& where) {
    return work().prepare("select count(*) from " + quoted(columns_->table()) + where, form_);
}

Statement Walk::counting_under_filter() { return counting(filter_.empty() ? "" : " where " + filter_); }

std::int64_t Walk::count() { return counting_under_filter().one<std::int64_t>(); }

void Walk::stand_on(std::int64_t recno) {
    leave();
    bof_ = false;
    pending_ = recno;
}

void Walk::drop() {
    rows_.reset();
    ahead_ = 0;
    if (record_ && record_->block().rows() > 1) record_->take(record_->block().only(record_->row()), 0);
}

void Walk::doubt() {
    drop();
    doubted_ = record_.has_value();
}

void Walk::change_transaction() {
    drop();
    joint_queries_.clear();
}

}  // namespace zmfb::rdd
