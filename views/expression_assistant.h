// Helps to write an expression in a dialog that asks for one.
#ifndef OVQT_VIEWS_EXPRESSION_ASSISTANT_H
#define OVQT_VIEWS_EXPRESSION_ASSISTANT_H

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <orvane/db.h>

#include "expression_language.h"
#include "name_popup.h"

class OvConfig;
class QInputDialog;
class QLabel;
class QLineEdit;

// Lives as a child of the dialog, which stays what it is: a text-mode QInputDialog.
//
// - Names of fields and functions that begin as the word at the cursor are proposed: Tab takes the first one
// or
//   the one selected with Up and Down, Enter the one selected; Ctrl+Space proposes everything.
// - What the database library would refuse is underlined, and a line below the edit tells why. It comes a
//   moment after the last key; where the word that is being typed is to blame, a longer moment.
// - Inside the brackets of a function that line tells what it takes.
// - Up and Down bring back what was asked before; the arrow at the end of the edit, or Alt+Down, lists it.
class ExpressionAssistant : public QObject
{
    Q_OBJECT

public:
    // For a subset of `table`, or where `other` is valid a theta join with it. `config` keeps the history and
    // must outlive the dialog.
    ExpressionAssistant(QInputDialog &dialog, OvConfig &config, const Dbptr &table,
                        const Dbptr &other = dbinvalid());

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addLine();
    void addHistoryButton();
    void finished(int result);

    void edited();
    void cursorMoved();
    bool keyPressed(int key, Qt::KeyboardModifiers modifiers);
    bool keyInPopup(int key);

    void propose(bool everything);
    QList<Proposal> proposalsFor(const QString &typed) const;
    void proposeHistory();
    void take(int row);
    void stepHistory(int step);

    void check();
    void mark(const ExpressionFault &fault);
    void tell(const QString &text, bool isFault);
    void tellSignature();

    QInputDialog &m_dialog;
    OvConfig &m_config;
    QLineEdit *m_edit = nullptr;
    QLabel *m_line = nullptr;
    NamePopup *m_popup = nullptr;
    Dbptr m_table;
    Dbptr m_other;
    QList<Proposal> m_fields;
    bool m_hasSeveralTables = false;
    QStringList m_history;
    int m_historyAt = -1; // -1: what the user types himself
    QString m_draft;      // that, while the history is looked at
    QTimer m_check;
    QElapsedTimer m_sinceEdit;
    int m_proposedAt = -1; // cursor
    bool m_showsHistory = false;
    bool m_taking = false;
    bool m_marked = false;
};

#endif
