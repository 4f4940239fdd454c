// Printing the table shown, with a preview.
#ifndef OVEDIT_PRINTING_H
#define OVEDIT_PRINTING_H

#include <QFont>

class OrvaneTableView;
class PrintedTable;
class QPrinter;
class QString;
class QWidget;

// Shows the table as it will be printed and lets the user print it; of several selected rows asks whether
// only those are meant. Asks or refuses where that is very many pages. Throws std::runtime_error with a
// sentence for the user.
void printTable(OrvaneTableView &view, const QString &title, QWidget *window);

// Puts the pages on a printer. False where the user cancels: what was printed to a file is gone then. Throws
// std::runtime_error where the table has changed meanwhile or the printer can't be used.
bool printPages(const PrintedTable &table, const QFont &font, QPrinter &printer);

#endif
