#include "guidance/TourPlayer.h"

#include "foundation/ByteText.h"

namespace bv {

const std::array<TourSlide, 4>& tourSlides() {
    static const std::array<TourSlide, 4> slides = {{
        {TourScene::space, "See where the space went",
         "One scan measures Apps, developer caches, Downloads, and Documents, then shows how much can go. Right now "
         "it\u2019s looking through this Mac."},
        {TourScene::smartClean, "Clean what comes back on its own",
         "Package downloads, build files, and Xcode leftovers are rebuilt the next time you need them. Smart Clean "
         "lists them, you tick what goes."},
        {TourScene::autoSort, "Keep Downloads tidy by itself",
         "Describe a rule in plain English. It previews the files first, then runs when a file arrives or on a "
         "schedule. Autopilot does the same for build folders."},
        {TourScene::duplicates, "Find files you have twice",
         "Copies are confirmed byte for byte, never guessed from a name. One stays, the rest go to the Trash, and "
         "only after you preview."},
    }};
    return slides;
}

void TourPlayer::restart() {
    index_ = 0;
    isFinished_ = false;
}

void TourPlayer::back() {
    if (index_ > 0) --index_;
}

bool TourPlayer::next(TourMode mode, bool scanDone) {
    if (isFinished_) return false;
    if (!isLastSlide()) {
        ++index_;
        return false;
    }
    if (!canGoForward(mode, scanDone)) return false;
    isFinished_ = true;
    return true;
}

bool TourPlayer::skip(TourMode mode, bool scanDone) {
    if (isFinished_) return false;
    if (mode == TourMode::firstRun) {
        if (!isLastSlide()) {
            index_ = slideCount - 1;
            return false;
        }
        return next(mode, scanDone);
    }
    isFinished_ = true;
    return true;
}

std::string TourPlayer::forwardTitle(TourMode mode, bool scanDone) const {
    if (!isLastSlide()) return "Next";
    if (mode == TourMode::replay) return "Done";
    return scanDone ? "See what I found" : "Finishing the scan\u2026";
}

bool TourPlayer::canGoForward(TourMode mode, bool scanDone) const {
    return !(isLastSlide() && mode == TourMode::firstRun && !scanDone);
}

std::string TourPlayer::footerText(bool scanDone, std::int64_t foundBytes) {
    if (!scanDone) return "Scanning this Mac\u2026";
    return "Scan finished \u00b7 " + byteText(foundBytes) + " found";
}

std::string TourPlayer::accessibleDescription(int index) {
    return "Feature tour, slide " + std::to_string(index + 1);
}

} // namespace bv
