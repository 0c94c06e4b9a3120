// SOCI's Firebird backend as a peer: answers the requests that bench/support/worker.h describes.
#include <soci/soci-config.h>
// Only adds ways to fetch into types of Boost, whose headers are many and not needed for the library.
#undef SOCI_HAVE_BOOST

#include <soci/firebird/soci-firebird.h>
#include <soci/soci.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
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

// Fetches into one record and hands it over, row by row.
template <class Take>
void read_people(const std::string& query, const Take& take) {
    soci::transaction transaction(*session);
    Person person;
    soci::statement statement =
        (session->prepare << query, soci::into(person.id), soci::into(person.name), soci::into(person.city),
         soci::into(person.credit, person.has_credit), soci::into(person.rate), soci::into(person.changed),
         soci::into(person.kind));
    statement.execute();
    while (statement.fetch()) take(person);
}

std::string timestamp_text(const std::tm& stamp) {
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &stamp)};
}

std::string double_text(double number) {
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6).ptr};
}

// What a program keeps that does not know the columns beforehand: a text for each value.
using Texts = std::vector<std::vector<std::string>>;

Texts read_texts(const std::string& query) {
    Texts texts;
    read_people(query, [&texts](const Person& person) {
        texts.push_back({std::to_string(person.id), person.name, person.city,
                         person.has_credit == soci::i_ok ? person.credit : "NULL", double_text(person.rate),
                         timestamp_text(person.changed), std::to_string(person.kind)});
    });
    return texts;
}

// What a program keeps that was written for these columns.
std::vector<Person> read_structs(const std::string& query) {
    std::vector<Person> people;
    read_people(query, [&people](const Person& person) { people.push_back(person); });
    return people;
}

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Sums {
    std::int64_t rows = 0;
    std::int64_t id = 0;
    std::int64_t credit = 0;

    void add(int person, const std::string& owed) {
        ++rows;
        id += person;
        if (owed != "NULL") credit += std::llround(std::stod(owed) * 100);
    }
    [[nodiscard]] json reply(double seconds) const {
        return {{"seconds", seconds}, {"rows", rows}, {"id", id}, {"credit", credit}};
    }
};

Sums sums_of(const Texts& texts) {
    Sums sums;
    for (const auto& row : texts) sums.add(std::stoi(row[0]), row[3]);
    return sums;
}

Sums sums_of(const std::vector<Person>& people) {
    Sums sums;
    for (const Person& person : people)
        sums.add(person.id, person.has_credit == soci::i_ok ? person.credit : "NULL");
    return sums;
}

// Reads the rows, into what is asked for, and keeps them in `held`.
template <class Rows>
json read_timed(const json& request, Rows (*read)(const std::string&), Rows& held) {
    const std::string query = request.at("sql");
    held.clear();
    held.shrink_to_fit();
    const auto start = Clock::now();
    held = read(query);
    const double seconds = seconds_since(start);
    return sums_of(held).reply(seconds);
}

json select(const json& request, bool keep) {
    static Texts texts;
    static std::vector<Person> people;
    const bool structs = request.value("into", "texts") == "structs";
    json reply = structs ? read_timed(request, read_structs, people) : read_timed(request, read_texts, texts);
    if (!keep) {
        Texts().swap(texts);
        std::vector<Person>().swap(people);
    }
    return reply;
}

json sample(const json& request) { return {{"rows", read_texts(request.at("sql"))}}; }

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

// Prints records of fixed width, as a DBF file has them behind its header.
json export_records(const json& request) {
    const auto start = Clock::now();
    std::FILE* const file = std::fopen(request.at("file").get<std::string>().c_str(), "wb");
    if (file == nullptr) throw std::runtime_error("cannot write the records");
    soci::transaction transaction(*session);
    int id = 0;
    std::string name, city, credit;
    std::tm born{};
    soci::statement statement = (session->prepare << request.at("sql").get<std::string>(), soci::into(id),
                                 soci::into(name), soci::into(city), soci::into(credit), soci::into(born));
    statement.execute();
    std::int64_t count = 0;
    for (; statement.fetch(); ++count) {
        std::fprintf(file, " %8d%-30s%-12s%10s%04d%02d%02d", id, name.c_str(), city.c_str(), credit.c_str(),
                     born.tm_year + 1900, born.tm_mon + 1, born.tm_mday);
    }
    std::fputc(0x1A, file);
    if (std::fclose(file) != 0) throw std::runtime_error("cannot write the records");
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
    if (what == "select") return select(request, false);
    if (what == "sample") return sample(request);
    if (what == "hold") return select(request, true);
    if (what == "insert") return insert(request);
    if (what == "export") return export_records(request);
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
    session.reset();  // while the client library is still there
}
