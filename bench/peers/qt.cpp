// Qt's QIBASE driver as a peer: answers the requests that bench/support/worker.h describes.
#include <QCoreApplication>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <QVector>
#include <chrono>
#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "bench/support/build_type.h"

namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;
using People = QVector<QVector<QVariant>>;

constexpr int id_column = 0;
constexpr int credit_column = 3;

// "host/port:/file" as Qt wants it: the file alone, or host and file with the port among the options.
void attach(const std::string& name) {
    QSqlDatabase database = QSqlDatabase::addDatabase("QIBASE");
    const std::size_t colon = name.find(':');
    if (colon == name.npos) {
        database.setDatabaseName(QString::fromStdString(name));
    } else {
        const std::size_t slash = name.find('/');
        database.setHostName(QString::fromStdString(name.substr(0, slash)));
        database.setPort(std::stoi(name.substr(slash + 1, colon - slash - 1)));
        database.setDatabaseName(QString::fromStdString(name.substr(colon + 1)));
    }
    database.setUserName("SYSDBA");
    database.setPassword("masterkey");
    if (!database.open()) throw std::runtime_error(database.lastError().text().toStdString());
}

void detach() {
    QSqlDatabase::database().close();
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
}

// Forward only, and with the policy under which numbers of a fixed number of decimals come most precisely.
People read_people(const std::string& sql) {
    QSqlQuery query;
    query.setForwardOnly(true);
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!query.exec(QString::fromStdString(sql)))
        throw std::runtime_error(query.lastError().text().toStdString());
    People people;
    while (query.next()) {
        QVector<QVariant> person;
        person.reserve(7);
        for (int column = 0; column < 7; ++column) person.push_back(query.value(column));
        people.push_back(person);
    }
    return people;
}

json as_json(const QVariant& value) {
    if (value.isNull()) return {};
    switch (value.type()) {
        case QVariant::Double:
            return value.toDouble();
        case QVariant::Int:
            return value.toInt();
        case QVariant::DateTime:
            return value.toDateTime().toString("yyyy-MM-dd hh:mm:ss.zzz").toStdString();
        default:
            return value.toString().toStdString();
    }
}

json sums_of(const People& people, double seconds) {
    std::int64_t id = 0, credit = 0;
    for (const auto& person : people) {
        id += person[id_column].toInt();
        credit += std::llround(person[credit_column].toDouble() * 100);
    }
    return {{"seconds", seconds}, {"rows", people.size()}, {"id", id}, {"credit", credit}};
}

json answer(const json& request) {
    static People held;
    const std::string what = request.at("do");
    if (what == "attach") {
        attach(request.at("database"));
    } else if (what == "detach") {
        detach();
    } else if (what == "select") {
        const auto start = Clock::now();
        const People people = read_people(request.at("sql"));
        return sums_of(people, std::chrono::duration<double>(Clock::now() - start).count());
    } else if (what == "hold") {
        held = read_people(request.at("sql"));
        return sums_of(held, 0);
    } else if (what == "sample") {
        json rows = json::array();
        for (const auto& person : read_people(request.at("sql"))) {
            json& row = rows.emplace_back(json::array());
            for (const QVariant& value : person) row.push_back(as_json(value));
        }
        return {{"rows", rows}};
    } else {
        throw std::runtime_error("no such request: " + what);
    }
    return json::object();
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
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
