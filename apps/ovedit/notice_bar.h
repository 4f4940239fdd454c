// A strip above the tables that says how many problems there are, and goes away when there are none.
#ifndef OVEDIT_NOTICE_BAR_H
#define OVEDIT_NOTICE_BAR_H

#include <QFrame>

class QLabel;

class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    NoticeBar();

    // Shows the strip when there are more problems than when it was last dismissed.
    void setProblems(int count);

signals:
    void detailsRequested();

private:
    void dismiss();

    QLabel *m_text;
    int m_count = 0;
    int m_dismissed = 0;
};

#endif
