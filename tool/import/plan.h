/// What an import would make of a DBF file, and why it would be refused.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/import/engine_facts.h"
#include "tool/import/row_loader.h"
#include "tool/session.h"
#include "tool/transfer/names.h"
#include "zmfbconn/dbf/header.h"
#include "zmfbconn/driver_table.h"

namespace zmfb::tool {

/// A field on its way to a column.
struct PlannedColumn {
    /// Instead of a place: the column says whether the record was deleted.
    static constexpr std::size_t deletion_mark = static_cast<std::size_t>(-1);

    std::size_t field;         ///< its place in the header
    DriverColumn column;       ///< as the table is made with
    LoadColumn load;           ///< as its values travel
    std::size_t digits = 0;    ///< of a NUMERIC
    int decimals = 0;          ///< of them, behind the point
    bool is_wide = false;      ///< of a field of more digits than a NUMERIC has
    bool may_be_real = false;  ///< of an F field, whose numbers a NUMERIC need not hold
    std::size_t longest = 0;   ///< of a text, in characters; 0 for any
    bool takes_null = true;    ///< where it is not the number 0 instead, a text of blanks
};

/// What the numbers of a field need.
struct Digits {
    std::size_t whole = 0, decimals = 0;  ///< of a wide field: as many as the longest have, without zeros
                                          ///< that say nothing
    bool beyond_numeric = false;          ///< of an F field: its NUMERIC does not hold them
    std::uint64_t rounded = 0;            ///< numbers with more decimals than the NUMERIC keeps
    std::uint64_t rounded_real = 0;       ///< numbers that DOUBLE PRECISION does not give back
};

/// How people want things to be called.
struct WantedNames {
    std::string table;  ///< instead of the file's name, UTF-8; "" for that
    Renames fields;
    bool all_fields = false;     ///< a file is to have all that are renamed
    bool strict = false;         ///< names that cannot be are refused
    bool marks_deleted = false;  ///< a column DELETED_ says which records were
};

struct ImportPlan {
    std::string table;
    bool table_exists = false;
    bool beside_exists = false;  ///< what is loaded for a table that is there
    std::vector<PlannedColumn> columns;
    std::vector<std::string> changes;   ///< of names, UTF-8, a line each
    std::vector<std::string> notes;     ///< on what comes of it, UTF-8, a line each
    std::vector<std::string> refusals;  ///< UTF-8, a line each
    Renames unused_renames;             ///< of fields that the file does not have
};

/// The name of the table that a file of this path becomes, if it can be: its own up to the first dot, in
/// upper case.
std::string table_of_file(const std::string& path);

/// Asks for all tables that files of these paths become whether their names are reserved, at once.
void ask_for_table_names(zmFBConn& connection, EngineFacts& engine, const std::vector<std::string>& paths);

/// Takes the name of the table that a file of this path becomes, if it is free.
void take_table_name(zmFBConn& connection, EngineFacts& engine, const std::string& path,
                     std::set<std::string>& taken);

/// The column of a field; its name is that of the field.
PlannedColumn plan_column(const dbf::Field& field, std::size_t place);

/// Makes the column of a wide number the narrowest NUMERIC for numbers of so many digits; one of DOUBLE
/// PRECISION stays it when there is none.
void narrow(PlannedColumn& column, const Digits& digits);

/// Makes the column of a number one of DOUBLE PRECISION.
void make_real(PlannedColumn& column);

/// The type of a column, without its default.
std::string sql_type_of(const PlannedColumn& column);

/// Looks at the structure of the file, and at what the database can have. `taken` are the tables of the run
/// so far. A table that exists already is no refusal here.
ImportPlan plan_import(zmFBConn& connection, EngineFacts& engine, const std::string& path,
                       const dbf::Header& header, const WantedNames& wanted, std::set<std::string>& taken);

}  // namespace zmfb::tool
