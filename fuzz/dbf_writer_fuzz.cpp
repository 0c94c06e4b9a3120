// The writer of DBF files against the reader: any values in any fields of any format.
#include "fuzz/fuzz.h"
#include "tests/dbf/write_and_read.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zmfb;
    fuzz::Input input(data, size);
    const std::string path = (fuzz::scratch_folder() / "t.dbf").string();
    dbf_test::WriteAndRead(input, path, fuzz::require).run();
    return 0;
}
