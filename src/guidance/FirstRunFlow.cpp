#include "guidance/FirstRunFlow.h"

#include <algorithm>

#include "core/BrimvaleSettings.h"
#include "foundation/ByteText.h"

namespace bv {

const char* firstRunStepName(FirstRunStep step) {
    switch (step) {
    case FirstRunStep::welcome: return "welcome";
    case FirstRunStep::access: return "access";
    case FirstRunStep::scanning: return "scanning";
    case FirstRunStep::report: return "report";
    case FirstRunStep::firstClean: return "firstClean";
    }
    return "welcome";
}

FirstRunFlow::ScanStart FirstRunFlow::continueFromWelcome(bool accessGranted) {
    if (step_ != FirstRunStep::welcome) return {};
    if (accessGranted) return goToScanning();
    step_ = FirstRunStep::access;
    return {};
}

FirstRunFlow::ScanStart FirstRunFlow::continueWithAccess(bool accessGranted) {
    if (step_ != FirstRunStep::access || !accessGranted) return {};
    return goToScanning();
}

FirstRunFlow::ScanStart FirstRunFlow::continueWithoutAccess(BrimvaleSettings& settings) {
    if (step_ != FirstRunStep::access) return {};
    settings.didSkipFullDiskAccess = true;
    return goToScanning();
}

FirstRunFlow::ScanStart FirstRunFlow::goToScanning() {
    if (step_ == FirstRunStep::scanning) return {};
    step_ = FirstRunStep::scanning;
    ScanStart start{true, false};
    if (!scanning_ && !scanDone_) {
        scanning_ = true;
        start.startScan = true;
    }
    return start;
}

void FirstRunFlow::scanFinished(std::vector<FirstRunItem> items) {
    items_ = std::move(items);
    scanning_ = false;
    scanDone_ = true;
}

void FirstRunFlow::tourFinished() {
    if (step_ == FirstRunStep::scanning) step_ = FirstRunStep::report;
}

void FirstRunFlow::openFirstClean() {
    if (step_ != FirstRunStep::report) return;
    step_ = FirstRunStep::firstClean;
    note_.clear();
}

void FirstRunFlow::backToReport() {
    if (step_ == FirstRunStep::firstClean && !cleaning_) step_ = FirstRunStep::report;
}

void FirstRunFlow::setSelected(const std::string& id, bool selected) {
    for (auto& item : items_)
        if (item.id == id) item.selected = selected;
}

std::vector<FirstRunItem> FirstRunFlow::selectedItems() const {
    std::vector<FirstRunItem> chosen;
    std::copy_if(items_.begin(), items_.end(), std::back_inserter(chosen), [](const auto& i) { return i.selected; });
    return chosen;
}

bool FirstRunFlow::beginClean() {
    if (cleaning_ || step_ != FirstRunStep::firstClean) return false;
    if (selectedItems().empty()) {
        note_ = kChooseSomething;
        return false;
    }
    note_.clear();
    cleaning_ = true;
    return true;
}

void FirstRunFlow::cleanFinished(std::int64_t freedBytes, const std::vector<std::string>& failures) {
    cleaning_ = false;
    cleanDone_ = true;
    freed_ = freedBytes;
    note_.clear();
    for (const auto& line : failures) note_ += (note_.empty() ? "" : "\n") + line;
}

void FirstRunFlow::close(BrimvaleSettings& settings) { settings.didCompleteFirstRun = true; }

std::string FirstRunFlow::accessStateText(bool granted) {
    return granted ? "Full Disk Access is on." : "Full Disk Access is off.";
}

std::string FirstRunFlow::reportSummary(std::int64_t bytes) { return "You can safely get back " + byteText(bytes); }

std::string FirstRunFlow::cleanSummary(std::int64_t freedBytes) {
    if (freedBytes < 1) return "Nothing was moved.";
    return byteText(freedBytes) + " went to the Trash. You can put it back from there.";
}

} // namespace bv
