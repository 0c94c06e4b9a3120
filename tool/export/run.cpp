#include "tool/export/run.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/export/report.h"
#include "tool/interrupt.h"
#include "tool/output_file.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/transfer/progress.h"
#include "tool/transfer/value_sum.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t most_refused_shown = 20;
constexpr std::size_t longest_utf8_character = 4;

class Export {
  public:
    Export(Session& session, const ExportSource& source, const ExportOptions& options, std::uint64_t expected,
           std::vector<ManifestFile>& entries)
        : session_(session),
          source_(source),
          options_(options),
          expected_(expected),
          entries_(entries),
          code_page_(options.encoding.empty() ? encoding_name() : options.encoding),
          character_bytes_(is_single_byte(code_page_) ? 1 : longest_utf8_character),
          target_(fs::path(options.folder) / (source.file_name + ".dbf")) {}

    void run(Transaction& work) {
        Statement statement = work.prepare(source_.query);
        plan(statement.columns());
        place_ = place();
        ask();
        write(statement);
        report_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        print_summary(report_, session_.options().json);
        if (!options_.manifest.empty()) entries_.push_back(entry());
    }

  private:
    void plan(const std::vector<Column>& columns);
    void add_field(const Column& column, std::size_t place);
    [[nodiscard]] std::string field_name(const Column& column);
    void lose(const std::string& what);
    [[nodiscard]] fs::path place() const;
    void ask() const;
    void write(Statement& statement);
    void write_rows(Statement& statement, dbf::Writer& writer);
    void write_row(const Row& row, dbf::Writer& writer);
    void put(const ExportField& field, const zmfb::Field& value, dbf::Writer& writer, std::size_t place);
    void refuse_value(std::string line);
    void refuse_values() const;
    [[nodiscard]] ManifestFile entry();

    Session& session_;
    const ExportSource& source_;
    const ExportOptions& options_;
    std::uint64_t expected_;
    std::vector<ManifestFile>& entries_;
    std::string code_page_;
    std::size_t character_bytes_;
    fs::path target_, place_;
    std::vector<ExportField> fields_;
    std::map<std::string, std::string> columns_by_field_;
    std::vector<std::string> refusals_;
    std::string hint_;
    bool has_lost_ = false;                    // something, by a type that the format does not have
    std::vector<std::string> refused_values_;  // the first of them
    std::uint64_t refused_ = 0;
    std::optional<ValueSum> values_;
    ExportReport report_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// What goes with --lossy only.
void Export::lose(const std::string& what) {
    (options_.lossy ? report_.warnings : refusals_).push_back(what);
    hint_ = "--lossy writes what the format has";
    if (options_.format != dbf::Format::visual_foxpro) hint_ += "; --format vfp has more types";
    has_lost_ = true;
}

std::string Export::field_name(const Column& column) {
    constexpr std::size_t longest = 10;
    const Name name(column.name);
    const auto renamed = options_.renames.find(name.bytes());
    const std::string wanted = renamed == options_.renames.end() ? name.text() : renamed->second;
    std::string cut;
    for (std::size_t i = 0, characters = 0; i < wanted.size(); ++i) {
        if ((wanted[i] & 0xC0) != 0x80 && ++characters > longest) break;
        cut += wanted[i];
    }
    const auto [first, is_new] = columns_by_field_.emplace(cut, name.shown());
    if (!is_new && first->second == name.shown()) {
        refusals_.push_back(fmt::format("there is more than one column {}", name.shown()));
        if (source_.declared.empty()) hint_ = "AS gives a column of a query another name";
    } else if (!is_new) {
        refusals_.push_back(fmt::format("the columns {} and {} would both become the field {}", first->second,
                                        name.shown(), cut));
        hint_ = "--rename OLD=NEW gives a column another name";
    } else if (cut != wanted) {
        report_.warnings.push_back(fmt::format("the column {} becomes the field {}", name.shown(), cut));
    }
    return cut;
}

void Export::add_field(const Column& column, std::size_t place) {
    const Declared declared = place < source_.declared.size() ? source_.declared[place] : Declared{};
    auto field = export_field(column, declared, options_.format, character_bytes_);
    const std::string name = Name(column.name).shown();
    if (!field) {
        return lose(fmt::format("the column {}, {}, {}", name, column.type_name,
                                options_.lossy ? "is left out" : "has a type that the format does not have"));
    }
    if (!field->loss.empty()) lose(fmt::format("the column {}, {}", name, field->loss));
    field->column = place;
    field->field.name = field_name(column);
    fields_.push_back(std::move(*field));
}

void Export::plan(const std::vector<Column>& columns) {
    if (columns.empty())
        throw Failure{Exit::failed, "the statement returns no rows: exec runs such statements"};
    for (std::size_t i = 0; i < columns.size(); ++i) add_field(columns[i], i);
    std::vector<dbf::NewField> fields;
    for (const ExportField& field : fields_) fields.push_back(field.field);
    if (refusals_.empty()) {
        for (const std::string& problem : dbf::field_problems(options_.format, fields, code_page_))
            refusals_.push_back(fmt::format("{} {}", target_.filename().string(), problem));
    }
    if (!refusals_.empty()) {
        std::string reasons;
        for (const std::string& refusal : refusals_) reasons += refusal + "\n";
        throw Failure{Exit::failed, fmt::format("{} cannot be exported", source_.shown), reasons, hint_};
    }
    for (const std::string& warning : report_.warnings)
        say("warning: {}\n", without_controls(source_.shown + ": " + warning));
    report_.fields = fields;
}

fs::path Export::place() const {
    if (source_.file_name.find('/') != std::string::npos || source_.file_name.starts_with('.')) {
        throw Failure{Exit::failed, fmt::format("{} cannot be exported", source_.shown),
                      "its name is none for a file", "--query with --table names the file"};
    }
    fs::path place = place_of_file(target_);
    if (place.empty())
        throw Failure{Exit::failed, fmt::format("cannot write {}: it is no file", target_.string())};
    return place;
}

void Export::ask() const {
    if (!fs::exists(target_) || options_.yes) return;
    if (confirm(fmt::format("Replace {}?", target_.string()))) return;
    throw Failure{Exit::failed, fmt::format("{} is there already", target_.string()),
                  "Nothing was changed. --yes replaces it without asking."};
}

void Export::refuse_value(std::string line) {
    if (++refused_ <= most_refused_shown) refused_values_.push_back(std::move(line));
}

// A text that is none in the encoding of the database can be read as far as it is one.
void Export::put(const ExportField& field, const zmfb::Field& value, dbf::Writer& writer,
                 std::size_t place) try {
    if (value.is_null()) {
        writer.null(place);
    } else {
        field.put(writer, place, value);
    }
} catch (const dbf::Unfit& unfit) {
    refuse_value(unfit.what());
} catch (const std::invalid_argument& problem) {
    refuse_value(fmt::format("record {}: {}", writer.records() + 1, problem.what()));
} catch (const SqlError& error) {
    if (error.sqlstate() != "22021") throw;
    if (!options_.lossy)
        return refuse_value(fmt::format("record {}: {}", writer.records() + 1, error.message()));
    writer.text(place, value.text().value_or(""));
    values_.reset();
}

void Export::write_row(const Row& row, dbf::Writer& writer) {
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const zmfb::Field value = row[fields_[i].column];
        put(fields_[i], value, writer, i);
        if (values_ && refused_ == 0) values_->add(value, fields_[i].kind);
    }
    writer.append();
}

