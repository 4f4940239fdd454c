#include <qfieldedit.h>

#include <QFontMetrics>
#include <QGridLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QToolTip>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <ovconfig.h>

#include "slot_guard.h"

namespace {

constexpr int defaultWidth = 40; // characters

// The colour of the first role that a field has among the keys; none is an empty name.
QString roleColour(bool isPrimaryKey, bool isAlternateKey, bool isForeignKey)
{
    if (isPrimaryKey) {
        return QStringLiteral("light blue");
    }
    if (isAlternateKey) {
        return QStringLiteral("light green");
    }
    return isForeignKey ? QStringLiteral("violet") : QString();
}

void colourLabel(QLabel &label, const QString &colour)
{
    if (colour.isEmpty()) {
        return;
    }
    QPalette palette = label.palette();
    palette.setColor(QPalette::Window, QColor(colour));
    palette.setColor(QPalette::WindowText, Qt::black); // the colours are light in a dark palette, too
    label.setPalette(palette);
    label.setAutoFillBackground(true);
}

// Also where the widgets around have another: what a font doesn't say itself is inherited.
void keepFont(QLabel &label, QFont font)
{
    font.setFamily(font.family());
    if (font.pixelSize() > 0) {
        font.setPixelSize(font.pixelSize());
    } else {
        font.setPointSizeF(font.pointSizeF());
    }
    font.setWeight(font.weight());
    font.setStyle(font.style());
    label.setFont(font);
}

} // namespace

QFieldEdit::QFieldEdit(OvConfig &config, QString fieldName, bool isPrimaryKey, bool isAlternateKey,
                       bool isForeignKey, int labelWidth, OrvaneTableModel *model)
    : m_config(config), m_model(model), m_row(dbINVALID), m_fieldName(std::move(fieldName)),
      m_label(new QLabel(m_fieldName + ":", this)), m_editor(new QLineEdit(this)), m_refusal(new QLabel(this))
{
    colourLabel(*m_label, roleColour(isPrimaryKey, isAlternateKey, isForeignKey));
    m_config.configureIfUnset("fieldedit_width_chars", defaultWidth);
    connect(m_editor, SIGNAL(editingFinished()), this, SLOT(applyEdit()));

    keepFont(*m_label, QLabel().font()); // by which the width of all names was measured
    m_label->setFixedWidth(labelWidth + QFontMetrics(m_label->font()).horizontalAdvance(':'));
    m_label->setBuddy(m_editor);
    m_label->installEventFilter(this);
    m_editor->setObjectName(m_fieldName);
    m_editor->setMinimumWidth(QFontMetrics(m_editor->font()).horizontalAdvance('x') *
                              m_config["fieldedit_width_chars"].toInt());
    m_editor->setMinimumHeight(m_editor->sizeHint().height()); // with a frame and without
    m_editor->installEventFilter(this);
    setReadOnly(!m_config["allow_edits"].toBool());

    m_refusal->setObjectName("refusal");
    m_refusal->setWordWrap(true);
    m_refusal->hide();
    connect(m_refusal, &QLabel::linkActivated, this, [this] {
        m_editor->setText(m_refusedText);
        m_editor->setFocus();
    });

    auto *grid = new QGridLayout(this);
    grid->addWidget(m_label, 0, 0);
    grid->addWidget(m_editor, 0, 1);
    grid->addWidget(m_refusal, 1, 1);
    grid->setContentsMargins(5, 5, 1, 0);
    grid->setVerticalSpacing(0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    setFocusProxy(m_editor);

    connect(&m_config, SIGNAL(configurationChanged()), this, SLOT(updateCell()));
    if (model != nullptr) {
        connect(model, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)), this, SLOT(updateCell()));
    }
}

QFieldEdit::~QFieldEdit()
{
    // An editor that loses the focus because it is deleted has not been left by the user.
    m_editor->disconnect(this);
}

void QFieldEdit::setRow(int row)
{
    m_row = row;
    m_refusal->hide();
    updateCell();
}

