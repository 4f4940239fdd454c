// The signals and public slots by which hosts connect the classes for editing by name, in their order.
#include <QMetaMethod>

#include <gtest/gtest.h>

#include <orvanerowview.h>
#include <orvanetablemodel.h>
#include <orvanetableview.h>
#include <qdbptr.h>
#include <qfieldedit.h>

namespace {

QStringList methodsOf(const QMetaObject &type, QMetaMethod::MethodType kind)
{
    QStringList found;
    for (int number = type.methodOffset(); number < type.methodCount(); ++number) {
        const QMetaMethod method = type.method(number);
        if (method.methodType() == kind && method.access() == QMetaMethod::Public) {
            found.append(QString::fromLatin1(method.methodSignature()));
        }
    }
    return found;
}

struct Class {
    const QMetaObject *type;
    QStringList signalNames;
    QStringList slotNames;
};

const Class classes[] = {
    {&QDbptr::staticMetaObject, {"dataChanged()", "invalidated()"}, {"invalidate()", "closeDatabase()"}},
    {&OrvaneTableModel::staticMetaObject, {"modelReset()"}, {"announceChanged(OrvaneTableModel*)"}},
    {&OrvaneTableView::staticMetaObject,
     {"subsetRequested(QString,QString)", "modelUnset(OrvaneTableView*)"},
     {"reconfigure()", "resizeColumns()", "scrollToColumn(QString)", "scrollToRow(int)",
      "scrollToCell(int,QString)", "markSelected()", "deleteSelectedViewRows()",
      "deleteOtherVisibleViewRows()", "deleteAllOtherViewRows()", "modelDestroyed()",
      "showRowContextMenu(QPoint)", "showColumnContextMenu(QPoint)", "showCellContextMenu(QPoint)"}},
    {&QFieldEdit::staticMetaObject, {}, {"applyEdit()", "updateCell()"}},
    {&OrvaneRowView::staticMetaObject,
     {},
     {"setRow(int)", "decrementRow()", "incrementRow()", "showScratchRow()", "showNullRow()",
      "copyToScratchRow()", "reconfigure()", "modelDestroyed()", "processRowEntry()", "editorDismissed()",
      "updateControlButtons()", "updateRowView()", "addRow()", "setAllowEditsState(int)",
      "setReadableTimesState(int)", "setLocalTimezoneState(int)"}},
};

} // namespace

TEST(ClassesForEditing, HaveTheirSignalsAndSlots)
{
    for (const Class &known : classes) {
        SCOPED_TRACE(known.type->className());
        EXPECT_EQ(methodsOf(*known.type, QMetaMethod::Signal), known.signalNames);
        EXPECT_EQ(methodsOf(*known.type, QMetaMethod::Slot), known.slotNames);
    }
}
