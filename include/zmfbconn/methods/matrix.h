/// The methods of the structure matrix.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Extraction and application. The structures of tables as a text, and back.
inline constexpr Method<Array(std::optional<TableNames>, std::optional<std::string>)> extractmatrix{
    "extractmatrix", {"tables", "filename"}, "Writes out the structures of tables as a matrix"};
inline constexpr Method<TextRows(TableName)> extracmatrixoftable{
    "extracmatrixoftable", {"table"}, "Matrix block of one table", MethodKind::protected_};
inline constexpr Method<MatrixLog(Matrix, std::optional<bool>)> applymatrix{
    "applymatrix", {"matrix", "simulate"}, "Changes tables to the structures of a matrix"};
inline constexpr Method<MatrixLog(Matrix)> checkmatrix{
    "checkmatrix", {"matrix"}, "Tells what applying a matrix would do"};
/// @}

/// @{
/// Comparing fields. By name, type, length and decimals.
inline constexpr Method<bool(FieldDescriptor, FieldDescriptor)> hasfieldnamechanged{
    "hasfieldnamechanged",
    {"right", "left"},
    "Whether two field descriptors differ in name",
    MethodKind::protected_};
inline constexpr Method<bool(FieldDescriptor)> isfielddropped{
    "isfielddropped", {"field"}, "Whether a field descriptor is the drop mark", MethodKind::protected_};
inline constexpr Method<bool(FieldDescriptor, Structure)> isfieldstructurechanged{
    "isfieldstructurechanged",
    {"field", "structure"},
    "Whether a field of a structure has another type or size",
    MethodKind::protected_};
inline constexpr Method<bool(Structure, Structure, std::int64_t)> isfieldstructuredifferent{
    "isfieldstructuredifferent",
    {"structure1", "structure2", "position"},
    "Whether two structures differ at a position",
    MethodKind::protected_};
inline constexpr Method<bool(Structure, Structure, std::int64_t)> samefieldname{
    "samefieldname",
    {"structure1", "structure2", "position"},
    "Whether two structures have the same name at a position",
    MethodKind::protected_};
inline constexpr Method<bool(Texts)> isvalidfielddescriptor{
    "isvalidfielddescriptor",
    {"pieces"},
    "Whether the pieces of a descriptor are well formed",
    MethodKind::protected_};
/// @}

/// @{
/// Texts. Pieces of a line.
inline constexpr Method<Texts(std::string, std::string)> toarray{
    "toarray", {"line", "separator"}, "Splits a text on a separator", MethodKind::protected_};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow matrix[] = {
    m::applymatrix,
    m::checkmatrix,
    m::extracmatrixoftable,
    m::extractmatrix,
    m::hasfieldnamechanged,
    m::isfielddropped,
    m::isfieldstructurechanged,
    m::isfieldstructuredifferent,
    m::isvalidfielddescriptor,
    m::samefieldname,
    m::toarray,
};

}  // namespace zmfb::declared
