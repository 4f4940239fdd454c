#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QIcon>

#include "application.h"
#include "command_line.h"
#include "configuration.h"
#include "main_window.h"
#include "screenshot.h"
#include "unattended.h"

#include <orvane/language.h>
#include <qovutil.h>

namespace {

enum ExitCode { AllWell = 0, Failed = 1, WrongArguments = 2 };

void complain(const QString &text)
{
    std::fprintf(stderr, "ovedit: %s\n", qPrintable(text));
}

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

bool asksFor(int argc, char **argv, const char *longName, const char *shortName)
{
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], longName) == 0 || qstrcmp(argv[i], shortName) == 0) {
            return true;
        }
    }
    return false;
}

void setIdentity()
{
    QCoreApplication::setApplicationName("ovedit");
    QCoreApplication::setApplicationVersion(programVersion());
    QIcon icon;
    for (const char *file : {":/ovedit/ovedit-32.png", ":/ovedit/ovedit-64.png", ":/ovedit/ovedit-256.png"}) {
        icon.addFile(file);
    }
    QApplication::setWindowIcon(icon);
    QGuiApplication::setDesktopFileName("ovedit");
}

// What was asked for now comes before what was chosen in the menu, and that before the environment.
void useLanguage(const CommandLine &wanted, const Settings &settings)
{
    const QString chosen = OvLanguage::forWish(settings.language());
    const QString code = !wanted.language.isEmpty() ? wanted.language
                         : !chosen.isEmpty()        ? chosen
                                                    : OvLanguage::ofEnvironment();
    OvLanguage::use(code);
}

ExitCode takeScreenshot(Application &application, const CommandLine &wanted)
{
    const Unattended unattended;
    MainWindow *window = wanted.databases.isEmpty()
                             ? application.showStartPage()
                             : application.openDatabase(wanted.databases.first(), wanted.openMode, nullptr);
    if (window == nullptr) {
        return Failed;
    }
    const QString failure = writeScreenshot(*window, wanted.screenshot);
    if (!failure.isEmpty()) {
        complain(failure);
        return Failed;
    }
    for (const QString &problem : application.problems().problems()) {
        complain(problem);
    }
    return AllWell;
}

} // namespace

int main(int argc, char **argv)
{
    // Answered before anything needs a display.
    if (asksFor(argc, argv, "--help", "-h")) {
        std::fputs(qPrintable(commandLineHelp()), stdout);
        return AllWell;
    }
    if (asksFor(argc, argv, "--version", "-v")) {
        std::printf("ovedit %s\n", qPrintable(programVersion()));
        return AllWell;
    }
    const bool picture = asksFor(argc, argv, "--screenshot", "--screenshot");
    if (!hasDisplay()) {
        if (!picture) {
            complain("there is no display: set DISPLAY, or ask for a picture with --screenshot FILE");
            return Failed;
        }
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }

    QApplication app(argc, argv);
    setIdentity();
    const CommandLine wanted = parseCommandLine(QCoreApplication::arguments());
    if (!wanted.error.isEmpty()) {
        complain(wanted.error + " See ovedit --help.");
        return WrongArguments;
    }

    Settings settings;
    useLanguage(wanted, settings);
    Application application(settings);
    if (!wanted.configFile.isEmpty()) {
        const QString failure = loadParameterFile(application.config(), wanted.configFile);
        if (!failure.isEmpty()) {
            complain(failure);
            return Failed;
        }
    }
    if (!wanted.screenshot.isEmpty()) {
        return takeScreenshot(application, wanted);
    }
    // A database that can't be opened has been told in a box; the start page offers another.
    const bool allOpened = application.openAll(wanted.databases, wanted.openMode);
    const int status = QApplication::exec();
    return allOpened ? status : Failed;
}
