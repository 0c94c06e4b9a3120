#include "sql/state.h"

#include <cstdint>
#include <type_traits>
#include <utility>

#include "conn/log.h"
#include "conn/public_call.h"
#include "sql/attachments.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace {

// The engine's message, and the call of a program that it is about.
struct Kept {
    std::string message;
    unsigned long call = 0;
};

Kept& kept() {
    static Kept the_last;
    return the_last;
}

// A call that went well forgets what an earlier one met with, and keeps what it met with itself.
void forget_earlier_message() {
    if (kept().call != conn::PublicCall::number()) kept() = {"", conn::PublicCall::number()};
}

}  // namespace

std::string last_engine_message() { return kept().message; }

namespace sql {

namespace {

constexpr std::uint32_t no_handle = 0xFFFFFFFF;

template <class Handle>
std::uint32_t bits_of(Handle handle) {
    if constexpr (std::is_pointer_v<Handle>) {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
    } else {
        return handle;
    }
}

template <class Handle>
Handle from_bits(std::uint32_t bits) {
    if constexpr (std::is_pointer_v<Handle>) {
        return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(bits));
    } else {
        return bits;
    }
}

// What engines from Firebird 4 on say that the client library of 3.0 has no words for.
struct NewerMessage {
    ISC_STATUS code;
    const char* before;
    const char* behind;
};
constexpr NewerMessage newer_messages[] = {{335545254, "Effective user is ", ""},
                                           {335545264, "No permission for CREATE ", " operation"}};

std::string in_words(const char* line, const ISC_STATUS* part) {
    const bool is_unknown = std::string_view(line).starts_with("unknown ISC error");
    if (!is_unknown || part[0] != isc_arg_gds || part[2] != isc_arg_string) return line;
    for (const NewerMessage& message : newer_messages) {
        if (message.code == part[1])
            return message.before + std::string(reinterpret_cast<const char*>(part[3])) + message.behind;
    }
    return line;
}

}  // namespace

std::string keep_message(const ISC_STATUS* status) {
    std::string message;
    char line[1024];
    for (const ISC_STATUS* part = status; client().interpret(line, sizeof line, &status) != 0;
         part = status) {
        if (!message.empty()) message += '\n';
        message += in_words(line, part);
    }
    kept() = {message, conn::PublicCall::number()};
    return message;
}

ClassState& state() {
    static ClassState shared;
    return shared;
}

double number_of(isc_db_handle handle) { return bits_of(handle); }

isc_db_handle handle_of(double number) {
    if (number == 0) return from_bits<isc_db_handle>(0);
    const bool possible = number >= 1 && number < static_cast<double>(no_handle);
    return from_bits<isc_db_handle>(possible ? static_cast<std::uint32_t>(number) : no_handle);
}

isc_db_handle handle_of(Self& self) {
    const Value& handle = var(self, Var::dbhndl);
    return handle_of(handle.is(host::Kind::numeric) ? handle.number() : 0);
}

Status outcome() {
    const ISC_STATUS* const status = state().status;
    const int code = client().sqlcode(status);
    if (code >= 0) {
        forget_earlier_message();
        return {code, ""};
    }
    std::string message = keep_message(status);
    give_up_after(status);
    return {code, std::move(message)};
}

std::string sqlcode_message(int sqlcode) {
    char message[256] = {};
    client().sql_interprete(sqlcode, message, sizeof message);
    message[sizeof message - 1] = '\0';
    return message;
}

std::string log_failure(int sqlcode) {
    std::string text = conn::sqlcode_text(sqlcode, sqlcode_message(sqlcode));
    conn::log_event(1, text);
    return text;
}

Status refuse(int sqlcode, std::string_view reason) {
    static std::string& kept = *new std::string;
    kept = reason;
    const ISC_STATUS refusal[] = {
        isc_arg_gds, isc_sqlerr, isc_arg_number, sqlcode,
        isc_arg_gds, isc_random, isc_arg_string, reinterpret_cast<ISC_STATUS>(kept.c_str()),
        isc_arg_end};
    ISC_STATUS* slot = state().status;
    for (const ISC_STATUS part : refusal) *slot++ = part;
    return {sqlcode, keep_message(state().status)};
}

}  // namespace sql

}  // namespace zmfb
