#ifndef ORVANEROWVIEW_H
#define ORVANEROWVIEW_H

#include <QHash>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <ovqt_export.h>

class OrvaneTableModel;
class OvConfig;
class QCheckBox;
class QFieldEdit;
class QGridLayout;
class QLabel;
class QLineEdit;
class QMainWindow;
class QPushButton;
class QToolButton;

// One record of a table as a form: a line per field, steps to the neighbouring records, and the scratch
// record, in which a new one is put together and added.
//
// Rows are the model's record numbers, dbNULL (the table's null values, never written) and dbSCRATCH. It owns
// neither configuration nor model nor the main window around it. When the model goes its fields stay as they
// were, and model() answers what was set.
//
// For style sheets and tests the parts have object names: "header", "rowEntry", "previousRow", "nextRow",
// "scratchRow", "nullRow", "copyToScratchRow", "allowEdits", "readableTimes", "localTimezone", "add",
// "dismiss", "recordGone".
class OVQT_EXPORT OrvaneRowView : public QWidget
{
    Q_OBJECT

public:
    // Gives `mainWindow` its title. Both must outlive the form.
    OrvaneRowView(OvConfig &config, QMainWindow *mainWindow);
    ~OrvaneRowView() override;

    // Makes the form anew for a table, at a row. dbSCRATCH begins with a scratch record of nulls. A null
    // model is only remembered.
    void setModel(OrvaneTableModel *model, int row);
    OrvaneTableModel *model();
    QMainWindow *mainWindow();

    void createFieldEditors();
    void clearFieldEditors();
    void setHeaderLabel();
    void setRowEntry();

public slots:
    // A row behind the last is the last, a negative one the first.
    void setRow(int row);
    void decrementRow();
    void incrementRow();
    void showScratchRow();
    void showNullRow();
    void copyToScratchRow();
    void reconfigure();
    void modelDestroyed();
    void processRowEntry();
    void editorDismissed();
    void updateControlButtons();
    void updateRowView();
    // Adds the scratch record to the table. One whose key a record has already is told and not added.
    void addRow();
    // The state of a check box is stored as it is: 0, or 2 for checked, which reads as true.
    void setAllowEditsState(int state);
    void setReadableTimesState(int state);
    void setLocalTimezoneState(int state);

private slots:
    // Goes to where the record is now that is shown.
    void followRecord();

private:
    void buildForm();
    QWidget *buildRowLine();
    QWidget *buildButtons();
    QWidget *buildSwitches();
    QWidget *buildClosingLine();
    bool modelIsAlive() const;
    void showRow(int row);
    void updateSteps();
    void noteRecord();

    OvConfig &m_config;
    QMainWindow *m_mainWindow;
    OrvaneTableModel *m_model = nullptr;
    QPointer<OrvaneTableModel> m_liveModel; // null once the model is gone, when m_model must not be used
    QLabel *m_header = nullptr;
    QLineEdit *m_rowEntry = nullptr;
    QWidget *m_fieldArea = nullptr;
    QGridLayout *m_fieldGrid = nullptr;
    QStringList m_fields;
    QStringList m_primaryKey;
    QStringList m_alternateKey;
    QStringList m_foreignKeys;
    QHash<QString, QFieldEdit *> m_editors;
    QHash<QString, QCheckBox *> m_switches; // by their configuration keys
    QToolButton *m_previous = nullptr;
    QToolButton *m_next = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_scratch = nullptr;
    QPushButton *m_null = nullptr;
    QPushButton *m_copy = nullptr;
    QLabel *m_gone = nullptr; // says that the record is gone that was shown
    QPersistentModelIndex m_record;
    int m_rowsPerColumn = 0;
    int m_row;
};

#endif
