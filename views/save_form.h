// The forms in which the table shown can be saved, as a table: a new one is a new row.
#ifndef OVQT_VIEWS_SAVE_FORM_H
#define OVQT_VIEWS_SAVE_FORM_H

#include <QString>
#include <QStringList>

class OrvaneTableModel;
class OrvaneTableView;
class QWidget;

struct SaveRequest {
    QWidget &window;
    OrvaneTableModel &table;
    OrvaneTableView &view;
    QString path;        // that the user chose
    QString defaultName; // the file name, without folder, that was proposed
    bool hasHeaders;
};

// The filters of the file dialog, translated, in their order; the one that is selected at first.
QStringList saveFilters();
QString firstSaveFilter();

// Saves in the form of a filter. Throws std::runtime_error with the text for the user where that fails or was
// cancelled.
void saveInForm(const QString &filter, const SaveRequest &request);

// The forms that have a source file of their own.
void saveSpreadsheet(const SaveRequest &request);
void savePicture(const SaveRequest &request);

#endif
