// The list of the files of an export, as an import reads it: of any bytes.
#include <optional>

#include "fuzz/fuzz.h"
#include "tool/session.h"
#include "tool/transfer/manifest.h"

void zmfb::fuzz::try_input(Input& input) {
    const std::string path = scratch_file("manifest.json", input.rest());
    std::optional<tool::Manifest> manifest;
    try {
        manifest = tool::read_manifest(path);
    } catch (const tool::Failure& failure) {
        require(failure.message.find(path) != std::string::npos, "what is no manifest is named");
        return;
    }
    for (const tool::ManifestFile& file : manifest->files()) {
        (void)tool::path_by_manifest(path, file.file);
        require(manifest->entry_of(file.file) != nullptr, "an entry is found by its file");
    }
    const std::string written = (scratch_folder() / "written.json").string();
    tool::OutputFile out(written);
    tool::write_manifest(out, manifest->files());
    require(tool::read_manifest(written).files() == manifest->files(), "a list that is written is read");
}
