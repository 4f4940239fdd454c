#include "expression_assistant.h"

#include <QAction>
#include <QBoxLayout>
#include <QCoreApplication>
#include <QInputDialog>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QScopedValueRollback>
#include <QSet>
#include <QTextCharFormat>

#include <orvane/tr.h>

#include <ovconfig.h>

#include "expression_cursor.h"
#include "expression_history.h"

namespace {

constexpr int soon = 250;      // milliseconds after the last key
constexpr int patience = 1200; // the same, where the word at the cursor may not be finished
constexpr int pageOfRows = 8;

// A red that is read on the palette's background.
QColor faultColour(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128 ? QColor(0xff, 0x8a, 0x80)
                                                             : QColor(0xb0, 0x00, 0x20);
}

// Fields by their bare names where these tell them apart, else with their tables.
QList<Proposal> fieldProposals(const Dbptr &table, const Dbptr &other)
{
    const QList<ExpressionField> fields = expressionFields(table) + expressionFields(other);
    QHash<QString, int> fieldsOfName;
    QSet<QString> tables;
    for (const ExpressionField &field : fields) {
        ++fieldsOfName[field.name];
        tables.insert(field.table);
    }
    QList<Proposal> proposals;
    for (const ExpressionField &field : fields) {
        const QString full = field.table + "." + field.name;
        const bool shared = fieldsOfName[field.name] > 1;
        const QString remark =
            tables.size() > 1 && !shared ? field.table + ": " + field.description : field.description;
        proposals.append({shared ? full : field.name, remark, full, QString()});
    }
    return proposals;
}

// What is put in for a name that the user began with or without a table.
QString fieldText(const Proposal &field, const QString &typed)
{
    return typed.contains('.') ? field.insert : field.text;
}

// "unknown field `dept`" as people write it.
QString asSentence(QString reason)
{
    reason.replace('`', '\'');
    return reason.left(1).toUpper() + reason.mid(1);
}

// As of a combo box; the style's own arrows are large and coloured in some themes.
QIcon downArrow(const QWidget &widget)
{
    constexpr int side = 16;
    const qreal scale = widget.devicePixelRatioF();
    QPixmap pixmap(QSize(side, side) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(widget.palette().color(QPalette::Text));
    painter.drawPolygon(QPolygonF({{4.0, 6.0}, {12.0, 6.0}, {8.0, 10.5}}));
    return pixmap;
}

bool isCall(const QString &insert)
{
    return insert.endsWith('(');
}

} // namespace

ExpressionAssistant::ExpressionAssistant(QInputDialog &dialog, OvConfig &config, const Dbptr &table,
                                         const Dbptr &other)
    : QObject(&dialog), m_dialog(dialog), m_config(config), m_table(table), m_other(other),
      m_fields(fieldProposals(table, other)), m_history(expressionHistory(config))
{
    const auto tableOf = [](const Proposal &field) { return field.insert.section('.', 0, 0); };
    m_hasSeveralTables = std::any_of(m_fields.cbegin(), m_fields.cend(), [&](const Proposal &field) {
        return tableOf(field) != tableOf(m_fields.first());
    });
    dialog.sizeHint(); // makes the edit and the layout, which the dialog puts off
    m_edit = dialog.findChild<QLineEdit *>();
    if (m_edit == nullptr) {
        return;
    }
    m_popup = new NamePopup(*m_edit);
    connect(m_popup, &NamePopup::chosen, this, &ExpressionAssistant::take);
    connect(m_popup, &NamePopup::closed, &m_check, [this] { m_check.start(soon); });
    m_edit->installEventFilter(this);
    connect(m_edit, &QLineEdit::textEdited, this, &ExpressionAssistant::edited);
    connect(m_edit, &QLineEdit::cursorPositionChanged, this, &ExpressionAssistant::cursorMoved);
    connect(&dialog, &QDialog::finished, this, &ExpressionAssistant::finished);
    m_check.setSingleShot(true);
    connect(&m_check, &QTimer::timeout, this, &ExpressionAssistant::check);
    addLine();
    addHistoryButton();
}

// Hidden until there is something to say; from then on its room stays, so that nothing jumps.
void ExpressionAssistant::addLine()
{
    m_line = new QLabel;
    m_line->setObjectName("expressionLine");
    m_line->setTextFormat(Qt::PlainText);
    m_line->setWordWrap(true);
    m_line->hide();
    if (auto *column = qobject_cast<QBoxLayout *>(m_dialog.layout())) {
        column->insertWidget(column->indexOf(m_edit) + 1, m_line);
    } else {
        m_line->setParent(&m_dialog);
    }
}

void ExpressionAssistant::addHistoryButton()
{
    if (m_history.isEmpty()) {
        return;
    }
    QAction *history = m_edit->addAction(downArrow(*m_edit), QLineEdit::TrailingPosition);
    history->setObjectName("expressionHistory");
    history->setToolTip(OvTranslation::tr("Expressions used before (Up, Down)"));
    connect(history, &QAction::triggered, this, &ExpressionAssistant::proposeHistory);
}

void ExpressionAssistant::finished(int result)
{
    m_check.stop();
    m_popup->hide();
    const QString expression = m_edit->text().trimmed();
    if (result == QDialog::Accepted && !expression.isEmpty()) {
        addToExpressionHistory(m_config, expression);
    }
}

// ---- What the user does
// ------------------------------------------------------------------------------------------

bool ExpressionAssistant::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (keyPressed(key->key(), key->modifiers())) {
            return true;
        }
        break;
    }
    case QEvent::FocusOut:
    case QEvent::Hide:
        m_popup->hide();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool ExpressionAssistant::keyPressed(int key, Qt::KeyboardModifiers modifiers)
{
    if (key == Qt::Key_Space && modifiers == Qt::ControlModifier) {
        propose(true);
        return true;
    }
    if (key == Qt::Key_Down && modifiers == Qt::AltModifier) {
        proposeHistory();
        return true;
    }
    if (modifiers & ~Qt::KeypadModifier) {
        return false;
    }
    if (m_popup->isVisible()) {
        return keyInPopup(key);
    }
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
        stepHistory(key == Qt::Key_Up ? 1 : -1);
        return true;
    }
    return false;
}

