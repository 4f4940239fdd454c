#include "command_line.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <orvane/language.h>

QString programVersion()
{
    return QStringLiteral(OVEDIT_VERSION);
}

QString commandLineHelp()
{
    return QStringLiteral(
        "Usage: ovedit [options] [DATABASE[.TABLE]...]\n"
        "Looks at the tables of flat-file databases, a window for each database.\n"
        "\n"
        "  DATABASE             path of a database: its descriptor, or what the names of its\n"
        "                       table files begin with; with .TABLE that table comes first;\n"
        "                       with - a saved view is read from standard input\n"
        "\n"
        "Options:\n"
        "  --config FILE        take settings from a parameter file (YAML); they win over what\n"
        "                       was chosen in the menus before\n"
        "  --language CODE      show texts in this language, such as en or de, whatever was chosen\n"
        "                       in the menus and the environment asks for\n"
        "  --read-only          open databases for reading (the default)\n"
        "  --read-write         open databases for reading and writing\n"
        "  --screenshot FILE    write a picture of the window when it is loaded, and exit; works\n"
        "                       without a display\n"
        "  -h, --help           show this text and exit\n"
        "  -v, --version        show the version and exit\n"
        "\n"
        "Exit status: 0 when all went well, 1 when one of the databases named here couldn't be\n"
        "opened, a parameter file read or a picture written, or when there is no display, 2 when\n"
        "the arguments are wrong. With windows it is given when the last of them is closed.\n");
}

CommandLine parseCommandLine(const QStringList &arguments)
{
    const QCommandLineOption config("config", QString(), "FILE");
    const QCommandLineOption language("language", QString(), "CODE");
    const QCommandLineOption screenshot("screenshot", QString(), "FILE");
    const QCommandLineOption readOnly("read-only");
    const QCommandLineOption readWrite("read-write");
    const QCommandLineOption help(QStringList{"h", "help"});
    const QCommandLineOption version(QStringList{"v", "version"});
    QCommandLineParser parser;
    parser.addOptions({config, language, screenshot, readOnly, readWrite, help, version});

    CommandLine wanted;
    const bool understood = parser.parse(arguments);
    wanted.help = parser.isSet(help);
    wanted.version = parser.isSet(version);
    wanted.databases = parser.positionalArguments();
    wanted.configFile = parser.value(config);
    wanted.screenshot = parser.value(screenshot);
    wanted.language = OvLanguage::forWish(parser.value(language));
    wanted.openMode = parser.isSet(readWrite) ? "r+" : "r";
    if (!understood) {
        wanted.error = parser.errorText();
    } else if (parser.isSet(readOnly) && parser.isSet(readWrite)) {
        wanted.error = "--read-only and --read-write exclude each other.";
    } else if (parser.isSet(config) && wanted.configFile.isEmpty()) {
        wanted.error = "--config needs the name of a file.";
    } else if (parser.isSet(language) && wanted.language.isEmpty()) {
        wanted.error = QString("--language doesn't know '%1'; it knows %2.")
                           .arg(parser.value(language), OvLanguage::known().join(", "));
    } else if (parser.isSet(screenshot) && wanted.screenshot.isEmpty()) {
        wanted.error = "--screenshot needs the name of a file.";
    } else if (parser.isSet(screenshot) && wanted.databases.size() > 1) {
        wanted.error = "--screenshot takes a picture of one window: give one database.";
    } else if (wanted.databases.contains(QString())) {
        wanted.error = "The name of a database can't be empty.";
    }
    return wanted;
}
