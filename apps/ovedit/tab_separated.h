// Cells as tab-separated text, as spreadsheets write and read it.
#ifndef OVEDIT_TAB_SEPARATED_H
#define OVEDIT_TAB_SEPARATED_H

#include <vector>

#include <QString>
#include <QStringList>

// A tab between the cells of a line, a line feed behind each line. A cell that holds a tab, a quote or an end
// of line stands between quotes, quotes within it twice. A null text is nothing at all, an empty one two
// quotes.
void appendCell(QString &text, const QString &cell);

// The lines with their cells, null and empty texts told apart as above. Lines may end with a carriage return
// and a line feed; the last may do without. A quote that does not begin a cell stands for itself, one that is
// never closed reaches to the end.
std::vector<QStringList> tabSeparatedCells(const QString &text);

#endif
