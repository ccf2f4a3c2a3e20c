// Real downloads into a real folder: a second process writes files slowly the way browsers
// and download tools do, while the watcher, timers and sweeps run here on real time.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "ArrangeRig.h"
#include "arrange/ArrangeTexts.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

constexpr int kChunks = 10;
constexpr std::size_t kChunk = 64 * 1024;

// Forks a writer. It writes `path` in chunks 300 ms apart through one descriptor and checks
// after every chunk that the path still names the file it writes; a file moved while it was
// growing makes the writer exit with 2. Then, if asked, it renames the finished file.
pid_t slowWriter(const std::string& path, const std::string& renameTo = {}, const std::string& placeholder = {}) {
    const pid_t pid = ::fork();
    if (pid != 0) return pid;
    if (!placeholder.empty()) ::close(::open(placeholder.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) ::_exit(3);
    const std::string chunk(kChunk, 'd');
    for (int i = 0; i < kChunks; ++i) {
        if (::write(fd, chunk.data(), chunk.size()) != static_cast<ssize_t>(chunk.size())) ::_exit(3);
        struct stat mine{}, there{};
        ::fstat(fd, &mine);
        if (::stat(path.c_str(), &there) != 0 || there.st_ino != mine.st_ino) ::_exit(2);
        ::usleep(300'000);
    }
    ::close(fd);
    if (!renameTo.empty() && ::rename(path.c_str(), renameTo.c_str()) != 0) ::_exit(3);
    ::_exit(0);
}

int exitCode(pid_t pid) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TimePoint modifiedOf(const std::string& path) {
    struct stat st{};
    ::stat(path.c_str(), &st);
    return TimePoint{std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(st.st_mtim.tv_sec) +
                                                                std::chrono::nanoseconds(st.st_mtim.tv_nsec))};
}

std::vector<DirectoryEvent> eventsWithin(DirectoryWatcher& watcher, std::chrono::milliseconds wait) {
    std::vector<DirectoryEvent> all;
    const auto end = Clock::now() + wait;
    while (Clock::now() < end) {
        pollfd p{watcher.fd(), POLLIN, 0};
        if (::poll(&p, 1, 50) > 0)
            for (auto& e : watcher.readEvents()) all.push_back(e);
    }
    return all;
}

bool hasEvent(const std::vector<DirectoryEvent>& events, DirectoryEvent::Kind kind, const std::string& name = {}) {
    return std::any_of(events.begin(), events.end(),
                       [&](const DirectoryEvent& e) { return e.kind == kind && e.name == name; });
}

} // namespace

TEST(ArrangeLive, SlowDownloadsMoveOnceFinishedInTheFirstSweepTwoSecondsLater) {
    test::ArrangeRig rig;
    rig.downloads = test::TestEnvironment::freshFolder("Downloads");
    const std::string out = test::TestEnvironment::freshFolder("Sorted");
    rig.rules = {test::arrangeRule("vk-", out, Clock::now() - 1s)};
    const std::string d = rig.downloads + "/";
    const pid_t writers[] = {
        slowWriter(d + "vk-curl.bin"),                                      // straight to its final name
        slowWriter(d + "vk-x.part", d + "vk-x"),                            // a partial name, then renamed
        slowWriter(d + "vk-y.crdownload", d + "vk-y"),
        slowWriter(d + "vk-ff.zip.part", d + "vk-ff.zip", d + "vk-ff.zip"), // an empty placeholder beside it
    };
    rig.runFor(30s, [&] { return rig.moved.size() >= 4; });
    rig.runFor(4s); // nothing more may move
    for (pid_t w : writers) EXPECT_EQ(exitCode(w), 0) << "a file moved while it was being written";

    std::vector<std::string> movedNames;
    for (const auto& m : rig.moved) movedNames.push_back(m.fileName);
    std::sort(movedNames.begin(), movedNames.end());
    EXPECT_EQ(movedNames, (std::vector<std::string>{"vk-curl.bin", "vk-ff.zip", "vk-x", "vk-y"}));
    EXPECT_TRUE(rig.errors.empty());
    for (const auto& m : rig.moved) {
        const std::string landed = out + "/" + m.fileName;
        struct stat st{};
        ASSERT_EQ(::stat(landed.c_str(), &st), 0) << landed;
        EXPECT_EQ(st.st_size, static_cast<off_t>(kChunks * kChunk)) << m.fileName;
        // Moved by the first sweep at least two seconds after its last write, not before.
        const TimePoint settledAt = modifiedOf(landed) + ArrangeSettleTracker::kSettleTime;
        EXPECT_GE(m.entry.date, settledAt) << m.fileName;
        EXPECT_EQ(*std::find_if(rig.sweepTimes.begin(), rig.sweepTimes.end(), [&](TimePoint t) { return t >= settledAt; }),
                  m.entry.date)
            << m.fileName;
    }
    EXPECT_EQ(rig.rules[0].arrangedCount, 4);
}

