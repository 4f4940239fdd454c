#ifndef QLISTCHOOSERDIALOG_H
#define QLISTCHOOSERDIALOG_H

#include <QDialog>
#include <QList>
#include <QListWidget>
#include <QString>

#include <ovqt_export.h>

class QCheckBox;
class QDialogButtonBox;
class QGridLayout;

// The names that the user has chosen, in order; none twice, unless the owner puts it there through the base
// class. A name dropped among them comes to stand between two others and never replaces one.
class OVQT_EXPORT QListChooserWidget : public QListWidget
{
    Q_OBJECT

public:
    explicit QListChooserWidget(QWidget *parent = nullptr);

    // Appends the names that are not there yet, at once; itemAdded() for each of them.
    void addNames(const QList<QString> &names);

signals:
    // A name was added. After a drop: once for every name of the list.
    void itemAdded();

    // The user has taken names out and none is left.
    void lastItemRemoved();

public slots:
    // Appends a new item with the text of `item`, which stays its owner's; a text that is there already, and
    // a null item, are passed over.
    void addItem(QListWidgetItem *item);

protected:
    // Delete and Backspace take the selected items out.
    void keyPressEvent(QKeyEvent *event) override;

    // Of equal names the topmost stays. A list from which names are dragged here keeps them.
    void dropEvent(QDropEvent *event) override;
};

// Lets the user put together an ordered list out of offered names: by double click, Enter or dragging from
// the left list to the right one, where dragging changes the order.
//
// For style sheets and tests the parts have object names: "fields", "chosen", "chooseAll", "clearAll",
// "reverse", "unique", "buttons".
class OVQT_EXPORT QListChooserDialog : public QDialog
{
    Q_OBJECT

public:
    // The two options are offered only where both flags are given. The flags stay the caller's, must outlive
    // the dialog, and are written when it is accepted.
    QListChooserDialog(QWidget *parent, QList<QString> names, bool *reverse = nullptr, bool *unique = nullptr,
                       Qt::WindowFlags flags = Qt::WindowFlags());

    // Begins with these names chosen. OK stays disabled until the user changes the list.
    void setFiltered(QList<QString> names);

    // What was chosen when the dialog was accepted; empty before, and after it was rejected.
    QList<QString> getListValue();

    // Asks modally, starting from `current`. `*ok` (where given) tells whether the user accepted; if not,
    // `current` is returned and the flags are untouched. `parent` must outlive the call.
    static QList<QString> modifyList(QWidget *parent, QList<QString> names, QList<QString> current,
                                     QString title, bool *ok, bool *reverse = nullptr, bool *unique = nullptr,
                                     Qt::WindowFlags flags = Qt::WindowFlags());

public slots:
    void accept() override;
    void reject() override;
    void selectAll();
    void clearAll();
    void enableOK();
    void disableOK();

protected:
    // Enter among the offered names.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addLists();
    void addListButtons();
    void addOptions();
    void addButtonBox();
    void wire();
    bool chooseSelected();

    QList<QString> m_names;
    QList<QString> m_result;
    bool *m_reverse;
    bool *m_unique;
    QListWidget *m_source = nullptr;
    QListChooserWidget *m_chosen = nullptr;
    QGridLayout *m_layout = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    QCheckBox *m_reverseBox = nullptr; // null, as the next, unless both flags are given
    QCheckBox *m_uniqueBox = nullptr;
};

#endif
