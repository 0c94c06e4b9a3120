// The fields of a record, by name and by type.
#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::year_month_day;

class AreaFields : public AreaTest {
  protected:
    AreaFields() {
        execute(
            "insert into STOCK (CODE, ONHAND, PRICE, SINCE, LISTED) values ('\xC9"
            "A', 99999999, -12345678.90, "
            "'2007-03-01', 'T')");
    }
};

TEST_F(AreaFields, AreThoseOfTheProgram) {
    const Area area = stock();
    std::string names;
    for (const Column& field : area.fields()) names += field.name + " ";
    EXPECT_EQ(names, "CODE ONHAND PRICE SINCE LISTED ");
}

TEST_F(AreaFields, AreReadByTheirTypes) {
    const Area area = stock();
    EXPECT_EQ(area[area.field<std::string>("code")],
              "\xC3\x89"
              "A");
    EXPECT_EQ(area[area.field<std::string_view>("CODE")],
              "\xC3\x89"
              "A");
    EXPECT_EQ(area[area.field<std::int64_t>("ONHAND")], 99999999);
    EXPECT_EQ(area[area.field<int>("ONHAND")], 99999999);
    EXPECT_EQ(area[area.field<Decimal>("PRICE")], Decimal("-12345678.90"));
    EXPECT_EQ(area[area.field<double>("PRICE")], -12345678.90);
    EXPECT_EQ(area[area.field<year_month_day>("SINCE")], 2007y / 3 / 1);
    EXPECT_TRUE(area[area.field<bool>("LISTED")]);
    EXPECT_EQ(area[area.field<std::optional<Decimal>>("PRICE")], Decimal("-12345678.90"));
    EXPECT_EQ(area["since"].as<Timestamp>(),
              Timestamp(std::chrono::sys_days(2007y / 3 / 1).time_since_epoch()));
}

TEST_F(AreaFields, AreNotReadAsWhatTheyDoNotHold) {
    const Area area = stock();
    EXPECT_EQ(reason_of([&] { (void)area.field<int>("PRICE"); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { (void)area.field<int>("CODE"); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { (void)area.field<Bytes>("CODE"); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { (void)area.field<std::string>("PRICE"); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { (void)area.field<int>("NOBODY"); }), Reason::no_field);
    EXPECT_EQ(reason_of([&] { (void)area["RECNO"]; }), Reason::no_field);
    EXPECT_EQ(reason_of([&] { (void)area.at(5); }), Reason::no_field);
    EXPECT_EQ(reason_of([&] { (void)area["ONHAND"].as<std::int16_t>(); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { (void)area["CODE"].as<bool>(); }), Reason::wrong_type);
}

TEST_F(AreaFields, WithATimeOfDayAreNotReadAsADay) {
    execute("update STOCK set SINCE = '2007-03-01 12:30'");
    const Area area = stock();
    EXPECT_EQ(reason_of([&] { (void)area["SINCE"].as<year_month_day>(); }), Reason::wrong_type);
    EXPECT_EQ(area["SINCE"].as<Timestamp>(),
              Timestamp(std::chrono::sys_days(2007y / 3 / 1).time_since_epoch() + 12h + 30min));
}

TEST_F(AreaFields, OfAnotherAreaAreNotTakenForThose) {
    connection()(m::createtable, "OTHERS", Structure{{"CODE", "C", 5, 0}});
    const Area area = stock(), other(connection(), "OTHERS");
    const auto code = other.field<std::string>("CODE");
    EXPECT_EQ(reason_of([&] { (void)area[code]; }), Reason::no_field);
}

TEST_F(AreaFields, ThatAreNullAreNoneOfAPlainType) {
    execute("update STOCK set SINCE = null");
    const Area area = stock();
    EXPECT_TRUE(area["SINCE"].is_null());
    EXPECT_EQ(area["SINCE"].as<std::optional<year_month_day>>(), std::nullopt);
    EXPECT_EQ(reason_of([&] { (void)area["SINCE"].as<year_month_day>(); }), Reason::is_null);
    EXPECT_EQ(show(area["SINCE"].value()), "{^}");
}

TEST_F(AreaFields, AreValuesOfTheRuntime) {
    const Area area = stock({.texts = TextForm::as_kept});
    std::string all;
    for (std::size_t i = 0; i < area.fields().size(); ++i) all += show(area.at(i).value()) + " ";
    EXPECT_EQ(all,
              "\"\\xc9"
              "A\" 99999999 -12345678.9 {^2007-03-01} \"T\" ");
}

TEST_F(AreaFields, OfTypesThatOtherProgramsMadeAreReadOrLeftOut) {
    execute(
        "alter table STOCK add B boolean, add I bigint, add T time, add D date, add F double precision, "
        "add M blob sub_type text, add O varchar(3) character set octets, add P blob, add W varchar(9) "
        "character "
        "set win1252");
    execute(
        "update STOCK set B = true, I = 9223372036854775807, T = '14:05', D = '1999-12-31', F = 0.5, M = "
        "'memo', O = 'xyz', P = 'photo', W = 'abc'");
    const Area area = stock();
    EXPECT_EQ(area.fields().size(), 13u);
    EXPECT_TRUE(area["B"].as<bool>());
    EXPECT_EQ(area["I"].as<std::int64_t>(), 9223372036854775807);
    EXPECT_EQ(area["T"].as<TimeOfDay>(), 14h + 5min);
    EXPECT_EQ(area["D"].as<year_month_day>(), 1999y / 12 / 31);
    EXPECT_EQ(area["F"].as<double>(), 0.5);
    EXPECT_EQ(area["M"].as<std::string>(), "memo");
    EXPECT_EQ(area["O"].as<Bytes>().size(), 3u);
    EXPECT_EQ(area["W"].as<std::string>(), "abc");
    EXPECT_EQ(reason_of([&] { (void)area["P"]; }), Reason::no_field);
}

TEST_F(AreaFields, AreWrittenAsThoseOfRows) {
    execute(
        "alter table STOCK add B boolean, add T time, add D date, add F double precision, add S float, "
        "add M blob sub_type text, add O varchar(3) character set octets, add X char(5), add Y char(5)");
    execute(
        "update STOCK set B = false, T = '14:05:06.7', D = '1999-12-31', F = 1.5e300, S = 0.1, M = 'memo', "
        "O = 'xyz', X = 'ab'");
    const Area area = stock();
    Transaction work(connection());
    zmfb::Rows all = work.rows("select * from STOCK");
    const zmfb::Row& row = *all.begin();
    for (std::size_t i = 0; i < area.fields().size(); ++i) {
        const std::string& name = area.fields()[i].name;
        EXPECT_EQ(area.at(i).text(), row[name].text()) << name;
    }
    EXPECT_EQ(area["S"].text(), "0.1");
    EXPECT_EQ(area["O"].text(), "78797A");
    EXPECT_EQ(area["SINCE"].text(), "2007-03-01 00:00:00.0000");
    EXPECT_EQ(area["Y"].text(), std::nullopt);
}

}  // namespace
}  // namespace zmfb::test
