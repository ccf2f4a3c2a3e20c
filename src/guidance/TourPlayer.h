#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace bv {

// The feature tour's slides, in order.
enum class TourScene { space, smartClean, autoSort, duplicates };

struct TourSlide {
    TourScene scene;
    const char* title;
    const char* text;
};

// The four slides with their titles and texts, in showing order.
[[nodiscard]] const std::array<TourSlide, 4>& tourSlides();

// Where the tour plays: as the wait of the first run's scan, or by itself from Help.
enum class TourMode { firstRun, replay };

// The slide being shown and whether the tour has ended. Plain state: the screens move it
// with the buttons, the model reads isFinished to go on.
class TourPlayer {
public:
    static constexpr int slideCount = 4;

    [[nodiscard]] int index() const { return index_; }
    [[nodiscard]] bool isFinished() const { return isFinished_; }
    [[nodiscard]] bool isLastSlide() const { return index_ == slideCount - 1; }
    [[nodiscard]] const TourSlide& slide() const { return tourSlides()[static_cast<std::size_t>(index_)]; }

    // Back at the first slide, not finished.
    void restart();
    // One slide back; nothing on the first.
    void back();
    // One slide on. On the last slide this finishes the tour, except in the first run while
    // the scan still works: then the tour waits there. True when the tour finished.
    bool next(TourMode mode, bool scanDone);
    // In the first run Skip goes to the last slide, which waits for the scan; in a replay it
    // ends the tour. True when the tour finished.
    bool skip(TourMode mode, bool scanDone);

    // The forward button's title on the current slide.
    [[nodiscard]] std::string forwardTitle(TourMode mode, bool scanDone) const;
    // Whether the forward button can be pressed (not while the last slide waits for the scan).
    [[nodiscard]] bool canGoForward(TourMode mode, bool scanDone) const;

    // The first-run footer: "Scanning this Mac…" while the scan works, then "Scan finished"
    // with what was found.
    [[nodiscard]] static std::string footerText(bool scanDone, std::int64_t foundBytes);
    // "Feature tour, slide " and the slide's number counted from 1.
    [[nodiscard]] static std::string accessibleDescription(int index);

private:
    int index_ = 0;
    bool isFinished_ = false;
};

} // namespace bv
