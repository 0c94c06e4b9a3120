/// Taking back what an import or export that did not come to its end has made.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/session.h"

namespace zmfb::tool {

/// What a run of an import or export has begun: what it may have made, and so what may be taken back.
struct Begun {
    std::string table;      ///< ISO-8859-1, upper case; "" when none is made
    std::string external;   ///< its external table; "" when none is made
    std::string data_file;  ///< the file behind it
    std::string folder;     ///< a private folder, removed with all in it
    bool replaces = false;  ///< a table of this name was dropped before
};

/// Removes what there is of it, and only an external table that lies on this data file; returns what was
/// undone, in words. What is still in use by a process that has just died is tried again for a while.
std::vector<std::string> undo(zmFBConn& connection, const Begun& begun);

/// Removes the files of it only.
void remove_files(const Begun& begun);

/// The file of an external table; "" when the table is none, or is not there.
std::string external_file_of(zmFBConn& connection, const std::string& table);

/// Drops an external table that an earlier run left, when there is one of this name on a data file of the
/// driver's; returns whether it did. A note on standard error says so.
bool drop_leftover(zmFBConn& connection, const std::string& external);

/// Undoes what an interrupted run has begun, through a session of its own, says on standard error what was
/// undone, and returns the exit status of a process that this signal interrupted.
Exit undo_interrupted(const Options& options, int signal, std::string_view what, const Begun& begun);

}  // namespace zmfb::tool
