/// The fixture of the tests of "zmfb matrix".
#pragma once

#include <string>

#include "tests/tool/tool.h"

namespace zmfb::test {

/// A database with the table CLIENT (NAME C 10, PRICE N 8,2) and one record in it.
class MatrixCommand : public Tool {
  protected:
    MatrixCommand() : path(database()) {
        on(path, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}, {'PRICE', 'N', 8, 2}})"});
        on(path, {"exec", "insert into client (name, price) values ('Ana', 1.5)"});
    }
    /// Writes out the matrix of CLIENT and replaces a text in it.
    std::string edited(const std::string& before, const std::string& after) const {
        on(path, {"matrix", "extract", "--yes", "client", "-o", file("m.tf")});
        std::string text = read_file(file("m.tf"));
        const std::size_t place = text.find(before);
        if (place == std::string::npos) ADD_FAILURE() << before << " is not in\n" << text;
        if (place != std::string::npos) text.replace(place, before.size(), after);
        return write_file("m.tf", text);
    }
    std::string path;
};

}  // namespace zmfb::test
