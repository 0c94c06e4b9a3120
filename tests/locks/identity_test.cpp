// Who a work area is: process, host and area id. No database is needed.
#include <arpa/inet.h>
#include <unistd.h>

#include "tests/locks/fake_host.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

std::string network_bytes(int family, const char* address, std::size_t size) {
    std::string bytes(size, '\0');
    EXPECT_EQ(inet_pton(family, address, bytes.data()), 1);
    return bytes;
}

std::string ipv4(const char* address) { return network_bytes(AF_INET, address, sizeof(in_addr)); }
std::string ipv6(const char* address) { return network_bytes(AF_INET6, address, sizeof(in6_addr)); }

class Identity : public Runtime {
  protected:
    std::string area_id(const Value& tbl, const Value& area) {
        return object.call("getuniqueareaid", tbl, area).string();
    }
    std::string text(std::string_view method) { return object.call(method).string(); }

    zmFBConn object;
    FakeHost host;
};

TEST_F(Identity, AreaIdIsTableAreaProcessAndCanonicalHostName) {
    EXPECT_EQ(area_id("CUSTOMER", "A1"), "CUSTOMER:A1:4242:host1");
    EXPECT_EQ(host.looked_up, "here");
}

TEST_F(Identity, AreaIdIsLoggedAtLevel8) {
    log_at(8);
    area_id("CUSTOMER", "A1");
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{8, "[AREAID] AreaID requested: CUSTOMER:A1:4242:host1"}}));
}

TEST_F(Identity, AreaIdIsNotLoggedAtLevel7) {
    log_at(7);
    area_id("CUSTOMER", "A1");
    EXPECT_EQ(log_lines(), std::vector<LogEntry>{});
}

TEST_F(Identity, AreaIdTakesItsArgumentsAsTheyAre) {
    EXPECT_EQ(area_id(" Customer ", " a1 "), " Customer : a1 :4242:host1");
    EXPECT_EQ(area_id("", ""), "::4242:host1");
}

TEST_F(Identity, AreaIdHasTheHostNameWithoutBlanksAround) {
    host.canonical = " host1 ";
    EXPECT_EQ(area_id("T", "A"), "T:A:4242:host1");
}

TEST_F(Identity, AreaIdOfFiftyBytesIsKeptWhole) {
    host.canonical = std::string(50 - std::string("CUSTOMER:A1:4242:").size(), 'h');
    const std::string whole = "CUSTOMER:A1:4242:" + host.canonical;
    ASSERT_EQ(whole.size(), 50u);
    EXPECT_EQ(area_id("CUSTOMER", "A1"), whole);
}

TEST_F(Identity, AreaIdIsCutToFiftyBytesAndTheLogShowsTheWhole) {
    host.canonical = "a-host-with-a-rather-long-name.in.some.domain.example";
    log_at(8);
    EXPECT_EQ(area_id("CUSTOMER", "A1"), "CUSTOMER:A1:4242:a-host-with-a-rather-long-name.in");
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{8,
                                      "[AREAID] AreaID requested: CUSTOMER:A1:4242:"
                                      "a-host-with-a-rather-long-name.in.some.domain.example"}}));
}

TEST_F(Identity, AreaIdOfALongTableNameLosesTheHostFirst) {
    EXPECT_EQ(area_id(std::string(43, 'T'), "A1"), std::string(43, 'T') + ":A1:424");
}

TEST_F(Identity, AreaIdOfFewerThanFiftyBytesWasNotCut) {
    for (std::size_t size = 1; size <= 60; ++size) {
        const std::string area(size, 'A');
        const std::string id = area_id("CUSTOMER", area);
        EXPECT_EQ(id.size() < 50, id == "CUSTOMER:" + area + ":4242:host1" && id.size() != 50) << id;
    }
}

