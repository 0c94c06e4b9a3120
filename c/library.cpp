#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/settings.h>

#include <string>

#include "c/guard.h"

using namespace zmfb::c;

namespace {

std::string_view text_of(const char* text) { return text == nullptr ? "" : text; }

// The status for what a function of database.h returned.
zmfb_status done(const zmfb::Status& status) {
    return status.ok() ? ZMFB_OK : fail(ZMFB_FAILED, status.message());
}

}  // namespace

const char* zmfb_version(void) { return zmfb::library_version().data(); }

const char* zmfb_message(void) { return message(); }

const char* zmfb_engine_message(void) {
    static std::string& text = *new std::string;
    const zmfb_status status = guard([] {
        text = zmfb::last_engine_message();
        return ZMFB_OK;
    });
    return status == ZMFB_OK ? text.c_str() : nullptr;
}

zmfb_status zmfb_prepare(const char* database) {
    if (database == nullptr) return fail_null();
    return guard([=] { return done(zmfb::prepare_client(database)); });
}

zmfb_status zmfb_create_database(const char* database, const char* user, const char* password) {
    if (database == nullptr) return fail_null();
    return guard([=] { return done(zmfb::create_database(database, text_of(user), text_of(password))); });
}

zmfb_status zmfb_install_functions(const char* database, const char* user, const char* password,
                                   zmfb_functions functions) {
    if (database == nullptr) return fail_null();
    if (functions < ZMFB_FUNCTIONS_BY_ENGINE || functions > ZMFB_FUNCTIONS_MODULE)
        return fail(ZMFB_OUT_OF_RANGE, "no such functions");
    return guard([=] {
        return done(zmfb::install_functions(database, text_of(user), text_of(password),
                                            static_cast<zmfb::Functions>(functions)));
    });
}

zmfb_status zmfb_setting(int number, const zmfb_value* value, zmfb_value* before) {
    return guard([=] {
        Value was = value == nullptr ? zmfb::host::set(number) : zmfb::host::set(number, value->value);
        if (before != nullptr) before->value = std::move(was);
        return ZMFB_OK;
    });
}
