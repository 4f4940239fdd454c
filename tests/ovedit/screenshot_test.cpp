#include "screenshot.h"

#include <ctime>

#include <QElapsedTimer>
#include <QImage>
#include <QMessageBox>
#include <QProcess>
#include <QSet>

#include "running_program.h"
#include "unattended.h"

namespace {

int coloursIn(const QImage &picture)
{
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 3) {
        for (int x = 0; x < picture.width(); x += 3) {
            colours.insert(picture.pixel(x, y));
        }
    }
    return colours.size();
}

// Tabs, headers and cells, without the labels below them, which tell the time.
QImage upperPart(const QString &file)
{
    const QImage picture(file);
    return picture.copy(0, 0, picture.width(), picture.height() / 2);
}

class Screenshot : public RunningProgram
{
protected:
    struct Outcome {
        int exitCode;
        QString out;
        QString err;
    };

    // Runs the program without a display.
    Outcome run(const QStringList &arguments, const QString &platform = "offscreen")
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("DISPLAY");
        environment.remove("WAYLAND_DISPLAY");
        environment.remove("QT_QPA_PLATFORM");
        if (!platform.isEmpty()) {
            environment.insert("QT_QPA_PLATFORM", platform);
        }
        environment.insert("HOME", folder.path());
        environment.insert("XDG_CONFIG_HOME", folder.filePath("config"));
        process.setProcessEnvironment(environment);
        process.start(ORVANE_BINARY_DIR "/bin/ovedit", arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << process.errorString().toStdString();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAllStandardOutput(), process.readAllStandardError()};
    }
};

TEST_F(Screenshot, showsTheWindow)
{
    MainWindow &window = opened();
    const QString file = folder.filePath("window.png");
    EXPECT_EQ(writeScreenshot(window, file), "");
    const QImage picture(file);
    EXPECT_EQ(picture.size(), window.size());
    EXPECT_GT(coloursIn(picture), 5);
}

TEST_F(Screenshot, waitsWithoutKeepingTheProcessorBusy)
{
    QWidget window;
    QElapsedTimer waited;
    waited.start();
    const std::clock_t before = std::clock(); // processor time of this process
    EXPECT_EQ(writeScreenshot(window, folder.filePath("blank.png")), "");
    const auto busy = 1000 * (std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(busy, waited.elapsed() / 2);
}

TEST_F(Screenshot, isAPngWhereTheNameSaysNothingElse)
{
    EXPECT_EQ(writeScreenshot(opened(), folder.filePath("picture")), "");
    EXPECT_FALSE(QImage(folder.filePath("picture"), "PNG").isNull());
}

TEST_F(Screenshot, saysWhyThereIsNone)
{
    MainWindow &window = opened();
    EXPECT_TRUE(writeScreenshot(window, "/nowhere/at/all.png").contains("/nowhere/at/all.png"));
    EXPECT_TRUE(writeScreenshot(window, folder.filePath("picture.nonsense")).contains("picture.nonsense"));
}

TEST_F(Screenshot, isTakenByTheProgramWithoutADisplay)
{
    const QString file = folder.filePath("shot.png");
    const Outcome outcome = run({"--screenshot", file, path()}, QString());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err.toStdString();
    EXPECT_GT(coloursIn(QImage(file)), 5);
}

TEST_F(Screenshot, differsBetweenTables)
{
    const QString first = folder.filePath("first.png");
    const QString second = folder.filePath("second.png");
    EXPECT_EQ(run({"--screenshot", first, path("site")}).exitCode, 0);
    EXPECT_EQ(run({"--screenshot", second, path("arrival")}).exitCode, 0);
    EXPECT_NE(upperPart(first), upperPart(second));
}

TEST_F(Screenshot, failsWithAMessageWhenThereIsNoDatabase)
{
    const QString file = folder.filePath("none.png");
    const Outcome outcome = run({"--screenshot", file, "/nowhere/at/all"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("/nowhere/at/all")) << outcome.err.toStdString();
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Screenshot, failsWithAMessageWhenItCantBeWritten)
{
    const Outcome outcome = run({"--screenshot", "/nowhere/at/all.png", path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("/nowhere/at/all.png")) << outcome.err.toStdString();
}

TEST_F(Screenshot, tellsOfTablesThatWereRefused)
{
    files.writeFile("quakes.origin", "this is not a record\n");
    const Outcome outcome = run({"--screenshot", folder.filePath("x.png"), path()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.err.contains("quakes.origin")) << outcome.err.toStdString();
}

using Program = Screenshot;

TEST_F(Program, answersHelpAndVersionWithoutADisplay)
{
    const Outcome help = run({"--help"}, QString());
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.startsWith("Usage: ovedit"));
    const Outcome version = run({"--version"}, QString());
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, "ovedit 3.0.0\n");
}

TEST_F(Program, saysThatItNeedsADisplay)
{
    const Outcome outcome = run({path()}, QString());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("DISPLAY"));
}

TEST_F(Program, refusesWrongArguments)
{
    const Outcome outcome = run({"--frobnicate"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(outcome.err.contains("frobnicate"));
}

TEST_F(Program, refusesAParameterFileThatIsNone)
{
    const Outcome outcome =
        run({"--config", "/nowhere/settings.yaml", "--screenshot", folder.filePath("x.png"), path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("/nowhere/settings.yaml"));
}

TEST_F(Program, takesSettingsFromAParameterFile)
{
    QFile file(folder.filePath("settings.yaml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("show_readable_times: no\n");
    file.close();
    const QString plain = folder.filePath("plain.png");
    const QString changed = folder.filePath("changed.png");
    EXPECT_EQ(run({"--screenshot", plain, path("arrival")}).exitCode, 0);
    EXPECT_EQ(run({"--config", file.fileName(), "--screenshot", changed, path("arrival")}).exitCode, 0);
    EXPECT_NE(upperPart(plain), upperPart(changed));
}

TEST(UnattendedProgram, closesMessageBoxes)
{
    Unattended unattended;
    QMessageBox box;
    box.setText("nobody is here");
    QElapsedTimer waited;
    waited.start();
    box.exec();
    EXPECT_EQ(unattended.messages(), 1);
    EXPECT_LT(waited.elapsed(), 10000);
}

} // namespace
