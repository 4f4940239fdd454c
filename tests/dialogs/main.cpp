#include <QApplication>
#include <gtest/gtest.h>

// No display is needed. Of the platforms that do without one, "offscreen" ends every drag at once; "minimal"
// has the toolkit's whole drag loop.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal:enable_fonts");
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
