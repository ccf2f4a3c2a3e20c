#include <gtest/gtest.h>

#include <QQmlApplicationEngine>
#include <QQuickItem>

#include <unistd.h>

#include "model/AppModel.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spin;
using bv::test::spinUntil;

namespace {

std::string media(std::size_t size, char seed) {
    std::string s(size, seed);
    for (std::size_t i = 0; i < size; i += 3001) s[i] = static_cast<char>(seed + i % 11);
    return s;
}

// Every Text in the window, to find the screen's own words in it.
void collectTexts(QQuickItem* item, QStringList& out) {
    if (!item) return;
    const QVariant text = item->property("text");
    if (text.isValid() && item->isVisible()) out << text.toString();
    for (QQuickItem* child : item->childItems()) collectTexts(child, out);
}

} // namespace

// A home with copies the way people make them: photos saved twice from a phone backup, an
// album ripped twice, a tax return downloaded again, a hard-linked video. Scans it through
// the model, picks a keeper in the middle of one group, and saves the screen as a PNG.
TEST(Screens, DuplicatesShowsGroupsWithKeepers) {
    const std::string home = XdgPaths::home();
    const auto photo = media(4'200'000, 'p');
    test::writeFile(home + "/Pictures/Holiday 2025/IMG_2041.jpg", photo);
    test::writeFile(home + "/Pictures/Phone backup/IMG_2041.jpg", photo);
    test::writeFile(home + "/Downloads/IMG_2041 (1).jpg", photo);
    const auto song = media(38'500'000, 's');
    test::writeFile(home + "/Music/Sólstafir – Berdreyminn/01 Silfur-Refur.flac", song);
    test::writeFile(home + "/Music/Imported/01 Silfur-Refur.flac", song);
    const auto tax = media(1'250'000, 't');
    test::writeFile(home + "/Documents/Taxes/2025 return.pdf", tax);
    test::writeFile(home + "/Downloads/2025 return.pdf", tax);
    test::writeFile(home + "/Movies/clip.mov", media(12'000'000, 'm'));
    ASSERT_EQ(::link((home + "/Movies/clip.mov").c_str(), (home + "/Movies/clip link.mov").c_str()), 0);

    AppModel model(true);
    auto& d = *model.duplicates();
    d.addRootPath(QString::fromStdString(home));
    d.setMinimumBytes(100000);
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr) << "Main.qml failed to load";
    model.focusOnSection("duplicates");
    d.startScan();
    ASSERT_TRUE(spinUntil([&] { return !d.duplicatesScanning(); }, 20000));
    ASSERT_EQ(d.duplicateGroups().size(), 4u);
    const auto& photos = d.duplicateGroups()[1];
    ASSERT_EQ(photos.files.size(), 3u);
    d.keepCopy(QString::fromStdString(photos.id), QString::fromStdString(photos.files[1].path));
    spin(300);

    QStringList texts;
    collectTexts(window->contentItem(), texts);
    for (const char* expected : {"EXTRA COPIES · LARGEST FIRST", "This copy stays", "Not kept", "Keep this copy instead",
                                 "Review & Clean All", "Clean group", "Files smaller than this are not compared",
                                 "Scan", "100 KB", "1 MB", "10 MB", "100 MB", "4 groups · 48.2 MB to free"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(expected)) || texts.contains(QString::fromUtf8(expected).replace("&", "&&")))
            << expected;
    EXPECT_TRUE(texts.contains("48.2 MB")) << "the sidebar badge";

    test::saveScreenshot(window, "duplicates-groups.png");
}
