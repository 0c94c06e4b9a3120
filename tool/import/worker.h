/// A process that imports files for another one.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tool/import/run.h"

namespace zmfb::tool {

/// What all processes of a run share.
struct SharedImports {
    const Options& session;
    const ImportOptions& options;
    const std::vector<std::string>& files;
    std::atomic<std::size_t>& next;  ///< the first file that none has begun, in memory of all
    std::FILE* turns;                ///< see Turn
    bool tells_progress;
};

using ScratchFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
/// A file without a name. Throws Failure.
ScratchFile scratch_file();

/// Where a worker stands in the files that it writes.
struct Marks {
    off_t out = 0, err = 0, rejects = 0;
};

struct ImportWorker {
    pid_t process = 0;
    int reports = -1;  ///< lines of JSON come here: "begun", "progress", "done"
    ScratchFile out, err, rejects;
};

/// Starts a process that imports the next file until there is none. This one is not to have attached.
/// Throws Failure.
ImportWorker start_import_worker(const SharedImports& shared, ImportedSoFar& so_far);

}  // namespace zmfb::tool