bool ExpressionAssistant::keyInPopup(int key)
{
    switch (key) {
    case Qt::Key_Down:
        m_popup->move(1);
        return true;
    case Qt::Key_Up:
        m_popup->move(-1);
        return true;
    case Qt::Key_PageDown:
        m_popup->move(pageOfRows);
        return true;
    case Qt::Key_PageUp:
        m_popup->move(-pageOfRows);
        return true;
    case Qt::Key_Escape:
        m_popup->hide();
        return true;
    case Qt::Key_Tab:
        take(qMax(0, m_popup->selectedRow()));
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_popup->selectedRow() >= 0) {
            take(m_popup->selectedRow());
            return true;
        }
        m_popup->hide(); // the key is for the dialog
        return false;
    default:
        return false;
    }
}

void ExpressionAssistant::edited()
{
    m_historyAt = -1;
    mark({});
    m_sinceEdit.start();
    m_check.start(soon);
    if (!m_taking) {
        propose(false);
    }
    tellSignature();
}

void ExpressionAssistant::cursorMoved()
{
    if (m_edit->cursorPosition() != m_proposedAt) {
        m_popup->hide();
    }
    if (!m_marked) {
        tellSignature();
    }
}

// ---- Proposals
// ---------------------------------------------------------------------------------------------------

void ExpressionAssistant::propose(bool everything)
{
    const ExpressionCursor cursor = expressionCursor(m_edit->text(), m_edit->cursorPosition());
    m_proposedAt = m_edit->cursorPosition();
    m_showsHistory = false;
    QList<Proposal> proposals;
    if (!cursor.inText && (everything || !cursor.typed.isEmpty())) {
        proposals = proposalsFor(cursor.typed);
        if (proposals.size() == 1 && proposals.first().insert == cursor.typed) {
            proposals.clear(); // it is all there
        }
    }
    const int left = m_edit->inputMethodQuery(Qt::ImCursorRectangle).toRect().x() -
                     m_edit->fontMetrics().horizontalAdvance(cursor.typed);
    m_popup->propose(proposals, left);
}

QList<Proposal> ExpressionAssistant::proposalsFor(const QString &typed) const
{
    QList<Proposal> proposals, ofTables;
    for (const Proposal &field : m_fields) {
        const QString text = fieldText(field, typed);
        const QString bare = field.insert.section('.', -1);
        if (text.startsWith(typed, Qt::CaseInsensitive) || bare.startsWith(typed, Qt::CaseInsensitive)) {
            proposals.append({text, field.remark, text, QString()});
        } else if (m_hasSeveralTables && field.insert.startsWith(typed, Qt::CaseInsensitive)) {
            ofTables.append({field.insert, field.remark, field.insert, QString()});
        }
    }
    proposals += ofTables;
    for (const ExpressionFunction &function : expressionFunctions()) {
        if (function.name.startsWith(typed, Qt::CaseInsensitive)) {
            const bool empty = function.signature.startsWith(function.name + "()");
            proposals.append({function.signature, function.help.section(". ", 0, 0),
                              function.name + (empty ? "()" : "("), function.help});
        }
    }
    return proposals;
}

