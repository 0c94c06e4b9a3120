#include "rdd/desk.h"

#include <algorithm>
#include <map>
#include <utility>

#include "rdd/close_area.h"
#include "rdd/open_area.h"
#include "zmfbconn/area_error.h"

namespace zmfb::rdd {

namespace {

using Desks = std::map<host::Object*, std::weak_ptr<Desk>>;

// Never destroyed: areas may be the program's last objects.
Desks& desks() {
    static Desks& all = *new Desks;
    return all;
}

}  // namespace

std::shared_ptr<Desk> Desk::of(const zmFBConn& connection) {
    host::Object* const object = connection.value().object();
    if (object == nullptr) throw AreaError(AreaError::Reason::closed, "There is no connection object");
    std::weak_ptr<Desk>& known = desks()[object];
    if (auto desk = known.lock()) return desk;
    auto made = std::make_shared<Desk>(*object);
    known = made;
    return made;
}

Desk::~Desk() { desks().erase(&object_); }

Transaction Desk::reading() const {
    zmFBConn handle = connection();
    return Transaction(handle, Access::read_only, Isolation::read_committed);
}

void Desk::change(const std::function<void(Transaction& work)>& work) const {
    if (joint_ != nullptr) return work(joint_->transaction());
    zmFBConn handle = connection();
    Transaction own(handle, Access::read_write, Isolation::read_committed);
    work(own);
    own.commit();
}

Transaction* Desk::joint_transaction() const { return joint_ == nullptr ? nullptr : &joint_->transaction(); }

void Desk::add(OpenArea& area) {
    if (joint_ != nullptr) joint_->make_room(areas_.size() + 1);
    areas_.push_back(&area);
}

void Desk::release_statements() const {
    for (OpenArea* const area : areas_) {
        if (area->is_open()) area->walk().release();
    }
}

std::shared_ptr<Desk> Desk::known(host::Object& object) {
    const auto found = desks().find(&object);
    return found == desks().end() ? nullptr : found->second.lock();
}

void Desk::close(OpenArea& area) {
    const std::shared_ptr<OpenArea> alive = area.shared_from_this();
    if (joint_ != nullptr) joint_->give_up();
    alive->close();
}

void close_area(host::Object& object, std::string_view alias) {
    const std::shared_ptr<Desk> desk = Desk::known(object);
    if (desk == nullptr) return;
    const auto named = std::ranges::find(desk->areas(), alias, &OpenArea::announced);
    if (named != desk->areas().end()) desk->close(**named);
}

void close_areas(host::Object& object) {
    const std::shared_ptr<Desk> desk = Desk::known(object);
    while (desk != nullptr && !desk->areas().empty()) desk->close(*desk->areas().back());
}

Joint::Joint(std::shared_ptr<Desk> desk)
    : desk_(std::move(desk)), work_([this] {
          Joint* const before = desk_->joint_;
          if (before != nullptr && !before->work_.active()) before->give_up();
          if (desk_->joint_ != nullptr)
              throw AreaError(AreaError::Reason::together,
                              "Writes of the connection are held together already");
          zmFBConn handle = desk_->connection();
          return Transaction(handle, Access::read_write, Isolation::read_committed);
      }()) {
    make_room(desk_->areas_.size());
    desk_->joint_ = this;
    open_ = true;
    for (OpenArea* const area : desk_->areas_) area->change_transaction();
}

void Joint::check_open() const {
    if (!open_) throw AreaError(AreaError::Reason::together, "The writes were committed or undone before");
}

void Joint::commit() {
    check_open();
    try {
        work_.commit();
    } catch (...) {
        end(false);
        throw;
    }
    end(true);
}

void Joint::roll_back() {
    check_open();
    give_up();
}

void Joint::give_up() noexcept {
    if (!open_) return;
    try {
        if (work_.active()) work_.roll_back();
    } catch (...) {  // it has ended all the same
    }
    end(false);
}

// What was read of records that were undone is not what is there.
void Joint::end(bool committed) {
    open_ = false;
    desk_->joint_ = nullptr;
    for (std::size_t at = 0; at < desk_->areas_.size(); ++at) desk_->areas_[at]->joint_ended(committed);
    for (const auto& area : std::exchange(kept_, {})) area->leave();
}

}  // namespace zmfb::rdd
