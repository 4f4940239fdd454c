// The schema's own documentation: a tree of its tables and fields, and what the schema says about the one
// chosen.
#ifndef OVEDIT_SCHEMA_WINDOW_H
#define OVEDIT_SCHEMA_WINDOW_H

#include <memory>

#include <QDialog>

class OrvaneDatabaseModel;
class QDbptr;
class QLineEdit;
class QTextBrowser;
class QTreeWidget;
class QTreeWidgetItem;

class SchemaWindow : public QDialog
{
    Q_OBJECT

public:
    // The model must outlive the window.
    SchemaWindow(OrvaneDatabaseModel &model, QWidget *parent);

    // Stands on a table; an unknown name changes nothing.
    void showTable(const QString &name);

private:
    void fill();
    void addTable(QTreeWidgetItem &database, const QString &name);
    void describe(QTreeWidgetItem *item);
    void filter(const QString &text);
    QString description(const QTreeWidgetItem &item) const;

    OrvaneDatabaseModel &m_model;
    QLineEdit *m_filter;
    QTreeWidget *m_tree;
    QTextBrowser *m_text;
};

#endif
