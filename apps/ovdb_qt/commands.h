// What this program does for ovdb. Each command answers or throws ovdb::Failure with what is wrong, as its
// caller tells it.
#pragma once

#include <QStringList>

namespace ovdb_qt {

// sheet FILE header|no-header: rows from standard input as a spreadsheet.
//
// First a line for each column, a JSON array of texts: what it is called, its type, its width in bytes and
// the text of its null; behind them an empty line. Then records, each of all columns in full width and a line
// feed, without anything between fields.
void write_sheet(const QStringList &arguments);

// map FILE DATABASE WIDTH HEIGHT RATIO LATITUDE LONGITUDE RANGE legend|no-legend light|dark: the map of the
// events of a database as a picture. Notes how many there are, and what is not on it.
void draw_map(const QStringList &arguments);

} // namespace ovdb_qt
