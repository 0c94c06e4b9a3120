/// DBF files into tables and tables into DBF files.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

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

/// Runs a transfer whose INSERT and DROP statements are kept back, and returns them. What it raises, that
/// rows and records differ, is passed over. Throws when it keeps nothing back.
std::vector<std::string> kept_back_by(const std::function<void()>& transfer);

}  // namespace zmfb::bench
