#include <gtest/gtest.h>

#include "foundation/ByteText.h"
#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"
#include "support/TestEnvironment.h"

using namespace bv;

TEST(ByteText, FollowsTheDecimalStyle) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {-5, "0 GB"},          {0, "0 GB"},          {1, "1 byte"},          {512, "512 bytes"},
        {999, "999 bytes"},    {1000, "1 KB"},        {1499, "1 KB"},         {999'499, "999 KB"},
        {999'999, "1 MB"},     {1'500'000, "1.5 MB"}, {1'000'000, "1 MB"},    {12'700'000'000, "12.7 GB"},
        {184'000'000'000, "184 GB"}, {1'230'000'000'000, "1.23 TB"}, {20'000'000'000, "20 GB"},
        {1'006'000'000, "1.01 GB"}, {999'996'000, "1 GB"}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(byteText(bytes), text) << bytes;
}

TEST(Dates, IsoRoundTripAndStrictness) {
    const auto t = parseIsoDate("2026-11-15T22:16:00Z");
    ASSERT_TRUE(t);
    EXPECT_EQ(isoDateText(*t), "2026-11-15T22:16:00Z");
    EXPECT_EQ(isoDateText(*parseIsoDate("2026-11-15T23:16:00+01:00")), "2026-11-15T22:16:00Z");
    EXPECT_EQ(isoDateText(*parseIsoDate("2026-11-15T22:16:00.750Z")), "2026-11-15T22:16:00Z");
    for (const char* bad : {"", "2026-11-15", "2026-11-15 22:16:00Z", "2026-13-01T00:00:00Z", "2026-02-30T00:00:00Z",
                            "2025-02-29T00:00:00Z", "2026-11-15T22:16:00", "2026-11-15T22:16:00Zjunk", "1763245000",
                            // Years a time point cannot hold are refused, never wrapped into another date.
                            "1013-01-02T03:04:05Z", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z",
                            "1677-12-31T23:59:59Z", "2262-01-01T00:00:00Z"})
        EXPECT_FALSE(parseIsoDate(bad)) << bad;
    for (const char* edge : {"1678-01-01T00:00:00Z", "2261-12-31T23:59:59Z", "1969-12-31T23:59:59Z"})
        EXPECT_EQ(isoDateText(parseIsoDate(edge).value_or(TimePoint{})), edge);
    EXPECT_TRUE(sameMoment(*t, *t + std::chrono::milliseconds(1000)));
    EXPECT_FALSE(sameMoment(*t, *t + std::chrono::milliseconds(1001)));
}

TEST(Json, EncoderIsPrettyAndSorted) {
    Json j;
    j["zeta"] = 1;
    j["alpha"] = "é";
    putDate(j, "when", *parseIsoDate("2026-11-15T22:16:00Z"));
    putDate(j, "never", std::optional<TimePoint>{});
    EXPECT_EQ(encodeJson(j), "{\n  \"alpha\": \"é\",\n  \"when\": \"2026-11-15T22:16:00Z\",\n  \"zeta\": 1\n}\n");
}

TEST(Json, ReaderTreatsMissingAndWrongTypesStrictly) {
    const Json j = *parseJson(R"({"b": true, "n": 3, "f": 2.0, "s": "x", "d": "2026-01-01T00:00:00Z", "z": null,
                                  "bad": "yesterday"})");
    JsonReader r(j);
    EXPECT_TRUE(r.boolean("b"));
    EXPECT_EQ(r.integer("n"), 3);
    EXPECT_EQ(r.integer("f"), 2);
    EXPECT_THROW((void)JsonReader(*parseJson(R"({"big": 1e300})")).integer("big"), DecodeError);
    EXPECT_EQ(r.integer("missing", 7), 7);
    EXPECT_EQ(r.integer("z", 9), 9) << "null counts as absent";
    EXPECT_THROW((void)r.boolean("missing"), DecodeError);
    EXPECT_THROW((void)r.integer("s"), DecodeError);
    EXPECT_THROW((void)r.boolean("n", false), DecodeError) << "a default never hides a wrong type";
    EXPECT_THROW((void)r.date("bad"), DecodeError);
    EXPECT_FALSE(parseJson("{\"a\": "));
    EXPECT_THROW(JsonReader{Json::array()}, DecodeError);
}

TEST(Uuid, UpperCaseOutMixedCaseIn) {
    const Uuid u = Uuid::generate();
    const std::string t = u.text();
    EXPECT_EQ(t.size(), 36u);
    EXPECT_EQ(t[14], '4');
    EXPECT_EQ(t.find_first_of("abcdef"), std::string::npos);
    std::string lower = t;
    for (char& c : lower) c = static_cast<char>(std::tolower(c));
    EXPECT_EQ(Uuid::parse(lower), u);
    EXPECT_FALSE(Uuid::parse("not-a-uuid"));
    EXPECT_NE(Uuid::generate(), u);
}

TEST(Calendar, DayArithmeticAcrossDaylightSaving) {
    const CalendarContext berlin("de_DE", "Europe/Berlin");
    // 2026-03-29: clocks go forward at 02:00, so the day has 23 hours.
    const TimePoint noon = berlin.date(2026, 3, 29, 12);
    const TimePoint start = berlin.startOfDay(noon);
    EXPECT_EQ(isoDateText(start), "2026-03-28T23:00:00Z");
    EXPECT_EQ(isoDateText(berlin.addingDays(start, 1)), "2026-03-29T22:00:00Z");
    EXPECT_EQ(berlin.daysBetween(start, berlin.addingDays(start, 1)), 1);
    EXPECT_EQ(berlin.firstWeekday(), 2);
    EXPECT_EQ(CalendarContext("en_US", "America/New_York").firstWeekday(), 1);
    const auto narrow = CalendarContext("en_US", "UTC").narrowWeekdaySymbols();
    ASSERT_EQ(narrow.size(), 7u);
    EXPECT_EQ(narrow[0], "S");
    EXPECT_EQ(narrow[1], "M");
    // 2026-11-22 is a Sunday: the Monday-first week began on the 16th, the Sunday-first on the 22nd.
    const TimePoint sunday = berlin.date(2026, 11, 22, 15);
    EXPECT_EQ(berlin.components(berlin.startOfWeek(sunday)).day, 16);
    const CalendarContext us("en_US", "Europe/Berlin");
    EXPECT_EQ(us.components(us.startOfWeek(sunday)).day, 22);
}

TEST(FileIO, AtomicWriteReplacesWholeFile) {
    const std::string dir = test::TestEnvironment::freshFolder("io");
    const std::string path = dir + "/a.json";
    ASSERT_TRUE(writeFileAtomically(path, "first"));
    ASSERT_TRUE(writeFileAtomically(path, "second"));
    EXPECT_EQ(readWholeFile(path), "second");
    EXPECT_FALSE(writeFileAtomically(dir + "/missing/b.json", "x"));
    EXPECT_FALSE(readWholeFile(dir + "/nothing"));
}
