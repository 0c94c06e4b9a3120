#include "tool/column_type.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace zmfb::tool {
namespace {

TEST(ColumnType, IsNamedAsAStatementNamesIt) {
    const std::vector<std::pair<StoredType, std::string>> cases{
        {{.code = 7, .bytes = 2}, "SMALLINT"},
        {{.code = 8, .bytes = 4}, "INTEGER"},
        {{.code = 16, .bytes = 8}, "BIGINT"},
        {{.code = 7, .sub_type = 1, .scale = -2, .precision = 4}, "NUMERIC(4,2)"},
        {{.code = 8, .sub_type = 1, .precision = 6}, "NUMERIC(6,0)"},
        {{.code = 16, .sub_type = 2, .scale = -3, .precision = 18}, "DECIMAL(18,3)"},
        {{.code = 8, .scale = -2}, "NUMERIC(9,2)"},
        {{.code = 16, .scale = -2}, "NUMERIC(18,2)"},
        {{.code = 7, .scale = -1}, "NUMERIC(4,1)"},
        {{.code = 26, .sub_type = 1, .scale = -4}, "NUMERIC(38,4)"},
        {{.code = 10}, "FLOAT"},
        {{.code = 27}, "DOUBLE PRECISION"},
        {{.code = 14, .bytes = 30, .characters = 10}, "CHAR(10)"},
        {{.code = 37, .bytes = 50}, "VARCHAR(50)"},
        {{.code = 12}, "DATE"},
        {{.code = 13}, "TIME"},
        {{.code = 35}, "TIMESTAMP"},
        {{.code = 23}, "BOOLEAN"},
        {{.code = 261}, "BLOB SUB_TYPE BINARY"},
        {{.code = 261, .sub_type = 1}, "BLOB SUB_TYPE TEXT"},
        {{.code = 261, .sub_type = -5}, "BLOB SUB_TYPE -5"},
        {{.code = 25}, "DECFLOAT(34)"},
        {{.code = 32000}, "type 32000"},
    };
    for (const auto& [type, name] : cases) EXPECT_EQ(type_name(type), name);
}

}  // namespace
}  // namespace zmfb::tool
