#include "tool/import/rejects.h"

#include <fmt/format.h>

#include "tool/encoding.h"
#include "tool/rows/shown_text.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t listed = 20;

}  // namespace

template <class Write>
void RejectsFile::attempt(Write write) try {
    if (!path_.empty() && problem_.empty()) write();
} catch (const Failure& failure) {
    problem_ = failure.message;
}

void RejectsFile::begin() {
    attempt([&] {
        file_.emplace(path_);
        file_->write("file,record,field,bytes,reason\r\n");
        file_->flush();
    });
}

void RejectsFile::take_in(std::string_view rows) {
    if (rows.empty()) return;
    if (!file_) begin();
    has_rows_ = true;
    attempt([&] { file_->write(rows); });
}

void RejectsFile::add(const std::string& source, const BadValue& value) {
    const std::string row = fmt::format("{},{},{},{},{}\r\n", in_quotes(source), value.record,
                                        in_quotes(shown_bytes(value.field.name)),
                                        in_quotes(shown_bytes(value.bytes)), in_quotes(value.reason));
    if (rows_ == nullptr) return take_in(row);
    attempt([&] {
        if (std::fwrite(row.data(), 1, row.size(), rows_) != row.size())
            throw Failure{Exit::failed, fmt::format("cannot write {}", path_)};
    });
}

std::string RejectsFile::problem() {
    if (rows_ == nullptr && file_) attempt([&] { file_->flush(); });
    return problem_;
}

void RejectsFile::close() {
    if (const std::string why = problem(); !why.empty()) throw Failure{Exit::failed, why};
    if (file_ && has_rows_) file_->close();
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
