#include "page_switch.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QToolButton>

#include <algorithm>

PageSwitch::PageSwitch(const QList<QAction *> &pages) : m_pages(pages)
{
    setObjectName("pageSwitch");
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 8, 0);
    row->setSpacing(0);
    for (QAction *page : pages) {
        auto *button = new QToolButton;
        button->setDefaultAction(page);
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setFocusPolicy(Qt::NoFocus); // keys go on to the table
        row->addWidget(button);
        connect(page, &QAction::changed, this, &PageSwitch::refresh);
    }
    refresh();
}

void PageSwitch::refresh()
{
    const auto there = std::count_if(m_pages.cbegin(), m_pages.cend(),
                                     [](const QAction *page) { return page->isEnabled(); });
    setVisible(there > 1);
}

MenuBarCorner::MenuBarCorner(QMenuBar &bar, const QList<QWidget *> &widgets) : m_bar(bar)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (QWidget *widget : widgets) {
        row->addWidget(widget);
    }
    bar.setCornerWidget(this);
}

bool MenuBarCorner::event(QEvent *event)
{
    const bool known = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        m_bar.setCornerWidget(this); // places it anew
    }
    return known;
}
