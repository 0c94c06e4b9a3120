#include "conn/log.h"

namespace zmfb::conn {

const char* log_path() { return "/var/log/zmrddfire.log"; }

}  // namespace zmfb::conn
