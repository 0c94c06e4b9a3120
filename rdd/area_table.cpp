#include "rdd/area_table.h"

#include <algorithm>
#include <cmath>

#include "host/number.h"
#include "host/text.h"
#include "host/workarea.h"
#include "rdd/raising.h"
#include "rdd/table_fields.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

using host::GenCode;
using host::Subcode;
using host::Value;

std::unique_ptr<host::Table> open_table(host::Object& object, const host::OpenRequest& request) {
    const OpenMode mode = request.readonly ? OpenMode::read_only
                          : request.shared ? OpenMode::shared
                                           : OpenMode::exclusive;
    zmFBConn connection = zmFBConn::of(Value(&object));
    Area area(
        connection, request.file,
        {.mode = mode, .alias = std::string(request.alias), .texts = TextForm::as_kept, .of_runtime = true});
    return std::make_unique<AreaTable>(object, std::move(area), mode);
}

AreaTable::AreaTable(host::Object& object, Area&& area, OpenMode mode)
    : object_(object),
      area_(std::move(area)),
      mode_(mode),
      table_(area_.table()),
      columns_(table_fields(connection(), area_)) {
    for (const TableField& column : columns_) fields_.push_back(column.field);
    note_end();
}

// A program that ends without closing loses nothing; there is nobody to tell what fails.
AreaTable::~AreaTable() {
    try {
        if (held_ && area_.is_open()) held_->write();
    } catch (...) {
    }
}

// ---- Where it stands ----------------------------------------------------------------------------

// By the index of record numbers that descends.
std::int64_t AreaTable::last_record() {
    if (!area_.is_open()) return 0;
    const Value row = connection().call("getrow", table_, "RECNO > 0", "RECNO desc", "", 0);
    return row.size() == 0 ? 0 : host::val(row[row.size()]).integer();
}

std::int64_t AreaTable::record_count() {
    return area_.is_open() ? connection()(m::counttablerecords, table_) : 0;
}

void AreaTable::note_end() {
    if (eof()) end_ = last_record() + 1;
}

std::int64_t AreaTable::record_number() const { return eof() ? end_ : area_.recno(); }

bool AreaTable::bof() const { return !area_.is_open() || area_.bof() || (eof() && end_ == 1); }

bool AreaTable::move(std::string_view operation, const std::function<void()>& action) {
    if (!write(operation)) return false;
    return raising({GenCode::read, Subcode::table_read, operation, table_}, [&] {
        action();
        removed_ = false;
        note_end();
    });
}

bool AreaTable::go_top() {
    return move("DBGOTOP", [&] { area_.top(); });
}

bool AreaTable::go_bottom() {
    return move("DBGOBOTTOM", [&] { area_.bottom(); });
}

bool AreaTable::go_to(std::int64_t record) {
    return move("DBGOTO", [&] { area_.go(record); });
}

bool AreaTable::skip(std::int64_t count) {
    if (count == 0 && removed_) return true;
    return move("DBSKIP", [&] {
        if (count != 0) {
            area_.skip(count);
        } else if (!eof()) {
            area_.refresh();
        }
    });
}

bool AreaTable::set_filter(std::string_view condition) {
    return move("DBSETFILTER", [&] { area_.filter(condition); });
}

// ---- Fields -------------------------------------------------------------------------------------

Value AreaTable::get(std::size_t index) {
    if (index >= columns_.size()) return {};
    const TableField& column = columns_[index];
    Value value;
    if (eof()) return runtime_value(column, value);
    raising({GenCode::read, Subcode::table_read, "FIELDGET", table_}, [&] {
        const FieldValue field =
            held_ ? static_cast<FieldValue>(held_->at(column.index)) : area_.at(column.index);
        value = field.value();
    });
    return runtime_value(column, value);
}

bool AreaTable::refuse(std::string_view operation, GenCode gencode, Subcode subcode,
                       std::string_view description) {
    raise_failure({.gencode = gencode,
                   .subcode = subcode,
                   .description = description,
                   .operation = operation,
                   .file = table_});
    return false;
}

bool AreaTable::may_write(std::string_view operation) {
    return mode_ != OpenMode::read_only ||
           refuse(operation, GenCode::read_only, Subcode::table_read_only, "Table opened for reading only");
}

// Has a guard of the current record; false, and nothing raised, at the end.
bool AreaTable::edit(std::string_view operation) {
    if (!may_write(operation) || eof()) return false;
    if (removed_) return refuse(operation, GenCode::write, Subcode::table_write, "The record was deleted");
    return held_ ||
           raising({GenCode::write, Subcode::table_write, operation, table_}, [&] { held_ = area_.edit(); });
}

