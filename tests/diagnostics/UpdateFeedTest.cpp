#include <gtest/gtest.h>

#include "diagnostics/UpdateFeed.h"
#include "diagnostics/UpdateVersion.h"
#include "support/UpdateSigning.h"

using namespace bv;
using test::updateRelease;

// Every way a feed can be wrong is refused with its reason; only the good one is read.
TEST(UpdateFeed, RefusesWhatIsNotAGoodSignedRelease) {
    const test::UpdateSigningKey key, stranger;
    const std::string good = updateRelease("1.4.0"), goodFeed = key.feed(good), pub = key.publicKeyBase64();
    const std::pair<std::string, const char*> rows[] = {
        {"", "the feed is empty"},
        {goodFeed.substr(0, goodFeed.size() / 2), "the feed is not complete JSON"},
        {R"({"signature": "AAAA"})", "the feed has no “payload”"},
        {R"({"payload": "@@@@", "signature": "AAAA"})", "the feed’s payload is not base64"},
        {R"({"payload": "AAAA", "signature": "AAAA"})", "the feed’s signature is not a 64-byte signature"},
        {stranger.feed(good), "the feed’s signature does not match the update key"},
        {key.feed(updateRelease("9.0.0"), &good), "the feed’s signature does not match the update key"},
        {key.feed("\"1.4.0\""), "the signed release is not a JSON object"},
        {key.feed(updateRelease("1.4.0", "url")), "the signed release has no “url”"},
        {key.feed(updateRelease("next")), "the release’s version “next” is not a version number"},
        {key.feed(updateRelease("1.4.0", "url", "file:///etc/passwd")), "the release’s address is not an http or https address"},
        {key.feed(updateRelease("1.4.0", "published", "yesterday")), "the release’s date is not an ISO 8601 date"},
    };
    for (const auto& [body, refusal] : rows) {
        const auto reading = UpdateFeed::read(body, pub);
        EXPECT_FALSE(reading.feed) << refusal;
        EXPECT_EQ(reading.refusal, refusal);
    }
    for (const std::string& badKey : {StoredBookmark::encodeBase64(std::string(31, 'k')), std::string("not a key")})
        EXPECT_EQ(UpdateFeed::read(goodFeed, badKey).refusal, "the configured update key is not a 32-byte Ed25519 key");
    const auto reading = UpdateFeed::read(goodFeed, pub);
    ASSERT_TRUE(reading.feed) << reading.refusal;
    EXPECT_EQ(reading.feed->version + " " + reading.feed->url + " " + reading.feed->notes + " " + reading.feed->published,
              "1.4.0 https://example.org/get/1.4.0 Faster scans. 2026-11-20T09:00:00Z");
}

// Each row is in ascending order; "=" joins versions that are the same.
TEST(UpdateVersion, ComparesReleasesAndPreReleases) {
    const std::vector<std::vector<const char*>> ascending = {
        {"1.9.3", "1.10.0", "9.99.99", "10"},
        {"1.0.0-1", "1.0.0-alpha", "1.0.0-beta", "1.0.0-beta.2", "1.0.0-beta.10", "1.0.0~rc1", "1.0.0", "1.0.1-alpha"},
        {"1.2", "=", "1.2.0", "=", "v1.02.0"},
    };
    for (const auto& row : ascending)
        for (std::size_t i = 1; i < row.size(); ++i) {
            const bool same = std::string(row[i]) == "=";
            const auto a = UpdateVersion::parse(row[i - 1]), b = UpdateVersion::parse(row[i + (same ? 1 : 0)]);
            ASSERT_TRUE(a && b) << row[i - 1] << " " << row[i];
            EXPECT_EQ(a->compare(*b), same ? 0 : -1) << row[i - 1] << " vs " << row[i + (same ? 1 : 0)];
            EXPECT_EQ(b->compare(*a), same ? 0 : 1);
            i += same ? 1 : 0;
        }
    for (const char* text : {"", "v", "1..2", "1.x", "1.2.", ".1", "abc", "1234567890.0", "1.0-", "1.0-beta..1", "1.0 "})
        EXPECT_FALSE(UpdateVersion::parse(text)) << '"' << text << '"';
}
