#include "clean/DevScanRow.h"

namespace bv {

std::string_view textValue(DevRowKind kind) { return kind == DevRowKind::cleanable ? "cleanable" : "reviewOnly"; }

Json DevScanRow::toJson() const {
    Json j = Json::object();
    j["id"] = id;
    j["title"] = title;
    j["path"] = path;
    j["resolvedPath"] = resolvedPath;
    j["allowRoot"] = allowRoot;
    j["bytes"] = bytes;
    putDate(j, "modified", modified);
    j["note"] = note;
    j["group"] = group;
    j["kind"] = std::string(textValue(kind));
    j["optIn"] = optIn;
    j["selectable"] = selectable;
    if (toolCommand) j["toolCommand"] = *toolCommand;
    if (blockedReason) j["blockedReason"] = *blockedReason;
    j["selected"] = selected;
    return j;
}

} // namespace bv
