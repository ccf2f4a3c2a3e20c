#include <gtest/gtest.h>

#include "core/AppPersistence.h"
#include "duplicates/DuplicateRoot.h"
#include "support/TestEnvironment.h"

using namespace bv;

TEST(DuplicateRoots, RoundTripThroughTheFile) {
    const AppPersistence store(bv::test::TestEnvironment::freshFolder("roots-store"));
    const std::vector<DuplicateRoot> roots{
        {Uuid::generate(), "/home/ana/Fotos für Oma", std::nullopt},
        {Uuid::generate(), "/media/backup", std::string("Ym9va21hcms=")},
    };
    store.saveJson(kDuplicateRootsFileName, encodeDuplicateRoots(roots));
    EXPECT_EQ(store.load(kDuplicateRootsFileName, decodeDuplicateRoots), roots);
    const auto written = store.loadJson(kDuplicateRootsFileName);
    ASSERT_TRUE(written);
    EXPECT_FALSE((*written)[0].contains("bookmark")) << "an absent bookmark is left out";
    EXPECT_EQ((*written)[1]["id"].get<std::string>(), roots[1].id.text());
}

TEST(DuplicateRoots, DecoderIsStrictAndAllOrNothing) {
    const auto ok = parseJson(R"([{"id":"6f1c2b4e-8a7d-4c3b-9e2f-0a1b2c3d4e5f","path":"/a"}])");
    ASSERT_TRUE(ok);
    const auto decoded = decodeDuplicateRoots(*ok);
    ASSERT_EQ(decoded.size(), 1u);
    EXPECT_EQ(decoded[0].id.text(), "6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F") << "read in either case, written upper";
    EXPECT_FALSE(decoded[0].bookmark);

    const char* bad[] = {
        R"({"id":"6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F","path":"/a"})", // not an array
        R"([{"path":"/a"}])",                                             // no id
        R"([{"id":"not-a-uuid","path":"/a"}])",
        R"([{"id":"6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F"}])", // no path
        R"([{"id":"6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F","path":7}])",
        R"([{"id":"6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F","path":"/a","bookmark":12}])",
        R"([{"id":"6F1C2B4E-8A7D-4C3B-9E2F-0A1B2C3D4E5F","path":"/a"}, 3])", // one bad element fails all
    };
    for (const char* text : bad) {
        const auto json = parseJson(text);
        ASSERT_TRUE(json) << text;
        EXPECT_THROW((void)decodeDuplicateRoots(*json), DecodeError) << text;
    }
}
