#include "sort/RulePerformer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "clean/DevCacheCatalog.h"
#include "foundation/ByteText.h"
#include "foundation/CalendarContext.h"
#include "platform/FileSystemError.h"
#include "platform/SafeFileSystem.h"
#include "platform/Trash.h"
#include "sort/RuleMatcher.h"
#include "sort/ZipArchiver.h"

namespace bv {
namespace {

std::string quoted(const std::string& text) { return "\u201C" + text + "\u201D"; }

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t pos = text.find(from); pos != std::string::npos; pos = text.find(from, pos + to.size()))
        text.replace(pos, from.size(), to);
}

struct NameParts {
    std::string stem;
    std::string extension; // as written, without the dot
};

NameParts partsOf(const std::string& name) {
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return {name, {}};
    return {name.substr(0, dot), name.substr(dot + 1)};
}

bool existsAt(int dirFd, const std::string& name) {
    struct stat st{};
    return ::fstatat(dirFd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0;
}

// Pins the file the step names, refusing what is gone or is no plain file.
PinnedItem pinFile(const PlannedAction& action) {
    const std::string& name = action.fileName;
    std::optional<ItemStat> st;
    try {
        st = statNoFollow(action.sourcePath);
    } catch (const FileSystemError& e) {
        throw SortApplyError(e.what());
    }
    if (!st) throw SortApplyError(name + " is no longer there.");
    if (!st->isRegular()) throw SortApplyError(name + " is a folder or a shortcut, so it was left alone.");
    try {
        return pinItem(action.sourcePath, st->identity);
    } catch (const ItemChangedError& e) {
        if (e.kind() == ItemChangedError::Kind::missing) throw SortApplyError(name + " is no longer there.");
        throw SortApplyError(name + " is a folder or a shortcut, so it was left alone.");
    } catch (const FileSystemError& e) {
        throw SortApplyError(e.what());
    }
}

void renameOrRefuse(PinnedItem& item, int toDir, const std::string& toName, const std::string& clashText,
                    const char* verb) {
    const int error = renameNoReplace(item.parent.get(), item.name, toDir, toName);
    if (error == 0) return;
    if (error == EEXIST) throw SortApplyError(clashText);
    throw SortApplyError(item.name + " couldn\u2019t be " + verb + ": " + std::strerror(error) + ".");
}

ActionLogEntry entryFor(const PlannedAction& action, const SortRule& rule, TimePoint now, std::string title,
                        std::optional<std::string> destination) {
    ActionLogEntry e;
    e.id = Uuid::generate();
    e.date = now;
    e.title = std::move(title);
    const std::string& ruleName = rule.name.empty() ? rule.phrase : rule.name;
    e.subtitle = (ruleName.empty() ? std::string("Auto-Sort") : ruleName) + " \u00B7 " + byteText(action.bytes);
    e.symbolName = action.symbolName;
    e.sourcePath = action.sourcePath;
    e.destinationPath = std::move(destination);
    return e;
}

ActionLogEntry moveToFolder(PinnedItem& item, const PlannedAction& action, const SortRule& rule, TimePoint now) {
    const std::string& name = action.fileName;
    if (rule.action.argument.empty()) throw SortApplyError("Choose a folder for " + name + ".");
    const std::string folder = DevCacheCatalog::standardizedPath(rule.action.argument);
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) throw SortApplyError(quoted(lastPathComponent(folder)) + " couldn\u2019t be created: " + ec.message() + ".");
    const UniqueFd destination(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!destination.valid())
        throw SortApplyError(quoted(lastPathComponent(folder)) + " couldn\u2019t be opened: " + std::strerror(errno) + ".");
    const std::string clash = name + " is already in that folder.";
    if (existsAt(destination.get(), item.name)) throw SortApplyError(clash);
    renameOrRefuse(item, destination.get(), item.name, clash, "moved");
    const std::string target = (folder == "/" ? folder : folder + "/") + item.name;
    return entryFor(action, rule, now, "Moved " + quoted(name) + " to " + lastPathComponent(folder), target);
}

