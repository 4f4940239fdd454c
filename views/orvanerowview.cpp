#include <orvanerowview.h>

#include <algorithm>

#include <QCheckBox>
#include <QFont>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qfieldedit.h>
#include <qovutil.h>

#include "fitting_scroll_area.h"
#include "slot_guard.h"

namespace {

constexpr int gridSpacing = 2; // pixels
constexpr int formMargin = 4;
constexpr int fieldsOfOneColumn = 10; // more go into several columns

struct RowName {
    int row;
    const char *name;
};

// Rows that the entry names instead of numbering them. "INVALID" is shown and not read back.
constexpr RowName namedRows[] = {{dbNULL, "NULL"}, {dbSCRATCH, "SCRATCH"}, {dbINVALID, "INVALID"}};

QString rowText(int row)
{
    for (const RowName &named : namedRows) {
        if (named.row == row) {
            return named.name;
        }
    }
    return row >= 0 ? QString::number(row) : QStringLiteral("**ILLEGAL VALUE**");
}

int rowOfText(const QString &text)
{
    for (const RowName &named : namedRows) {
        if (named.row != dbINVALID && text == named.name) {
            return named.row;
        }
    }
    return text.toInt();
}

QPushButton *button(const char *text, const char *objectName, QObject *receiver, const char *slot)
{
    auto *made = new QPushButton(OvTranslation::tr(text));
    made->setObjectName(objectName);
    QObject::connect(made, SIGNAL(clicked()), receiver, slot);
    return made;
}

QToolButton *arrow(Qt::ArrowType type, const char *objectName, const char *toolTip, QObject *receiver,
                   const char *slot)
{
    auto *made = new QToolButton;
    made->setArrowType(type);
    made->setObjectName(objectName);
    made->setToolTip(OvTranslation::tr(toolTip));
    made->setFocusPolicy(Qt::StrongFocus); // steps are taken from the keyboard, too
    QObject::connect(made, SIGNAL(clicked()), receiver, slot);
    return made;
}

} // namespace

OrvaneRowView::OrvaneRowView(OvConfig &config, QMainWindow *mainWindow)
    : m_config(config), m_mainWindow(mainWindow), m_row(dbINVALID)
{
    m_mainWindow->setWindowTitle(OvTranslation::tr("ovedit Row Viewer"));
    m_config.configureIfUnset("allow_edits", false);
    m_config.configureIfUnset("show_tooltips", true);
    setFont(m_config["font"].value<QFont>());
    connect(&m_config, SIGNAL(configurationChanged()), this, SLOT(reconfigure()));
    buildForm();
}

OrvaneRowView::~OrvaneRowView()
{
    if (modelIsAlive()) {
        m_liveModel->noteRows(this, {});
    }
}

void OrvaneRowView::buildForm()
{
    m_fieldArea = new QWidget;
    m_fieldGrid = new QGridLayout(m_fieldArea);
    m_fieldGrid->setContentsMargins(0, 0, 0, 0);
    m_fieldGrid->setHorizontalSpacing(gridSpacing);
    m_fieldGrid->setVerticalSpacing(gridSpacing);
    m_header = new QLabel;
    m_header->setObjectName("header");
    setHeaderLabel();

    auto *lines = new QVBoxLayout(this);
    lines->setContentsMargins(formMargin, formMargin, formMargin, formMargin);
    lines->addWidget(buildRowLine());
    m_gone = new QLabel;
    m_gone->setObjectName("recordGone");
    m_gone->setWordWrap(true);
    m_gone->hide();
    lines->addWidget(m_gone);
    lines->addWidget(new FittingScrollArea(m_fieldArea), 1);
    lines->addWidget(buildButtons());
    lines->addWidget(buildSwitches());
    lines->addWidget(buildClosingLine());
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    updateControlButtons();
}

