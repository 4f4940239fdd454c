#include "progress_dialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int barSteps = 1000;
constexpr int narrowest = 420; // pixels

} // namespace

ProgressDialog::ProgressDialog(const QString &what, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_running(what), m_what(new QLabel(what)), m_fraction(new QProgressBar), m_timeLeft(new QLabel)
{
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(tr("Working"));
    setMinimumWidth(narrowest);
    m_what->setObjectName("what");
    m_what->setWordWrap(true);
    m_fraction->setObjectName("fraction");
    m_fraction->setRange(0, barSteps);
    m_timeLeft->setObjectName("timeLeft");

    auto *cancel = new QPushButton(tr("Cancel"));
    cancel->setObjectName("cancel");
    // Enter and the space bar may have been typed ahead, for whatever was shown before.
    cancel->setAutoDefault(false);
    cancel->setFocusPolicy(Qt::TabFocus);
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
    connect(cancel, &QPushButton::clicked, this, &ProgressDialog::reject);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 14, 16, 14);
    column->setSpacing(10);
    column->addWidget(m_what);
    column->addWidget(m_fraction);
    auto *row = new QHBoxLayout;
    row->addWidget(m_timeLeft, 1);
    row->addWidget(cancel);
    column->addLayout(row);
}

void ProgressDialog::tell(double fraction, qint64 elapsedMilliseconds)
{
    if (!m_begin.has_value()) {
        m_begin = qMin(fraction, 0.999);
    }
    m_fraction->setValue(static_cast<int>(qMax(0.0, fraction - *m_begin) / (1 - *m_begin) * barSteps));
    m_left.note(fraction, elapsedMilliseconds);
    m_timeLeft->setText(m_left.text());
}

void ProgressDialog::tellWaiting(const QString &sentence)
{
    const QString wanted = sentence.isEmpty() ? m_running : m_running + "\n\n" + sentence;
    if (wanted != m_what->text()) {
        m_what->setText(wanted);
        m_fraction->setRange(0, sentence.isEmpty() ? barSteps
                                                   : 0); // the bar runs to and fro: nobody knows how long
        adjustSize();
    }
    if (!sentence.isEmpty()) {
        m_timeLeft->clear();
    }
}

void ProgressDialog::reject()
{
    m_cancelled = true;
}
