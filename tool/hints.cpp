#include "tool/hints.h"

#include <array>
#include <filesystem>

namespace zmfb::tool {
namespace {

struct Hint {
    std::string_view words;  ///< part of the engine's message
    std::string_view text;
};

// The first that fits counts: the more special ones come first.
constexpr std::array hints{
    Hint{"Your user name and password are not defined",
         "check --user and the password (ISC_PASSWORD, --password-file or the prompt)"},
    Hint{"Missing security context", "name a user with --user or ISC_USER"},
    Hint{"Unable to complete network request",
         "is the server running, and are host and port right? host/port:/path names another port than 3050"},
    Hint{"connection rejected by remote interface",
         "the server and this client have no login method in common"},
    Hint{"Error occurred during login",
         "AuthServer of the server and AuthClient of the client, in their firebird.conf, may have no login "
         "method in common"},
    Hint{"Incompatible wire encryption levels",
         "WireCrypt in the firebird.conf of the server and in that of the client, which the folder FIREBIRD "
         "has, must agree"},
    Hint{"Database already opened with engine instance",
         "another program has the file open with other engine settings; end it, or put the database on a "
         "server"},
    Hint{"its engine does not keep its locks in",
         "end that process first; only processes of one user, with one cache folder, have a database open at "
         "once, or any number through a server"},
    Hint{"moved, replaced or emptied", "end this program and start it again"},
    Hint{"no room for the engine's lock files",
         "make room on that disk: every program that has a database open keeps its locks there"},
    Hint{"cannot use the folder of the engine's lock files",
         "FIREBIRD_LOCK names a folder of this user; without FIREBIRD everything is made by itself"},
    Hint{"Can't access lock files' directory",
         "FIREBIRD_LOCK names a folder of this user; without FIREBIRD everything is made by itself"},
    Hint{"Use of external file at location",
         "ExternalFileAccess in the engine's firebird.conf must allow that folder; docs/deployment.md says "
         "how"},
    Hint{"Access to external file",
         "ExternalFileAccess in the engine's firebird.conf must allow that folder; docs/deployment.md says "
         "how"},
    Hint{"Access to UDF library",
         "\"zmfb functions stored\" makes functions that need no module; or UdfAccess in the engine's "
         "firebird.conf must allow the folder of zmrddudfs.so"},
    Hint{"module name or entrypoint could not be found",
         "\"zmfb functions stored\" makes functions that need no module; or zmrddudfs.so must lie in the "
         "folder that UdfAccess in the engine's firebird.conf names"},
    Hint{
        "cannot create index RDB$PRIMARY",
        "a process was killed while it made a table; zmfb exec \"create table ZZ (A integer)\" and zmfb exec "
        "\"drop table ZZ\" put that right; docs/recovery.md says more"},
    Hint{"no permission for CREATE access to DATABASE",
         "SYSDBA gives the right to make databases; docs/rights.md says how"},
    Hint{"No permission for CREATE DATABASE operation",
         "SYSDBA gives the right to make databases; docs/rights.md says how"},
    Hint{"no permission for read-write access to database",
         "the file or its disk is read-only for the user who runs the engine; its owner can change that with "
         "chmod"},
    Hint{"TABLE PLG$SRP", "SYSDBA makes the users of a server; docs/rights.md says how"},
    Hint{"no permission for", "the owner of the database gives rights; docs/rights.md says which are needed"},
    Hint{"No permission for", "the owner of the database gives rights; docs/rights.md says which are needed"},
    Hint{"There is no privilege for this operation",
         "the owner of the database gives rights; docs/rights.md says which are needed"},
    Hint{"is in use", "another program uses the table; zmfb opens shows which work areas have it open"},
    Hint{"is not a valid database",
         "the file is no Firebird database; \"zmfb create\" makes one under another name"},
    Hint{"File exists", "\"zmfb doctor\" says whether the driver can use it, and what it misses"},
    Hint{"Permission denied",
         "this user, or the account of the server, may not read and write the file, or enter its folder"},
    Hint{"No space left on device", "the disk is full"},
    Hint{"File too large", "a limit of this process or of the disk keeps files from growing that large"},
    Hint{"Error while trying to create file",
         "its folder has to be there, and one that the engine may write to: for host:/path on that host"},
    Hint{"Error while trying to open file", "\"zmfb create\" makes a new database"},
    Hint{"unsupported on-disk structure",
         "another version of Firebird made the file; gbak takes its database to this one: docs/deployment.md "
         "shows how"},
    Hint{"CREATE SEQUENCE G_",
         "a table of that name was dropped without its generators; \"zmfb doctor\" says what drops them"},
};

}  // namespace

std::string hint_for(std::string_view message) {
    for (const Hint& hint : hints) {
        if (message.find(hint.words) != std::string_view::npos) return with_pages(hint.text);
    }
    return {};
}

std::string with_pages(std::string_view text) {
    std::string named(text);
    const std::size_t at = named.find("docs/");
    if (at == std::string::npos) return named;
    std::error_code error;
    const std::filesystem::path program = std::filesystem::canonical("/proc/self/exe", error);
    const std::filesystem::path folder = (program.parent_path() / ZMFB_DOC_FROM_BIN).lexically_normal();
    if (std::filesystem::is_directory(folder / "docs", error)) named.insert(at, folder / "");
    return named;
}

}  // namespace zmfb::tool
