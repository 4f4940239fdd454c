// Whether rows can still be read, for what is taken along of them.
#ifndef OVEDIT_READABLE_ROWS_H
#define OVEDIT_READABLE_ROWS_H

class OrvaneTableModel;

// Throws std::runtime_error with a sentence for the user where one of the rows [first, end) is no longer
// there, or stands for a record that is gone: a table shows it as empty cells, and taken along so it would be
// wrong.
void checkReadable(const OrvaneTableModel *table, int first, int end);

#endif
