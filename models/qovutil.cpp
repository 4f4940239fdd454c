#include "qovutil.h"

#include <QMessageBox>

#include "keep.h"
#include "tooltip_rows.h"
#include <qdbptr.h>

QString qovutil_getToolTipString(QDbptr *dbptr, OvConfig *config)
{
    switch (dbptr->getDbptrType()) {
    case DbptrDatabase:
        return tooltip::ofDatabase(*dbptr);
    case DbptrTable:
        return tooltip::ofTable(*dbptr);
    case DbptrField:
        return tooltip::ofField(*dbptr);
    case DbptrRecord:
        return tooltip::ofRecord(*dbptr, config);
    default:
        return {};
    }
}

QString qovutil_stringList2QString(QList<QString> list)
{
    return "<i>" + QStringList(list).join(QStringLiteral("</i>, <i>")) + "</i>";
}

int qovutil_showError(QString text, QWidget *parent)
{
    auto *box = new QMessageBox(parent);
    if (!parent)
        keepForever(box);
    box->setTextFormat(Qt::PlainText); // an expression may hold what looks like a tag
    box->setText(text);
    return box->exec();
}
