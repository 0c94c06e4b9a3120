/// What the areas of one connection share.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"
#include "zmfbconn/transaction.h"

namespace zmfb::rdd {

class Joint;
class OpenArea;

/// One for each object that areas are open on. It keeps no handle of the object: when the program's last one
/// goes, areas are closed.
class Desk {
  public:
    static std::shared_ptr<Desk> of(const zmFBConn& connection);
    /// That of an object which has one; else null.
    static std::shared_ptr<Desk> known(host::Object& object);

    explicit Desk(host::Object& object) : object_(object) {}
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;
    ~Desk();

    /// A handle for a call.
    [[nodiscard]] zmFBConn connection() const { return zmFBConn::of(Value(&object_)); }
    /// A transaction that an area reads in as long as it is open.
    [[nodiscard]] Transaction reading() const;
    /// Changes something: in the open Joint, or in a transaction that is committed.
    void change(const std::function<void(Transaction& work)>& work) const;

    void add(OpenArea& area);
    void remove(OpenArea& area) { std::erase(areas_, &area); }
    [[nodiscard]] const std::vector<OpenArea*>& areas() const { return areas_; }
    /// Closes one by force: writes that are held together are undone first.
    void close(OpenArea& area);

    /// Has the areas give up their statements, and the indexes that these use.
    void release_statements() const;

    [[nodiscard]] Joint* joint() const { return joint_; }
    /// Null while there is none.
    [[nodiscard]] Transaction* joint_transaction() const;

  private:
    friend class Joint;
    host::Object& object_;
    std::vector<OpenArea*> areas_;
    Joint* joint_ = nullptr;
};

/// Writes of several areas in one transaction, behind the class Together.
class Joint {
  public:
    /// Throws AreaError while there is one on that desk.
    explicit Joint(std::shared_ptr<Desk> desk);
    Joint(const Joint&) = delete;
    Joint& operator=(const Joint&) = delete;
    ~Joint() { give_up(); }

    Transaction& transaction() { return work_; }
    /// Has an area given back at the end. There must be room for it.
    void keep(std::shared_ptr<OpenArea> area) noexcept { kept_.push_back(std::move(area)); }
    /// Makes room for so many more areas to be kept.
    void make_room(std::size_t areas) { kept_.reserve(kept_.size() + areas); }
    /// Throws AreaError when it has ended; else it has from then on.
    void commit();
    void roll_back();
    void give_up() noexcept;

  private:
    void check_open() const;
    void end(bool committed);

    std::shared_ptr<Desk> desk_;
    Transaction work_;
    std::vector<std::shared_ptr<OpenArea>> kept_;
    bool open_ = false;
};

}  // namespace zmfb::rdd
