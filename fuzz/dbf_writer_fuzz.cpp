// The writer of DBF files against the reader: any values in any fields of any format.
#include "fuzz/fuzz.h"
#include "tests/dbf/write_and_read.h"

void zmfb::fuzz::try_input(Input& input) {
    const std::string path = (fuzz::scratch_folder() / "t.dbf").string();
    dbf_test::WriteAndRead(input, path, fuzz::require).run();
}
