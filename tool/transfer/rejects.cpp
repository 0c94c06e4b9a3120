#include "tool/transfer/rejects.h"

#include <fmt/format.h>

#include "tool/rows/shown_text.h"
#include "tool/session.h"
#include "tool/transfer/number_fit.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t listed = 20;

std::string in_quotes(std::string_view text) {
    std::string all;
    add_in_quotes(all, text);
    return all;
}

}  // namespace

void RejectsFile::add(const std::string& source, const BadValue& value) {
    if (path_.empty() || !problem_.empty()) return;
    try {
        if (!file_) {
            file_.emplace(path_);
            file_->write("file,record,field,bytes,reason\r\n");
        }
        file_->write(fmt::format("{},{},{},{},{}\r\n", in_quotes(source), value.record,
                                 in_quotes(shown_bytes(value.field.name)),
                                 in_quotes(shown_bytes(value.bytes)), in_quotes(value.reason)));
    } catch (const Failure& failure) {
        problem_ = failure.message;
    }
}

std::string RejectsFile::problem() try {
    if (file_ && problem_.empty()) file_->flush();
    return problem_;
} catch (const Failure& failure) {
    return problem_ = failure.message;
}

void RejectsFile::close() {
    if (const std::string why = problem(); !why.empty()) throw Failure{Exit::failed, why};
    if (file_) file_->close();
}

void Rejects::add(const BadValue& value) {
    if (++count_ <= listed) {
        first_.push_back(fmt::format("record {}, field {}: \"{}\": {}", value.record,
                                     shown_bytes(value.field.name), shown_bytes(value.bytes), value.reason));
    }
    all_.add(source_, value);
}

std::string Rejects::text() const {
    std::string all;
    for (const std::string& line : first_) all += line + "\n";
    if (count_ > first_.size()) all += fmt::format("and {} more\n", count_ - first_.size());
    if (!all_.path().empty() && all_.problem().empty()) all += fmt::format("all are in {}\n", all_.path());
    return all;
}

}  // namespace zmfb::tool
