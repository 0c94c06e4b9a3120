/// Taking back what an export that did not come to its end has made.
#pragma once

#include <string>

#include "tool/session.h"
#include "tool/transfer/supervised.h"

namespace zmfb::tool {

/// What an export has begun: what it may have made, and so what may be taken back.
struct Begun {
    std::string external;   ///< an external table, ISO-8859-1, upper case; "" when none is made
    std::string data_file;  ///< the file behind it
    std::string folder;     ///< a private folder, removed with all in it
};

/// How the work is spoken of.
struct Spoken {
    std::string of;      ///< "the export of people"
    std::string failed;  ///< "people was not exported"
};

/// After work that did not return: removes what there is of it, and only an external table that lies on its
/// data file, through an attachment made for that. Tells why the work ended, what was undone, and of what
/// could not be the commands that do it. Returns the status to end with.
Exit undo_and_tell(const Options& options, const Spoken& spoken, const Ended& ended, const Begun& begun);

/// Removes the files of it only.
void remove_files(const Begun& begun);

/// The file of an external table; "" when the table is none, or is not there. Throws Failure.
std::string external_file_of(zmFBConn& connection, const std::string& table);

/// Drops an external table that an earlier run left, when there is one of this name on a data file of the
/// driver's; returns whether it did. A note on standard error says so. Throws Failure.
bool drop_leftover(zmFBConn& connection, const std::string& external);

}  // namespace zmfb::tool
