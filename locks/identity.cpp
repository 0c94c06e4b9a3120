#include <arpa/inet.h>
#include <netdb.h>
#include <unistd.h>

#include <array>

#include "host/number.h"
#include "host/text.h"
#include "locks/methods.h"
#include "locks/names.h"

namespace zmfb::locks {
namespace {

constexpr std::size_t host_name_buffer = 50;
constexpr std::size_t address_buffer = 30;

// The host entry of this machine; nullptr when its name is too long for the buffer or does not resolve.
const hostent* own_host_entry() {
    std::array<char, host_name_buffer> name{};
    if (::gethostname(name.data(), name.size()) != 0) return nullptr;
    name.back() = '\0';
    return ::gethostbyname(name.data());
}

}  // namespace

Value getpid(Self&, Args) { return ::getpid(); }

Value gethostname(Self&, Args) {
    const hostent* entry = own_host_entry();
    if (entry == nullptr) return "";
    return entry->h_name;
}

Value getipaddress(Self&, Args) {
    const hostent* entry = own_host_entry();
    if (entry == nullptr || entry->h_addr_list[0] == nullptr) return "";
    std::array<char, address_buffer> address{};
    if (::inet_ntop(entry->h_addrtype, entry->h_addr_list[0], address.data(), address.size()) == nullptr)
        return "";
    return address.data();
}

Value getuniqueareaid(Self& self, Args args) {
    const Value &tbl = args[0], &area = args[1];
    const Value identity = tbl + ":" + area + ":" + host::alltrim(host::str(call(self, "getpid"))) + ":" +
                           host::alltrim(call(self, "gethostname"));
    call(self, "writelog", "[AREAID] AreaID requested: " + identity, 8);
    return host::left(identity, area_id_width);
}

}  // namespace zmfb::locks
