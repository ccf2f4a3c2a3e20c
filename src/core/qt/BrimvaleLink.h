#pragma once
#include <QString>
#include <QUrl>
#include <optional>

namespace bv {

// What a "brimvale:" link asks for. Reading a link changes nothing; the model acts on the
// request (AppModel::handleLink).
//
//   brimvale://watch?path=/home/me/project   asks to watch a folder (the user still confirms)
//   brimvale://scan?need=12&source=wardlet   asks for a fresh look for space, with a banner
//                                            explaining why when the sibling tool sent it
struct LinkRequest {
    enum class Kind { none, watch, scan };
    Kind kind = Kind::none;
    QString path;                 // watch: an absolute folder path as given
    std::optional<QString> banner; // scan: the explanation, when the source is the sibling tool

    [[nodiscard]] bool recognised() const { return kind != Kind::none; }
};

// Anything but the two forms above (another scheme or host, a watch link without an
// absolute "path") gives Kind::none, and the link is left for other handlers.
[[nodiscard]] LinkRequest interpretLink(const QUrl& url);

// "need": the first such item as a base-10 integer with an optional sign. No item, an empty
// value, or one that does not parse (spaces, fractions, out of range) give nothing.
[[nodiscard]] std::optional<long long> parseNeed(const QString& value);

// The banner texts of a scan link from the sibling tool, with and without a number.
[[nodiscard]] QString scanBannerText(std::optional<long long> needGigabytes);

// The note of a folder that a link asked to watch; nothing is watched until the user says so.
inline constexpr const char* kWatchFromLinkNote = "A link asked Brimvale to watch this folder.";

} // namespace bv
