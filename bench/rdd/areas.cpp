// Tables walked through, sought in and changed in work areas of the runtime.
#include <fmt/format.h>

#include <random>
#include <stdexcept>

#include "bench/rdd/commands.h"
#include "bench/support/stand_in_client.h"
#include "host/moves.h"
#include "host/record.h"
#include "host/result.h"
#include "host/workarea.h"
#include "zmfbconn/area.h"
#include "zmfbconn/methods.h"

namespace zmfb::bench {

namespace {

constexpr const char* table = "ITEMS";
constexpr const char* alias = "BENCH";
constexpr const char* dbf_alias = "BENCHDBF";

// A transaction that sees what others commit, as work areas read and write.
constexpr std::string_view newest_block = "\x01\x08\x0f\x11\x06";
constexpr std::string_view change_block = "\x01\x09\x0f\x11\x06";
static_assert(isc_tpb_write == 9 && isc_tpb_read_committed == 15 && isc_tpb_rec_version == 17);

void need(bool done, const char* what) {
    if (!done) throw std::runtime_error(what);
}

json make(Worker& worker, const json& request) {
    const Structure fields = {{"CODE", "C", 10, 0},   {"NAME", "C", 30, 0}, {"CITY", "C", 12, 0},
                              {"CREDIT", "N", 12, 2}, {"RATE", "N", 8, 0},  {"SINCE", "D", 8, 0},
                              {"LISTED", "L", 1, 0}};
    need((*worker.ours)(m::createtable, table, fields), "no table");
    worker.bare->execute(
        fmt::format(
            "execute block as declare I integer = 0; begin while (I < {}) do begin I = I + 1; insert into "
            "ITEMS (CODE, NAME, CITY, CREDIT, RATE, SINCE, LISTED) values ('K' || lpad(mod(:I * 7919, "
            "1000003), 7, '0'), 'Name ' || mod(:I * 31, 100003), decode(mod(:I, 3), 0, 'Lisboa', 1, "
            "'Porto', 'Vila Nova'), mod(:I * 37, 1000000) / 100.00, mod(:I, 1000), dateadd(mod(:I, 5000) "
            "day to timestamp '2001-01-01 00:00:00'), iif(mod(:I, 2) = 0, 'T', 'F')); end end",
            request.at("records").get<int>()),
        change_block);
    worker.bare->execute("create index ITEMS_PLAIN on ITEMS (CODE)", change_block);
    Area(*worker.ours, table).create_order("CODE", "CODE");
    return json::object();
}

// The same records in a DBF file, as they are in the open area.
json copy_to_dbf(Worker&, const json& request) {
    const std::string file = request.at("file");
    need(host::dbcreate(file, host::dbstruct(), "DBFIDX").logical(), "no file");
    host::dbusearea(true, "DBFIDX", file, dbf_alias, false);
    const std::int64_t fields = host::fcount();
    std::vector<Value> values;
    for (host::dbselectarea(alias), host::dbgotop(); !host::eof(); host::dbskip()) {
        values.clear();
        for (std::int64_t field = 1; field <= fields; ++field) values.push_back(host::fieldget(field));
        host::dbselectarea(dbf_alias);
        need(host::dbappend(), "not appended");
        for (std::int64_t field = 1; field <= fields; ++field)
            host::fieldput(field, values[static_cast<std::size_t>(field) - 1]);
        host::dbselectarea(alias);
    }
    host::dbclosearea(dbf_alias);
    host::dbusearea(true, "DBFIDX", file, dbf_alias, true, true);
    host::dbselectarea(alias);
    return json::object();
}

json open(Worker& worker, const json&) {
    need(worker.ours->call("setibrdd").logical(), "not attached");
    host::dbusearea(true, {}, table, alias, true);
    need(host::used().logical(), "the table is not open");
    return json::object();
}

json close(Worker&, const json&) {
    host::dbcloseall();
    return json::object();
}

json walk(Worker&, const json& request) {
    need(host::dbselectarea(request.value("area", alias)), "no such area");
    std::int64_t records = 0;
    double credit = 0;
    std::size_t touched = 0;
    const double seconds = seconds_of([&] {
        const std::int64_t fields = host::fcount();
        for (host::dbgotop(); !host::eof(); host::dbskip()) {
            ++records;
            for (std::int64_t field = 1; field <= fields; ++field) {
                const Value value = host::fieldget(field);
                if (value.is(host::Kind::character)) touched += value.text().size();
                if (field == 4) credit += value.number();
            }
        }
    });
    host::dbselectarea(alias);
    return {{"seconds", seconds},
            {"rows", records},
            {"credit", std::llround(credit * 100)},
            {"touched", touched}};
}

json select(Worker& worker, const json&) {
    Value result;
    const double seconds = seconds_of(
        [&] { result = worker.ours->call("internalselect", "select * from ITEMS order by RECNO"); });
    std::int64_t records = 0;
    double credit = 0;
    for (const Value& row : host::data_rows(result)) {
        ++records;
        credit += std::stod(std::string(row[4].text()));
    }
    return {{"seconds", seconds}, {"rows", records}, {"credit", std::llround(credit * 100)}};
}

std::vector<std::string> keys(const json& request) {
    std::mt19937 random(request.at("seed").get<unsigned>());
    const auto records = request.at("records").get<std::int64_t>();
    std::vector<std::string> all;
    for (int i = 0; i < request.at("seeks").get<int>(); ++i) {
        const std::int64_t record = std::uniform_int_distribution<std::int64_t>(1, records)(random);
        all.push_back(fmt::format("K{:07}", record * 7919 % 1000003));
    }
    return all;
}

json seek(Worker&, const json& request) {
    const auto wanted = keys(request);
    std::int64_t found = 0;
    double credit = 0;
    host::ordsetfocus("CODE");
    const double seconds = seconds_of([&] {
        for (const std::string& key : wanted) {
            if (!host::dbseek(key)) continue;
            ++found;
            credit += host::fieldget(4).number();
        }
    });
    host::ordsetfocus("");
    return {{"seconds", seconds}, {"rows", found}, {"credit", std::llround(credit * 100)}};
}

json seek_bare(Worker& worker, const json& request) {
    const auto wanted = keys(request);
    worker.bare->send_by(Calls::plain);
    std::int64_t found = 0, credit = 0;
    const double seconds = seconds_of([&] {
        worker.bare->query_each("select * from ITEMS where CODE = ?", wanted, newest_block,
                                [&](std::span<const XSQLVAR> row) {
                                    ++found;
                                    credit += value_at<std::int64_t>(row[3]);
                                });
    });
    return {{"seconds", seconds}, {"rows", found}, {"credit", credit}};
}

void change_one(int number) {
    host::dbgoto(1 + number % 100);
    need(host::rlock(), "not locked");
    host::fieldput(5, number % 1000);
    need(host::dbcommit(), "not written");
    host::dbunlock();
}

json change(Worker&, const json& request) {
    const int times = request.at("times");
    return {{"seconds", seconds_of([&] {
                 for (int i = 0; i < times; ++i) change_one(i);
             })}};
}

void append_one(int number) {
    need(host::dbappend(), "not appended");
    host::fieldput(1, "NEW");
    host::fieldput(5, number % 1000);
    need(host::dbcommit(), "not written");
    host::dbunlock();
}

json append(Worker&, const json& request) {
    const int times = request.at("times");
    return {{"seconds", seconds_of([&] {
                 for (int i = 0; i < times; ++i) append_one(i);
             })}};
}

// What methods send during `work`, which goes by handle; what work areas send themselves comes from the
// caller.
template <class Work>
std::vector<Sent> sent_during(const Work& work) {
    const Recorder recorder;
    work();
    return recorder.sent();
}

json by_bare_client(Worker& worker, const json& request, const std::vector<Sent>& learned,
                    std::span<const std::string> queries, std::span<const std::string> changes) {
    const int times = request.at("times");
    worker.bare->send_by(Calls::plain);
    std::uint64_t touched = 0;
    const double seconds = seconds_of([&] {
        for (int i = 0; i < times; ++i) {
            touched += replay(*worker.bare, learned);
            for (const std::string& query : queries)
                worker.bare->query(query, newest_block,
                                   [&](std::span<const XSQLVAR> row) { touched += touch(row); });
            worker.bare->execute_together(changes, change_block);
        }
    });
    return {{"seconds", seconds},
            {"statements", learned.size() + queries.size() + changes.size()},
            {"touched", touched}};
}

// Two reads of the record: DBGOTO's, and the one under the lock.
json change_bare(Worker& worker, const json& request) {
    const auto sent = sent_during([] { change_one(1); });
    const std::string reads[] = {"select * from ITEMS where RECNO = 2",
                                 "select * from ITEMS where RECNO = 2"};
    const std::string changes[] = {"update ITEMS set RATE = 5 where RECNO = 2"};
    return by_bare_client(worker, request, sent, reads, changes);
}

// The record that was added is read once.
json append_bare(Worker& worker, const json& request) {
    const auto sent = sent_during([] { append_one(1); });
    const std::string reads[] = {"select * from ITEMS where RECNO = 2"};
    const std::string insert[] = {"insert into ITEMS (RDD_AREAID) values (null)"};
    const std::string update[] = {"update ITEMS set CODE = 'NEW', RATE = 5 where RECNO = 2"};
    const int times = request.at("times");
    const double inserting = seconds_of([&] {
        for (int i = 0; i < times; ++i) worker.bare->execute_together(insert, change_block);
    });
    json reply = by_bare_client(worker, request, sent, reads, update);
    reply["seconds"] = reply["seconds"].get<double>() + inserting;
    reply["statements"] = reply["statements"].get<std::size_t>() + 1;
    return reply;
}

constexpr Command commands[] = {
    {.name = "areas.make", .run = make},       {.name = "areas.open", .run = open},
    {.name = "areas.dbf", .run = copy_to_dbf}, {.name = "areas.close", .run = close},
    {.name = "areas.walk", .run = walk},       {.name = "areas.select", .run = select},
    {.name = "areas.seek", .run = seek},       {.name = "areas.seek.bare", .run = seek_bare},
    {.name = "areas.change", .run = change},   {.name = "areas.change.bare", .run = change_bare},
    {.name = "areas.append", .run = append},   {.name = "areas.append.bare", .run = append_bare},
};

}  // namespace

std::span<const Command> area_commands() { return commands; }

}  // namespace zmfb::bench
