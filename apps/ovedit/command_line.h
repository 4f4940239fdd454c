// What the program was asked to do.
#ifndef OVEDIT_COMMAND_LINE_H
#define OVEDIT_COMMAND_LINE_H

#include <QString>
#include <QStringList>

struct CommandLine {
    QStringList databases;  // each DATABASE or DATABASE.TABLE
    QString configFile;     // empty: none
    QString screenshot;     // empty: none
    QString language;       // code of a language that there is; empty: none was asked for
    QString openMode = "r"; // "r" reads, "r+" reads and writes
    bool help = false;
    bool version = false;
    QString error; // not empty: what is wrong with the arguments
};

// Arguments as given to the program, its name first. Needs no application object.
CommandLine parseCommandLine(const QStringList &arguments);

QString commandLineHelp();
QString programVersion();

#endif
