#include "core/SymbolIcons.h"

#include <string_view>
#include <utility>

namespace bv {

std::string freedesktopIconName(const std::string& symbolName) {
    // Symbolic variants: they exist in Adwaita and Breeze alike and take the text colour.
    static constexpr std::pair<std::string_view, std::string_view> kTable[] = {
        {"trash", "user-trash-symbolic"},
        {"trash.slash", "edit-delete-symbolic"},
        {"terminal", "utilities-terminal-symbolic"},
        {"app.dashed", "application-x-executable-symbolic"},
        {"doc.on.doc", "edit-copy-symbolic"},
        {"arrow.right", "go-next-symbolic"},
        {"pencil", "document-edit-symbolic"},
        {"archivebox", "package-x-generic-symbolic"},
        {"folder", "folder-symbolic"},
        {"hammer", "applications-engineering-symbolic"},
        {"hand.raised", "dialog-warning-symbolic"},
        {"text.magnifyingglass", "edit-find-symbolic"},
        {"sparkles", "starred-symbolic"},
        {"arrow.uturn.backward", "edit-undo-symbolic"}, // put back from the Trash
    };
    for (const auto& [symbol, icon] : kTable)
        if (symbolName == symbol) return std::string(icon);
    return "document-open-recent-symbolic";
}

} // namespace bv