TEST_F(Identity, TableAndAreaOfUpToFortyBytesKeepTheProcessId) {
    host.pid = 4194304;  // the longest that Linux gives
    for (const std::size_t size : {1U, 20U, 39U}) {
        EXPECT_NE(area_id(std::string(40 - size, 'T'), std::string(size, 'A')).find(":4194304:"),
                  std::string::npos);
    }
    EXPECT_EQ(area_id(std::string(30, 'T'), std::string(11, 'A')).find(":4194304:"), std::string::npos);
}

TEST_F(Identity, ProcessIdIsANumber) { EXPECT_EQ(show(object.call("getpid")), "4242"); }

TEST_F(Identity, HostNameIsTheOfficialNameOfTheEntry) {
    host.canonical = "alpha.example.org";
    EXPECT_EQ(text("gethostname"), "alpha.example.org");
    EXPECT_EQ(host.looked_up, "here");
}

TEST_F(Identity, HostNameIsAskedForInABufferOfFiftyBytes) {
    text("gethostname");
    EXPECT_EQ(host.buffer_size, 50u);
    host.name = std::string(49, 'n');
    EXPECT_EQ(text("gethostname"), "host1");
    EXPECT_EQ(host.looked_up, std::string(49, 'n'));
    host.name = std::string(50, 'n');
    EXPECT_EQ(text("gethostname"), "");
}

TEST_F(Identity, HostWithoutANameLeavesEmptyTexts) {
    host.has_name = false;
    host.addresses = {ipv4("10.1.2.3")};
    EXPECT_EQ(text("gethostname"), "");
    EXPECT_EQ(text("getipaddress"), "");
    EXPECT_EQ(area_id("CUSTOMER", "A1"), "CUSTOMER:A1:4242:");
}

TEST_F(Identity, HostNameThatDoesNotResolveLeavesEmptyTexts) {
    host.resolves = false;
    EXPECT_EQ(text("gethostname"), "");
    EXPECT_EQ(text("getipaddress"), "");
    EXPECT_EQ(area_id("CUSTOMER", "A1"), "CUSTOMER:A1:4242:");
}

TEST_F(Identity, AddressIsTheFirstOfTheEntry) {
    host.addresses = {ipv4("10.1.2.3"), ipv4("10.9.9.9")};
    EXPECT_EQ(text("getipaddress"), "10.1.2.3");
    EXPECT_EQ(host.buffer_size, 50u);
    EXPECT_EQ(host.looked_up, "here");
}

TEST_F(Identity, AddressFollowsTheFamilyOfTheEntry) {
    host.family = AF_INET6;
    host.addresses = {ipv6("2001:db8::17")};
    EXPECT_EQ(text("getipaddress"), "2001:db8::17");
}

TEST_F(Identity, AddressThatNeedsMoreThan29BytesIsEmpty) {
    host.family = AF_INET6;
    host.addresses = {ipv6("2001:db8:1:2:3:4:5555:6666")};
    EXPECT_EQ(text("getipaddress"), "2001:db8:1:2:3:4:5555:6666");
    host.addresses = {ipv6("2001:db8:1:2:3333:4444:555:666")};
    EXPECT_EQ(text("getipaddress"), "");
}

TEST_F(Identity, AddressOfAnEntryWithoutAddressesIsEmpty) { EXPECT_EQ(text("getipaddress"), ""); }

TEST_F(Identity, AddressOfAnUnknownFamilyIsEmpty) {
    host.family = AF_UNIX;
    host.addresses = {"sock"};
    EXPECT_EQ(text("getipaddress"), "");
}

TEST(RealHost, IdentityIsThatOfThisProcess) {
    zmFBConn object;
    EXPECT_EQ(object.call("getpid").number(), getpid());
    const std::string own = object.call("getuniqueareaid", "T", "A").string().data();
    EXPECT_TRUE(own.starts_with("T:A:" + std::to_string(getpid()) + ":")) << own;
}

}  // namespace
}  // namespace zmfb::test
