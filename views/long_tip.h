// Tooltips with many cells of rich text.
#ifndef OVQT_VIEWS_LONG_TIP_H
#define OVQT_VIEWS_LONG_TIP_H

#include <QPointer>
#include <QTextDocument>
#include <QTimer>
#include <QWidget>

// The toolkit's tooltip lays a rich text out some ten times before it is seen, which takes longer than two
// frames for the record of a join. This one looks and goes away as that does, and lays its text out once.
class LongTip : public QWidget
{
    Q_OBJECT

public:
    // Whether the toolkit's would be late.
    static bool isFor(const QString &text);

    // Shows the text beside a place of the screen, until the mouse leaves `widget` or something happens
    // there.
    static void show(const QPoint &place, const QString &text, QWidget &widget);

    // The text that is shown; null where none is.
    static QString shownText();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    LongTip(const QString &text, QWidget &widget);
    void goTo(const QPoint &place);

    static QPointer<LongTip> shown;

    const QString m_html;
    QTextDocument m_text;
    QTimer m_end;
    int m_margin;
};

#endif
