#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "guidance/FirstRunItem.h"

namespace bv {

struct BrimvaleSettings;

// The first run's steps, in order.
enum class FirstRunStep { welcome, access, scanning, report, firstClean };

[[nodiscard]] const char* firstRunStepName(FirstRunStep step);

// The first run's state machine: welcome → access → scanning → report → firstClean →
// closed, where report may close at once and firstClean may go back to report. Plain state
// with no I/O: the owner starts the scan and the clean when a transition says so, hands
// their results back, and saves the settings a transition changed.
class FirstRunFlow {
public:
    // What going to the scan step asks of the owner.
    struct ScanStart {
        bool entered = false;   // the step changed to scanning: the tour starts over
        bool startScan = false; // start the first-run scan now (the in-flight flag is set)
    };

    [[nodiscard]] FirstRunStep step() const { return step_; }
    [[nodiscard]] const std::vector<FirstRunItem>& items() const { return items_; }
    [[nodiscard]] const std::string& note() const { return note_; }
    [[nodiscard]] bool scanning() const { return scanning_; }
    [[nodiscard]] bool scanDone() const { return scanDone_; }
    [[nodiscard]] bool cleaning() const { return cleaning_; }
    [[nodiscard]] bool cleanDone() const { return cleanDone_; }
    [[nodiscard]] std::int64_t freed() const { return freed_; }

    // Back to a fresh welcome: a first run left half-way starts again at the next launch.
    void reset() { *this = FirstRunFlow(); }

    // "Continue" on the welcome step. Where the access probe answers granted (always, on a
    // system where file permissions alone decide) the access step has nothing to ask and
    // is passed over.
    [[nodiscard]] ScanStart continueFromWelcome(bool accessGranted);
    // The access step's two buttons; both act only on that step. "Continue" goes on only
    // when access is granted.
    [[nodiscard]] ScanStart continueWithAccess(bool accessGranted);
    // "Continue without it": remembers the choice in the settings (save them) and goes on.
    [[nodiscard]] ScanStart continueWithoutAccess(BrimvaleSettings& settings);
    // Enters the scan step; nothing happens when it is the step already. The scan starts
    // unless one runs or has finished.
    [[nodiscard]] ScanStart goToScanning();

    // The scan's results; ends the scan.
    void scanFinished(std::vector<FirstRunItem> items);
    // The tour of the scan step ended: on to the report.
    void tourFinished();
    // The report's way into the first clean, and the clean's way back.
    void openFirstClean();
    void backToReport();
    // Ticks or unticks one item; unknown ids are ignored.
    void setSelected(const std::string& id, bool selected);
    [[nodiscard]] std::vector<FirstRunItem> selectedItems() const;

    // "Move to Trash" was confirmed. False, with the note "Choose what to clean.", when
    // nothing is ticked (or a clean runs); true when the owner should run the clean now.
    [[nodiscard]] bool beginClean();
    // The clean's outcome: the bytes that went and its failure lines, which become the note.
    void cleanFinished(std::int64_t freedBytes, const std::vector<std::string>& failures);

    // Closing by any way out: the first run is done for good (save the settings).
    static void close(BrimvaleSettings& settings);

    // ---- Texts of the steps ----
    static constexpr const char* kWelcomeTitle = "Welcome to Brimvale";
    static constexpr const char* kWelcomeText =
        "Brimvale finds where your disk space went and gives back what can safely go. Nothing moves until you have "
        "seen a preview and confirmed it, and files go to the Trash, so you can put them back.";
    static constexpr const char* kAccessTitle = "Full Disk Access";
    static constexpr const char* kAccessText =
        "It lets Brimvale measure protected folders such as Mail. What it measures stays on this Mac.";
    static constexpr const char* kScanTitle = "Looking through this Mac";
    static constexpr const char* kScanStatus = "Scanning\u2026";
    static constexpr const char* kScanNote = "This finishes even if a folder can\u2019t be read.";
    static constexpr const char* kReportTitle = "Your Mac";
    static constexpr const char* kNothingFound = "Nothing large turned up. You can still scan again from Smart Clean.";
    static constexpr const char* kLibraryMissing =
        "Library isn\u2019t included. Grant Full Disk Access to find more, any time, in Settings \u203a Privacy.";
    static constexpr const char* kConfirmTitle = "Move the selected files to the Trash?";
    static constexpr const char* kConfirmText = "You can put them back from the Trash. Nothing is erased.";
    static constexpr const char* kChooseSomething = "Choose what to clean.";

    [[nodiscard]] static std::string accessStateText(bool granted);
    // "You can safely get back " and the sum of what was found.
    [[nodiscard]] static std::string reportSummary(std::int64_t bytes);
    // What the closing view says after the clean.
    [[nodiscard]] static std::string cleanSummary(std::int64_t freedBytes);

private:
    FirstRunStep step_ = FirstRunStep::welcome;
    std::vector<FirstRunItem> items_;
    std::string note_;
    bool scanning_ = false;
    bool scanDone_ = false;
    bool cleaning_ = false;
    bool cleanDone_ = false;
    std::int64_t freed_ = 0;
};

} // namespace bv
