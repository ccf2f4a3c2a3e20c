#pragma once
// The race harness's attacker: a thread that keeps swapping a path for a link (or another
// item) while the code under test works on it. Shared by every test that must prove a swap
// on the way never makes it write outside the folder it checked.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

namespace bv::test {

enum class Attack { swapParentForLink, swapItemForLink, swapItemForOtherFile };

// Runs an attacker thread that is paused (state restored) while the main thread sets up
// and inspects, and swaps as fast as it can while an entry is applied.
class Attacker {
public:
    Attacker(Attack attack, std::string parent, std::string decoy) : attack_(attack), parent_(std::move(parent)), decoy_(std::move(decoy)) {
        thread_ = std::thread([this] { loop(); });
    }
    ~Attacker() {
        quit_ = true;
        running_ = true; // wake it so it sees quit_
        running_.notify_one();
        thread_.join();
    }
    // Starts swapping and returns once the first swap of this round has happened, so the
    // work that follows really runs under attack. Waits sleep on the atomics (futexes)
    // rather than spin, so a busy machine does not starve either thread.
    void start() {
        const int before = swaps_.load();
        running_ = true;
        running_.notify_one();
        int seen = before;
        for (int i = 0; i < 100 && seen == before; ++i) {
            swaps_.wait(seen);
            seen = swaps_.load();
        }
    }
    void pause() {
        running_ = false;
        bool b = busy_.load();
        while (b) {
            busy_.wait(true);
            b = busy_.load();
        }
    }
    [[nodiscard]] int swaps() const { return swaps_.load(); }

private:
    void loop() {
        const std::string item = parent_ + "/item";
        const std::string other = parent_ + "/../other-" + std::to_string(::getpid());
        while (!quit_) {
            if (!running_) {
                running_.wait(false);
                continue;
            }
            busy_ = true;
            if (running_) {
                // The swapped path, and what stands in its place for a moment: a link into
                // the decoy, or (with no link target) another file renamed over it.
                const bool parentSwap = attack_ == Attack::swapParentForLink;
                const std::string& victim = parentSwap ? parent_ : item;
                const std::string linkTarget = parentSwap ? decoy_ : attack_ == Attack::swapItemForLink ? decoy_ + "/item" : "";
                if (::rename(victim.c_str(), (victim + ".real").c_str()) == 0) {
                    const bool swapped = linkTarget.empty() ? ::rename(other.c_str(), victim.c_str()) == 0
                                                            : ::symlink(linkTarget.c_str(), victim.c_str()) == 0;
                    if (swapped) {
                        ++swaps_;
                        swaps_.notify_all();
                        if (linkTarget.empty()) ::rename(victim.c_str(), other.c_str());
                        else ::unlink(victim.c_str());
                    }
                    ::rename((victim + ".real").c_str(), victim.c_str());
                }
            }
            busy_ = false;
            busy_.notify_all();
        }
    }

    Attack attack_;
    std::string parent_;
    std::string decoy_;
    std::atomic<bool> running_{false};
    std::atomic<bool> busy_{false};
    std::atomic<bool> quit_{false};
    std::atomic<int> swaps_{0};
    std::thread thread_;
};

} // namespace bv::test
