#include <qsaveasdialog.h>

#include <QFile>
#include <QTemporaryDir>

#include "hands.h"

namespace {

TEST(SaveAsDialog, PassesItsParentAndFlagsOn)
{
    QWidget parent;
    QSaveAsDialog dialog(&parent, Qt::Dialog | Qt::WindowStaysOnTopHint);
    EXPECT_EQ(dialog.parentWidget(), &parent);
    EXPECT_TRUE(dialog.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_STREQ(dialog.metaObject()->className(), "QSaveAsDialog");
}

TEST(SaveAsDialog, IsTheToolkitsFileDialogUnchanged)
{
    QFileDialog plain(nullptr, Qt::WindowFlags());
    QSaveAsDialog dialog(nullptr, Qt::WindowFlags());
    EXPECT_EQ(dialog.acceptMode(), plain.acceptMode());
    EXPECT_EQ(dialog.fileMode(), plain.fileMode());
    EXPECT_EQ(dialog.options(), plain.options());
    EXPECT_EQ(dialog.windowTitle(), plain.windowTitle());
    EXPECT_EQ(dialog.nameFilters(), plain.nameFilters());
}

TEST(SaveAsDialog, NamesTheFileThatTheUserTypes)
{
    QTemporaryDir folder;
    QSaveAsDialog dialog(nullptr, Qt::WindowFlags());
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDirectory(folder.path());
    dialog.selectFile("subset");
    dialog.open();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.selectedFiles(), QStringList{folder.filePath("subset")});
    EXPECT_FALSE(QFile::exists(folder.filePath("subset")));
}

} // namespace
