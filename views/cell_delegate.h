// Edits cells of a table as the text that they show.
#ifndef OVQT_VIEWS_CELL_DELEGATE_H
#define OVQT_VIEWS_CELL_DELEGATE_H

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

class QAbstractItemView;
class QLabel;

// A value that the model refuses keeps its editor, with what was typed, and the reason stands beside the cell
// until something else is typed or the editing is given up with Escape. What others change in the cell
// meanwhile is told there, too.
class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit CellDelegate(QAbstractItemView *view);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool store(QWidget *editor) const;
    void tellRefusal(QWidget *editor, const QString &reason) const;
    void tell(QWidget *editor, const QString &text) const;
    void hideRefusal() const;

    QAbstractItemView *m_view;
    mutable QPointer<QLabel> m_refusal; // beside the cell; a child of the view's viewport
    mutable bool m_storing = false;
    mutable QString m_refusedText; // what it tells of, so that it is not tried again as it is
};

#endif
