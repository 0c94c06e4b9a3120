// Texts and blobs as streams: what programs see is UTF-8, whatever the database holds.
#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

const std::string e_acute = "\xC3\xA9", euro = "\xE2\x82\xAC";

class TypedText : public Database {
  protected:
    TypedText() { execute("create table T (V varchar(4), B blob sub_type text)"); }
};

TEST_F(TypedText, OfColumnsWithoutACharacterSetIsLatin1ByDefault) {
    execute("insert into T (V) values ('\xE9')");
    Transaction work(connection());
    EXPECT_EQ(work.one<std::string>("select V from T"), e_acute);
    EXPECT_EQ(work.one<int>("select count(*) from T where V = ?", e_acute), 1);
    EXPECT_EQ(work.one<int>("select count(*) from T where V = '" + e_acute + "'"), 1);
    work.execute("insert into T (V) values (?)", e_acute + "2");
    work.commit();
    EXPECT_EQ(rows("select V from T where V like '%2'")[0][0],
              "\xE9"
              "2");
}

TEST_F(TypedText, IsInTheEncodingThatIsNamed) {
    execute("insert into T (V, B) values ('\x80', '\x80')");
    set_database_encoding(connection(), "CP1252");
    Transaction work(connection());
    const auto [v, b] = work.one<std::string, std::string>("select V, B from T");
    EXPECT_EQ(v, euro);
    EXPECT_EQ(b, euro);
    EXPECT_EQ(work.execute("update T set B = ? where V = ?", euro + euro, euro), 1);
    EXPECT_EQ(work.one<int>("select octet_length(B) from T"), 2);
}

TEST_F(TypedText, MayBeUtf8ThatTheDatabaseDoesNotKnowOf) {
    set_database_encoding(connection(), "UTF-8");
    Transaction work(connection());
    work.execute("insert into T values (?, ?)", euro, euro);
    EXPECT_EQ(work.one<int>("select octet_length(V) from T"), 3);
    EXPECT_EQ(work.one<std::string>("select V from T"), euro);
    EXPECT_EQ(work.one<std::string>("select B from T"), euro);
}

TEST_F(TypedText, AsItIsKeptIsReadAndWrittenByteForByte) {
    execute(
        "create table K (C char(4), V varchar(9), W varchar(4) character set win1252, "
        "U varchar(4) character set utf8, L char(1) character set utf8, B blob sub_type text, "
        "X blob sub_type text character set win1252)");
    const std::string utf8 = euro + e_acute;
    {
        Transaction work(connection());
        auto add = work.prepare("insert into K values (?, 'a\x81' || ?, ?, ?, ?, ?, ?)", TextForm::as_kept);
        EXPECT_EQ(add.execute("\xE9 ", "\x80", "\x80\xE9", utf8, true, "\x81", "\x80"), 1);
        work.commit();
    }
    EXPECT_EQ(rows("select C, V, octet_length(W), U, octet_length(B), octet_length(X) from K"),
              (test::Rows{{"\xE9", "a\x81\x80", "2", utf8, "1", "1"}}));
    Transaction work(connection());
    auto read = work.prepare("select C, V, W, U, L, B, X from K where V = 'a\x81\x80'", TextForm::as_kept);
    using std::string;
    const auto row = read.one<string, string, string, string, bool, string, string>();
    EXPECT_EQ(row, std::tuple("\xE9", "a\x81\x80", "\x80\xE9", utf8, true, "\x81", "\x80"));
    for (const auto& fields : read.rows()) EXPECT_EQ(fields["V"].text(), "a\x81\x80");
    EXPECT_EQ(work.one<string>("select W from K"), utf8);
}

TEST_F(TypedText, OfNoSuchEncodingIsThrownAndTheOldOneStays) {
    EXPECT_EQ(state_of([&] { set_database_encoding(connection(), "UTF-16"); }), "22023");
    execute("insert into T (V) values ('\xE9')");
    EXPECT_EQ(Transaction(connection()).one<std::string>("select V from T"), e_acute);
}

TEST_F(TypedText, WithAByteThatIsNoCharacterIsThrownAndShownWithASign) {
    execute("insert into T (V, B) values ('a\x81', 'b\x81')");
    set_database_encoding(connection(), "CP1252");
    Transaction work(connection());
    EXPECT_EQ(error_of([&] { (void)work.one<std::string>("select V from T"); }).message(),
              "The byte 0x81 in column V is no character of CP1252");
    EXPECT_EQ(state_of([&] { (void)work.one<std::string>("select B from T"); }), "22021");
    for (const auto& row : work.rows("select V, B from T")) {
        EXPECT_EQ(row["V"].text(), "a\xEF\xBF\xBD");
        EXPECT_EQ(row["B"].text(), "b\xEF\xBF\xBD");
    }
}

TEST_F(TypedText, OfAStatementMayNotHaveOtherCharactersThanTheDatabase) {
    Transaction work(connection());
    const auto error = error_of([&] { work.prepare("select 1 from T where V = '" + euro + "'"); });
    EXPECT_EQ(error.sqlstate(), "22021");
    EXPECT_EQ(error.message(),
              "In the statement there is '" + euro + "', a character that ISO-8859-1 does not have");
}

