#include <gtest/gtest.h>

#include "host/compare.h"
#include "tests/matrix/matrix_test.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using HostileDescriptor = MatrixTest;

bool is_valid(const Value& pieces) {
    zmFBConn object;
    return object.call("isvalidfielddescriptor", pieces).logical();
}

TEST(ValidDescriptor, HasAPositionANameATypeAndALength) {
    EXPECT_TRUE(is_valid(texts({"001", "NOME", "C", "10", "0"})));
    EXPECT_TRUE(is_valid(texts({"001", "NOME", "c", "10", "0"})));
    EXPECT_TRUE(is_valid(texts({" 001", " NOME ", "N", " 10", "2   "})));
    EXPECT_TRUE(is_valid(texts({"7x", "NOME", "D", "8 bytes", "0"})));
}

TEST(ValidDescriptor, MayHaveMorePiecesThanFive) {
    EXPECT_TRUE(is_valid(texts({"001", "NOME", "C", "10", "0", "x", "y"})));
}

TEST(ValidDescriptor, DoesNotLookAtTheDecimals) {
    EXPECT_TRUE(is_valid(texts({"001", "NOME", "C", "10", ""})));
    EXPECT_TRUE(is_valid(texts({"001", "NOME", "C", "10", "x"})));
}

TEST(ValidDescriptor, TakesEveryPieceOfCNDLForAType) {
    for (const std::string type : {"C", "N", "D", "L", "CN", "ND", "DL", "CNDL", "cn", "Dl"}) {
        EXPECT_TRUE(is_valid(texts({"001", "NOME", type, "10", "0"}))) << type;
    }
    for (const std::string type : {"X", "M", "U", "CD", "LC", "C ", " C", "", "CNDLC"}) {
        EXPECT_FALSE(is_valid(texts({"001", "NOME", type, "10", "0"}))) << type;
    }
}

TEST(InvalidDescriptor, HasNoPositionAboveZero) {
    for (const std::string_view position : {"000", "0", "-1", "", "x1", "***"}) {
        EXPECT_FALSE(is_valid(texts({position, "NOME", "C", "10", "0"}))) << position;
    }
}

TEST(InvalidDescriptor, HasNoName) {
    EXPECT_FALSE(is_valid(texts({"001", "", "C", "10", "0"})));
    EXPECT_FALSE(is_valid(texts({"001", "   ", "C", "10", "0"})));
}

TEST(InvalidDescriptor, HasNoLengthAboveZeroWhateverItsType) {
    for (const std::string type : {"C", "N", "D", "L"}) {
        EXPECT_FALSE(is_valid(texts({"001", "NOME", type, "0", "0"}))) << type;
        EXPECT_FALSE(is_valid(texts({"001", "NOME", type, "", "0"}))) << type;
        EXPECT_FALSE(is_valid(texts({"001", "NOME", type, "-5", "0"}))) << type;
    }
}

TEST(InvalidDescriptor, HasOnlyFourPieces) {
    EXPECT_FALSE(is_valid(texts({"001", "NOME", "C", "10"})));
    EXPECT_FALSE(is_valid(texts({})));
}

struct DifferenceCase {
    std::string_view name;
    Field other;
    bool different;
};

class FieldDifference : public ::testing::TestWithParam<DifferenceCase> {};

TEST_P(FieldDifference, IsSeenAtThePosition) {
    zmFBConn object;
    const Value one = structure({{"A", "C", 1}, {"NOME", "C", 10, 0}});
    const Value other = structure({{"B", "N", 9}, GetParam().other, {"Z", "C", 1}});
    EXPECT_EQ(object.call("isfieldstructuredifferent", one, other, 2).logical(), GetParam().different);
}

