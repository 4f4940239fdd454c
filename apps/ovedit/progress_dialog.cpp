#include "progress_dialog.h"

#include <cmath>

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int barSteps = 1000;
constexpr int narrowest = 420;          // pixels
constexpr qint64 guessAfter = 2000;     // milliseconds: before that a guess would jump about
constexpr double guessFrom = 0.02;      // of the operation
constexpr double minuteBegins = 55;     // seconds that are told as a minute
constexpr double hourBegins = 55 * 60.; // seconds that are told as an hour

// Steps in which people count: every second up to ten, then every five.
int roundedSeconds(double seconds)
{
    const double step = seconds <= 10 ? 1 : 5;
    return static_cast<int>(std::ceil(seconds / step) * step);
}

} // namespace

QString timeLeft(double fraction, qint64 elapsedMilliseconds)
{
    if (elapsedMilliseconds < guessAfter || fraction < guessFrom) {
        return {};
    }
    const double seconds = elapsedMilliseconds / 1000.0 * (1 - fraction) / fraction;
    if (seconds <= 3) {
        return ProgressDialog::tr("A few seconds left");
    }
    if (seconds < minuteBegins) {
        return ProgressDialog::tr("About %1 seconds left").arg(roundedSeconds(seconds));
    }
    if (seconds < hourBegins) {
        const int minutes = qMax(1, qRound(seconds / 60));
        return minutes == 1 ? ProgressDialog::tr("About a minute left")
                            : ProgressDialog::tr("About %1 minutes left").arg(minutes);
    }
    const int hours = qMax(1, qRound(seconds / 3600));
    return hours == 1 ? ProgressDialog::tr("About an hour left")
                      : ProgressDialog::tr("About %1 hours left").arg(hours);
}

ProgressDialog::ProgressDialog(const QString &what, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_what(new QLabel(what)), m_fraction(new QProgressBar), m_timeLeft(new QLabel)
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
    m_fraction->setValue(static_cast<int>(fraction * barSteps));
    m_timeLeft->setText(timeLeft(fraction, elapsedMilliseconds));
}

void ProgressDialog::reject()
{
    m_cancelled = true;
}
