#pragma once
#include <string>

namespace bv {

// Which of the three standing locations can be read now, and where they are. Held by the
// model as `folderState`; computed after start and at the end of every refresh.
struct FolderAccessState {
    bool desktopReadable = false;
    bool downloadsReadable = false;
    bool homeReadable = false;
    std::string desktopPath;
    std::string downloadsPath;
    std::string homePath;

    bool operator==(const FolderAccessState&) const = default;
};

} // namespace bv
