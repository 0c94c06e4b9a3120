#include "tests/support/dbf_readers.h"

#include <stdexcept>

#include "tests/support/process.h"

namespace zmfb::test {
namespace {

// Every value and every record is followed by a byte that no text of the tests has.
constexpr char value_end = '\x1F';
constexpr char record_end = '\x1E';

constexpr const char* dbfread_program = R"(
import sys, dbfread
out = sys.stdout.buffer
for record in dbfread.DBF(sys.argv[1], encoding='latin-1', load=False, ignore_missing_memofile=False):
    for value in record.values():
        text = value if isinstance(value, str) else str(value)
        out.write(text.encode('latin-1') + b'\x1f')
    out.write(b'\x1e')
)";

std::string output_of(const std::vector<std::string>& command) {
    // The system's own Python has the packages; another that comes first in PATH need not.
    Finished finished = run(command, "", {"PATH=/usr/bin:/bin"});
    if (finished.status != 0) {
        throw std::runtime_error(command[0] + " ended with " + std::to_string(finished.status) + ": " +
                                 finished.err);
    }
    return std::move(finished.out);
}

std::vector<std::string> pieces(const std::string& text, char end) {
    std::vector<std::string> found;
    for (std::size_t from = 0, at = 0; (at = text.find(end, from)) != std::string::npos; from = at + 1) {
        found.push_back(text.substr(from, at - from));
    }
    return found;
}

std::string without_outer_blanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

DbfRecords read_with_dbfread(const std::string& path) {
    DbfRecords records;
    for (const std::string& record :
         pieces(output_of({"/usr/bin/python3", "-c", dbfread_program, path}), record_end)) {
        records.push_back(pieces(record, value_end));
    }
    return records;
}

// A record shows as "Record: 0", then a line "NAME: bytes" for each field, and "(DELETED)" behind a deleted
// one.
DbfRecords read_with_dbfdump(const std::string& path) {
    DbfRecords records;
    for (const std::string& line : pieces(output_of({"dbfdump", "-m", "-r", path}), '\n')) {
        const std::size_t colon = line.find(':');
        if (line.starts_with("Record:")) {
            records.emplace_back();
        } else if (colon != std::string::npos && !records.empty()) {
            records.back().push_back(without_outer_blanks(line.substr(colon + 1)));
        }
    }
    return records;
}

}  // namespace zmfb::test
