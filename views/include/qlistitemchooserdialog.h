#ifndef QLISTITEMCHOOSERDIALOG_H
#define QLISTITEMCHOOSERDIALOG_H

#include <QDialog>
#include <QList>
#include <QListWidget>
#include <QString>

#include <ovqt_export.h>

class QDialogButtonBox;
class QGridLayout;
class QLabel;

// A list of names that the user may shorten before choosing one.
class OVQT_EXPORT QListItemChooserWidget : public QListWidget
{
    Q_OBJECT

public:
    explicit QListItemChooserWidget(QWidget *parent = nullptr);

protected:
    // Delete and Backspace take the selected items out.
    void keyPressEvent(QKeyEvent *event) override;
};

// Lets the user choose one name out of a list, with OK or by double click.
//
// For style sheets and tests the parts have object names: "label", "names", "buttons".
class OVQT_EXPORT QListItemChooserDialog : public QDialog
{
    Q_OBJECT

public:
    // Without names the dialog is empty: no list and no buttons, it can only be closed.
    QListItemChooserDialog(QWidget *parent, QList<QString> names, QString label,
                           Qt::WindowFlags flags = Qt::WindowFlags());

    // The name that was selected when the dialog was accepted; empty if none was, before, and after it was
    // rejected.
    QString getListItem();

    // Asks modally. `*ok` (where given) tells whether the user accepted; if not, the name is empty. `parent`
    // must outlive the call.
    static QString chooseItem(QWidget *parent, QList<QString> names, QString title, QString label, bool *ok,
                              Qt::WindowFlags flags = Qt::WindowFlags());

public slots:
    void accept() override;
    void reject() override;

private:
    void addWidgets(const QString &label);

    QList<QString> m_names;
    QString m_result;
    QListItemChooserWidget *m_list = nullptr; // null, as the next ones, without names
    QGridLayout *m_layout = nullptr;
    QLabel *m_label = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
};

#endif
