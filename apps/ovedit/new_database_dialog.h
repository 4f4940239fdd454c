// Makes a new database: where it is, which schema it has, with a first look at the schema's tables.
#ifndef OVEDIT_NEW_DATABASE_DIALOG_H
#define OVEDIT_NEW_DATABASE_DIALOG_H

#include <QDialog>
#include <QString>

class Settings;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

class NewDatabaseDialog : public QDialog
{
    Q_OBJECT

public:
    NewDatabaseDialog(Settings &settings, QWidget *parent);

    // The descriptor's path.
    QString database() const;

    // Makes the database. A failure is told, and the dialog stays.
    void accept() override;

private:
    QString folder() const;
    QString schema() const;
    void browseFolder();
    void browseSchema();
    void fillSchemas();
    void showSchema();
    void showHindrance();
    QString hindrance() const;

    Settings &m_settings;
    QLineEdit *m_name;
    QLineEdit *m_folder;
    QComboBox *m_schema;
    QLabel *m_about;
    QTreeWidget *m_tables;
    QLineEdit *m_description;
    QLabel *m_hindrance;
    QPushButton *m_create;
    QString m_listedFolder; // whose schemas are in the list
    bool m_schemaIsGood = false;
};

#endif
