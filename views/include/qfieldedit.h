#ifndef QFIELDEDIT_H
#define QFIELDEDIT_H

#include <QBrush>
#include <QModelIndex>
#include <QPointer>
#include <QString>
#include <QVariant>
#include <QWidget>

#include <ovqt_export.h>

class OrvaneTableModel;
class OvConfig;
class QLabel;
class QLineEdit;

// One field of one record: its name, coloured by its role in the table's keys, and an editor of its value.
//
// What is typed goes to the model's setData() when editing is finished and allowed (key allow_edits); then
// the editor shows what is stored. A value that is refused is told below the editor, with its reason and a
// link that takes it up again. It owns neither configuration nor model, and shows nothing once the model is
// gone.
//
// For style sheets and tests: the editor's object name is the field's, the refusal's is "refusal".
class OVQT_EXPORT QFieldEdit : public QWidget
{
    Q_OBJECT

public:
    // `labelWidth` is that of the widest field name of the form, in pixels.
    QFieldEdit(OvConfig &config, QString fieldName, bool isPrimaryKey, bool isAlternateKey, bool isForeignKey,
               int labelWidth, OrvaneTableModel *model);
    ~QFieldEdit() override;

    // A record number of the model, dbNULL or dbSCRATCH.
    void setRow(int row);

    void setReadOnly(bool readOnly);
    void setValue(QString text);
    void setValueBackgroundColor(QBrush brush);

public slots:
    void applyEdit();
    void updateCell();

protected:
    // The field's tooltip is made when it is asked for.
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void showRefusal(const QString &typed, const QString &reason);
    bool isUndoOfOthers(const QEvent &event) const;
    void showToolTip(const QPoint &place);

    OvConfig &m_config;
    QPointer<OrvaneTableModel> m_model;
    int m_row;
    QString m_fieldName;
    QLabel *m_label;
    QLineEdit *m_editor;
    QLabel *m_refusal;
    QString m_refusedText;
};

#endif