ActionLogEntry renameFile(PinnedItem& item, const PlannedAction& action, const SortRule& rule, TimePoint now,
                          const CalendarContext& calendar) {
    const std::string& name = action.fileName;
    const auto newName = expandRenamePattern(item.name, rule.action.argument, now, calendar);
    if (!newName) throw SortApplyError("Couldn\u2019t rename " + name + ".");
    if (*newName == item.name) throw SortApplyError(name + " already has that name.");
    const std::string clash = "A file named " + *newName + " is already there.";
    if (existsAt(item.parent.get(), *newName)) throw SortApplyError(clash);
    renameOrRefuse(item, item.parent.get(), *newName, clash, "renamed");
    const std::string target = (item.parentPath == "/" ? item.parentPath : item.parentPath + "/") + *newName;
    return entryFor(action, rule, now, "Renamed " + quoted(name) + " to " + quoted(*newName), target);
}

ActionLogEntry trashFile(PinnedItem& item, const PlannedAction& action, const SortRule& rule, TimePoint now) {
    try {
        const Trash::Landing landing = Trash::moveToTrash(item, now);
        ActionLogEntry e = entryFor(action, rule, now, "Moved " + quoted(action.fileName) + " to the Trash",
                                    landing.trashedPath);
        e.bytesReclaimed = action.bytes;
        return e;
    } catch (const ItemChangedError& e) {
        throw SortApplyError(action.fileName + " is no longer there.");
    } catch (const FileSystemError& e) {
        throw SortApplyError(e.what());
    }
}

ActionLogEntry zipFile(PinnedItem& item, const PlannedAction& action, const SortRule& rule, TimePoint now) {
    const std::string& name = action.fileName;
    const NameParts parts = partsOf(item.name);
    if (foldedCase(parts.extension) == "zip") throw SortApplyError(name + " is already a zip.");
    if (existsAt(item.parent.get(), parts.stem + ".zip")) throw SortApplyError(name + " already has a zip next to it.");
    const std::string target = ZipArchiver::freeArchivePath(item.parentPath, parts.stem);
    const std::string source = (item.parentPath == "/" ? item.parentPath : item.parentPath + "/") + item.name;
    if (ZipArchiver::zipFile(source, item.name, target))
        throw SortApplyError("Couldn\u2019t zip " + name + ". The original was left in place.");
    return entryFor(action, rule, now, "Zipped " + quoted(name) + " into " + quoted(lastPathComponent(target)), target);
}

} // namespace

std::optional<std::string> expandRenamePattern(const std::string& fileName, const std::string& pattern, TimePoint now,
                                               const CalendarContext& calendar) {
    const NameParts parts = partsOf(fileName);
    const auto day = calendar.components(now);
    char date[16];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", day.year, day.month, day.day);
    std::string result = pattern;
    replaceAll(result, "{name}", parts.stem);
    replaceAll(result, "{ext}", parts.extension);
    replaceAll(result, "{date}", date);
    if (result.empty() || result.front() == '.' || result.find_first_of("/:") != std::string::npos) return std::nullopt;
    if (!parts.extension.empty() && pattern.find("{ext}") == std::string::npos) {
        const std::string suffix = "." + foldedCase(parts.extension);
        const std::string lower = foldedCase(result);
        if (lower.size() < suffix.size() || lower.compare(lower.size() - suffix.size(), suffix.size(), suffix) != 0)
            result += "." + parts.extension;
    }
    return result;
}

ActionLogEntry RulePerformer::perform(const PlannedAction& action, const SortRule& rule, TimePoint now,
                                      const CalendarContext& calendar) {
    PinnedItem item = pinFile(action);
    switch (rule.action.type) {
    case SortAction::Type::moveToFolder: return moveToFolder(item, action, rule, now);
    case SortAction::Type::rename: return renameFile(item, action, rule, now, calendar);
    case SortAction::Type::trash: return trashFile(item, action, rule, now);
    case SortAction::Type::archive: return zipFile(item, action, rule, now);
    }
    throw SortApplyError(action.fileName + " was left alone.");
}

} // namespace bv
