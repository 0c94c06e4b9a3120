/// The commands of the tool. Each function adds those of one file under commands/, with their options.
#pragma once

#include "tool/command_line.h"

namespace zmfb::tool {

/// Adds all of them, in the order in which --help lists them.
void add_all(CommandLine& line);

/// create: makes the database with the functions, attaches once so that the system tables exist.
void add_create(CommandLine& line);
/// functions: what the driver's functions are in a database, and others in their place.
void add_functions(CommandLine& line);
/// prepare: puts what the driver needs into a database of other programs.
void add_prepare(CommandLine& line);
/// methods: the method table.
void add_methods(CommandLine& line);
/// call: evaluates calls one after another; "-" reads one a line from standard input.
void add_call(CommandLine& line);
/// import: brings DBF files in.
void add_import(CommandLine& line);
/// export: writes tables into DBF files.
void add_export(CommandLine& line);
/// tables, struct, drop: what there is.
void add_tables(CommandLine& line);
/// browse: the rows of a table on the whole screen.
void add_browse(CommandLine& line);
/// query, exec: SQL.
void add_query(CommandLine& line);
/// shell: statements, calls and commands as they are typed.
void add_shell(CommandLine& line);
/// locks, opens, unlock, clear: the shared-access tables.
void add_locks(CommandLine& line);
/// log: the entries of the log.
void add_log(CommandLine& line);
/// doctor: whether all is well, and what to do where it is not.
void add_doctor(CommandLine& line);
/// grant: the rights of a user.
void add_grant(CommandLine& line);
/// generate: manual page and completions.
void add_generate(CommandLine& line);
/// matrix extract, check and apply: structures through a text file.
void add_matrix(CommandLine& line);

}  // namespace zmfb::tool