QWidget *OrvaneRowView::buildRowLine()
{
    m_rowEntry = new QLineEdit;
    m_rowEntry->setObjectName("rowEntry");
    m_rowEntry->setMaximumWidth(QFontMetrics(font()).horizontalAdvance('0') * 20);
    setRowEntry();
    connect(m_rowEntry, SIGNAL(editingFinished()), this, SLOT(processRowEntry()));
    auto *label = new QLabel(OvTranslation::tr("Row index"));
    label->setBuddy(m_rowEntry);
    m_previous =
        arrow(Qt::LeftArrow, "previousRow", OvTranslation::noop("Previous row"), this, SLOT(decrementRow()));
    m_next = arrow(Qt::RightArrow, "nextRow", OvTranslation::noop("Next row"), this, SLOT(incrementRow()));

    auto *line = new QWidget;
    auto *parts = new QHBoxLayout(line);
    parts->setContentsMargins(0, 0, 0, 0);
    for (QWidget *part : std::initializer_list<QWidget *>{label, m_rowEntry, m_previous, m_next, m_header}) {
        parts->addWidget(part);
    }
    parts->addStretch();
    return line;
}

QWidget *OrvaneRowView::buildButtons()
{
    m_scratch = button(OvTranslation::noop("Scratch Row"), "scratchRow", this, SLOT(showScratchRow()));
    m_null = button(OvTranslation::noop("Null Row"), "nullRow", this, SLOT(showNullRow()));
    m_copy = button(OvTranslation::noop("Copy to Scratch Row"), "copyToScratchRow", this,
                    SLOT(copyToScratchRow()));

    auto *line = new QWidget;
    auto *parts = new QHBoxLayout(line);
    parts->setContentsMargins(0, 0, 0, 0);
    for (QPushButton *part : {m_scratch, m_null, m_copy}) {
        parts->addWidget(part);
    }
    parts->addStretch();
    return line;
}

QWidget *OrvaneRowView::buildSwitches()
{
    struct Switch {
        const char *text;
        const char *objectName;
        const char *key;
        const char *slot;
    };
    const Switch switches[] = {
        {OvTranslation::noop("Allow Edits"), "allowEdits", "allow_edits", SLOT(setAllowEditsState(int))},
        {OvTranslation::noop("Readable Times"), "readableTimes", "show_readable_times",
         SLOT(setReadableTimesState(int))},
        {OvTranslation::noop("Local Timezone"), "localTimezone", "show_times_in_local_zone",
         SLOT(setLocalTimezoneState(int))},
    };
    auto *line = new QWidget;
    auto *parts = new QHBoxLayout(line);
    parts->setContentsMargins(0, 0, 0, 0);
    for (const Switch &entry : switches) {
        auto *box = new QCheckBox(OvTranslation::tr(entry.text));
        box->setObjectName(entry.objectName);
        box->setChecked(m_config[entry.key].toBool());
        connect(box, SIGNAL(stateChanged(int)), this, entry.slot);
        m_switches.insert(entry.key, box);
        parts->addWidget(box);
    }
    parts->addStretch();
    return line;
}

QWidget *OrvaneRowView::buildClosingLine()
{
    m_add = button(OvTranslation::noop("Add"), "add", this, SLOT(addRow()));
    auto *dismiss = button(OvTranslation::noop("Dismiss"), "dismiss", this, SLOT(editorDismissed()));

    auto *line = new QWidget;
    auto *parts = new QHBoxLayout(line);
    parts->setContentsMargins(0, 0, 0, 0);
    parts->addWidget(m_add);
    parts->addStretch();
    parts->addWidget(dismiss);
    return line;
}

bool OrvaneRowView::modelIsAlive() const
{
    return m_liveModel != nullptr;
}

OrvaneTableModel *OrvaneRowView::model()
{
    return m_model;
}

QMainWindow *OrvaneRowView::mainWindow()
{
    return m_mainWindow;
}

