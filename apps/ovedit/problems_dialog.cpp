#include "problems_dialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "problem_log.h"

ProblemsDialog::ProblemsDialog(ProblemLog &log, const QStringList &problems, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Problems"));
    resize(760, 320);
    auto *list = new QListWidget;
    list->setObjectName("problemList");
    list->setWordWrap(true);
    list->setAlternatingRowColors(true);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->addItems(problems);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *copy = buttons->addButton(tr("C&opy"), QDialogButtonBox::ActionRole);
    QPushButton *clear = buttons->addButton(tr("C&lear"), QDialogButtonBox::ResetRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(copy, &QPushButton::clicked, this,
            [problems] { QGuiApplication::clipboard()->setText(problems.join('\n')); });
    connect(clear, &QPushButton::clicked, this, [this, problems, &log] {
        log.remove(problems);
        accept();
    });

    auto *column = new QVBoxLayout(this);
    column->addWidget(new QLabel(tr("What could not be read, and why:")));
    column->addWidget(list);
    column->addWidget(buttons);
}
