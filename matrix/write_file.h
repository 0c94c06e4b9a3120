/// The matrix file.
#pragma once

#include "conn/self.h"

namespace zmfb::matrix {

/// Writes the lines of `matrix`, each followed by CR LF, to the file `name` + ".tf", which is made or
/// emptied.
///
/// A file that cannot be made is passed over in silence. After a failed write "Erro na gravação do arquivo
/// matriz" is raised once and no more is written; what is in the file by then stays. The file is closed in
/// every case, also when the error handler throws.
void write_file(Self& self, const Value& matrix, const Value& name);

}  // namespace zmfb::matrix
