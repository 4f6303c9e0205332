// Runs the tests of the window on a display that exists in memory only.
#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QPA_PLATFORMTHEME", "generic");
    QApplication::setStyle(QStringLiteral("fusion"));
    const QApplication aplicacion(argc, argv);
    return RUN_ALL_TESTS();
}
