// A program with settings of its own and a small database, for tests.
#ifndef ORVANE_TESTS_OVEDIT_RUNNING_PROGRAM_H
#define ORVANE_TESTS_OVEDIT_RUNNING_PROGRAM_H

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>

#include "application.h"
#include "main_window.h"
#include "support/message_boxes.h"
#include "support/temporary_database.h"

class RunningProgram : public testing::Test
{
protected:
    RunningProgram()
    {
        files.addTable("site", {{"AAK", "2008001"}, {"KONO", "2001001"}});
        files.addTable("arrival", {{"AAK", "1517875201.50000", "1"}});
        files.addTable("event", {});
    }

    QString path(const QString &table = QString()) const
    {
        const QString database = QString::fromStdString(files.path());
        return table.isEmpty() ? database : database + "." + table;
    }

    MainWindow &opened(const QString &table = QString())
    {
        MainWindow *window = program.openDatabase(path(table), "r", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened: " +
                                     boxes.texts().join("; ").toStdString());
        }
        return *window;
    }

    static QAction &action(MainWindow &window, const char *name)
    {
        auto *found = window.findChild<QAction *>(name);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no action ") + name);
        }
        return *found;
    }

    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    MessageBoxes boxes;
    TemporaryDatabase files;
    QTemporaryDir folder;
    Settings settings{folder.filePath("ovedit.conf")};
    Application program{settings};
};

#endif
