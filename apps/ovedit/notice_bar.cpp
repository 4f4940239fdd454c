#include "notice_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

NoticeBar::NoticeBar() : m_text(new QLabel)
{
    setObjectName("noticeBar");
    setStyleSheet("#noticeBar { background: #fff3cd; border-bottom: 1px solid #d9c27a; }"
                  "#noticeBar QLabel { color: #3d3000; }");
    auto *sign = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    auto *details = new QPushButton(tr("&Details..."));
    details->setObjectName("noticeDetails");
    connect(details, &QPushButton::clicked, this, &NoticeBar::detailsRequested);
    auto *close = new QToolButton;
    close->setObjectName("noticeClose");
    close->setAutoRaise(true);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setToolTip(tr("Hide this notice"));
    connect(close, &QToolButton::clicked, this, &NoticeBar::dismiss);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(10, 4, 6, 4);
    row->addWidget(sign);
    row->addWidget(m_text);
    row->addStretch(1);
    row->addWidget(details);
    row->addWidget(close);
    hide();
}

void NoticeBar::setProblems(int count)
{
    m_count = count;
    m_dismissed = qMin(m_dismissed, count);
    m_text->setText(count == 1 ? tr("1 problem was found. Everything else can be used.")
                               : tr("%1 problems were found. Everything else can be used.").arg(count));
    setVisible(count > m_dismissed);
}

void NoticeBar::dismiss()
{
    m_dismissed = m_count;
    hide();
}
