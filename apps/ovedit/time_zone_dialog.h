// Chooses one of the system's time zones.
#ifndef OVEDIT_TIME_ZONE_DIALOG_H
#define OVEDIT_TIME_ZONE_DIALOG_H

#include <QDialog>
#include <QString>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;

class TimeZoneDialog : public QDialog
{
    Q_OBJECT

public:
    // Begins on `zone`, or on UTC when the system doesn't know it.
    TimeZoneDialog(const QString &zone, QWidget *parent);

    // The zone chosen, by its name in the system's zone data.
    QString zone() const;

private:
    void fill();
    void filter(const QString &text);

    QLineEdit *m_filter;
    QListWidget *m_zones;
    QPushButton *m_accept;
};

#endif
