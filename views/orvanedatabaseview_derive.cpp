// The commands of the database window that derive a view from the table shown.
#include <orvanedatabaseview.h>

#include <QAction>
#include <QInputDialog>
#include <QPointer>
#include <QScopedValueRollback>

#include <orvane/tr.h>

#include <orvanedatabasemodel.h>
#include <orvanetablemodel.h>
#include <ovconfig.h>
#include <qlistchooserdialog.h>
#include <qovutil.h>

#include "expression_assistant.h"
#include "slot_guard.h"
#include "text_dialog.h"
#include "view_derivation.h"

namespace {

constexpr QSize expressionDialogSize(500, 100); // pixels

Dbptr dbptrOf(const OrvaneTableModel *table)
{
    return table == nullptr ? dbinvalid() : table->getDbptr();
}

} // namespace

QString OrvaneDatabaseView::getNewViewName()
{
    return askForText(this, OvTranslation::tr("Get View Name"),
                      OvTranslation::tr("View name") + OvTranslation::tr(":"))
        .value_or(QString());
}

QString OrvaneDatabaseView::getExpression(QString label)
{
    return askForExpression(label, QString());
}

// Of a theta join, `other` is the table on the other side.
QString OrvaneDatabaseView::askForExpression(const QString &label, const QString &other)
{
    // Deleted by the window, should that go while the dialog is open.
    const QPointer<QInputDialog> dialog = new QInputDialog(this);
    dialog->setInputMode(QInputDialog::TextInput);
    dialog->setLabelText(label + OvTranslation::tr(":"));
    dialog->resize(expressionDialogSize);
    new ExpressionAssistant(*dialog, m_config, dbptrOf(currentTable()),
                            dbptrOf(other.isEmpty() ? nullptr : m_model->getTableModel(other)));
    const bool accepted = dialog->exec() == QDialog::Accepted;
    const QString expression = accepted && dialog != nullptr ? dialog->textValue() : QString();
    delete dialog;
    return expression;
}

// False when the user cancels or gives nothing.
bool OrvaneDatabaseView::askForInputs(const ViewDerivation &derivation, OrvaneTableModel &table,
                                      DerivationInputs &inputs)
{
    using Asks = ViewDerivation::Asks;
    switch (derivation.asks) {
    case Asks::Nothing:
        return true;
    case Asks::Expression:
        if (inputs.expression.isEmpty()) {
            inputs.expression = askForExpression(OvTranslation::tr(derivation.question), inputs.table);
        }
        return !inputs.expression.isEmpty();
    case Asks::Fields:
    case Asks::FieldsAndOptions: {
        const bool hasOptions = derivation.asks == Asks::FieldsAndOptions;
        bool accepted = false;
        inputs.fields = QListChooserDialog::modifyList(
            this, table.getTableFields(), {}, OvTranslation::tr(derivation.question), &accepted,
            hasOptions ? &inputs.reverse : nullptr, hasOptions ? &inputs.unique : nullptr);
        return accepted && !inputs.fields.isEmpty();
    }
    }
    return false;
}

void OrvaneDatabaseView::derive(const ViewDerivation &derivation, DerivationInputs inputs)
{
    showingErrors([&] {
        const QPointer<OrvaneTableModel> table = currentTable();
        if (table == nullptr || !askForInputs(derivation, *table, inputs)) {
            return;
        }
        const QString name = m_config["request_view_names"].toBool() ? getNewViewName() : QString();
        if (table == nullptr) {
            return; // it went while the user was asked
        }
        const QString whenEmpty = derivation.description(table->getTableName(), inputs);
        OrvaneTableModel *view = nullptr;
        {
            const QScopedValueRollback<bool> deriving(m_isDeriving, true);
            view = derivation.derive(*table, inputs, name);
        }
        if (view != nullptr) {
            showDerived(*view, whenEmpty);
        }
    });
}

void OrvaneDatabaseView::showDerived(OrvaneTableModel &view, const QString &whenEmpty)
{
    const QString name = view.getTableName();
    if (view.rowCount() > 0) {
        addTable(&view);
        setFocusTable(name);
        return;
    }
    view.getParent()->deleteView(name); // so that it does not keep an entry for what has gone
    qovutil_showError(whenEmpty + OvTranslation::tr(":") + " " + OvTranslation::tr("result has no records"),
                      nullptr);
}

void OrvaneDatabaseView::deriveWithTable(const ViewDerivation &derivation, const QAction *action)
{
    DerivationInputs inputs;
    inputs.table = action == nullptr ? QString() : action->data().toString();
    if (!inputs.table.isEmpty()) {
        derive(derivation, inputs);
    }
}

void OrvaneDatabaseView::showJoin(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::Join), qa);
}

void OrvaneDatabaseView::showOuterJoin(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::OuterJoin), qa);
}

void OrvaneDatabaseView::showLeftJoin(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::LeftJoin), qa);
}

void OrvaneDatabaseView::showNoJoin(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::NoJoin), qa);
}

void OrvaneDatabaseView::showThetaJoin(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::ThetaJoin), qa);
}

void OrvaneDatabaseView::showSever(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::Sever), qa);
}

void OrvaneDatabaseView::showSeparate(QAction *qa)
{
    deriveWithTable(viewDerivation(Derive::Separate), qa);
}

void OrvaneDatabaseView::showSubset()
{
    derive(viewDerivation(Derive::Subset), {});
}

void OrvaneDatabaseView::showContextSubset(QString fieldName, QString fieldVal)
{
    DerivationInputs inputs;
    inputs.expression = fieldName + " == '" + fieldVal + "'";
    derive(viewDerivation(Derive::Subset), inputs);
}

void OrvaneDatabaseView::showSort()
{
    derive(viewDerivation(Derive::Sort), {});
}

void OrvaneDatabaseView::showGroup()
{
    derive(viewDerivation(Derive::Group), {});
}

void OrvaneDatabaseView::showUngroup()
{
    derive(viewDerivation(Derive::Ungroup), {});
}
