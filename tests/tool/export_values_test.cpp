// What becomes of types and values on their way into files, and what comes back.
#include "tests/support/dbf_readers.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

class ExportValues : public ExportFolder {
  protected:
    std::string query(const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
    }
    DbfRecords records(const std::string& table) const {
        return read_with_dbfread(folder_out + "/" + table + ".dbf");
    }
    // Exports the table, imports the file as `back`.
    void there_and_back(const std::string& table, std::vector<std::string> words) const {
        words.insert(words.begin(), table);
        const Finished out = export_to_folder(words);
        ASSERT_EQ(out.status, 0) << out.err;
        const Finished in = on(path, {"import", folder_out + "/" + table + ".dbf", "--table", "back"});
        ASSERT_EQ(in.status, 0) << in.err;
    }
    void drop_what_came_back() const { EXPECT_EQ(on(path, {"drop", "back", "--yes"}).status, 0); }
};

TEST_F(ExportValues, NumbersThatDoNotFitAreNamedAndNothingIsWritten) {
    call("createtable('PRICES', {{'PRICE', 'N', 6, 2}})");
    for (const char* value : {"1.5", "-12345.67", "1234567.89"})
        exec(std::string("insert into prices (price) values (") + value + ")");
    const Finished run = export_to_folder({"prices"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: PRICES was not exported\n"
              "  2 values would lose something:\n"
              "  record 2, field PRICE: -12345.67 is wider than the field\n"
              "  record 3, field PRICE: 1234567.89 is wider than the field\n"
              "hint: --lossy converts such values and counts them\n");
    EXPECT_TRUE(written().empty());
    const Finished lossy = export_to_folder({"prices", "--lossy"});
    EXPECT_EQ(lossy.status, 0) << lossy.err;
    EXPECT_EQ(lines(lossy.out).at(1), "2 values of PRICE wider than the field: left blank");
    EXPECT_EQ(records("prices"), (DbfRecords{{"1.5"}, {"None"}, {"None"}}));
}

TEST_F(ExportValues, OnlyTheFirstOfManyRefusedValuesAreShown) {
    exec("create table holes (name char(5))");
    exec("insert into holes select first 30 null from rdb$fields");
    const Finished run = export_to_folder({"holes"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(lines(run.err).size(), 24U) << run.err;
    EXPECT_NE(run.err.find("\n  30 values would lose something:\n"
                           "  record 1, field NAME: NULL has no place in the field\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("\n  and 10 more\nhint: "), std::string::npos) << run.err;
}

TEST_F(ExportValues, ATimeOfDayInADateIsRefusedOrCounted) {
    call("createtable('EVENTS', {{'SEEN', 'D', 8, 0}})");
    exec("insert into events (seen) values ('2007-03-01 12:30')");
    exec("insert into events (seen) values ('2007-03-02')");
    exec("insert into events (seen) values (null)");
    const Finished run = export_to_folder({"events"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(
        run.err,
        "error: EVENTS was not exported\n"
        "  1 value would lose something:\n"
        "  record 1, field SEEN: 2007-03-01 12:30:00.000000 has a time of day that the field does not keep\n"
        "hint: --lossy converts such values and counts them\n");
    const Finished lossy = export_to_folder({"events", "--lossy"});
    EXPECT_EQ(lossy.status, 0) << lossy.err;
    EXPECT_EQ(lines(lossy.out).at(1), "1 value of SEEN without their time of day");
    EXPECT_EQ(records("events"), (DbfRecords{{"2007-03-01"}, {"2007-03-02"}, {"None"}}));
    there_and_back("events", {"--format", "vfp", "--yes"});
    EXPECT_EQ(query("select seen from back order by recno"),
              "2007-03-01 12:30:00.0000\r\n2007-03-02 00:00:00.0000\r\n\r\n");
}

constexpr const char* every_type =
    "create table every (id integer not null, small smallint, large bigint, price numeric(18, 4), "
    "rate numeric(9, 3), tiny numeric(4, 2), ratio double precision, part float, known boolean, born date, "
    "seen timestamp, name char(10), note varchar(20), raw varchar(8) character set octets, "
    "text blob sub_type text, picture blob sub_type 0)";

TEST_F(ExportValues, EveryTypeComesBackByWayOfVisualFoxPro) {
    exec(every_type);
    exec(
        "insert into every values (1, -32768, 999999999999999999, -922337203685477.5808, -123456.789, "
        "-9.99, "
        "0.1, 0.25, true, '0001-01-01', '9999-12-31 23:59:59.999', 'São', 'x  ', x'00FF1A', "
        "'a text' || ascii_char(26) || 'of it', x'001A00')");
    exec(
        "insert into every values (-2147483648, null, null, null, null, null, null, null, null, null, null, "
        "null, null, null, null, null)");
    exec(
        "insert into every values (0, 0, 0, 0, 0, 0, -1e300, 0, false, '2000-02-29', '1970-01-01', '', '', "
        "x'', '', x'')");
    there_and_back("every", {"--format", "vfp"});
    const std::string columns =
        "id, small, large, price, rate, tiny, ratio, part, known, born, seen, name, '<' || note || '>', raw, "
        "text, octet_length(picture)";
    // A number of digits, a text of fixed length and a logical have no NULL there.
    EXPECT_EQ(query("select " + columns + " from back order by recno"),
              "1,-32768,999999999999999999,-922337203685477.5808,-123456.789,-9.99,0.1,0.25,T,"
              "0001-01-01 00:00:00.0000,9999-12-31 23:59:59.9990,São,<x  >,00FF1A,a text\x1Aof it,3\r\n"
              "-2147483648,,0,,0.000,0.00,,,\"\",,,\"\",,,,\r\n"
              "0,0,0,0.0000,0.000,0.00,-1e+300,0,F,2000-02-29 00:00:00.0000,1970-01-01 00:00:00.0000,\"\","
              "<>,\"\",\"\",0\r\n");
}

TEST_F(ExportValues, WhatTheFormatHasNoTypeForIsRefusedOrLeftOut) {
    exec(
        "create table odd (id integer not null, at_time time not null, raw char(2) character set octets "
        "not null, picture blob sub_type 0)");
    exec("insert into odd values (7, '14:05:09.1', x'00FF', x'01')");
    const Finished run = export_to_folder({"odd"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: ODD cannot be exported\n"
              "  the column AT_TIME, TIME, becomes a text\n"
              "  the column RAW, CHAR(2) CHARACTER SET OCTETS, becomes a text\n"
              "  the column PICTURE, BLOB, has a type that the format does not have\n"
              "hint: --lossy writes what the format has; --format vfp has more types\n");
    EXPECT_TRUE(written().empty());
    // No other format has a type for TIME.
    EXPECT_EQ(export_to_folder({"odd", "--format", "vfp"}).err,
              "error: ODD cannot be exported\n  the column AT_TIME, TIME, becomes a text\n"
              "hint: --lossy writes what the format has\n");
    const Finished lossy = export_to_folder({"odd", "--lossy"});
    EXPECT_EQ(lossy.status, 0) << lossy.err;
    EXPECT_EQ(lossy.err,
              "warning: ODD: the column AT_TIME, TIME, becomes a text\n"
              "warning: ODD: the column RAW, CHAR(2) CHARACTER SET OCTETS, becomes a text\n"
              "warning: ODD: the column PICTURE, BLOB, is left out\n");
    EXPECT_EQ(records("odd"), (DbfRecords{{"7", "14:05:09.1000", "00FF"}}));
}

TEST_F(ExportValues, NumbersOfOtherTablesHaveRoomForAllTheirDigits) {
    exec(
        "create table wide (small smallint not null, whole integer not null, large bigint not null, "
        "price numeric(4, 2) not null, part numeric(2, 2) not null, ratio double precision not null, "
        "single float not null)");
    exec(
        "insert into wide values (-32768, -2147483648, -9223372036854775808, -99.99, -0.99, -12345.125, "
        "0.1)");
    EXPECT_EQ(export_to_folder({"wide"}).status, 0);
    EXPECT_EQ(records("wide"), (DbfRecords{{"-32768", "-2147483648", "-9223372036854775808", "-99.99",
                                            "-0.99", "-12345.125", "0.1"}}));
    exec("update wide set ratio = 1e-9");
    EXPECT_NE(export_to_folder({"wide", "--yes"})
                  .err.find("record 1, field RATIO: 1e-09 has more digits than the field keeps\n"),
              std::string::npos);
}

TEST_F(ExportValues, LongTextsAreMemosAndComeBack) {
    exec(
        "create table letters (id integer not null, subject varchar(300) not null, body blob sub_type text)");
    exec("insert into letters values (1, rpad('', 299, 'x'), rpad('', 32000, 'long ') || 'é')");
    exec("insert into letters values (2, '', null)");
    for (const char* format : {"dbase3", "foxpro", "vfp"}) {
        there_and_back("letters", {"--yes", "--format", format});
        EXPECT_EQ(query("select count(*) from letters l join back b on b.id = l.id and b.subject = l.subject "
                        "and b.body is not distinct from l.body"),
                  "2\r\n")
            << format;
        drop_what_came_back();
    }
    exec("update letters set body = 'cut' || ascii_char(26) || 'off' where id = 2");
    const Finished refused = export_to_folder({"letters", "--yes"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("record 2, field BODY: "), std::string::npos) << refused.err;
}

TEST_F(ExportValues, BytesAreFieldsOrMemosAsTheFormatHasThemAndComeBack) {
    exec(
        "create table raw (id integer not null, few varchar(254) character set octets, "
        "many varchar(255) character set octets)");
    exec("insert into raw values (1, rpad('', 254, x'00FF1A'), rpad('', 255, x'1AFF00'))");
    for (const auto& [format, types] : {std::pair("foxpro", "NPP"), std::pair("vfp", "IQM")}) {
        there_and_back("raw", {"--yes", "--format", format});
        const std::string header = read_file(folder_out + "/raw.dbf");
        EXPECT_EQ((std::string{header.at(43), header.at(75), header.at(107)}), types);
        EXPECT_EQ(query("select count(*) from raw r join back b on b.few = r.few and b.many = r.many"),
                  "1\r\n")
            << format;
        drop_what_came_back();
    }
}

TEST_F(ExportValues, MemosThatAreLongerThanAnImportReadsAreRefused) {
    exec("create table letters (id integer not null, body blob sub_type text)");
    exec(
        "insert into letters select 1, list(rpad('', 32000, 'x'), '') from "
        "(select first 2098 1 as n from rdb$fields a, rdb$fields b)");
    const Finished refused = export_to_folder({"letters"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("record 1, field BODY: of 67136000 bytes is longer than the field\n"),
              std::string::npos)
        << refused.err;
    EXPECT_TRUE(written().empty());
}

TEST_F(ExportValues, TextsAreConvertedIntoTheEncodingThatIsWanted) {
    exec("create table towns (name varchar(10) character set utf8 not null, twin varchar(10) not null)");
    exec("insert into towns values (_utf8 x'C581C3B364C5BA', 'Köln')");
    const Finished refused = export_to_folder({"towns"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(
        refused.err.find("record 1, field NAME: \"Łódź\" has characters that the code page does not have\n"),
        std::string::npos)
        << refused.err;
    const Finished lossy = export_to_folder({"towns", "--lossy"});
    EXPECT_EQ(lines(lossy.out).at(1), "1 value of NAME with characters that became ?") << lossy.err;
    EXPECT_EQ(records("towns"), (DbfRecords{{"?\xF3"
                                             "d?",
                                             "K\xF6ln"}}));
    ASSERT_EQ(export_to_folder({"towns", "--yes", "--encoding", "CP1250"}).status, 0);
    EXPECT_EQ(written(), std::vector<std::string>{"towns.dbf"});
    EXPECT_EQ(static_cast<unsigned char>(read_file(folder_out + "/towns.dbf")[29]), 0xC8);
    EXPECT_EQ(records("towns"), (DbfRecords{{"\xA3\xF3"
                                             "d\x9F",
                                             "K\xF6ln"}}));
    ASSERT_EQ(export_to_folder({"towns", "--yes", "--encoding", "UTF-8"}).status, 0);
    EXPECT_EQ(read_file(folder_out + "/towns.cpg"), "UTF-8");
    EXPECT_EQ(records("towns"), (DbfRecords{{"Łódź", "Köln"}}));
}

}  // namespace
}  // namespace zmfb::test
