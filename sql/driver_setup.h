/// The environment that prepare_client() makes, for the rest of this folder.
#pragma once

namespace zmfb::sql {

/// Whether this process works in the private environment of its user or of the one who started it. There are
/// no aliases of databases in it.
bool in_private_environment();

}  // namespace zmfb::sql
