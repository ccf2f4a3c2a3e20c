#pragma once
#include <optional>
#include <string>

namespace bv {

// Zip archives of single files, next to the file.
struct ZipArchiver {
    // The first free name for the archive of `stem` in `folder`: "<stem>.zip", then
    // "<stem> 2.zip" up to "<stem> 500.zip"; past that the last name tried, free or not.
    [[nodiscard]] static std::string freeArchivePath(const std::string& folder, const std::string& stem);

    // Writes a new archive at `archivePath` holding the file at `sourcePath` under
    // `entryName`, with its modification time. Never replaces an existing file. On any
    // failure (no space, unreadable source, the name taken meanwhile) nothing of the new
    // archive is left and the system's reason comes back; nothing on success.
    [[nodiscard]] static std::optional<std::string> zipFile(const std::string& sourcePath, const std::string& entryName,
                                                            const std::string& archivePath);
};

} // namespace bv