INSTANTIATE_TEST_SUITE_P(IsFieldStructureDifferent, FieldDifference,
                         ::testing::Values(DifferenceCase{"Equal", {"NOME", "C", 10, 0}, false},
                                           DifferenceCase{"Name", {"NOMES", "C", 10, 0}, true},
                                           DifferenceCase{"NamePrefix", {"NOM", "C", 10, 0}, true},
                                           DifferenceCase{"NameBlank", {"NOME ", "C", 10, 0}, true},
                                           DifferenceCase{"Type", {"NOME", "N", 10, 0}, true},
                                           DifferenceCase{"Length", {"NOME", "C", 11, 0}, true},
                                           DifferenceCase{"Decimals", {"NOME", "C", 10, 1}, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FieldComparison, BeyondTheEndIsDifferentAndNotTheSameName) {
    zmFBConn object;
    const Value longer = structure({{"A", "C", 1}, {"B", "C", 1}});
    const Value shorter = structure({{"A", "C", 1}});
    const Value none = structure({});
    for (const auto& [one, other, position] :
         {std::tuple{shorter, longer, 2}, {longer, shorter, 2}, {none, none, 1}, {longer, longer, 3}}) {
        EXPECT_TRUE(object.call("isfieldstructuredifferent", one, other, position).logical());
        EXPECT_FALSE(object.call("samefieldname", one, other, position).logical());
    }
    EXPECT_FALSE(object.call("isfieldstructuredifferent", longer, shorter, 1).logical());
    EXPECT_TRUE(object.call("samefieldname", longer, shorter, 1).logical());
}

TEST(FieldComparison, SameNameDoesNotLookAtTheRest) {
    zmFBConn object;
    const Value one = structure({{"A", "C", 1}});
    EXPECT_TRUE(object.call("samefieldname", one, structure({{"A", "N", 9, 2}}), 1).logical());
    EXPECT_FALSE(object.call("samefieldname", one, structure({{"a", "C", 1}}), 1).logical());
    EXPECT_FALSE(object.call("samefieldname", structure({{"AB", "C", 1}}), one, 1).logical());
}

TEST(FieldComparison, NameChangeIsExact) {
    zmFBConn object;
    const Value one = field({"NOME", "C", 10});
    EXPECT_FALSE(object.call("hasfieldnamechanged", one, field({"NOME", "N", 3, 1})).logical());
    for (const std::string name : {"NOM", "NOMES", "nome", "NOME ", ""}) {
        EXPECT_TRUE(object.call("hasfieldnamechanged", field({name, "C", 10}), one).logical()) << name;
        EXPECT_TRUE(object.call("hasfieldnamechanged", one, field({name, "C", 10})).logical()) << name;
    }
}

TEST(StructureChange, IsAnotherTypeLengthOrDecimalsOfTheFieldOfThatName) {
    zmFBConn object;
    const Value table = structure({{"A", "C", 10}, {"B", "N", 12, 2}, {"C", "D", 8}});
    const auto changed = [&](const Field& wanted) {
        return object.call("isfieldstructurechanged", field(wanted), table).logical();
    };
    EXPECT_FALSE(changed({"B", "N", 12, 2}));
    EXPECT_TRUE(changed({"B", "C", 12, 2}));
    EXPECT_TRUE(changed({"B", "N", 13, 2}));
    EXPECT_TRUE(changed({"B", "N", 12, 3}));
}

TEST(StructureChange, IsNoneForAFieldThatTheTableLacks) {
    zmFBConn object;
    const Value table = structure({{"NOME", "C", 10}});
    for (const std::string name : {"NOM", "NOMES", "X", ""}) {
        EXPECT_FALSE(object.call("isfieldstructurechanged", field({name, "N", 1, 1}), table).logical())
            << name;
    }
    EXPECT_FALSE(object.call("isfieldstructurechanged", field({"NOME", "N", 1}), structure({})).logical());
}

TEST(StructureChange, ComparesTheTypeByTheSettingExact) {
    zmFBConn object;
    const Value table = structure({{"NOME", "CN", 10}});
    const Value wanted = field({"NOME", "C", 10});
    EXPECT_FALSE(object.call("isfieldstructurechanged", wanted, table).logical());
    host::set_exact(true);
    EXPECT_TRUE(object.call("isfieldstructurechanged", wanted, table).logical());
    host::set_exact(false);
}

TEST(StructureChange, LooksAtTheFirstFieldOfThatName) {
    zmFBConn object;
    const Value table = structure({{"A", "C", 10}, {"A", "C", 20}});
    EXPECT_FALSE(object.call("isfieldstructurechanged", field({"A", "C", 10}), table).logical());
    EXPECT_TRUE(object.call("isfieldstructurechanged", field({"A", "C", 20}), table).logical());
}

TEST(DropMark, IsTheExactName) {
    zmFBConn object;
    const auto dropped = [&](const std::string& name) {
        return object.call("isfielddropped", field({name, "", 0, 0})).logical();
    };
    EXPECT_TRUE(dropped("DROP FIELD"));
    for (const std::string name :
         {"DROP FIELD NOME", "DROP FIELDS", "drop field", " DROP FIELD", "DROP", ""}) {
        EXPECT_FALSE(dropped(name)) << name;
    }
}

TEST_F(HostileDescriptor, DescriptorsOfOtherShapesRaiseAndAnswerFalse) {
    zmFBConn object;
    const Value shapes[] = {Value(), Value(5), Value("abcdefgh"), Value(true), structure({})};
    for (const Value& shape : shapes) {
        EXPECT_FALSE(object.call("isvalidfielddescriptor", shape).logical());
        object.call("isfieldstructuredifferent", shape, shape, 1);
        object.call("samefieldname", shape, shape, -4294967295.0);
        object.call("hasfieldnamechanged", shape, shape);
        object.call("isfieldstructurechanged", shape, shape);
        EXPECT_FALSE(object.call("isfielddropped", shape).logical());
    }
    EXPECT_FALSE(raised().empty());
}

TEST_F(HostileDescriptor, APositionBelowOneRaisesABoundError) {
    zmFBConn object;
    const Value table = structure({{"A", "C", 1}});
    for (const double position : {0.0, -1.0, -4294967295.0}) {
        forget_raised();
        object.call("samefieldname", table, table, position);
        ASSERT_FALSE(raised().empty()) << position;
        EXPECT_EQ(raised().front(), "Bound error: array access");
    }
}

}  // namespace
}  // namespace zmfb::test
