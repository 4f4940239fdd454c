// A strip above the tables that says how many problems there are, and goes away when there are none; and for
// a while what else is to be told without standing in the way.
#ifndef OVEDIT_NOTICE_BAR_H
#define OVEDIT_NOTICE_BAR_H

#include <QFrame>
#include <QTimer>

class QLabel;
class QPushButton;

class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    static constexpr int messageStays = 8000; // milliseconds

    NoticeBar();

    // Shows the strip when there are more problems than when it was last dismissed.
    void setProblems(int count);

    // Shows a sentence for a while; then what there was before comes back.
    void showMessage(const QString &text);

signals:
    void detailsRequested();

private:
    void dismiss();
    void showProblems();

    QLabel *m_sign;
    QLabel *m_text;
    QPushButton *m_details;
    QTimer m_message; // runs while one is shown
    int m_count = 0;
    int m_dismissed = 0;
};

#endif
