// Chooses a database to open, and whether to open it for reading only.
#ifndef OVEDIT_OPEN_DIALOG_H
#define OVEDIT_OPEN_DIALOG_H

#include <QDialog>
#include <QString>

class Settings;
class QLineEdit;
class QPushButton;
class QRadioButton;

class OpenDialog : public QDialog
{
    Q_OBJECT

public:
    OpenDialog(Settings &settings, QWidget *parent);

    QString database() const;
    QString mode() const; // "r" or "r+"

private:
    void browse();
    void updateButtons();

    Settings &m_settings;
    QLineEdit *m_path;
    QRadioButton *m_readOnly;
    QRadioButton *m_readWrite;
    QPushButton *m_open;
};

#endif