TEST(ArrangeLive, TenEventsInOneSecondMakeOneSweep) {
    test::ArrangeRig rig;
    rig.downloads = test::TestEnvironment::freshFolder("Downloads");
    rig.rules = {test::arrangeRule("vk-", test::TestEnvironment::freshFolder("Sorted"), Clock::now() - 1s)};
    rig.align();
    const pid_t burst = ::fork();
    if (burst == 0) {
        for (int i = 0; i < 10; ++i) {
            test::writeFile(rig.downloads + "/vk-" + std::to_string(i), "x");
            ::usleep(100'000);
        }
        ::_exit(0);
    }
    rig.runFor(7s);
    EXPECT_EQ(exitCode(burst), 0);
    EXPECT_EQ(rig.sweepTimes.size(), 1u);
    EXPECT_EQ(rig.moved.size(), 10u);
}

TEST(ArrangeLive, AFileThereBeforeThePatternStaysAndIsOffered) {
    const std::string downloads = test::TestEnvironment::freshFolder("Downloads");
    const std::string out = test::TestEnvironment::freshFolder("Sorted");
    const std::string before = downloads + "/vk-before.pdf";
    test::writeFile(before, "old");
    const auto samples = gatherSamples(downloads, SortPlace::downloads, true, Clock::now());
    ASSERT_EQ(samples.size(), 1u);
    const SortRule rule = test::arrangeRule("vk-", out, *samples[0].added + 1s);

    test::ArrangeRig rig;
    rig.downloads = downloads;
    rig.rules = {rule};
    rig.sweep(Clock::now() + 3s);
    EXPECT_TRUE(rig.moved.empty());
    EXPECT_TRUE(test::exists(before));
    ASSERT_EQ(rig.waiting[rule.id].size(), 1u);
    EXPECT_EQ(rig.waiting[rule.id][0].path, before);

    // Arrange now moves it; asked again, the file is gone.
    const auto now = arrangeNow(downloads, rule, {before}, Clock::now(), test::engineFor(downloads));
    ASSERT_EQ(now.moved.size(), 1u);
    EXPECT_TRUE(test::exists(out + "/vk-before.pdf"));
    const auto again = arrangeNow(downloads, rule, {before}, Clock::now(), test::engineFor(downloads));
    EXPECT_EQ(arrange_text::arrangeNowResult(again.moved.size(), !again.moved.empty() || !again.errors.empty()),
              "Nothing to move. Those files are gone or no longer match.");

    // A name already in the folder is refused and the file stays, offered again.
    test::writeFile(before, "second copy");
    rig.rules[0].liveSince = TimePoint{};
    rig.sweep(Clock::now() + 3s);
    ASSERT_EQ(rig.errors, std::vector<std::string>{"vk-before.pdf is already in that folder."});
    EXPECT_TRUE(test::exists(before));
    EXPECT_EQ(rig.waiting[rule.id].size(), 1u);
    rig.sweep(Clock::now() + 6s);
    EXPECT_EQ(rig.errors.size(), 1u) << "a refused file is not tried again at every sweep";
}

TEST(DirectoryWatcher, FollowsDownloadsMovedAwayReplacedOrMadeLater) {
    const std::string home = test::TestEnvironment::freshFolder("home");
    const std::string downloads = home + "/Downloads";
    DirectoryWatcher watcher;
    // Not there yet: the parent waits for it.
    ASSERT_TRUE(watcher.start(downloads));
    EXPECT_FALSE(watcher.isArmed());
    test::makeDir(downloads);
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::folder));
    EXPECT_TRUE(watcher.isArmed());
    test::writeFile(downloads + "/a", "1");
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::entry, "a"));

    // Moved away: the watch lets go, so files landing in the old folder are not reported.
    ASSERT_EQ(::rename(downloads.c_str(), (home + "/Away").c_str()), 0);
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::folder));
    EXPECT_FALSE(watcher.isArmed());
    test::writeFile(home + "/Away/elsewhere", "1");
    EXPECT_TRUE(eventsWithin(watcher, 200ms).empty());
    // And back.
    ASSERT_EQ(::rename((home + "/Away").c_str(), downloads.c_str()), 0);
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::folder));
    test::writeFile(downloads + "/b", "1");
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::entry, "b"));

    // Replaced by a new folder of the same name.
    ASSERT_EQ(::rename(downloads.c_str(), (home + "/Old").c_str()), 0);
    test::makeDir(downloads);
    EXPECT_TRUE(hasEvent(eventsWithin(watcher, 200ms), DirectoryEvent::Kind::folder));
    test::writeFile(downloads + "/c", "1");
    test::writeFile(home + "/Old/d", "1");
    const auto events = eventsWithin(watcher, 200ms);
    EXPECT_TRUE(hasEvent(events, DirectoryEvent::Kind::entry, "c"));
    EXPECT_FALSE(hasEvent(events, DirectoryEvent::Kind::entry, "d"));
}

TEST(DirectoryWatcher, AQueueOverflowAsksForAFullLookAndWatchingGoesOn) {
    // The kernel sizes an inotify queue when it is made; a tiny queue for this one watcher,
    // the machine's value restored at once.
    const char* knob = "/proc/sys/fs/inotify/max_queued_events";
    const auto saved = readWholeFile(knob);
    if (!saved) GTEST_SKIP() << "cannot read " << knob;
    std::unique_ptr<DirectoryWatcher> watcher;
    {
        std::ofstream small(knob);
        if (!(small << "16" << std::flush)) GTEST_SKIP() << "cannot change " << knob << " here";
        watcher = std::make_unique<DirectoryWatcher>();
    }
    std::ofstream(knob) << *saved << std::flush;
    ASSERT_EQ(readWholeFile(knob), saved);

    const std::string downloads = test::TestEnvironment::freshFolder("Downloads");
    ASSERT_TRUE(watcher->start(downloads));
    for (int i = 0; i < 200; ++i) test::writeFile(downloads + "/f" + std::to_string(i), "x");
    EXPECT_TRUE(hasEvent(watcher->readEvents(), DirectoryEvent::Kind::overflow));
    test::writeFile(downloads + "/after", "x");
    EXPECT_TRUE(hasEvent(eventsWithin(*watcher, 200ms), DirectoryEvent::Kind::entry, "after"));
}