bool AreaTable::put(std::size_t index, const Value& value) {
    if (index >= columns_.size() || !edit("FIELDPUT")) return false;
    const TableField& column = columns_[index];
    const std::string where = column.field.name + ", record " + std::to_string(area_.recno());
    switch (fit(column, value)) {
        case Fit::wrong_kind:
            return refuse("FIELDPUT", GenCode::data_type, Subcode::data_type,
                          "Wrong data type for field " + where);
        case Fit::too_wide:
            return refuse("FIELDPUT", GenCode::data_width, Subcode::data_width,
                          "Number too wide for field " + where);
        case Fit::fits:
            break;
    }
    return raising({GenCode::data_type, Subcode::data_type, "FIELDPUT", table_},
                   [&] { assign_value(column, held_->at(column.index), value); });
}

bool AreaTable::write(std::string_view operation) {
    if (!held_) return true;
    Held held = std::move(*held_);
    held_.reset();
    return raising({GenCode::write, Subcode::table_write, operation, table_}, [&] { held.write(); });
}

// ---- Records ------------------------------------------------------------------------------------

bool AreaTable::append() {
    if (!may_write("DBAPPEND") || !write("DBAPPEND")) return false;
    try {
        return raising({GenCode::write, Subcode::table_write, "DBAPPEND", table_}, [&] {
            Held added = area_.append();
            added.write();
            if (!has_table()) area_.lock_record(added.recno());
            removed_ = false;
        });
    } catch (const InUse& in_use) {
        raise_in_use(in_use,
                     {.gencode = GenCode::append_lock,
                      .subcode = Subcode::append_lock,
                      .operation = "DBAPPEND",
                      .file = table_},
                     "Append lock failed: ");
        return false;
    }
}

// The row is gone; the record stays what was read of it until the next move.
bool AreaTable::set_deleted(bool deleted) {
    if (!deleted) {
        return !removed_ || refuse("DBRECALL", GenCode::unsupported, Subcode::unsupported,
                                   "A deleted record cannot be recalled");
    }
    if (removed_) return true;
    if (!edit("DBDELETE")) return false;
    Held held = std::move(*held_);
    held_.reset();
    return removed_ =
               raising({GenCode::write, Subcode::table_write, "DBDELETE", table_}, [&] { held.remove(); });
}

bool AreaTable::may_remove(std::string_view operation) {
    if (!may_write(operation)) return false;
    return mode_ == OpenMode::exclusive ||
           refuse(operation, GenCode::shared, Subcode::exclusive_use, "Exclusive use required");
}

bool AreaTable::zap() {
    held_.reset();
    return may_remove("ZAP") && move("ZAP", [&] {
               area_.zap();
               area_.top();
           });
}

bool AreaTable::pack() { return may_remove("PACK") && go_top(); }

bool AreaTable::close() {
    const bool written = write("DBCLOSEAREA");
    area_.close();
    return written;
}

// ---- Locks --------------------------------------------------------------------------------------

bool AreaTable::exists(std::int64_t record) const {
    const Value row =
        connection().call("getrow", table_, "RECNO = " + std::to_string(record), "RECNO", "", 0);
    return row.size() > 0;
}

bool AreaTable::lock_record(std::int64_t record, std::chrono::milliseconds wait) {
    if (!area_.is_open() || mode_ == OpenMode::read_only || !write("RLOCK")) return false;
    if (has_table()) return true;
    const bool is_current = !eof() && record == area_.recno();
    bool locked = false;
    try {
        raising({GenCode::read, Subcode::table_read, "RLOCK", table_}, [&] {
            area_.lock_record(record, wait);
            locked = is_current ? !removed_ && area_.refresh() : exists(record);
            if (!locked) area_.unlock_record(record);
        });
    } catch (const InUse& in_use) {
        host::neterrholder(holder_text(in_use.holder()));
    }
    return locked;
}

bool AreaTable::lock_table(std::chrono::milliseconds wait) {
    if (!area_.is_open() || mode_ == OpenMode::read_only || !write("FLOCK")) return false;
    if (has_table()) return true;
    try {
        return raising({GenCode::read, Subcode::table_read, "FLOCK", table_}, [&] {
            area_.lock_table(wait);
            for (const std::int64_t record : area_.locked_records()) area_.unlock_record(record);
        });
    } catch (const InUse& in_use) {
        host::neterrholder(holder_text(in_use.holder()));
        return false;
    }
}

std::vector<std::int64_t> AreaTable::locked_records() {
    return area_.is_open() ? area_.locked_records() : std::vector<std::int64_t>();
}

bool AreaTable::unlock_record(std::int64_t record) {
    return write("DBUNLOCK") && raising({GenCode::write, Subcode::table_write, "DBUNLOCK", table_},
                                        [&] { area_.unlock_record(record); });
}

bool AreaTable::unlock() {
    const bool written = write("DBUNLOCK");
    return raising({GenCode::write, Subcode::table_write, "DBUNLOCK", table_}, [&] { area_.unlock(); }) &&
           written;
}

}  // namespace zmfb::rdd
