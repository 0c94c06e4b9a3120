#include "zmfbconn/area.h"

#include <fmt/format.h>

#include <utility>

#include "rdd/open_area.h"

namespace zmfb {

using Reason = AreaError::Reason;

namespace {

bool is_number(std::string_view text) {
    return !text.empty() && text.front() != '0' &&
           text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The letters that make an area's name unique mean nothing to people.
std::string_view without_random_letters(std::string_view name) {
    const std::size_t end = name.rfind('~');
    return end != std::string_view::npos && name.size() - end - 1 == rdd::random_letters ? name.substr(0, end)
                                                                                         : name;
}

}  // namespace

// A table, a process and a host have no colons: so the ends are taken off first.
Holder::Holder(std::string_view area_id) : id(area_id) {
    const std::size_t first = area_id.find(':');
    if (first != std::string_view::npos) {
        table = area_id.substr(0, first);
        area_id.remove_prefix(first + 1);
    }
    const std::size_t last = area_id.rfind(':');
    const std::string_view before = area_id.substr(0, last);
    const std::size_t middle = before.rfind(':');
    if (last != std::string_view::npos && middle != std::string_view::npos &&
        is_number(before.substr(middle + 1))) {
        host = area_id.substr(last + 1);
        process = before.substr(middle + 1);
        area_id = before.substr(0, middle);
    }
    area = without_random_letters(area_id);
}

std::string Holder::words() const {
    return process.empty() ? id : fmt::format("{}, process {} on {}", area, process, host);
}

InUse::InUse(std::string_view what, Holder holder)
    : std::runtime_error(fmt::format("{} is in use by {}", what, holder.words())),
      holder_(std::move(holder)) {}

Held::Held(std::unique_ptr<rdd::Edit> edit) : edit_(std::move(edit)) {}
Held::Held(Held&& other) noexcept = default;
Held& Held::operator=(Held&& other) noexcept = default;
Held::~Held() = default;

rdd::Record& Held::record() const {
    if (edit_ == nullptr) throw AreaError(Reason::no_record, "There is no record held");
    return edit_->record();
}

FieldPlace Held::operator[](std::string_view name) {
    rdd::Record& of = record();
    return {of, rdd::find_field(of, name)};
}

FieldPlace Held::at(std::size_t index) {
    rdd::Record& of = record();
    rdd::check_field(of, &of.columns(), index);
    return {of, index};
}

void Held::write() {
    (void)record();
    edit_->write();
}

void Held::remove() {
    (void)record();
    edit_->remove();
    edit_.reset();
}

std::int64_t Held::recno() const { return edit_ == nullptr ? 0 : edit_->recno(); }

Area::Area(zmFBConn& connection, std::string_view table, const AreaOptions& options)
    : area_(rdd::OpenArea::open(connection, table, options)) {}

Area::Area(Area&& other) noexcept = default;

Area& Area::operator=(Area&& other) noexcept {
    if (this == &other) return *this;
    close();
    area_ = std::move(other.area_);
    return *this;
}

Area::~Area() { close(); }

void Area::close() {
    if (area_ != nullptr) area_->close();
}

bool Area::is_open() const { return area_ != nullptr && area_->is_open(); }

rdd::OpenArea& Area::open() const {
    if (area_ == nullptr) throw AreaError(Reason::closed, "The area was moved elsewhere");
    (void)area_->walk();
    return *area_;
}

const std::string& Area::table() const { return open().table(); }
const std::string& Area::id() const { return open().id(); }
const std::vector<Column>& Area::fields() const { return open().columns().fields(); }
const rdd::Columns* Area::columns() const { return &open().columns(); }

std::size_t Area::typed_field(std::string_view name, typed::Kind kind) const {
    const std::size_t field = columns()->find(name);
    rdd::check_kind(fields()[field], kind);
    return field;
}

bool Area::top() { return open().moving().top(); }
bool Area::bottom() { return open().moving().bottom(); }
bool Area::skip(std::int64_t count) { return open().moving().skip(count); }
bool Area::go(std::int64_t recno) { return open().moving().go(recno); }
bool Area::refresh() { return open().walk().refresh(); }
std::size_t Area::read_on() { return open().moving().read_on(); }
bool Area::eof() const { return open().walk().eof(); }
bool Area::bof() const { return open().walk().bof(); }
std::int64_t Area::recno() const { return open().walk().recno(); }
void Area::filter(std::string_view condition) { open().moving().set_filter(std::string(condition)); }
std::int64_t Area::count() { return open().walk().count(); }

const rdd::Record& Area::record() const { return open().walk().record(); }

FieldValue Area::operator[](std::string_view name) const {
    const rdd::Record& of = record();
    return {of, rdd::find_field(of, name)};
}

FieldValue Area::at(std::size_t index) const {
    const rdd::Record& of = record();
    rdd::check_field(of, columns(), index);
    return {of, index};
}

Held Area::lock(Wait wait) { return Held(open().lock(wait)); }
Held Area::edit() { return Held(open().edit()); }
Held Area::append(Wait wait) { return Held(open().append(wait)); }
void Area::lock_record(std::int64_t recno, Wait wait) { open().lock_record(recno, wait); }
void Area::unlock_record(std::int64_t recno) { open().unlock_record(recno); }
void Area::lock_table(Wait wait) { open().lock_table(wait); }
void Area::unlock_table() { open().claims().give_table_back(); }
void Area::unlock() { open().unlock(); }

std::vector<std::int64_t> Area::locked_records() const {
    const auto& records = open().by_number();
    return {records.begin(), records.end()};
}

bool Area::is_table_locked() const { return open().claims().has_table(); }
void Area::zap() { open().zap(); }

Together::Together(zmFBConn& connection) : joint_(std::make_unique<rdd::Joint>(rdd::Desk::of(connection))) {}

Together::~Together() = default;

void Together::commit() { joint_->commit(); }
void Together::roll_back() { joint_->roll_back(); }

}  // namespace zmfb
