#pragma once
#include <QDir>
#include <QImage>
#include <QQuickWindow>
#include <gtest/gtest.h>

namespace bv::test {

// Grabs the window and saves it as `name` in BV_SCREENSHOT_DIR (a temporary folder when unset),
// where every screen test leaves its pictures for a look by eye.
inline void saveScreenshot(QQuickWindow* window, const QString& name) {
    const QString dir = qEnvironmentVariable("BV_SCREENSHOT_DIR", QDir::tempPath() + "/brimvale-screenshots");
    QDir().mkpath(dir);
    const QImage image = window->grabWindow();
    ASSERT_FALSE(image.isNull()) << name.toStdString();
    EXPECT_TRUE(image.save(dir + "/" + name)) << name.toStdString();
}

} // namespace bv::test
