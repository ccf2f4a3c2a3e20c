// `brimvale overview [--json]`: the Overview in a terminal. It builds the same model the
// window uses, runs one refresh and prints what the Overview screen would show.
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>

#include "cli/CliCommand.h"
#include "clean/qt/SmartCleanModel.h"
#include "model/AppModel.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"

namespace bv::cli {
namespace {

Json deltaJson(const SpaceDelta& delta, const QString& text) {
    Json j = Json::object();
    j["basis"] = spaceBasisName(delta.basis);
    if (delta.basis != SpaceBasis::unavailable) {
        j["bytes"] = delta.bytes;
        putDate(j, "baseline", delta.baseline);
        j["text"] = text.toStdString();
    }
    return j;
}

void printFiles(const std::vector<TrackedFile>& files, const char* place, const AppModel& model) {
    for (const auto& f : files)
        std::printf("  %-10s %-40s %10s  %-18s %s\n", place, f.name.c_str(), byteText(f.size).c_str(), f.kind.c_str(),
                    model.calendar().shortTime(f.added).c_str());
}

} // namespace

int runOverview(const std::vector<std::string>& args) {
    bool json = false;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else return usageError(*findCommand("overview"), "unknown option " + a);
    }
    int argc = 1;
    char name[] = "brimvale";
    char* argv[] = {name, nullptr};
    std::unique_ptr<QCoreApplication> ownApp;
    if (!QCoreApplication::instance()) ownApp = std::make_unique<QCoreApplication>(argc, argv);

    AppModel model(AppModel::liveDataFromEnvironment());
    QEventLoop loop;
    QObject::connect(&model, &AppModel::isRefreshingChanged, &loop, [&] {
        if (!model.isRefreshing()) loop.quit();
    });
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    model.refresh();
    if (model.isRefreshing()) loop.exec();
    // The terminal never ends the window's session: "since your last visit" stays the window's.
    // What Smart Clean would give back, and the survey that follows the scan, as the window
    // would show them once its first look is done.
    SmartCleanModel& smart = *model.room<SmartCleanModel>();
    StorageSurveyModel& survey = *model.room<StorageSurveyModel>();
    smart.scan();
    QEventLoop scans;
    const auto settleScans = [&] {
        if (!smart.scanning() && !survey.scanning()) scans.quit();
    };
    QObject::connect(&smart, &SmartCleanModel::scanningChanged, &scans, settleScans);
    QObject::connect(&survey, &StorageSurveyModel::scanningChanged, &scans, settleScans);
    QTimer::singleShot(60000, &scans, &QEventLoop::quit);
    if (smart.scanning() || survey.scanning()) scans.exec();
    const std::int64_t reclaimable = smart.reclaimableBytes();

    const SpaceStatus& space = *model.room<SpaceStatus>();
    const VolumeSnapshot& v = space.latest();
    if (json) {
        Json j = Json::object();
        Json vol = Json::object();
        vol["name"] = v.volumeName;
        vol["measured"] = v.isUsable();
        if (v.isUsable()) {
            vol["freeBytes"] = v.freeBytes;
            vol["totalBytes"] = v.totalBytes;
            vol["freeText"] = byteText(v.freeBytes);
            vol["totalText"] = byteText(v.totalBytes);
        }
        j["storage"] = vol;
        j["sinceMidnight"] = deltaJson(space.midnightDelta(), space.midnightDeltaText());
        j["sinceLastOpen"] = deltaJson(space.lastOpenDelta(), space.lastOpenDeltaText());
        Json files = Json::array();
        for (const auto* list : {&space.desktopFiles(), &space.downloadFiles()})
            for (const auto& f : *list) {
                Json row = Json::object();
                row["location"] = f.location == WatchedLocation::desktop ? "Desktop" : "Downloads";
                row["name"] = f.name;
                row["path"] = f.path;
                row["size"] = f.size;
                row["kind"] = f.kind;
                putDate(row, "added", f.added);
                files.push_back(row);
            }
        j["newToday"] = files;
        j["reclaimableBytes"] = reclaimable;
        putDate(j, "updated", space.lastRefresh());
        std::fputs(encodeJson(j).c_str(), stdout);
        return 0;
    }

    std::printf("Brimvale · Overview\n\nStorage\n");
    if (!v.isUsable()) {
        std::printf("  Couldn't measure the disk\n");
    } else {
        std::printf("  %s free of %s  (%s)\n", byteText(v.freeBytes).c_str(), byteText(v.totalBytes).c_str(),
                    v.volumeName.c_str());
        const QString midnight = space.midnightDeltaText();
        const QString lastOpen = space.lastOpenDeltaText();
        if (!midnight.isEmpty()) std::printf("  %s\n", midnight.toStdString().c_str());
        if (!lastOpen.isEmpty()) std::printf("  %s\n", lastOpen.toStdString().c_str());
    }
    std::printf("\nReady to reclaim\n");
    if (reclaimable > 0)
        std::printf("  %s ready to reclaim. Preview first. Nothing moves until you confirm.\n", byteText(reclaimable).c_str());
    else
        std::printf("  All tidy. Nothing is waiting to be cleaned.\n");
    std::printf("\nNew today\n");
    if (space.desktopFiles().empty() && space.downloadFiles().empty()) {
        std::printf("  Nothing new on your Desktop or in Downloads.\n");
    } else {
        printFiles(space.desktopFiles(), "Desktop", model);
        printFiles(space.downloadFiles(), "Downloads", model);
    }
    std::printf("\nUpdated %s\n", space.lastRefreshText().toStdString().c_str());
    return 0;
}

} // namespace bv::cli
