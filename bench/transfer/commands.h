/// DBF files into tables and tables into DBF files.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// make_dbf: a DBF file of five fields. import.ours: bringdbf, timed. import.prepare: all of bringdbf but for
/// the copy of the rows, whose statement is returned.
std::span<const Command> import_commands();
/// export.ours: exiletable, timed. export.prepare: all of it but for the copy of the rows, whose statement is
/// returned.
std::span<const Command> export_commands();
/// convert.ours: the conversion of a DBF file to its data file alone, timed. convert.cp: cp of that file.
std::span<const Command> convert_commands();

}  // namespace zmfb::bench
