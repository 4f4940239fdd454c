// Selected events on the map and selected rows of the table "origin" follow each other.
#ifndef OVEDIT_MAP_SELECTION_H
#define OVEDIT_MAP_SELECTION_H

#include <vector>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVector>

class OrvaneDatabaseView;
class OrvaneTableModel;
class OrvaneTableView;
class OvEventMap;
class QItemSelectionModel;
class QTabWidget;

// Joins the map on a database window's products page, whenever there is one, with the window's origin table.
// A row counts as selected when one of its cells is.
class MapSelection : public QObject
{
    Q_OBJECT

public:
    // Lives as the view's child.
    explicit MapSelection(OrvaneDatabaseView &view);

private slots:
    void lookForMap();
    void takeFromTable();
    void takeOtherRows();
    void takeFromMap(const QVector<qint64> &records);
    void showInTable(qint64 record);

private:
    OrvaneTableView *originTable() const;
    bool followTable(OrvaneTableView *table);
    QVector<qint64> selectedRecords(OrvaneTableView &table);
    const std::vector<qint64> &recordsOfRows(OrvaneTableModel &model);
    std::vector<int> rowsOf(const QVector<qint64> &records, OrvaneTableModel &model);
    void selectRows(const std::vector<int> &rows, OrvaneTableView &table);

    OrvaneDatabaseView &m_view;
    QTabWidget *m_products;
    QPointer<OvEventMap> m_map;
    QPointer<QItemSelectionModel> m_followed;
    bool m_busy = false; // a selection is on its way from one to the other

    // Of a sorted table: the record that each row shows, and for which view that holds.
    std::vector<qint64> m_records;
    QString m_sortedView;
};

#endif
