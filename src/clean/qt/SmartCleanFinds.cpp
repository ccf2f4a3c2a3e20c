#include "clean/qt/SmartCleanFinds.h"

#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

#include "clean/Cleaner.h"
#include "clean/OldProjectPlan.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/WhenDone.h"
#include "foundation/AsciiCase.h"
#include "foundation/ByteText.h"
#include "foundation/Uuid.h"

namespace bv {
namespace {

const QList<QByteArray> kHitRoles{"key", "title", "projectName", "artifact", "path", "bytes", "sizeText", "note", "selected"};
const QList<QByteArray> kFindingRoles{"key",      "title",    "ownerName", "status",  "bytes",
                                      "sizeText", "evidence", "places",    "selected"};

std::string ageLine(const NodeModuleHit& hit, TimePoint now) {
    const auto* row = OldProjectScanner::artefact(asciiLowercased(hit.artifact));
    std::string line;
    if (const auto days = OldProjectScanner::ageDays(hit.lastTouched, now))
        line = "Untouched for " + std::to_string(*days) + (*days == 1 ? " day" : " days") + " · ";
    return line + (row ? row->label : std::string("Build files")) + " (" + hit.artifact + ")";
}

} // namespace

SmartCleanFinds::SmartCleanFinds(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), hitList_(new KeyedListModel(kHitRoles, this)),
      goneList_(new KeyedListModel(kFindingRoles, this)), possibleList_(new KeyedListModel(kFindingRoles, this)) {
    if (ctx_.live) roots_ = loadNodeRoots(dataFolder());
    // The list of old hits follows the settings: a new day count shows more or fewer.
    connect(&ctx_.settings, &Settings::changed, this, [this] {
        rebuild();
        emit permanentChanged();
    });
}

std::string SmartCleanFinds::dataFolder() const { return ctx_.store.directory().value_or(std::string()); }

QAbstractItemModel* SmartCleanFinds::projectHits() const { return hitList_; }
QAbstractItemModel* SmartCleanFinds::goneLeftovers() const { return goneList_; }
QAbstractItemModel* SmartCleanFinds::possibleLeftovers() const { return possibleList_; }

QStringList SmartCleanFinds::rootsForQml() const {
    QStringList out;
    for (const auto& r : roots_) out << q(pathForPeople(r.path, ctx_.folders.home));
    return out;
}

bool SmartCleanFinds::permanent() const { return ctx_.settings.value().nodeModulesPermanent; }

void SmartCleanFinds::setPermanent(bool on) { ctx_.settings.setNodeModulesPermanent(on); }

void SmartCleanFinds::scanLeftovers(std::function<void()> done) {
    if (!ctx_.live || leftoversScanning_) {
        if (done) done();
        return;
    }
    leftoversScanning_ = true;
    emit scanningChanged();
    const std::string home = ctx_.folders.home;
    const AppLeftovers::Options options = leftoverOptions_;
    QPointer<SmartCleanFinds> self(this);
    auto work = QtConcurrent::run([home, options] { return AppLeftovers::scan(home, options).findings; });
    whenDone(work, this, [self, done = std::move(done)](std::vector<OrphanFinding> findings) {
        if (!self) return;
        self->leftoversScanning_ = false;
        self->setLeftoverResult(std::move(findings));
        emit self->scanningChanged();
        if (done) done();
    });
}

void SmartCleanFinds::scanProjects() {
    if (!ctx_.live) return;
    if (projectsScanning_) {
        projectsAgain_ = true;
        return;
    }
    std::vector<std::string> paths;
    for (const auto& r : roots_) paths.push_back(r.path);
    if (paths.empty()) {
        setProjectResult({});
        return;
    }
    projectsScanning_ = true;
    emit scanningChanged();
    emit progressText(q(OldProjectScanner::kScanning));
    const std::string home = ctx_.folders.home;
    QPointer<SmartCleanFinds> self(this);
    auto work = QtConcurrent::run([paths, home] { return OldProjectScanner::scan(paths, home, {}).hits; });
    whenDone(work, this, [self](std::vector<NodeModuleHit> hits) {
        if (!self) return;
        self->projectsScanning_ = false;
        self->setProjectResult(std::move(hits));
        emit self->scanningChanged();
        emit self->progressText(QString());
        if (std::exchange(self->projectsAgain_, false)) self->scanProjects();
    });
}

void SmartCleanFinds::addRoot(const QString& path) {
    const std::string folder = path.toStdString();
    if (folder.empty() || std::any_of(roots_.begin(), roots_.end(), [&](const auto& r) { return r.path == folder; }))
        return;
    roots_.push_back({Uuid::generate(), folder, std::nullopt});
    if (ctx_.live) (void)saveNodeRoots(dataFolder(), roots_);
    emit rootsChanged();
    scanProjects();
}

void SmartCleanFinds::removeRoot(const QString& path) {
    const std::string shown = path.toStdString();
    const auto before = roots_.size();
    std::erase_if(roots_, [&](const auto& r) { return r.path == shown || pathForPeople(r.path, ctx_.folders.home) == shown; });
    if (roots_.size() == before) return;
    if (ctx_.live) (void)saveNodeRoots(dataFolder(), roots_);
    emit rootsChanged();
    // Hits under a folder no longer searched go with it.
    std::erase_if(hits_, [&](const NodeModuleHit& h) {
        return std::none_of(roots_.begin(), roots_.end(),
                            [&](const auto& r) { return h.path.starts_with(r.path + "/"); });
    });
    rebuild();
}

void SmartCleanFinds::setProjectResult(std::vector<NodeModuleHit> hits) {
    // A scan never selects; a hit ticked before keeps its tick when it is found again.
    for (auto& h : hits)
        h.selected = std::any_of(hits_.begin(), hits_.end(), [&](const auto& old) { return old.selected && old.path == h.path; });
    hits_ = std::move(hits);
    rebuild();
}

void SmartCleanFinds::setLeftoverResult(std::vector<OrphanFinding> findings) {
    findings_ = std::move(findings);
    selectedFindings_ = AppLeftovers::keepExisting(selectedFindings_, findings_);
    rebuild();
}

void SmartCleanFinds::setHitSelected(const QString& path, bool selected) {
    const std::string key = path.toStdString();
    for (auto& h : hits_)
        if (h.path == key && h.selected != selected) {
            h.selected = selected;
            rebuild();
            return;
        }
}

void SmartCleanFinds::setFindingSelected(const QString& id, bool selected) {
    const std::string key = id.toStdString();
    if (std::none_of(findings_.begin(), findings_.end(), [&](const auto& f) { return f.id == key; })) return;
    const bool changed = selected ? selectedFindings_.insert(key).second : selectedFindings_.erase(key) > 0;
    if (changed) rebuild();
}

bool SmartCleanFinds::selectRecommended() {
    bool changed = false;
    for (const auto& id : AppLeftovers::recommendedIDs(findings_)) changed |= selectedFindings_.insert(id).second;
    if (changed) rebuild();
    return changed;
}

std::vector<NodeModuleHit> SmartCleanFinds::oldHits() const {
    const auto days = ctx_.settings.value().nodeModulesUntouchedDays;
    const TimePoint now = ctx_.clock.now();
    std::vector<NodeModuleHit> out;
    for (const auto& h : hits_)
        if (OldProjectScanner::isOld(h, days, now)) out.push_back(h);
    return out;
}

CleanupPlan SmartCleanFinds::plan() const {
    const auto& s = ctx_.settings.value();
    CleanupPlan out = OldProjectPlan::build(oldHits(), OldProjectPlan::Mode::selected,
                                            {s.nodeModulesUntouchedDays, s.nodeModulesPermanent}, ctx_.folders.home,
                                            ctx_.clock.now());
    CleanupPlan leftovers = AppLeftovers::build(findings_, selectedFindings_, ctx_.folders.home);
    for (auto& e : leftovers.entries) out.entries.push_back(std::move(e));
    for (auto& r : leftovers.refusals) out.refusals.push_back(std::move(r));
    return out;
}

int SmartCleanFinds::selectedCount() const {
    int n = 0;
    for (const auto& h : oldHits()) n += h.selected ? 1 : 0;
    for (const auto& f : findings_) n += selectedFindings_.contains(f.id) ? 1 : 0;
    return n;
}

std::int64_t SmartCleanFinds::selectedBytes() const {
    std::int64_t sum = 0;
    for (const auto& h : oldHits())
        if (h.selected) sum += h.bytes;
    for (const auto& f : findings_)
        if (selectedFindings_.contains(f.id)) sum += f.totalBytes();
    return sum;
}

void SmartCleanFinds::rebuild() {
    const std::string& home = ctx_.folders.home;
    const TimePoint now = ctx_.clock.now();
    std::vector<KeyedListModel::Row> hits;
    for (const auto& h : oldHits()) {
        const auto* row = OldProjectScanner::artefact(asciiLowercased(h.artifact));
        hits.push_back({q(h.path),
                        {q(h.path), q(h.projectName + " \u00B7 " + (row ? row->label : std::string("Build files"))),
                         q(h.projectName), q(h.artifact), q(pathForPeople(h.path, home)), static_cast<double>(h.bytes),
                         q(byteText(h.bytes)), q(ageLine(h, now)), h.selected}});
    }
    hitList_->setRows(std::move(hits));

    std::vector<KeyedListModel::Row> gone, possible;
    for (const auto& f : findings_) {
        QStringList places;
        for (const auto& p : f.paths) places << q(pathForPeople(p.path, home));
        std::string evidence;
        for (const auto& e : f.evidence) evidence += (evidence.empty() ? "" : " ") + e;
        KeyedListModel::Row row{q(f.id),
                                {q(f.id), q(f.title), q(f.ownerName), q(std::string(textValue(f.status))),
                                 static_cast<double>(f.totalBytes()), q(byteText(f.totalBytes())), q(evidence),
                                 places.join(QStringLiteral(" \u00B7 ")), selectedFindings_.contains(f.id)}};
        (f.status == OwnerStatus::gone ? gone : possible).push_back(std::move(row));
    }
    goneList_->setRows(std::move(gone));
    possibleList_->setRows(std::move(possible));
    emit selectionChanged();
}

} // namespace bv
