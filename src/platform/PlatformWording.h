#pragma once
#include <string>

namespace bv {

// The program's texts name a few places and programs of another desktop ("the Dock",
// "~/Library/Logs/Brimvale"). This one table turns them into what is true here, so the
// rest of the code keeps its own words. Phrases not in the table pass through unchanged.
[[nodiscard]] std::string platformWording(const std::string& text);

// The refusal for a drive that can't rename an item without the risk of replacing another
// (NFS, sshfs, some FUSE drives), naming the drive when its name is known.
[[nodiscard]] std::string noSafeMoveWording(const std::string& driveName);

} // namespace bv
