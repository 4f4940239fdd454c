// The fixture of the database window's tests.
#ifndef ORVANE_TESTS_VIEWS_DATABASE_WINDOW_H
#define ORVANE_TESTS_VIEWS_DATABASE_WINDOW_H

#include <QLabel>
#include <QStackedWidget>
#include <QStringList>
#include <QTabWidget>

#include <gtest/gtest.h>

#include <orvanedatabaseview.h>

#include "shown_database.h"

class DatabaseWindow : public testing::Test
{
protected:
    QStackedWidget &stack() { return *window.findChild<QStackedWidget *>("stack"); }
    QTabWidget &tables() { return *window.findChild<QTabWidget *>("tablesTabs"); }
    QTabWidget &views() { return *window.findChild<QTabWidget *>("viewsTabs"); }
    QTabWidget &products() { return *window.findChild<QTabWidget *>("productsTabs"); }
    QLabel &label(const char *name) { return *window.findChild<QLabel *>(name); }
    QString rowCount() { return label("rowCountLabel").text(); }
    QString modification() { return label("modificationLabel").text(); }
    QString update() { return label("updateLabel").text(); }

    static QStringList tabTexts(const QTabWidget &tabs)
    {
        QStringList texts;
        for (int tab = 0; tab < tabs.count(); ++tab) {
            texts.append(tabs.tabText(tab));
        }
        return texts;
    }

    ShownDatabase database;
    OrvaneDatabaseView window{database.config};
};

#endif
