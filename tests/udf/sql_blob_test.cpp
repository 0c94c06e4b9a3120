#include <gtest/gtest.h>
#include <ibase.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/database.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

class BlobUdfInSql : public Database {
  protected:
    BlobUdfInSql() { execute("create table t (id integer, b blob sub_type 1)"); }

    // Puts a row into the table, with a blob of these segments.
    void insert(int id, const std::vector<std::string>& segments) {
        BareClient client(database());
        ISC_STATUS_ARRAY status{};
        isc_tr_handle transaction{};
        isc_blob_handle blob{};
        ISC_QUAD blob_id{};
        isc_start_transaction(status, &transaction, 1, client.handle(), 0, nullptr);
        isc_create_blob2(status, client.handle(), &transaction, &blob, &blob_id, 0, nullptr);
        for (const std::string& segment : segments) {
            isc_put_segment(status, &blob, static_cast<unsigned short>(segment.size()), segment.data());
            ASSERT_EQ(status[1], 0);
        }
        isc_close_blob(status, &blob);
        ASSERT_EQ(status[1], 0);

        XSQLDA input{};
        short not_null = 0;
        input.version = SQLDA_VERSION1;
        input.sqln = input.sqld = 1;
        input.sqlvar[0].sqltype = SQL_BLOB;
        input.sqlvar[0].sqllen = sizeof blob_id;
        input.sqlvar[0].sqldata = reinterpret_cast<char*>(&blob_id);
        input.sqlvar[0].sqlind = &not_null;
        const std::string statement = "insert into t values (" + std::to_string(id) + ", ?)";
        isc_dsql_execute_immediate(status, client.handle(), &transaction, 0, statement.c_str(),
                                   SQL_DIALECT_V6, &input);
        ASSERT_EQ(status[1], 0);
        isc_commit_transaction(status, &transaction);
        ASSERT_EQ(status[1], 0);
    }

    // The value of an expression over the one row, in brackets; SQL NULL is "NULL".
    std::string value(const std::string& expression) {
        return rows("select '[' || " + expression + " || ']' from t").at(0).at(0);
    }
};

TEST_F(BlobUdfInSql, PieceOverSeveralSegments) {
    insert(1, {"ab", "cd", "", "ef"});
    EXPECT_EQ(value("zmBlobSubstr(b, 1, 255)"), "[abcdef]");
    EXPECT_EQ(value("zmBlobSubstr(b, 2, 4)"), "[bcde]");
    EXPECT_EQ(value("zmBlobSubstr(b, 5, 1)"), "[e]");
    EXPECT_EQ(value("zmBlobSubstr(b, -3, 2)"), "[de]");
    EXPECT_EQ(value("zmBlobSubstr(b, 7, 10)"), "[]");
    EXPECT_EQ(value("zmBlobSubstr(b, 1, 0)"), "[]");
}

TEST_F(BlobUdfInSql, PieceFromFarInsideALargeBlob) {
    insert(1, {std::string(60000, 'a'), std::string(60000, 'b'), std::string(9, 'c')});
    EXPECT_EQ(value("zmBlobSubstr(b, 59999, 4)"), "[aabb]");
    EXPECT_EQ(value("zmBlobSubstr(b, 119999, 255)"), "[bbccccccccc]");
    EXPECT_EQ(value("char_length(zmBlobSubstr(b, 1, 2147483647))"), "[4000]");
}

TEST_F(BlobUdfInSql, EmptyBlobGivesEmptyText) {
    insert(1, {});
    EXPECT_EQ(value("zmBlobSubstr(b, 1, 255)"), "[]");
    EXPECT_EQ(value("zmBlobSubstr(b, -1, 255)"), "[]");
}

TEST_F(BlobUdfInSql, NullBlobGivesNull) {
    execute("insert into t values (1, null)");
    EXPECT_EQ(value("zmBlobSubstr(b, 1, 255)"), "NULL");
    EXPECT_EQ(value("zmBlobSubstr(null, 1, 255)"), "NULL");
}

TEST_F(BlobUdfInSql, PlainTextIsTakenByTheStoredFunctionAloneAndRefusedByTheModules) {
    const std::string query = "select zmBlobSubstr('abc', 1, 2) from rdb$database";
    if (functions_of_this_run() == Functions::module) {
        EXPECT_THROW(rows(query), std::runtime_error);
    } else {
        EXPECT_EQ(rows(query), (Rows{{"ab"}}));
    }
}

TEST_F(BlobUdfInSql, NullStartOrLengthCountsAsZero) {
    insert(1, {"abc"});
    EXPECT_EQ(value("zmBlobSubstr(b, null, 2)"), "[ab]");
    EXPECT_EQ(value("zmBlobSubstr(b, 1, null)"), "[]");
}

TEST_F(BlobUdfInSql, DescriptionsAreReadCutAt255) {
    execute("comment on table t is 'Created by ZMRDDFIRE'");
    execute("comment on column t.id is 'O''Brien " + std::string(300, 'x') + "'");
    EXPECT_EQ(rows("select zmBlobSubstr(rdb$description,1,255) from rdb$relations "
                   "where rdb$relation_name = 'T' "),
              (Rows{{"Created by ZMRDDFIRE"}}));
    EXPECT_EQ(rows("select zmBlobSubstr(rdb$description,1,255) from rdb$relation_fields "
                   "where rdb$field_name = 'ID' and       rdb$relation_name = 'T' "),
              (Rows{{"O'Brien " + std::string(247, 'x')}}));
}

TEST_F(BlobUdfInSql, DescriptionThatIsNotThereIsNull) {
    execute("create index i_t on t (id)");
    EXPECT_EQ(rows("select zmBlobSubstr(rdb$description,1,255) from rdb$indices "
                   "where rdb$index_name = 'I_T' "),
              (Rows{{"NULL"}}));
    EXPECT_EQ(rows("select zmBlobSubstr(rdb$description,1,255) from rdb$relations "
                   "where rdb$relation_name = 'NONE' "),
              Rows{});
}

}  // namespace
}  // namespace zmfb::test
