#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickWindow>

#include "space/qt/StorageSurveyModel.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;

namespace {

// The three survey pieces on their own page, as the Overview places them.
constexpr const char* kPage = R"(
import QtQuick
import QtQuick.Layouts
import Brimvale
Window {
    width: 640; height: 720; visible: true; color: Theme.window
    ColumnLayout {
        anchors.fill: parent; anchors.margins: 20; spacing: 16
        StorageBar {}
        TopSpaceUsers {}
        CoverageList {}
        Item { Layout.fillHeight: true }
    }
}
)";

} // namespace

// A real survey of the temporary home, with a Trash above the listing floor, drawn without a
// single QML warning; the picture is kept for a look by eye.
TEST(Screens, StorageSurveyPiecesDrawTheSurveyWithoutWarnings) {
    const std::string trashFile = XdgPaths::dataHome() + "/Trash/files/old-disk.img";
    test::writeSizedFile(XdgPaths::downloads() + "/installer.iso", 3'000'000);
    test::writeFile(trashFile, "");
    const int fd = ::open(trashFile.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::posix_fallocate(fd, 0, 210'000'000), 0);
    ::close(fd);

    AppModel model(true);
    model.survey()->setPlaces([] {
        SurveyPlaces places = SurveyPlaces::current();
        places.coverage.resize(1); // the Trash alone: the machine's own places vary
        return places;
    });
    model.applySnapshot({model.now(), "Test Disk", 500'000'000'000, 120'000'000'000});
    model.survey()->survey(true);
    test::spin(300);
    ASSERT_TRUE(test::spinUntil([&] { return !model.survey()->scanning(); }));
    ASSERT_EQ(model.survey()->coverageItems().size(), 1u);

    QQmlApplicationEngine engine;
    ASSERT_NE(loadMainWindow(engine, model), nullptr);
    QList<QQmlError> warnings;
    QObject::connect(&engine, &QQmlEngine::warnings, [&](const QList<QQmlError>& w) { warnings += w; });
    QQmlComponent component(&engine);
    component.setData(kPage, QUrl(QStringLiteral("qrc:/StorageSurveyPage.qml")));
    std::unique_ptr<QObject> page(component.create());
    ASSERT_TRUE(page) << component.errorString().toStdString();
    auto* window = qobject_cast<QQuickWindow*>(page.get());
    ASSERT_NE(window, nullptr);
    QCoreApplication::processEvents();
    for (const auto& w : warnings) ADD_FAILURE() << w.toString().toStdString();

    test::saveScreenshot(window, "storage-survey.png");
    ::unlink(trashFile.c_str());
}