TEST_F(TypedText, OfANameInDoubleQuotesIsUtf8WhateverTheDatabaseHolds) {
    Transaction making(connection());
    making.execute("create table \"" + euro + "\" (\"" + e_acute + "\"\"\" varchar(3)) /* \" */ -- '");
    making.commit();
    Transaction work(connection());
    work.execute("insert into \"" + euro + "\" values ('" + e_acute + "\"')");
    for (const auto& row : work.rows("select '\"', \"" + e_acute + "\"\"\" from \"" + euro + "\""))
        EXPECT_EQ(row[e_acute + "\""].as<std::string>(), e_acute + "\"");
    EXPECT_EQ(work.one<int>("select octet_length(\"" + e_acute + "\"\"\") from \"" + euro + "\""), 2);
    EXPECT_EQ(state_of([&] { work.prepare("select '\"' || '" + euro + "' from \"" + euro + "\""); }),
              "22021");
}

TEST_F(TypedText, OfTheEnginesOwnTablesIsReadWhateverItsBytesAre) {
    execute("comment on table T is '\xE9'");
    Transaction work(connection());
    EXPECT_EQ(
        work.one<std::string>("select rdb$relation_name from rdb$relations where rdb$relation_name = ?", "T"),
        "T");
    for (const auto& row :
         work.rows("select rdb$description from rdb$relations where rdb$relation_name = 'T'"))
        EXPECT_TRUE(row[0].text());
}

TEST_F(TypedText, LongerThanAnyPieceIsReadAndWrittenWhole) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += e_acute + std::to_string(i);
    Transaction work(connection());
    work.execute("insert into T (B) values (?)", text);
    EXPECT_EQ(work.one<std::string>("select B from T"), text);
    EXPECT_EQ(work.one<int>("select char_length(B) from T"), 20000 + 88890);
}

using TypedBlob = TypedText;

TEST_F(TypedBlob, IsAStreamOfPieces) {
    Transaction work(connection());
    work.execute("create table P (ID integer, PHOTO blob)");
    work.commit();
    Transaction writing(connection());
    BlobWriter writer(writing);
    std::string whole;
    for (int i = 0; i < 3000; ++i) {
        const std::string piece = "piece " + std::to_string(i) + std::string(1, '\0');
        writer.write(piece);
        whole += piece;
    }
    writer.write(std::string(100000, 'x'));
    whole += std::string(100000, 'x');
    writing.execute("insert into P values (1, ?)", writer);
    writing.commit();

    Transaction reading(connection(), Access::read_only);
    auto photo = reading.one<BlobReader>("select PHOTO from P");
    EXPECT_EQ(photo.size(), whole.size());
    std::string read;
    for (std::string_view piece; !(piece = photo.read()).empty();) {
        EXPECT_LE(piece.size(), 65536u);
        read += piece;
    }
    EXPECT_EQ(read, whole);
    EXPECT_EQ(photo.read(), "");
}

TEST_F(TypedBlob, OfTextIsReadInUtf8) {
    execute("create table W (B blob sub_type text character set win1252)");
    Transaction work(connection());
    std::string text;
    for (int i = 0; i < 30000; ++i) text += "a" + euro + e_acute;
    work.execute("insert into W values (?)", text);
    auto blob = work.one<BlobReader>("select B from W");
    EXPECT_EQ(blob.size(), 90000u);
    std::string read;
    for (std::string_view piece; !(piece = blob.read()).empty();) read += piece;
    EXPECT_EQ(read, text);
}

TEST_F(TypedBlob, IsReadAfterItsRowUntilItsTransactionEnds) {
    execute("insert into T (B) values ('first')");
    execute("insert into T (B) values ('second')");
    std::optional<Transaction> work(connection());
    std::vector<BlobReader> blobs;
    for (auto& [blob] : work->query<BlobReader>("select B from T")) blobs.push_back(blob);
    EXPECT_EQ(blobs[0].read(), "first");
    work.reset();
    EXPECT_EQ(state_of([&] { blobs[1].read(); }), "25000");
    EXPECT_EQ(state_of([&] { (void)blobs[1].size(); }), "25000");
}

TEST_F(TypedBlob, ThatIsNullIsNone) {
    execute("insert into T (B) values (null)");
    Transaction work(connection());
    EXPECT_FALSE(work.one<std::optional<BlobReader>>("select B from T"));
    BlobReader none;
    EXPECT_EQ(none.size(), 0u);
    EXPECT_EQ(none.read(), "");
}

TEST_F(TypedBlob, IsPassedOnceItIsWritten) {
    Transaction work(connection()), other(connection());
    BlobWriter writer(work);
    writer.write("abc");
    EXPECT_EQ(state_of([&] { other.execute("insert into T (B) values (?)", writer); }), "25000");
    EXPECT_EQ(work.execute("insert into T (B) values (?)", writer), 1);
    EXPECT_EQ(state_of([&] { writer.write("more"); }), "24000");
    EXPECT_EQ(work.one<std::string>("select B from T"), "abc");
}

TEST_F(TypedBlob, CannotBeWrittenWhenItsTransactionHasEnded) {
    std::optional<Transaction> work(connection());
    BlobWriter writer(*work);
    work.reset();
    EXPECT_EQ(state_of([&] { writer.write("abc"); }), "25000");
    Transaction next(connection());
    EXPECT_EQ(state_of([&] { next.execute("insert into T (B) values (?)", writer); }), "25000");
}

}  // namespace
}  // namespace zmfb::test
