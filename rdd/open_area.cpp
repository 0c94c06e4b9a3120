#include "rdd/open_area.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

using Reason = AreaError::Reason;

std::shared_ptr<OpenArea> OpenArea::open(const zmFBConn& connection, std::string_view table,
                                         const AreaOptions& options) {
    const std::shared_ptr<OpenArea> area(new OpenArea(Desk::of(connection)));
    zmFBConn handle = connection;
    if (!handle(m::isrddactive))
        throw AreaError(Reason::closed, "The connection object opens no areas: it is not active");
    area->walk_.emplace(area->desk(), options.texts, host::upper(host::alltrim(table)).string());
    area->columns_ = area->walk_->columns();
    area->alias_ = options.alias.empty() ? area->table() : options.alias;
    const std::string unique = make_unique(area->alias_);
    area->announced_ = options.of_runtime ? area->alias_ : unique;
    area->claims_.emplace(area->desk(), area->table(), make_area_id(handle, area->table(), unique),
                          options.mode);
    try {
        area->desk_->add(*area);
        handle(m::announcealias, area->announced_);
        area->walk_->top();
    } catch (...) {
        area->close();
        throw;
    }
    return area;
}

Walk& OpenArea::walk() {
    if (!is_open()) throw AreaError(Reason::closed, table() + " is closed");
    return *walk_;
}

Claims& OpenArea::claims() {
    (void)walk();
    return *claims_;
}

// The table is not altered while it is open.
const Structure& OpenArea::structure() {
    if (!structure_.empty()) return structure_;
    structure_ = desk_->connection()(m::gettablestruct, table());
    for (const Column& column : columns().fields()) {
        const auto field = std::ranges::find(structure_, column.name, &FieldDescriptor::name);
        if (column.type == SqlType::real && field != structure_.end()) field->type = "F";
    }
    return structure_;
}

std::vector<KeptOrder> OpenArea::orders() {
    zmFBConn connection = desk_->connection();
    return orders_of(connection, table(), structure());
}

Walk& OpenArea::moving() {
    if (std::ranges::any_of(edits_, [](const Edit* edit) { return edit->is_assigned(); })) {
        throw AreaError(Reason::unwritten,
                        "Values were assigned in " + table() + " and not written: Held::write() writes them");
    }
    return walk();
}

void OpenArea::check_writable() const {
    if (claims_->mode() == OpenMode::read_only)
        throw AreaError(Reason::read_only, table() + " is open to read");
}

std::unique_ptr<Edit> OpenArea::hold(std::int64_t recno, Wait wait) {
    claims_->take(recno, wait);
    try {
        return std::make_unique<Edit>(shared_from_this(), recno);
    } catch (...) {
        claims_->give_back(recno);
        throw;
    }
}

std::unique_ptr<Edit> OpenArea::lock(Wait wait) {
    Walk& walk = moving();
    check_writable();
    auto held = hold(walk.recno(), wait);
    if (!walk.refresh()) held->throw_gone();
    held->take(walk.record().only());
    return held;
}

std::unique_ptr<Edit> OpenArea::edit() {
    const Record& record = walk().record();
    check_writable();
    const std::int64_t recno = walk_->recno();
    if (!claims_->covers(recno))
        throw AreaError(Reason::not_locked, fmt::format("Record {} of {} is not locked", recno, table()));
    auto held = hold(recno, Wait::zero());
    held->take(record.only());
    return held;
}

std::unique_ptr<Edit> OpenArea::append(Wait wait) {
    (void)moving();
    check_writable();
    return std::make_unique<Edit>(shared_from_this(), wait);
}

void OpenArea::lock_record(std::int64_t recno, Wait wait) {
    check_writable();
    if (by_number_.contains(recno)) return;
    Claims& claims = this->claims();
    const auto noted = by_number_.insert(recno).first;
    try {
        claims.take(recno, wait);
    } catch (...) {
        by_number_.erase(noted);
        throw;
    }
    walk_->doubt();
}

void OpenArea::unlock_record(std::int64_t recno) {
    (void)claims();
    if (by_number_.erase(recno) > 0) claims_->give_back(recno);
}

void OpenArea::lock_table(Wait wait) {
    check_writable();
    claims().take_table(wait);
    walk_->doubt();
}

void OpenArea::unlock() {
    (void)claims();
    for (const std::int64_t recno : std::exchange(by_number_, {})) claims_->give_back(recno);
    claims_->give_table_back();
}

void OpenArea::zap() {
    (void)moving();
    if (claims_->mode() != OpenMode::exclusive)
        throw AreaError(Reason::not_exclusive, table() + " is not open exclusively");
    desk_->change([this](Transaction& work) { work.execute("delete from " + quoted(table())); });
    walk_->top();
}

void OpenArea::close() noexcept {
    if (!is_open()) return;
    const auto alive = shared_from_this();
    walk_.reset();
    by_number_.clear();
    if (desk_->joint() != nullptr) {
        desk_->joint()->keep(alive);
    } else {
        leave();
    }
}

void OpenArea::leave() noexcept {
    desk_->remove(*this);
    try {
        zmFBConn connection = desk_->connection();
        claims_->leave(connection.isconnected());
        connection(m::removealias, announced_);
    } catch (...) {  // broken off by an error block; there is nobody to tell
    }
}

void OpenArea::change_transaction() noexcept {
    if (walk_) walk_->change_transaction();
}

void OpenArea::joint_ended(bool committed) noexcept {
    change_transaction();
    if (walk_ && !committed && !walk_->eof()) walk_->stand_on(walk_->recno());
    claims_->joint_ended();
}

}  // namespace zmfb::rdd
