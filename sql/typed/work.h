/// Transactions, and what depends on them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sql/typed/session.h"
#include "zmfbconn/transaction.h"

namespace zmfb::typed {

class Dependent;

/// A transaction of the object interface.
class Work {
  public:
    /// Begins one. Throws.
    Work(std::shared_ptr<Session> session, Access access, Isolation isolation);
    /// The batch transaction, which the calls by handle may end.
    Work(std::shared_ptr<Session> session, Firebird::ITransaction* batch);
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work();

    /// Throws when it has ended.
    void check_active(std::string_view statement = {}) const;
    /// The same.
    [[nodiscard]] Firebird::ITransaction* transaction(std::string_view statement = {}) const {
        check_active(statement);
        return transaction_;
    }
    [[nodiscard]] bool active() const { return transaction_ != nullptr; }
    [[nodiscard]] Session& session() const { return *session_; }

    void commit();
    void roll_back();
    /// Rolls back, whatever comes of it.
    void give_up() noexcept;
    /// It has ended without any call here.
    void ended(const char* how) noexcept;

    void add(Dependent& dependent) { dependents_.push_back(&dependent); }
    void remove(Dependent& dependent) { std::erase(dependents_, &dependent); }

    /// How many transactions of this kind are open that may change rows.
    static int writing();

  private:
    std::shared_ptr<Session> session_;
    Firebird::ITransaction* transaction_ = nullptr;
    bool read_only_ = false;
    bool is_batch_ = false;
    const char* how_ended_ = "";
    std::vector<Dependent*> dependents_;
};

/// Something that lives inside a transaction and is of no use after it.
class Dependent {
  public:
    explicit Dependent(std::shared_ptr<Work> work) : work_(std::move(work)) { work_->add(*this); }
    Dependent(const Dependent&) = delete;
    Dependent& operator=(const Dependent&) = delete;
    virtual ~Dependent() { work_->remove(*this); }

    /// Called when the transaction has ended: what it has of the client is to be released.
    virtual void transaction_ended() noexcept = 0;
    [[nodiscard]] Work& work() const { return *work_; }
    [[nodiscard]] const std::shared_ptr<Work>& shared_work() const { return work_; }

  private:
    std::shared_ptr<Work> work_;
};

}  // namespace zmfb::typed
