#include "tool/transfer/rejects.h"

#include <fmt/format.h>

namespace zmfb::tool {
namespace {

constexpr std::size_t listed = 20;

std::string quoted(std::string_view text) {
    std::string all = "\"";
    for (const char c : text) all += c == '"' ? std::string("\"\"") : std::string(1, c);
    return all + '"';
}

}  // namespace

void Rejects::add(const BadValue& value) {
    const std::string field = shown_bytes(value.field.name);
    const std::string bytes = shown_bytes(value.bytes);
    if (++count_ <= listed) {
        first_.push_back(
            fmt::format("record {}, field {}: \"{}\": {}", value.record, field, bytes, value.reason));
    }
    if (path_.empty()) return;
    if (!file_) {
        file_.emplace(path_);
        file_->write("file,record,field,bytes,reason\r\n");
    }
    file_->write(fmt::format("{},{},{},{},{}\r\n", quoted(source_), value.record, quoted(field),
                             quoted(bytes), quoted(value.reason)));
}

void Rejects::close() {
    if (file_) file_->close();
}

std::string Rejects::text() const {
    std::string all;
    for (const std::string& line : first_) all += line + "\n";
    if (count_ > first_.size()) all += fmt::format("and {} more\n", count_ - first_.size());
    return all;
}

}  // namespace zmfb::tool