void Export::write_rows(Statement& statement, dbf::Writer& writer) {
    constexpr std::uint64_t often = 256;
    Progress progress("writing", expected_);
    for (const Row& row : statement.rows()) {
        write_row(row, writer);
        if (writer.records() % often == 0) progress.at(writer.records());
    }
}

void Export::refuse_values() const {
    if (refused_ == 0) return;
    std::string lines = fmt::format("{} would lose something:\n", counted(refused_, "value", "values"));
    for (const std::string& line : refused_values_) lines += line + "\n";
    if (refused_ > refused_values_.size())
        lines += fmt::format("and {} more\n", refused_ - refused_values_.size());
    throw Failure{Exit::failed, fmt::format("{} was not exported", source_.shown), lines,
                  "--lossy converts such values and counts them"};
}

void Export::write(Statement& statement) try {
    if (!options_.manifest.empty()) values_.emplace();
    dbf::Writer writer(place_, report_.fields,
                       {.format = options_.format,
                        .code_page = code_page_,
                        .names_code_page = true,
                        .lossy = options_.lossy});
    write_rows(statement, writer);
    refuse_values();
    writer.finish();
    report_.table = source_.shown;
    report_.file = target_.lexically_normal();
    report_.records = writer.records();
    report_.converted = writer.converted();
} catch (const fs::filesystem_error& problem) {
    throw Failure{Exit::failed,
                  fmt::format("cannot write {}: {}", target_.string(), problem.code().message())};
} catch (const dbf::Refused& refused) {
    throw Failure{Exit::failed, fmt::format("{} was not exported", source_.shown), refused.what()};
}

ManifestFile Export::entry() {
    ManifestFile entry = manifest_entry(options_.manifest, target_);
    entry.table = source_.shown;
    entry.records = report_.records;
    if (values_ && !has_lost_ && report_.converted.empty()) entry.values = values_->digits();
    return entry;
}

}  // namespace

void export_file(Session& session, Transaction& work, const ExportSource& source,
                 const ExportOptions& options, std::uint64_t expected, std::vector<ManifestFile>& entries) {
    Export(session, source, options, expected, entries).run(work);
}

}  // namespace zmfb::tool
