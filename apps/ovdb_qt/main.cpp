// The part of ovdb that needs Qt. Started by ovdb, which checks the arguments and tells what comes of it.
#include "commands.h"

#include "failure.h"

#include <cstdio>
#include <exception>

#include <QApplication>

namespace {

struct Command {
    const char *name;
    int arguments;
    void (*run)(const QStringList &arguments);
};

constexpr Command commands[] = {
    {"sheet", 2, ovdb_qt::write_sheet},
    {"map", 10, ovdb_qt::draw_map},
};

void run(QStringList arguments)
{
    arguments.removeFirst();
    const QString name = arguments.isEmpty() ? QString() : arguments.takeFirst();
    for (const Command &command : commands)
        if (name == QLatin1String(command.name) && arguments.size() == command.arguments)
            return command.run(arguments);
    throw ovdb::Failure(ovdb::ExitCode::Usage, "this program is run by ovdb");
}

} // namespace

int main(int argc, char **argv)
{
    // No display is needed, and one that is there is left alone.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "1");
    // What the toolkit says of its surroundings is not about the user's data.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    try {
        const QApplication application(argc, argv);
        run(QApplication::arguments());
        return static_cast<int>(ovdb::ExitCode::Done);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return static_cast<int>(ovdb::ExitCode::Failed);
    }
}
