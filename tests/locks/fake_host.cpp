#include "tests/locks/fake_host.h"

#include <dlfcn.h>
#include <netdb.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zmfb::test {
namespace {

FakeHost* current = nullptr;

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int answer_name(FakeHost& host, char* buffer, std::size_t size) {
    host.buffer_size = size;
    if (host.has_name && host.name.size() < size) {
        std::strcpy(buffer, host.name.c_str());
        return 0;
    }
    errno = ENAMETOOLONG;
    return -1;
}

hostent* answer_entry(FakeHost& host, const char* name) {
    static hostent entry;
    static std::vector<char*> addresses;
    host.looked_up = name;
    if (!host.resolves) return nullptr;
    addresses.clear();
    for (std::string& address : host.addresses) addresses.push_back(address.data());
    addresses.push_back(nullptr);
    entry = {};
    entry.h_name = host.canonical.data();
    entry.h_addrtype = host.family;
    entry.h_addr_list = addresses.data();
    return &entry;
}

}  // namespace

FakeHost::FakeHost() : family(AF_INET) { current = this; }
FakeHost::~FakeHost() { current = nullptr; }

}  // namespace zmfb::test

using zmfb::test::current;

// These stand before those of the C library for the whole program.
extern "C" int gethostname(char* name, std::size_t size) noexcept {
    if (current == nullptr) return zmfb::test::next<int(char*, std::size_t)>("gethostname")(name, size);
    return zmfb::test::answer_name(*current, name, size);
}

extern "C" hostent* gethostbyname(const char* name) {
    if (current == nullptr) return zmfb::test::next<hostent*(const char*)>("gethostbyname")(name);
    return zmfb::test::answer_entry(*current, name);
}

extern "C" pid_t getpid() noexcept {
    if (current == nullptr) return static_cast<pid_t>(syscall(SYS_getpid));
    return current->pid;
}
