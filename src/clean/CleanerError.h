#pragma once
#include <exception>
#include <string>

namespace bv {

// Why the cleaner left an entry alone. `what()` is the sentence the user reads.
class CleanerError : public std::exception {
public:
    enum class Kind { inUse, missing, symlink, refused, stale, commandFailed, buildRunning };

    [[nodiscard]] static CleanerError inUse(std::string text) { return CleanerError(Kind::inUse, std::move(text)); }
    [[nodiscard]] static CleanerError missing() { return CleanerError(Kind::missing, "It is already gone."); }
    [[nodiscard]] static CleanerError symlink() {
        return CleanerError(Kind::symlink, "It is a link pointing outside the cache, so it was left alone.");
    }
    [[nodiscard]] static CleanerError refused() { return CleanerError(Kind::refused, "That path is protected."); }
    [[nodiscard]] static CleanerError stale() {
        return CleanerError(Kind::stale, "It changed since the preview, so it was left alone.");
    }
    [[nodiscard]] static CleanerError commandFailed() {
        return CleanerError(Kind::commandFailed,
                            "Xcode’s simulator tool couldn’t remove them. Try again with Xcode closed.");
    }
    [[nodiscard]] static CleanerError buildRunning() {
        return CleanerError(Kind::buildRunning,
                            "A build is running in this project, so it was left alone. It will be checked again later.");
    }

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    CleanerError(Kind kind, std::string text) : kind_(kind), text_(std::move(text)) {}
    Kind kind_;
    std::string text_;
};

} // namespace bv
