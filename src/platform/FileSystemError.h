#pragma once
#include <stdexcept>
#include <string>

namespace bv {

// A file system call failed. `code` is the errno value (0 when the failure is not an
// errno, for instance a missing Trash folder); `what()` is one sentence for people.
class FileSystemError : public std::runtime_error {
public:
    FileSystemError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    [[nodiscard]] int code() const noexcept { return code_; }

private:
    int code_;
};

// The item is no longer the one that was checked: it vanished, became a symbolic link, or
// another item took its name. Nothing was changed when this is thrown, except where the
// message says so.
class ItemChangedError : public std::runtime_error {
public:
    enum class Kind { missing, becameLink, replaced };
    ItemChangedError(Kind kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}
    [[nodiscard]] Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

} // namespace bv
