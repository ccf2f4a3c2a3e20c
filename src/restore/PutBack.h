#pragma once
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"

namespace bv {

// Puts back what a clean moved to the Trash, from History, for as long as the Trash holds it.
// The item must still stand in the Trash under the name the entry recorded, with a
// .trashinfo naming where it came from (see TrashRecord); it goes back to that path with a
// rename that never replaces anything, relative to folders opened without following links,
// so a folder swapped for a link on the way is never written through. Blocking; meant for a
// worker thread. Nothing here moves anything unless putBack is called.
class PutBack {
public:
    // What History can offer for an entry.
    enum class State {
        none,        // the entry sent nothing to the Trash (or is itself a put-back)
        available,   // still in the Trash as recorded: "Put back"
        notInTrash,  // emptied or restored elsewhere: "No longer in the Trash"
        putBack,     // History already put it back
    };

    // A put-back that could not happen; nothing was moved. `what()` is the sentence for people.
    class Refusal : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    struct Outcome {
        ActionLogEntry log;           // the put-back's own History entry
        std::optional<std::string> remadeFolder; // the first folder on the way that had to be made again
    };

    struct Environment {
        std::function<TimePoint()> now = [] { return Clock::now(); };
        // Called with the destination folder open, right before the move. Tests change the
        // disk in exactly that window; empty otherwise.
        std::function<void()> beforeMove;
    };

    PutBack() = default;
    explicit PutBack(Environment env) : env_(std::move(env)) {}

    // The state of every entry of the log (newest first) that has one other than none, by id.
    [[nodiscard]] static std::map<Uuid, State> states(const std::vector<ActionLogEntry>& log);
    [[nodiscard]] static State stateOf(const ActionLogEntry& entry, const std::vector<ActionLogEntry>& log);

    // Moves the entry's item from the Trash back to where it was, then removes its .trashinfo
    // and its line in the Trash's folder sizes. A missing folder on the way is made again
    // (Outcome::remadeFolder says which). Throws Refusal when the item is no longer in the
    // Trash, when something now stands under its name ("Something named … is already there,
    // so it stayed in the Trash."), or when a folder on the way is a link; FileSystemError for
    // other failures. In every failure the item stays in the Trash with its record.
    [[nodiscard]] Outcome putBack(const ActionLogEntry& entry, const std::string& home) const;

    // "Put back <name> · <size>", for the put-back's History entry.
    [[nodiscard]] static std::string titleFor(const std::string& name, std::int64_t bytes);
    inline static const std::string kSymbol = "arrow.uturn.backward";
    inline static const std::string kNotInTrash = "No longer in the Trash";
    [[nodiscard]] static std::string nameTakenText(const std::string& name);

private:
    Environment env_;
};

} // namespace bv
