#include "arrange/ArrangeRenameMover.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "foundation/FileIO.h"
#include "platform/SafeFileSystem.h"

namespace bv {

ActionLogEntry ArrangeRenameMover::move(const SortRule& rule, const FileSample& sample, TimePoint now) const {
    const std::string& name = sample.name;
    std::string folder = rule.action.argument;
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    if (rule.action.type != SortAction::Type::moveToFolder || folder.empty())
        throw ArrangeLeftAlone("Choose a folder for " + name + ".");

    struct stat st{};
    if (::lstat(sample.path.c_str(), &st) != 0) throw ArrangeLeftAlone(name + " is no longer there.");
    if (!S_ISREG(st.st_mode)) throw ArrangeLeftAlone(name + " is a folder or a shortcut, so it was left alone.");
    if (!makeDirectories(folder)) throw ArrangeLeftAlone("Couldn’t make the folder for " + name + ".");

    const PathParts from = splitPath(sample.path);
    const UniqueFd fromDir(::open(from.parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const UniqueFd toDir(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!fromDir.valid() || !toDir.valid()) throw ArrangeLeftAlone(name + " could not be moved: " + std::strerror(errno) + ".");
    const int error = renameNoReplace(fromDir.get(), from.name, toDir.get(), name);
    if (error == EEXIST) throw ArrangeLeftAlone(name + " is already in that folder.");
    if (error == ENOENT) throw ArrangeLeftAlone(name + " is no longer there.");
    if (error != 0) throw ArrangeLeftAlone(name + " could not be moved: " + std::strerror(error) + ".");

    ActionLogEntry entry;
    entry.id = Uuid::generate();
    entry.date = now;
    entry.title = "Moved \u201C" + name + "\u201D to " + lastPathComponent(folder);
    entry.subtitle = "Auto-Arrange \u00B7 " + rule.name;
    entry.symbolName = "arrow.right";
    entry.sourcePath = sample.path;
    entry.destinationPath = folder + "/" + name;
    return entry;
}

} // namespace bv