void ExpressionAssistant::proposeHistory()
{
    QList<Proposal> proposals;
    for (const QString &expression : qAsConst(m_history)) {
        proposals.append({expression, QString(), expression, expression});
    }
    m_proposedAt = m_edit->cursorPosition();
    m_showsHistory = true;
    m_edit->setFocus();
    m_popup->propose(proposals, 0);
}

void ExpressionAssistant::take(int row)
{
    const QString insert = m_popup->proposal(row).insert;
    m_popup->hide();
    const QScopedValueRollback<bool> taking(m_taking, true);
    if (m_showsHistory) {
        m_edit->selectAll();
        m_edit->insert(insert);
        return;
    }
    const QString text = m_edit->text();
    const ExpressionCursor cursor = expressionCursor(text, m_edit->cursorPosition());
    const bool opened = isCall(insert) && cursor.wordEnd < text.size() && text[cursor.wordEnd] == '(';
    m_edit->setSelection(cursor.wordStart, cursor.wordEnd - cursor.wordStart + (opened ? 1 : 0));
    m_edit->insert(insert);
}

void ExpressionAssistant::stepHistory(int step)
{
    const int at = qBound(-1, m_historyAt + step, m_history.size() - 1);
    if (at == m_historyAt) {
        return;
    }
    if (m_historyAt < 0) {
        m_draft = m_edit->text();
    }
    m_edit->setText(at < 0 ? m_draft : m_history[at]); // doesn't count as edited by the user
    m_historyAt = at;
    mark({});
    m_check.start(soon);
}

// ---- What is wrong
// -----------------------------------------------------------------------------------------------

void ExpressionAssistant::check()
{
    const QString text = m_edit->text();
    const ExpressionFault fault =
        text.trimmed().isEmpty() ? ExpressionFault() : expressionFault(m_table, m_other, text);
    if (fault.reason.isEmpty()) {
        mark({});
        tellSignature();
        return;
    }
    const int position = m_edit->cursorPosition();
    const ExpressionCursor cursor = expressionCursor(text, position);
    const bool atCursor = fault.start <= position && position <= fault.start + fault.length;
    const bool atEnd = fault.start >= text.trimmed().size();
    if (cursor.inText || atCursor || atEnd) {
        if (m_popup->isVisible()) {
            return; // comes back when the proposals are gone
        }
        const qint64 since = m_sinceEdit.isValid() ? m_sinceEdit.elapsed() : patience;
        if (since < patience) {
            m_check.start(static_cast<int>(patience - since));
            return;
        }
    }
    if (!atEnd) {
        mark(fault);
        tell(asSentence(fault.reason), true);
    } else if (cursor.call.isEmpty()) { // not wrong so far; in a call its signature says more
        tell(asSentence(fault.reason), false);
    }
}

// The edit underlines by itself only what an input method marks, and follows its scrolling then.
void ExpressionAssistant::mark(const ExpressionFault &fault)
{
    const bool wanted = !fault.reason.isEmpty();
    if (!wanted && !m_marked) {
        return;
    }
    m_marked = wanted;
    QList<QInputMethodEvent::Attribute> attributes;
    if (wanted) {
        const int size = m_edit->text().size();
        const int start =
            qMax(0, qMin(fault.start, size - 1)); // where the end is to blame: the last character
        const int length = qMax(1, qMin(fault.length, size - start));
        QTextCharFormat wave;
        wave.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        wave.setUnderlineColor(Qt::red);
        attributes.append({QInputMethodEvent::TextFormat, start - m_edit->cursorPosition(), length, wave});
    }
    QInputMethodEvent event(QString(), attributes);
    QCoreApplication::sendEvent(m_edit, &event);
}

void ExpressionAssistant::tell(const QString &text, bool isFault)
{
    if (text.isEmpty() && m_line->text().isEmpty()) {
        return;
    }
    QPalette palette = m_dialog.palette();
    if (isFault) {
        palette.setColor(QPalette::WindowText, faultColour(palette));
    }
    m_line->setPalette(palette);
    m_line->setText(text);
    // A layout gives a wrapped label one line's room where nobody asks for more; it grows and never shrinks.
    m_line->setMinimumHeight(qMax(m_line->minimumHeight(), m_line->heightForWidth(m_edit->width())));
    m_line->show();
}

void ExpressionAssistant::tellSignature()
{
    const QString call = expressionCursor(m_edit->text(), m_edit->cursorPosition()).call;
    QStringList signatures;
    for (const ExpressionFunction &function : expressionFunctions()) {
        if (!call.isEmpty() && function.name == call) {
            signatures.append(function.signature);
        }
    }
    tell(signatures.join("\n"), false);
}
