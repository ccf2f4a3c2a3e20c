#include "core/qt/BrimvaleLink.h"

#include <QUrlQuery>
#include <charconv>

namespace bv {
namespace {

std::optional<QString> firstItem(const QUrlQuery& query, const QString& name) {
    for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded))
        if (key == name) return value;
    return std::nullopt;
}

} // namespace

std::optional<long long> parseNeed(const QString& value) {
    const QByteArray bytes = value.toUtf8();
    const char* begin = bytes.constData();
    const char* end = begin + bytes.size();
    if (begin == end) return std::nullopt;
    // from_chars takes a minus but not a plus; a plus must be followed by a digit.
    if (*begin == '+') {
        ++begin;
        if (begin == end || *begin < '0' || *begin > '9') return std::nullopt;
    }
    long long out = 0;
    const auto [ptr, ec] = std::from_chars(begin, end, out, 10);
    if (ec != std::errc() || ptr != end) return std::nullopt;
    return out;
}

QString scanBannerText(std::optional<long long> needGigabytes) {
    if (needGigabytes)
        return QStringLiteral("Wardlet noticed your Mac needs about ") + QString::number(*needGigabytes) +
               QStringLiteral(" GB more free space so it can use swap without freezing. Here's what can be cleared "
                              "safely.");
    return QStringLiteral(
        "Wardlet noticed low disk space is limiting your Mac's memory. Here's what can be cleared safely.");
}

LinkRequest interpretLink(const QUrl& url) {
    LinkRequest request;
    if (url.scheme() != QLatin1String("brimvale")) return request;
    const QUrlQuery query(url);
    if (url.host() == QLatin1String("watch")) {
        const auto path = firstItem(query, QStringLiteral("path"));
        if (!path || !path->startsWith(QLatin1Char('/'))) return request;
        request.kind = LinkRequest::Kind::watch;
        request.path = *path;
    } else if (url.host() == QLatin1String("scan")) {
        request.kind = LinkRequest::Kind::scan;
        const auto need = firstItem(query, QStringLiteral("need"));
        const auto source = firstItem(query, QStringLiteral("source"));
        if (source && *source == QLatin1String("wardlet"))
            request.banner = scanBannerText(need ? parseNeed(*need) : std::nullopt);
    }
    return request;
}

} // namespace bv
