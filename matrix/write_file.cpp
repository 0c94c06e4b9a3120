#include "matrix/write_file.h"

#include "conn/raise.h"
#include "host/file.h"
#include "host/text.h"

namespace zmfb::matrix {
namespace {

using host::operator""_l1;

bool failed() { return host::ferror().number() != 0; }

void write_group(const Value& handle, const Value& lines) {
    for (std::size_t i = 1; i <= lines.size(); ++i) {
        host::fwrite(handle, lines[i][1] + "\r\n");
        if (failed()) return;
    }
}

void write_groups(const Value& handle, const Value& matrix) {
    for (std::size_t k = 1; k <= matrix.size(); ++k) {
        write_group(handle, matrix[k][1]);
        if (failed()) {
            conn::raiseerror("Erro na gravação do arquivo matriz"_l1);
            return;
        }
    }
}

}  // namespace

void write_file(Self& self, const Value& matrix, const Value& name) {
    const Value handle = call(self, "fcrtfile", name + ".tf");
    if (failed()) return;
    try {
        write_groups(handle, matrix);
    } catch (...) {
        call(self, "fclsfile", handle);
        throw;
    }
    call(self, "fclsfile", handle);
}

}  // namespace zmfb::matrix
