#include "notice_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

NoticeBar::NoticeBar() : m_sign(new QLabel), m_text(new QLabel), m_details(new QPushButton(tr("&Details...")))
{
    setObjectName("noticeBar");
    setStyleSheet("#noticeBar { background: #fff3cd; border-bottom: 1px solid #d9c27a; }"
                  "#noticeBar QLabel { color: #3d3000; }");
    m_text->setObjectName("noticeText");
    m_details->setObjectName("noticeDetails");
    connect(m_details, &QPushButton::clicked, this, &NoticeBar::detailsRequested);
    auto *close = new QToolButton;
    close->setObjectName("noticeClose");
    close->setAutoRaise(true);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setToolTip(tr("Hide this notice"));
    connect(close, &QToolButton::clicked, this, &NoticeBar::dismiss);
    m_message.setSingleShot(true);
    m_message.setInterval(messageStays);
    connect(&m_message, &QTimer::timeout, this, &NoticeBar::showProblems);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(10, 4, 6, 4);
    row->addWidget(m_sign);
    row->addWidget(m_text);
    row->addStretch(1);
    row->addWidget(m_details);
    row->addWidget(close);
    hide();
}

void NoticeBar::setProblems(int count)
{
    m_count = count;
    m_dismissed = qMin(m_dismissed, count);
    if (!m_message.isActive()) {
        showProblems();
    }
}

void NoticeBar::showProblems()
{
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    m_sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    m_text->setText(m_count == 1
                        ? tr("1 problem was found. Everything else can be used.")
                        : tr("%n problems were found. Everything else can be used.", nullptr, m_count));
    m_details->show();
    setVisible(m_count > m_dismissed);
}

void NoticeBar::showMessage(const QString &text)
{
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    m_sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(size));
    m_text->setText(text);
    m_details->hide();
    m_message.start();
    show();
}

void NoticeBar::dismiss()
{
    if (m_message.isActive()) {
        m_message.stop();
        showProblems();
        return;
    }
    m_dismissed = m_count;
    hide();
}
