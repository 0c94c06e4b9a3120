#include "host/dbf_driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "dbf/layout.h"
#include "host/dbf_format.h"
#include "host/dbf_table.h"
#include "host/table_error.h"
#include "host/workarea.h"

namespace zmfb::host {
namespace {

constexpr std::size_t largest_header = 65536;

std::string with_extension(std::string_view file) {
    const std::string_view name = file.substr(file.rfind('/') + 1);
    return std::string(file) + (name.find('.', 1) == std::string_view::npos ? ".dbf" : "");
}

bool is_sharing_violation(int system_error) { return system_error == EAGAIN; }

// Raises that the system refuses a table to be opened or created.
void raise_refused(GenCode gencode, std::string_view path, int system_error) {
    constexpr int sharing_violation = 32;
    const bool opening = gencode == GenCode::open;
    const bool in_use = is_sharing_violation(system_error);
    neterr(in_use);
    raise_table_error({.gencode = gencode,
                       .subcode = opening ? Subcode::table_open : Subcode::table_create,
                       .description = opening ? "Open error" : "Create error",
                       .operation = opening ? "DBUSEAREA" : "DBCREATE",
                       .file = path,
                       .oscode = in_use ? sharing_violation : dos_error(system_error),
                       .candefault = in_use});
}

Access access_for(const OpenRequest& request) {
    if (request.readonly) return request.shared ? Access::read_only_shared : Access::read_only_exclusive;
    return request.shared ? Access::shared : Access::exclusive;
}

// Opens the file and takes the lock of its use; errno tells why that failed. A write lock needs a file open
// for writing: one that may not be written is only kept from those who would write it.
Descriptor open_locked(const std::string& path, Access access) {
    Lock lock =
        access == Access::exclusive || access == Access::read_only_exclusive ? Lock::exclusive : Lock::shared;
    Descriptor file;
    if (access != Access::read_only_shared) file = Descriptor(path, O_RDWR | O_NONBLOCK);
    if (!file.is_open() && access >= Access::read_only_exclusive) {
        lock = Lock::shared;
        file = Descriptor(path, O_RDONLY | O_NONBLOCK);
    }
    if (!file.is_open()) return file;
    if (!file.is_regular()) {
        errno = EACCES;
        return {};
    }
    if (file.lock(lock, dbf_use)) return file;
    const int refusal = errno;
    file.close();
    errno = refusal;
    return file;
}

// Writes the file of an empty table; 0, or the system's error.
int write_empty_table(Descriptor& file, const std::string& path, const std::string& header) {
    const std::string content = header + dbf::end_of_file;
    if (!file.truncate(0)) return errno;
    int error = 0;
    if (file.write_at(0, content) != content.size()) error = reason(ENOSPC);
    if (error != 0) ::unlink(path.c_str());
    if (!file.close() && error == 0) error = errno;
    return error;
}

class DbfDriver final : public Driver {
  public:
    std::unique_ptr<Table> open(const OpenRequest& request) override {
        const std::string path = with_extension(request.file);
        const Access access = access_for(request);
        Descriptor file = open_locked(path, access);
        if (!file.is_open()) {
            raise_refused(GenCode::open, path, errno);
            return nullptr;
        }
        std::string beginning(largest_header, '\0');
        beginning.resize(file.read_at(0, beginning));
        DbfLayout layout;
        if (const std::string wrong = read_dbf_header(beginning, file.size(), layout); !wrong.empty()) {
            raise_table_error({.gencode = GenCode::corrupt,
                               .subcode = Subcode::table_corrupt,
                               .description = "Open error, " + wrong,
                               .operation = "DBUSEAREA",
                               .file = path});
            return nullptr;
        }
        return std::make_unique<DbfTable>(std::move(file), path, std::move(layout), access);
    }

    bool create(std::string_view name, std::span<const Field> structure) override {
        const std::string path = with_extension(name);
        std::vector<Field> fields(structure.begin(), structure.end());
        if (const std::string wrong = fit_for_dbf(fields); !wrong.empty()) {
            raise_table_error({.gencode = GenCode::create,
                               .subcode = Subcode::table_structure,
                               .description = "Create error, " + wrong,
                               .operation = "DBCREATE",
                               .file = path});
            return false;
        }
        Descriptor file = create_file(path, O_NONBLOCK);
        int error = file.is_open() ? 0 : errno;
        if (error == 0 && !file.is_regular()) error = EACCES;
        if (error == 0 && !file.lock(Lock::exclusive, dbf_use)) error = errno;
        if (error == 0) error = write_empty_table(file, path, dbf_header(fields));
        if (error != 0) raise_refused(GenCode::create, path, error);
        return error == 0;
    }
};

}  // namespace

std::shared_ptr<Driver> make_dbf_driver() { return std::make_shared<DbfDriver>(); }

}  // namespace zmfb::host
