/// What an area has of its table as against others: its registration and its locks.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/area.h"

namespace zmfb::rdd {

class Desk;

/// The id of an area of this process, at most 50 characters: "TABLE:ALIAS~xxxxxxxx:PID:HOST". The letters
/// behind the ~ are random and never cut; the alias is cut first, then the table, then the host.
std::string make_area_id(zmFBConn connection, std::string_view table, std::string_view unique_alias);
inline constexpr std::size_t random_letters = 8;
/// An alias with such letters.
std::string make_unique(std::string_view alias);

/// Everything is written first and looked at afterwards: of two areas that get in each other's way one sees
/// the other. What the engine refuses in a deadlock is tried again. The methods write; what they find may be
/// that a query has failed, so looking is done here, where that is thrown.
class Claims {
  public:
    using Wait = Area::Wait;

    /// Registers the area. Throws InUse or AreaError, and has taken back what it made.
    Claims(const Desk& desk, std::string table, std::string id, OpenMode mode);

    [[nodiscard]] const std::string& id() const { return id_; }
    [[nodiscard]] OpenMode mode() const { return mode_; }
    /// Whether a record may be written.
    [[nodiscard]] bool covers(std::int64_t recno) const;

    /// Takes a record, once more if it is there already. Throws InUse or AreaError.
    void take(std::int64_t recno, Wait wait);
    /// Gives it back when it was taken by nobody else; while writes are held together, at their end.
    void give_back(std::int64_t recno) noexcept;
    void take_table(Wait wait);
    void give_table_back() noexcept;
    [[nodiscard]] bool has_table() const { return has_table_ && wants_table_; }
    /// Writes are no longer held together.
    void joint_ended() noexcept;
    /// Gives everything back; only forgets it when there is no database to tell.
    void leave(bool connected) noexcept;

  private:
    struct Lock {
        int users = 0;
        bool in_database = false;
    };
    /// The id of who refused it; none when it was done, "" when nobody can be named.
    using Refused = std::optional<std::string>;
    void insist(std::string_view what, Wait wait, const std::function<Refused()>& attempt) const;
    Refused open_shared() const;
    Refused open_exclusive() const;
    Refused lock_record(std::int64_t recno) const;
    Refused lock_table() const;
    void unlock_record(std::int64_t recno) const noexcept;
    void unlock_table() const noexcept;
    void unregister() const noexcept;
    /// The first area that a query finds for the table and this area; "" when there is none. Throws SqlError.
    template <class... More>
    [[nodiscard]] std::string find(const char* query, const More&... more) const;
    /// The same of others that may have come in before; takes back what was written when there are any, or
    /// the query fails.
    template <class TakeBack>
    Refused look(const char* query, const TakeBack& take_back) const;

    const Desk& desk_;
    std::string table_, id_;
    OpenMode mode_;
    mutable Transaction looking_;
    mutable std::map<const char*, Statement> looks_;
    std::map<std::int64_t, Lock> records_;
    bool has_table_ = false, wants_table_ = false;
};

}  // namespace zmfb::rdd
