// The log of a test build: the file that the environment variable ZMFB_TEST_LOG names, which a test gives to
// the programs that it starts as well; nowhere without it.
#include <cstdlib>

#include "conn/log.h"

namespace zmfb::conn {

const char* log_path() {
    const char* path = std::getenv("ZMFB_TEST_LOG");
    return path != nullptr ? path : "/dev/null";
}

}  // namespace zmfb::conn
