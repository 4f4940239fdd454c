#include "name_list.h"

#include <QDialog>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <QScrollBar>

bool isRemovalKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace;
}

void removeSelectedItems(QListWidget &list)
{
    qDeleteAll(list.selectedItems()); // an item leaves its list when it is destroyed
}

void limitToUsableSize(QListWidget &list)
{
    constexpr int characters = 20;
    constexpr int rows = 6;
    const QFontMetrics metrics(list.font());
    list.setMinimumSize(characters * metrics.averageCharWidth(), rows * metrics.lineSpacing());
}

void resizeToNames(QDialog &dialog, const QListWidget &names, int listsInARow)
{
    const QSize frame(2 * names.frameWidth() + names.verticalScrollBar()->sizeHint().width(),
                      2 * names.frameWidth());
    const QSize all(names.sizeHintForColumn(0), names.count() * names.sizeHintForRow(0));
    const QSize missing = (all + frame - names.sizeHint()).expandedTo({0, 0});
    const QSize wanted = dialog.sizeHint() + QSize(missing.width() * listsInARow, missing.height());
    dialog.resize(wanted.boundedTo(dialog.screen()->availableSize() * 2 / 3));
}
