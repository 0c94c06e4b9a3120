/// Tests of work areas: a table of goods, and what is thrown.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/database.h"
#include "zmfbconn/area.h"
#include "zmfbconn/methods.h"

namespace zmfb::test {

using Reason = AreaError::Reason;

/// What `work` throws as AreaError; none, and a failed test, when it throws none.
template <class Work>
std::optional<Reason> reason_of(const Work& work) {
    try {
        work();
    } catch (const AreaError& error) {
        return error.reason();
    }
    ADD_FAILURE() << "nothing was thrown";
    return std::nullopt;
}

/// Who `work` finds in its way; nobody, and a failed test, when it throws no InUse.
template <class Work>
Holder holder_of(const Work& work) {
    try {
        work();
    } catch (const InUse& in_use) {
        return in_use.holder();
    }
    ADD_FAILURE() << "nothing was in the way";
    return Holder("");
}

/// A database with the table STOCK, empty: CODE C 5, ONHAND N 8, PRICE N 10,2, SINCE D, LISTED L.
class AreaTest : public Database {
  protected:
    AreaTest() {
        const Structure fields = {{"CODE", "C", 5, 0},
                                  {"ONHAND", "N", 8, 0},
                                  {"PRICE", "N", 10, 2},
                                  {"SINCE", "D", 8, 0},
                                  {"LISTED", "L", 1, 0}};
        connection()(m::createtable, "STOCK", fields);
    }

    /// Adds records with the codes "A1", "A2", ... and as many on hand.
    void fill(int records) const {
        execute("execute block as declare i integer = 1; begin while (i <= " + std::to_string(records) +
                ") do begin insert into STOCK (CODE, ONHAND) values ('A' || :i, :i); i = i + 1; end end");
    }
    Area stock(const AreaOptions& options = {}) { return Area(connection(), "stock", options); }

    /// All rows of the three system tables.
    [[nodiscard]] std::string system_tables() const {
        std::string all;
        for (const char* query :
             {"select OPN_TABLE, OPN_SHARED from RDDSYS_OPN order by 1, 2",
              "select FLK_TABLE from RDDSYS_FLK",
              "select RLK_TABLE, cast(RLK_RECNO as integer) from RDDSYS_RLK order by 1, 2"}) {
            for (const auto& row : rows(query)) {
                for (const auto& value : row) all += value + " ";
                all += "; ";
            }
        }
        return all;
    }
    [[nodiscard]] std::string stored(int recno, const std::string& field) const {
        const auto found = rows("select " + field + " from STOCK where RECNO = " + std::to_string(recno));
        return found.empty() ? "gone" : found[0][0];
    }
};

/// The records that a walk meets.
inline std::vector<std::int64_t> walked(Area& area) {
    std::vector<std::int64_t> met;
    for (const Area& at : area) met.push_back(at.recno());
    return met;
}

}  // namespace zmfb::test
