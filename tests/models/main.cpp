#include <QApplication>
#include <gtest/gtest.h>

// Models measure fonts and show message boxes, so the tests run inside an application; no display is needed.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
