// Tab-separated text from the clipboard into the cells of a table.
#ifndef OVEDIT_CELL_PASTING_H
#define OVEDIT_CELL_PASTING_H

#include <QString>

class OrvaneTableView;
class QWidget;

// Puts the clipboard's cells into those of the table, from the first selected cell on, to the right and down
// as the columns are shown; a single one into every selected cell. What is not there in the clipboard
// (nothing between two tabs) becomes the field's null.
//
// All is checked before anything is stored: that there are cells enough, that they can be changed, that each
// value fits its field. Throws std::runtime_error with a sentence for the user where that is not so, and
// nothing is changed. Where storing itself fails or is cancelled the sentence tells how many cells were
// changed before.
void pasteCells(OrvaneTableView &view, QWidget *window);

#endif
