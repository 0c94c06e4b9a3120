/// A host whose name, address and process id the test decides: while one exists, the system calls
/// gethostname, gethostbyname and getpid of this program answer from it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zmfb::test {

class FakeHost {
  public:
    FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;
    ~FakeHost();

    std::string name = "here";           ///< what gethostname gives
    bool has_name = true;                ///< whether gethostname succeeds
    std::string canonical = "host1";     ///< the official name of the entry
    bool resolves = true;                ///< whether gethostbyname finds an entry
    int family = 0;                      ///< of the addresses; AF_INET at first
    std::vector<std::string> addresses;  ///< as bytes in network order
    int pid = 4242;

    std::size_t buffer_size = 0;  ///< the size that gethostname was last called with
    std::string looked_up;        ///< the name that gethostbyname was last called with
};

}  // namespace zmfb::test
