// The toolkit's own table view over a model that costs nothing, shown, painted and ended: bare_view ROWS
// COLUMNS. The difference between two numbers of rows is what the toolkit itself spends on its headers.

#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QTableView>

namespace {

class FreeModel : public QAbstractTableModel
{
public:
    FreeModel(int rows, int columns) : m_rows(rows), m_columns(columns) {}
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : m_columns;
    }
    QVariant data(const QModelIndex &, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("12345.67890")) : QVariant();
    }

private:
    int m_rows;
    int m_columns;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc < 3)
        return 2;
    FreeModel model(QByteArray(argv[1]).toInt(), QByteArray(argv[2]).toInt());
    QTableView view;
    view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view.setModel(&model);
    view.resize(1280, 800);
    view.show();
    QApplication::processEvents();
    return view.grab().toImage().isNull() ? 1 : 0;
}
