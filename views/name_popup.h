// A list of proposals below a line edit, which keeps the keyboard.
#ifndef OVQT_VIEWS_NAME_POPUP_H
#define OVQT_VIEWS_NAME_POPUP_H

#include <QList>
#include <QString>
#include <QTreeWidget>

class QLineEdit;

struct Proposal {
    QString text;   // what is shown
    QString remark; // beside it, in a paler colour
    QString insert; // what is put in
    QString help;   // tooltip
};

// Keys are the business of whoever made it; a click on a row is told by chosen().
class NamePopup : public QTreeWidget
{
    Q_OBJECT

public:
    explicit NamePopup(QLineEdit &edit);

    // Shows the proposals, none of them selected, at `x` of the edit. An empty list hides it.
    void propose(const QList<Proposal> &proposals, int x);

    // Selects the row that is `step` further; from none the first, or the last for a step back.
    void move(int step);

    // The selected row; -1 for none.
    int selectedRow() const;
    const Proposal &proposal(int row) const { return m_proposals[row]; }

signals:
    void chosen(int row);
    void closed();

protected:
    void hideEvent(QHideEvent *event) override;

private:
    void place(int x);

    QLineEdit &m_edit;
    QList<Proposal> m_proposals;
};

#endif
