// What the lists of names in the chooser dialogs have in common.
#ifndef OVQT_VIEWS_NAME_LIST_H
#define OVQT_VIEWS_NAME_LIST_H

class QDialog;
class QKeyEvent;
class QListWidget;

// Whether the key asks to take the selected names out of a list: Delete or Backspace, with any modifiers.
bool isRemovalKey(const QKeyEvent &event);

// Takes every selected item out of the list and deletes it.
void removeSelectedItems(QListWidget &list);

// The list stays wide and high enough for a few names of usual length, however small its dialog is made.
void limitToUsableSize(QListWidget &list);

// Opens the dialog large enough to show all names of the list, of which it has `listsInARow` side by side, as
// far as two thirds of the screen go.
void resizeToNames(QDialog &dialog, const QListWidget &names, int listsInARow);

#endif
