#include <qsaveasdialog.h>

QSaveAsDialog::QSaveAsDialog(QWidget *parent, Qt::WindowFlags flags) : QFileDialog(parent, flags) {}