void OrvaneRowView::setModel(OrvaneTableModel *model, int row)
{
    if (modelIsAlive()) {
        m_liveModel->disconnect(this);
        m_liveModel->noteRows(this, {});
    }
    m_record = QPersistentModelIndex();
    m_model = model;
    m_liveModel = model;
    if (model == nullptr) {
        return;
    }
    showingErrors([&] {
        connect(m_model, SIGNAL(destroyed()), this, SLOT(modelDestroyed()));
        m_fields = m_model->getTableFields();
        m_primaryKey = m_model->getPrimaryKey();
        m_alternateKey = m_model->getAlternateKey();
        m_foreignKeys = m_model->getForeignKeys();
        // An odd number of fields leaves one for a third column; that is the form's layout.
        m_rowsPerColumn = m_fields.size() > fieldsOfOneColumn ? m_fields.size() / 2 : fieldsOfOneColumn;
        clearFieldEditors();
        createFieldEditors();
        if (row == dbSCRATCH) {
            setRow(dbNULL);
            copyToScratchRow();
            if (!m_fields.isEmpty()) {
                m_editors[m_fields.first()]->setFocus(); // where a new record begins
            }
        } else {
            setRow(row);
        }
        connect(m_model, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)), this,
                SLOT(updateRowView()));
        // Before the fields are told that cells changed.
        connect(m_model, SIGNAL(layoutChanged()), this, SLOT(followRecord()));
        connect(m_model, SIGNAL(rowsInserted(QModelIndex, int, int)), this, SLOT(followRecord()));
        connect(m_model, SIGNAL(rowsRemoved(QModelIndex, int, int)), this, SLOT(followRecord()));
    });
}

