// The grounds of cells in the palette around them.
#ifndef OVQT_VIEWS_CELL_GROUND_H
#define OVQT_VIEWS_CELL_GROUND_H

#include <QBrush>
#include <QColor>

class QPalette;

// What a colour that is meant for the ground of a cell is painted as. The colours of nulls and blanks are
// light ones: in a palette whose base is dark they would glare, and its light text could not be read on them.
// There a light colour becomes a dark one of its hue, somewhat lighter than the base.
QColor groundIn(const QPalette &palette, const QColor &wanted);
QBrush groundIn(const QPalette &palette, const QBrush &wanted);

#endif
