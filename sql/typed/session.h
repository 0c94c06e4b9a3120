/// Attachments as the typed way sees them, and what is open on them.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "sql/new_types.h"
#include "sql/object_client.h"
#include "sql/typed/encoding.h"
#include "zmfbconn/connection.h"

namespace zmfb::typed {

class Prepared;
class Work;

/// An attachment made through the object interface. Lives until it is detached, and as an empty shell as long
/// as something refers to it.
class Session {
  public:
    Session(Firebird::IAttachment* attachment, isc_db_handle handle);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    /// That of an object. Throws when the object is not attached, or not through the object interface.
    static std::shared_ptr<Session> of(zmFBConn& connection);

    /// Null once it is detached.
    [[nodiscard]] Firebird::IAttachment* attachment() const { return attachment_; }
    /// Throws when nothing may be begun: while it is cancelled (zmfbconn/cancel.h), and when its database
    /// file could not be read or written before.
    void check_usable(std::string_view statement = {}) const;
    /// Has the engine give the types of Firebird 4 so from now on.
    Status use(sql::NewTypes as);
    [[nodiscard]] const Encoding& encoding() const { return *encoding_; }
    void set_encoding(std::shared_ptr<const Encoding> encoding) { encoding_ = std::move(encoding); }

    /// The open batch of this attachment. Throws when there is none.
    [[nodiscard]] std::shared_ptr<Work> batch() const;

    /// What has to end before the attachment does.
    void add(Work& work) { works_.push_back(&work); }
    void add(Prepared& statement) { statements_.push_back(&statement); }
    void remove(Work& work) { std::erase(works_, &work); }
    void remove(Prepared& statement) { std::erase(statements_, &statement); }

    /// Rolls all transactions back and lets go of everything.
    void end() noexcept;

  private:
    Firebird::IAttachment* attachment_;
    isc_db_handle handle_;
    sql::NewTypes new_types_ = sql::NewTypes::as_before;
    int structure_ = 0;  // on the disk; 0 until it is asked for
    std::shared_ptr<const Encoding> encoding_ = Encoding::latin1();
    std::vector<Work*> works_;
    std::vector<Prepared*> statements_;
};

/// The batch transaction of the process, when it was started through the object interface.
std::shared_ptr<Work>& shared_batch();

}  // namespace zmfb::typed
