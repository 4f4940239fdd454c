// A minimal program around the widget library: shows a database, prints its tabs, and ends.
#include <QApplication>
#include <QTabWidget>
#include <cstdio>
#include <memory>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <ovconfig.h>
#include <qdbptr.h>
#include <qlistchooserdialog.h>
#include <qlistitemchooserdialog.h>
#include <qovconnection.h>
#include <qovresponse.h>
#include <qovserver.h>
#include <qovutil.h>
#include <qsaveasdialog.h>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: host DATABASE\n");
        return 2;
    }
    OvConfig config;
    const std::unique_ptr<OrvaneDatabaseModel> model(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, QString::fromLocal8Bit(argv[1]), "r"));
    if (!model->isOpen())
        return 1;
    OrvaneDatabaseView view(config);
    view.setModel(model.get());
    view.show();
    QApplication::processEvents();
    for (QTabWidget *tabs : view.findChildren<QTabWidget *>())
        for (int tab = 0; tab < tabs->count(); ++tab)
            std::puts(tabs->tabText(tab).toLocal8Bit().constData());
    return 0;
}
