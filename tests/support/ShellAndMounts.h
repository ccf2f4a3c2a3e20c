#pragma once
#include <string>
#include <vector>

namespace bv::test {

// Runs a shell command with the test's environment (temporary HOME and XDG folders) and
// gives its exit status and standard output. `input` goes to its standard input.
struct CommandResult {
    int status = -1;
    std::string output;
};
CommandResult runCommand(const std::string& command, const std::string& input = {});
// Single-quotes any bytes for sh.
std::string shellQuote(const std::string& bytes);
bool haveCommand(const std::string& name);

// A small file system mounted under the test folder: an image made by mkfs.<type> on a loop
// device, or a tmpfs. `mountPoint` is empty when it can't be made here (not root, no loop
// devices, no mkfs for the type); the reason is then in `whyNot`.
class LoopFileSystem {
public:
    explicit LoopFileSystem(const std::string& type = "ext4", int megabytes = 24);
    ~LoopFileSystem();
    LoopFileSystem(const LoopFileSystem&) = delete;
    LoopFileSystem& operator=(const LoopFileSystem&) = delete;
    std::string mountPoint;
    std::string whyNot;

private:
    std::string image_;
};

// Every (relative path, kind, content or link target) in a tree, sorted, to compare trees
// byte for byte before and after a round trip.
std::vector<std::string> treeSnapshot(const std::string& root);

} // namespace bv::test
