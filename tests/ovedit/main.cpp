#include <QApplication>
#include <gtest/gtest.h>

// What the system's font library keeps is not ours; read by the leak checker where there is one.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never destroyed: the platform plugin forgets its screen on the way out, which leak checkers would
    // report.
    static auto &application = *new QApplication(argc, argv);
    Q_UNUSED(application)
    QApplication::setQuitOnLastWindowClosed(false);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
