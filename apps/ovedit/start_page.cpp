#include "start_page.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "recent_list.h"
#include "settings.h"

namespace {

constexpr int iconSize = 96; // pixels
constexpr int textWidth = 400;
constexpr int pageWidth = iconSize + textWidth + 50;

QLabel *heading(const QString &text)
{
    auto *label = new QLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 1.8);
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

StartPage::StartPage(const Settings &settings)
{
    auto *icon = new QLabel;
    icon->setPixmap(QApplication::windowIcon().pixmap(iconSize));
    auto *what =
        new QLabel(tr("Open a database to see every table of it in a tab. A database is the file that "
                      "describes it, or the table files that share its name."));
    what->setWordWrap(true);
    what->setFixedSize(textWidth, what->heightForWidth(textWidth));
    auto *open = new QPushButton(tr("&Open Database..."));
    open->setObjectName("startOpen");
    open->setDefault(true);
    connect(open, &QPushButton::clicked, this, &StartPage::openRequested);

    auto *middle = new QWidget;
    middle->setFixedWidth(pageWidth);
    auto *grid = new QGridLayout(middle);
    grid->setColumnStretch(1, 1);
    grid->setHorizontalSpacing(24);
    grid->setVerticalSpacing(10);
    grid->addWidget(icon, 0, 0, 3, 1, Qt::AlignTop);
    grid->addWidget(heading("ovedit"), 0, 1);
    grid->addWidget(what, 1, 1);
    grid->addWidget(open, 2, 1, Qt::AlignLeft);
    if (!settings.recentDatabases().isEmpty()) {
        grid->setRowMinimumHeight(3, 16);
        grid->addWidget(new QLabel(tr("Opened recently:")), 4, 0, 1, 2);
        grid->addWidget(recentList(settings), 5, 0, 1, 2);
    }

    auto *page = new QVBoxLayout(this);
    page->addStretch(1);
    page->addWidget(middle, 0, Qt::AlignHCenter);
    page->addStretch(2);
    open->setFocus();
}

QListWidget *StartPage::recentList(const Settings &settings)
{
    auto *list = makeRecentList(settings.recentDatabases());
    list->setObjectName("startRecent");
    connect(list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { emit databaseChosen(pathOf(*item)); });
    return list;
}
