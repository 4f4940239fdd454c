#ifndef QSAVEASDIALOG_H
#define QSAVEASDIALOG_H

#include <QFileDialog>

#include <ovqt_export.h>

// The toolkit's file dialog under a name of this library, for applications that save tables.
class OVQT_EXPORT QSaveAsDialog : public QFileDialog
{
    Q_OBJECT

public:
    QSaveAsDialog(QWidget *parent, Qt::WindowFlags flags);
};

#endif
