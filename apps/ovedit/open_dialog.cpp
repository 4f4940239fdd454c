#include "open_dialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "recent_list.h"
#include "settings.h"

OpenDialog::OpenDialog(Settings &settings, QWidget *parent)
    : QDialog(parent), m_settings(settings), m_path(new QLineEdit),
      m_readOnly(new QRadioButton(tr("&Read only"))), m_readWrite(new QRadioButton(tr("Read and &write")))
{
    setWindowTitle(tr("Open Database"));
    m_path->setObjectName("openPath");
    m_path->setPlaceholderText(tr("Path of a database, or of one of its tables"));
    m_path->setClearButtonEnabled(true);
    m_path->setMinimumWidth(420);
    auto *pathLabel = new QLabel(tr("&Database:"));
    pathLabel->setBuddy(m_path);
    auto *browseButton = new QPushButton(tr("&Browse..."));
    connect(browseButton, &QPushButton::clicked, this, &OpenDialog::browse);
    m_readOnly->setChecked(true);
    auto *modes = new QHBoxLayout;
    modes->addWidget(m_readOnly);
    modes->addWidget(m_readWrite);
    modes->addStretch(1);

    QListWidget *recent = makeRecentList(settings.recentDatabases());
    recent->setObjectName("openRecent");
    connect(recent, &QListWidget::currentItemChanged, this,
            [this](QListWidgetItem *item) { m_path->setText(item == nullptr ? QString() : pathOf(*item)); });
    connect(recent, &QListWidget::itemActivated, this, [this](QListWidgetItem *item) {
        m_path->setText(pathOf(*item));
        accept();
    });
    auto *recentLabel = new QLabel(tr("Opened re&cently:"));
    recentLabel->setBuddy(recent);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    m_open = buttons->button(QDialogButtonBox::Open);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_path, &QLineEdit::textChanged, this, &OpenDialog::updateButtons);

    auto *grid = new QGridLayout(this);
    grid->addWidget(pathLabel, 0, 0);
    grid->addWidget(m_path, 0, 1);
    grid->addWidget(browseButton, 0, 2);
    grid->addWidget(new QLabel(tr("Open for:")), 1, 0);
    grid->addLayout(modes, 1, 1, 1, 2);
    grid->addWidget(recentLabel, 2, 0, 1, 3);
    grid->addWidget(recent, 3, 0, 1, 3);
    grid->addWidget(buttons, 4, 0, 1, 3);
    const bool none = settings.recentDatabases().isEmpty();
    recentLabel->setHidden(none);
    recent->setHidden(none);
    updateButtons();
    m_path->setFocus();
}

QString OpenDialog::database() const
{
    return m_path->text().trimmed();
}

QString OpenDialog::mode() const
{
    return m_readWrite->isChecked() ? "r+" : "r";
}

void OpenDialog::updateButtons()
{
    m_open->setEnabled(!database().isEmpty());
}

void OpenDialog::browse()
{
    const QString start = database().isEmpty() ? m_settings.lastFolder() : QFileInfo(database()).path();
    const QString chosen = QFileDialog::getOpenFileName(this, tr("Choose a Database or One of Its Tables"),
                                                        start.isEmpty() ? QDir::currentPath() : start);
    if (!chosen.isEmpty()) {
        m_settings.setLastFolder(QFileInfo(chosen).path());
        m_path->setText(QDir::toNativeSeparators(chosen));
    }
}
