#include <zmfbconn/connection.h>

#include <utility>

#include "c/guard.h"

using namespace zmfb::c;

namespace {

Value text_or_nil(const char* text) { return text == nullptr ? Value() : Value(text); }

// Runs `work` on the object in a place; it stays alive meanwhile, whatever becomes of the place.
template <class Work>
zmfb_status with_object(const zmfb_value* place, Work work) noexcept {
    if (place == nullptr) return fail_null();
    if (place->value.object() == nullptr) return fail_kind(Kind::object, place->value);
    return guard([&] {
        const Value object = place->value;
        work(object);
        return ZMFB_OK;
    });
}

}  // namespace

zmfb_status zmfb_connect(zmfb_value* connection, const char* database, const char* user, const char* password,
                         const char* role) {
    if (connection == nullptr) return fail_null();
    return guard([=] {
        connection->value =
            zmfb::zmFBConn(text_or_nil(database), text_or_nil(user), text_or_nil(password), text_or_nil(role))
                .value();
        return ZMFB_OK;
    });
}

zmfb_status zmfb_call(const zmfb_value* object, const char* method, const zmfb_value* const* arguments,
                      size_t count, zmfb_value* result) {
    if (method == nullptr || (arguments == nullptr && count > 0)) return fail_null();
    return with_object(object, [=](const Value& callee) {
        const std::vector<Value> values = copies(arguments, count);
        Value answer = zmfb::zmFBConn::of(callee).call_with(method, Args(values));
        if (result != nullptr) result->value = std::move(answer);
    });
}

zmfb_status zmfb_get_member(const zmfb_value* object, const char* name, zmfb_value* value) {
    if (name == nullptr || value == nullptr) return fail_null();
    return with_object(object, [=](const Value& owner) { value->value = owner.object()->get(name); });
}

zmfb_status zmfb_set_member(const zmfb_value* object, const char* name, const zmfb_value* value) {
    if (name == nullptr || value == nullptr) return fail_null();
    return with_object(object, [=](const Value& owner) { owner.object()->set(name, value->value); });
}

size_t zmfb_method_count(void) { return zmfb::methods().size(); }

zmfb_status zmfb_method(size_t index, const char** name, int* parameters, const char** kind,
                        const char** help) {
    return guard([=] {
        if (index >= zmfb::methods().size()) return fail(ZMFB_OUT_OF_RANGE, "no such method");
        // The table's texts are literals, which end with a zero byte.
        const zmfb::MethodRow& row = zmfb::methods()[index];
        if (name != nullptr) *name = row.name.data();
        if (parameters != nullptr) *parameters = static_cast<int>(row.parameters.size());
        if (kind != nullptr) *kind = zmfb::host::kind_name(row.kind).data();
        if (help != nullptr) *help = row.help.data();
        return ZMFB_OK;
    });
}

zmfb_status zmfb_eval(const zmfb_value* block, const zmfb_value* const* arguments, size_t count,
                      zmfb_value* result) {
    if (block == nullptr || (arguments == nullptr && count > 0)) return fail_null();
    if (!block->value.is(Kind::block)) return fail_kind(Kind::block, block->value);
    return guard([=] {
        const Value body = block->value;
        const std::vector<Value> values = copies(arguments, count);
        Value answer = body.eval(Args(values));
        if (result != nullptr) result->value = std::move(answer);
        return ZMFB_OK;
    });
}

zmfb_status zmfb_set_error_block(const zmfb_value* block) {
    if (block != nullptr && !block->value.is(Kind::block)) return fail_kind(Kind::block, block->value);
    return guard([=] {
        error_block_of_c() = block == nullptr ? Value() : block->value;
        return ZMFB_OK;
    });
}

zmfb_status zmfb_get_error(zmfb_value* error) {
    return fill(error, [] { return last_error(); });
}