void OrvaneRowView::clearFieldEditors()
{
    m_editors.clear();
    while (QLayoutItem *item = m_fieldGrid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

void OrvaneRowView::createFieldEditors()
{
    if (!modelIsAlive()) {
        return;
    }
    const QFontMetrics metrics(QLabel().font());
    int labelWidth = 0;
    for (const QString &name : qAsConst(m_fields)) {
        labelWidth = std::max(labelWidth, metrics.horizontalAdvance(name));
    }
    QWidget *before = m_next;
    for (int i = 0; i < m_fields.size(); ++i) {
        const QString &name = m_fields[i];
        auto *editor =
            new QFieldEdit(m_config, name, m_primaryKey.contains(name), m_alternateKey.contains(name),
                           m_foreignKeys.contains(name), labelWidth, m_model);
        m_editors.insert(name, editor);
        m_fieldGrid->addWidget(editor, i % m_rowsPerColumn, i / m_rowsPerColumn, Qt::AlignTop);
        QWidget::setTabOrder(before, editor->focusProxy());
        before = editor->focusProxy();
    }
    QWidget::setTabOrder(before, m_scratch);
}

void OrvaneRowView::setRow(int row)
{
    showingErrors([&] {
        if (modelIsAlive()) {
            showRow(row);
        }
    });
}

void OrvaneRowView::showRow(int row)
{
    const int count = m_model->rowCount();
    const bool isSpecial = row == dbNULL || row == dbSCRATCH;
    // -1 for the first row where there are none; a negative number is 0 there, too.
    m_row = isSpecial ? row : row < count ? std::max(row, 0) : count - 1;
    for (QFieldEdit *editor : qAsConst(m_editors)) {
        editor->setRow(m_row);
        // Any other row leaves it as it was.
        if (m_row == dbSCRATCH || m_row == dbNULL) {
            editor->setReadOnly(m_row == dbNULL);
        }
    }
    m_gone->hide();
    noteRecord();
    setHeaderLabel();
    updateSteps();
    setRowEntry();
    updateControlButtons();
}

void OrvaneRowView::updateSteps()
{
    m_previous->setEnabled(m_row > 0);
    m_next->setEnabled(m_row < m_model->rowCount() - 1);
}

void OrvaneRowView::noteRecord()
{
    m_record = m_row >= 0 ? QPersistentModelIndex(m_model->index(m_row, 0)) : QPersistentModelIndex();
    m_model->noteRows(this, m_row >= 0 ? QVector<int>{m_row} : QVector<int>());
}

void OrvaneRowView::followRecord()
{
    loggingErrors("OrvaneRowView::followRecord", [this] {
        if (!modelIsAlive()) {
            return;
        }
        if (m_row >= 0 && !m_record.isValid()) {
            for (QFieldEdit *editor : qAsConst(m_editors)) {
                editor->giveUp(OvTranslation::tr("the record is gone"));
            }
            const int gone = m_row;
            m_row = std::min(m_row, m_model->rowCount() - 1);
            m_gone->setText(
                OvTranslation::tr("Another program removed the record of row %1 or replaced the table.")
                    .arg(gone));
            m_gone->show();
            noteRecord();
        } else if (m_row >= 0) {
            m_row = m_record.row();
        }
        for (QFieldEdit *editor : qAsConst(m_editors)) {
            editor->followTo(m_row);
        }
        setHeaderLabel();
        updateSteps();
        if (!m_rowEntry->isModified()) {
            setRowEntry();
        }
    });
}

// The null record comes before the scratch record, and that before row 0.
void OrvaneRowView::decrementRow()
{
    setRow(m_row - 1);
}

void OrvaneRowView::incrementRow()
{
    setRow(m_row + 1);
}

void OrvaneRowView::showScratchRow()
{
    setRow(dbSCRATCH);
}

void OrvaneRowView::showNullRow()
{
    setRow(dbNULL);
}

void OrvaneRowView::copyToScratchRow()
{
    showingErrors([this] {
        if (!modelIsAlive()) {
            return;
        }
        m_model->copyToScratchRow(m_row);
        setRow(dbSCRATCH);
    });
}

void OrvaneRowView::setRowEntry()
{
    m_rowEntry->setText(rowText(m_row));
}

void OrvaneRowView::processRowEntry()
{
    setRow(rowOfText(m_rowEntry->text()));
}

void OrvaneRowView::setHeaderLabel()
{
    QString name;
    QString count = QStringLiteral("??");
    loggingErrors("OrvaneRowView::setHeaderLabel", [&] {
        if (modelIsAlive()) {
            name = m_model->getTableName();
            count = QString::number(m_model->rowCount());
        }
    });
    m_header->setText(OvTranslation::tr("in table '%1'").arg(name) + " (" +
                      OvTranslation::tr("%2 total rows").replace("%2", count) + ")");
}

void OrvaneRowView::updateRowView()
{
    setHeaderLabel();
}

void OrvaneRowView::updateControlButtons()
{
    m_scratch->setEnabled(m_row != dbSCRATCH);
    m_null->setEnabled(m_row != dbNULL);
    m_copy->setEnabled(m_row != dbSCRATCH && m_row != dbINVALID);
    m_add->setEnabled(m_config["allow_edits"].toBool() && m_row == dbSCRATCH && modelIsAlive() &&
                      !m_model->tableIsView());
}

void OrvaneRowView::addRow()
{
    showingErrors([this] {
        if (!modelIsAlive()) {
            return;
        }
        const int before = m_model->rowCount();
        // A field still being edited gives its value to the scratch record when it loses the focus.
        m_add->setFocus();
        const int added = m_model->addScratchRow();
        if (added >= 0 && added < before) {
            qovutil_showError(
                OvTranslation::tr("Row would be identical to row %1 -- duplicate row not added").arg(added),
                nullptr);
        }
        updateRowView();
    });
}

void OrvaneRowView::reconfigure()
{
    loggingErrors("OrvaneRowView::reconfigure", [this] {
        setFont(m_config["font"].value<QFont>());
        const bool allowed = m_config["allow_edits"].toBool();
        for (QFieldEdit *editor : qAsConst(m_editors)) {
            editor->setReadOnly(m_row == dbNULL || (m_row != dbSCRATCH && !allowed));
        }
        for (auto box = m_switches.cbegin(); box != m_switches.cend(); ++box) {
            const QSignalBlocker quiet(box.value());
            box.value()->setChecked(m_config[box.key()].toBool());
        }
        updateControlButtons();
    });
}

void OrvaneRowView::modelDestroyed()
{
    // Meant: the form stays as it is, and model() answers what was set.
}

void OrvaneRowView::editorDismissed()
{
    setRow(m_row);
    m_mainWindow->hide();
}

void OrvaneRowView::setAllowEditsState(int state)
{
    m_config.configure("allow_edits", state);
}

void OrvaneRowView::setReadableTimesState(int state)
{
    m_config.configure("show_readable_times", state);
}

void OrvaneRowView::setLocalTimezoneState(int state)
{
    m_config.configure("show_times_in_local_zone", state);
}