void QFieldEdit::setReadOnly(bool readOnly)
{
    m_editor->setReadOnly(readOnly);
    m_editor->setFrame(!readOnly); // what can be typed into looks like it
    m_editor->setToolTip(readOnly ? OvTranslation::tr("Read only: edits are not allowed here") : QString());
}

void QFieldEdit::setValue(QString text)
{
    m_editor->setText(text);
    m_editor->setCursorPosition(0); // a long value is read from its beginning
}

// A brush that paints nothing leaves the editor transparent: paintEvent() gives it the usual ground.
void QFieldEdit::setValueBackgroundColor(QBrush brush)
{
    QPalette palette = m_editor->palette();
    palette.setBrush(QPalette::Base, brush);
    // The colours of nulls and blanks are light ones; text stays legible on them in a dark palette, too.
    const bool light = brush.style() != Qt::NoBrush && brush.color().lightness() > 127;
    palette.setColor(QPalette::Text, light ? QColor(Qt::black) : this->palette().color(QPalette::Text));
    m_editor->setPalette(palette);
}

void QFieldEdit::paintEvent(QPaintEvent *)
{
    if (m_editor->palette().brush(QPalette::Base).style() == Qt::NoBrush) {
        QPainter(this).fillRect(m_editor->geometry().adjusted(1, 1, -1, -1), palette().base());
    }
}

void QFieldEdit::updateCell()
{
    loggingErrors("QFieldEdit::updateCell", [this] {
        if (m_model == nullptr) {
            return;
        }
        const QModelIndex cell = m_model->indexForCell(m_row, m_fieldName);
        setValue(m_model->data(cell, Qt::DisplayRole).toString());
        setValueBackgroundColor(m_model->data(cell, Qt::BackgroundRole).value<QBrush>());
    });
}

void QFieldEdit::applyEdit()
{
    showingErrors([this] {
        if (m_model == nullptr) {
            return;
        }
        if (m_config["allow_edits"].toBool()) {
            const QModelIndex cell = m_model->indexForCell(m_row, m_fieldName);
            const QString typed = m_editor->text();
            if (typed != m_model->data(cell, Qt::DisplayRole).toString()) {
                if (m_model->setData(cell, typed, Qt::EditRole)) {
                    m_refusal->hide();
                } else {
                    showRefusal(typed, m_model->editError());
                }
            }
        }
        updateCell();
    });
}

void QFieldEdit::showRefusal(const QString &typed, const QString &reason)
{
    m_refusedText = typed;
    m_refusal->setText(
        OvTranslation::tr("'%1' was not stored: %2").arg(typed.toHtmlEscaped(), reason.toHtmlEscaped()) +
        " <a href=\"again\">" + OvTranslation::tr("Take it up again") + "</a>");
    m_refusal->show();
}

// An editor claims the keys of undo and redo also when it has nothing to undo; then they are the window's.
bool QFieldEdit::isUndoOfOthers(const QEvent &event) const
{
    const auto &key = static_cast<const QKeyEvent &>(event);
    return (key.matches(QKeySequence::Undo) && !m_editor->isUndoAvailable()) ||
           (key.matches(QKeySequence::Redo) && !m_editor->isRedoAvailable());
}

bool QFieldEdit::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_editor && event->type() == QEvent::ShortcutOverride && isUndoOfOthers(*event)) {
        event->ignore();
        return true;
    }
    if (watched != m_label || event->type() != QEvent::ToolTip) {
        return QWidget::eventFilter(watched, event);
    }
    loggingErrors("QFieldEdit::eventFilter",
                  [&] { showToolTip(static_cast<QHelpEvent *>(event)->globalPos()); });
    return true;
}

void QFieldEdit::showToolTip(const QPoint &place)
{
    if (m_model == nullptr) {
        return;
    }
    const int column = m_model->getTableFields().indexOf(m_fieldName) + 1;
    QToolTip::showText(place, m_model->headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString(),
                       m_label);
}
