// SOCI's Firebird backend as a peer: answers the requests that bench/support/worker.h describes.
#include <soci/soci-config.h>
// Only adds ways to fetch into types of Boost, whose headers are many and not needed for the library.
#undef SOCI_HAVE_BOOST

#include <soci/firebird/soci-firebird.h>
#include <soci/soci.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench/peers/dbf_fields.h"
#include "bench/support/build_type.h"

namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

std::unique_ptr<soci::session> session;

// Numbers of a fixed number of decimals come faithfully as texts. A timestamp comes without its fraction of a
// second, whatever it is fetched into.
struct Person {
    int id = 0;
    std::string name;
    std::string city;
    std::string credit;
    double rate = 0;
    std::tm changed{};
    int kind = 0;
    soci::indicator has_credit = soci::i_ok;
};

std::vector<Person> read_people(const std::string& query) {
    std::vector<Person> people;
    Person person;
    soci::statement statement =
        (session->prepare << query, soci::into(person.id), soci::into(person.name), soci::into(person.city),
         soci::into(person.credit, person.has_credit), soci::into(person.rate), soci::into(person.changed),
         soci::into(person.kind));
    statement.execute();
    while (statement.fetch()) people.push_back(person);
    return people;
}

std::string timestamp_text(const std::tm& stamp) {
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &stamp);
    return text;
}

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

json sums_of(const std::vector<Person>& people, double seconds) {
    std::int64_t id = 0, credit = 0;
    for (const Person& person : people) {
        id += person.id;
        if (person.has_credit == soci::i_ok) credit += std::llround(std::stod(person.credit) * 100);
    }
    return {{"seconds", seconds}, {"rows", people.size()}, {"id", id}, {"credit", credit}};
}

json select(const json& request) {
    soci::transaction transaction(*session);
    const auto start = Clock::now();
    const std::vector<Person> people = read_people(request.at("sql"));
    return sums_of(people, seconds_since(start));
}

json hold(const json& request) {
    static std::vector<Person> held;
    soci::transaction transaction(*session);
    held = read_people(request.at("sql"));
    return sums_of(held, 0);
}

json sample(const json& request) {
    soci::transaction transaction(*session);
    json rows = json::array();
    for (const Person& person : read_people(request.at("sql"))) {
        const json credit = person.has_credit == soci::i_ok ? json(person.credit) : json();
        rows.push_back({person.id, person.name, person.city, credit, person.rate,
                        timestamp_text(person.changed), person.kind});
    }
    return {{"rows", rows}};
}

// One prepared statement, one execution for each record, one transaction.
json insert(const json& request) {
    using zmfb::bench::DbfRecord;
    std::ifstream file(request.at("dbf").get<std::string>(), std::ios::binary);
    DbfRecord record(request.at("fields"));
    const auto start = Clock::now();
    file.seekg(request.at("start").get<std::streamoff>());
    soci::transaction transaction(*session);
    int id = 0;
    std::string name, city, credit, born;
    soci::statement statement = (session->prepare << request.at("sql").get<std::string>(), soci::use(id),
                                 soci::use(name), soci::use(city), soci::use(credit), soci::use(born));
    std::int64_t count = 0;
    for (; record.read(file); ++count) {
        id = std::stoi(record.trimmed(0));
        name = record.trimmed(1);
        city = record.trimmed(2);
        credit = record.trimmed(3);
        born = record.iso_date(4);
        statement.execute(true);
    }
    transaction.commit();
    return {{"seconds", seconds_since(start)}, {"rows", count}};
}

json answer(const json& request) {
    const std::string what = request.at("do");
    if (what == "attach") {
        session = std::make_unique<soci::session>(
            soci::firebird,
            "service=" + request.at("database").get<std::string>() + " user=SYSDBA password=masterkey");
        return json::object();
    }
    if (what == "detach") {
        session.reset();
        return json::object();
    }
    if (what == "select") return select(request);
    if (what == "sample") return sample(request);
    if (what == "hold") return hold(request);
    if (what == "insert") return insert(request);
    throw std::runtime_error("no such request: " + what);
}

}  // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::string_view(argv[1]) == "--smoke";
    if (!zmfb::bench::fit_to_be_timed() && !smoke) return 2;
    std::string line;
    while (std::getline(std::cin, line)) {
        json reply;
        try {
            reply = answer(json::parse(line));
        } catch (const std::exception& failure) {
            reply = {{"error", failure.what()}};
        }
        std::cout << reply.dump() << std::endl;
    }
}
