#ifndef ORVANEDATABASEVIEW_H
#define ORVANEDATABASEVIEW_H

#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QStackedWidget>
#include <QString>
#include <QTabWidget>
#include <QWidget>

#include <ovqt_export.h>

class OrvaneDatabaseModel;
class OrvaneRowView;
class OrvaneTableModel;
class OrvaneTableView;
class OvConfig;
class QAction;
class QLabel;
struct DerivationInputs;
struct ViewDerivation;

// The window of one open database. Three pages, by index: 0 its tables, a tab each; 1 its derived views, a
// closable tab each; 2 products made from it. Three labels below tell the rows, the age of the table and of
// the last look.
//
// It has no menus: the host binds its commands to the public slots. It owns neither configuration nor models:
// the host keeps both alive, and deletes the window before the models or lets it empty itself when the
// database model goes. No slot lets an exception out; what went wrong is shown in a modal box.
//
// Commands work on the table or view shown in the current tab. Where none is shown (no tab, a page of
// products, a database that was closed) they do nothing and say nothing: a host disables them there. A
// command that fails or is cancelled leaves the window as it was.
//
// For style sheets and tests the parts have object names: "stack", "tablesTabs", "viewsTabs", "productsTabs",
// "rowCountLabel", "modificationLabel", "updateLabel".
class OVQT_EXPORT OrvaneDatabaseView : public QWidget
{
    Q_OBJECT

public:
    // Registers the defaults of the keys it depends on, and a fixed-pitch font where the key `font` is
    // missing. `config` must outlive the window.
    explicit OrvaneDatabaseView(OvConfig &config);
    ~OrvaneDatabaseView() override;

    // Shows the tables and views of `model`, which may be null or closed: then the window stays empty.
    void setModel(OrvaneDatabaseModel *model);
    OrvaneDatabaseModel *model();

    void clearTabs();

    // Brings the tab of that name to the front; an unknown name changes nothing.
    void setFocusTable(QString name);

    // Chooses the name to focus first: the table named at opening, else the schema's entry in
    // `default_table`, else the first table.
    void initFocusTable();
    QString getFocusTableName();

    // Null on the products page, and where the page has no tab.
    OrvaneTableModel *getCurrentTableModel();
    OrvaneTableView *getCurrentTableView();

    int getCurrentTabIndex();
    void setCurrentTabIndex(int index);
    int getCurrentStackIndex();
    void setCurrentStackIndex(int index);

    // Asks for the name of a view to make; the text as typed, empty when the user cancels.
    QString getNewViewName();

    // Asks for an expression; empty when the user cancels.
    QString getExpression(QString label);

signals:
    void stackItemChanged(int index);

    // Another table or view is looked at; empty when the page shows none.
    void focusTableChanged(QString newFocusTableName);

public slots:
    void reconfigure();

    // Adds a tab for a table or view unless there is one of its name; null models and facades are ignored.
    void addTable(OrvaneTableModel *dtm);

    // Shows a table that has no file yet and opens the row viewer on its scratch record; an empty name, and
    // one of no table, are ignored.
    void createNewTable(QString newTableName);
    void removeTable(QString tableName);

    // 0 tables, 1 views, 2 products; any other value changes nothing. Always emits stackItemChanged().
    void showStackItem(int index);

    // Each derives a view from the table shown, adds a tab for it and focuses it. A view without rows is
    // dropped again and the user is told. The name is asked for while `request_view_names` is true; without a
    // name (also when that question is cancelled) the database finds one. The action's data is the name of
    // the other table, or of the view's table to sever or separate; a null action, or one without data, does
    // nothing.
    void showJoin(QAction *qa);
    void showOuterJoin(QAction *qa);
    void showLeftJoin(QAction *qa);
    void showNoJoin(QAction *qa);
    void showThetaJoin(QAction *qa);
    void showSever(QAction *qa);
    void showSeparate(QAction *qa);
    void showSubset();

    // The rows whose field has the value, which is put between single quotes as it is.
    void showContextSubset(QString fieldName, QString fieldVal);
    void showSort();
    void showGroup();
    void showUngroup();

    // Row commands, see OrvaneTableView and OrvaneTableModel.
    void markSelected();
    void deleteSelectedViewRows();
    void deleteOtherVisibleViewRows();
    void deleteAllOtherViewRows();
    // Opens the row viewer on the scratch record, in which a new row is put together.
    void addRows();
    // Removes the marked records of the table shown.
    void crunch();

    // Lets the user choose the columns shown and their order.
    void arrange();

    // Asks for a row number and scrolls there.
    void goToRow();

    // Asks for a file and a form, and writes the table shown: as the records of a new database, a view, a
    // spreadsheet, text of three kinds, or a picture of the window. A file that is replaced keeps its content
    // until the new one is whole. Long saves call the database library's progress hook.
    void saveAs();

    // Shows the map of the database's events on the products page; there is one at a time.
    void mapCurrent();

    void tabbedItemChanged();
    void updateStatusLabels();

    // Closes the tab and deletes its view from the database.
    void closeViewsTab(int tabIndex);
    void closeProductsTab(int tabIndex);

    // Drops the tab of a view whose model is gone, and deletes the widget.
    void tableModelUnset(OrvaneTableView *dtv);
    void modelDestroyed();

private:
    void registerDefaults();
    void registerFont();
    void buildLayout();
    void addPage(QTabWidget &page, const char *objectName);
    void buildRowViewer();
    void runOnTableView(void (OrvaneTableView::*command)());
    QTabWidget *currentPage();
    OrvaneTableModel *currentTable();
    void derive(const ViewDerivation &derivation, DerivationInputs inputs);
    void deriveWithTable(const ViewDerivation &derivation, const QAction *action);
    QString askForExpression(const QString &label, const QString &other);
    bool askForInputs(const ViewDerivation &derivation, OrvaneTableModel &table, DerivationInputs &inputs);
    void showDerived(OrvaneTableModel &view, const QString &whenEmpty);
    void addTableTab(OrvaneTableModel &table);
    void discardDetachedViews(const OrvaneTableModel *table);
    void applyRequestedFields();
    void showStatusOf(OrvaneTableModel &table);
    QString tabToolTip(OrvaneTableModel &table);

    OvConfig &m_config;
    OrvaneDatabaseModel *m_model = nullptr;
    QString m_focusTableName;
    QStackedWidget m_stack;
    QLabel *m_rowCountLabel = nullptr;
    QLabel *m_modificationLabel = nullptr;
    QLabel *m_updateLabel = nullptr;
    QTabWidget m_tablesTabs;
    QTabWidget m_viewsTabs;
    QTabWidget m_productsTabs;
    QMainWindow *m_rowViewWindow = nullptr; // hidden until a row is to be shown
    OrvaneRowView *m_rowView = nullptr;
    // Table views whose tab was removed while their model lives on; deleted when that model gets a tab again.
    QList<QPointer<OrvaneTableView>> m_detachedViews;
    bool m_isDeriving = false; // a view that is announced may yet turn out to be empty
};

#endif
