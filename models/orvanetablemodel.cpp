#include "orvanetablemodel.h"

#include <QMetaMethod>
#include <algorithm>

#include "answered.h"
#include "orvanetablemodel_p.h"
#include "qovutil.h"
#include <ovconfig.h>

namespace {

constexpr std::chrono::milliseconds rowCountInterval{100};
constexpr int sampledRecords = 50; // columns are sampled from the head of the table

void setDefaults(OvConfig &config)
{
    const std::pair<const char *, QVariant> defaults[] = {
        {"allow_edits", false},
        {"show_blanks_background_colored", true},
        {"show_nulls_background_colored", true},
        {"show_readable_times", true},
        {"show_raw_nulls", false},
        {"show_times_in_local_zone", false},
        {"show_tooltips", true},
        {"background_blanks_color", QStringLiteral("light yellow")},
        {"background_null_color", QStringLiteral("light gray")},
        {"time_string_format", QStringLiteral("%D (%j) %H:%M:%S.%u %Z")},
        {"local_time_zone", QString()},
    };
    for (const auto &[key, value] : defaults)
        config.configureIfUnset(QLatin1String(key), value);
}

// What a handle says; `otherwise` when it is invalid or the request fails.
template <class Answer>
Answer asked(QDbptr *handle, Answer otherwise, Answer (QDbptr::*question)())
{
    return handle->isValid() ? answered(otherwise, [&] { return (handle->*question)(); }) : otherwise;
}

} // namespace

OrvaneTableModel::Private::Private(OrvaneDatabaseModel *databaseModel, QDbptr *handle,
                                   OvConfig &configuration)
    : config(configuration), parent(databaseModel), display(handle), own(handle)
{
}

OrvaneTableModel::OrvaneTableModel(OrvaneDatabaseModel *parent, QDbptr *handle, OvConfig &config)
    : d(std::make_unique<Private>(parent, handle, config))
{
    setDefaults(config);
    // First of all listeners, so that nobody is told of a change before the model has taken it in.
    connect(this, SIGNAL(modelReset()), this, SLOT(startOver()));
    connect(this, SIGNAL(layoutChanged()), this, SLOT(dropSettings()));
    connect(&config, SIGNAL(configurationChanged()), this, SLOT(dropSettings()));

    connect(&config, SIGNAL(configurationChanged()), this, SIGNAL(layoutChanged()));
    if (parent)
        connect(parent, SIGNAL(tableChanged(OrvaneTableModel *)), this,
                SLOT(announceChanged(OrvaneTableModel *)));
    if (parent)
        connect(parent, SIGNAL(databaseChecked()), this, SLOT(catchUp()));
    if (handle) {
        handle->setParent(this);
        connect(handle, SIGNAL(invalidated()), this, SIGNAL(modelReset()));
    }
    d->rows = d->askRowCount();
    d->takeState();
}

OrvaneTableModel::~OrvaneTableModel()
{
    // Freeing is said to change data; a model that goes has no more resets to announce.
    if (d->own)
        disconnect(d->own, nullptr, this, nullptr);
    try {
        if (tableIsView())
            answered(false, [&] {
                d->own->dbFree();
                return true;
            });
        d->dropFacade(this);
    } catch (...) {
        // What listeners throw must not leave a destructor.
    }
}

void OrvaneTableModel::dropSettings()
{
    d->keptSettings.reset();
}

OrvaneDatabaseModel *OrvaneTableModel::getParent() const
{
    return d->parent;
}

Dbptr OrvaneTableModel::getDbptr() const
{
    return d->own ? d->own->getDbptr() : dbinvalid();
}

QDbptr *OrvaneTableModel::getQDbptr() const
{
    return d->own;
}

QString OrvaneTableModel::getTableName() const
{
    return asked(d->own, QString(), &QDbptr::getTableName);
}

QString OrvaneTableModel::getTableToolTipString() const
{
    return d->own->isValid() ? qovutil_getToolTipString(d->own, nullptr) : QString();
}

bool OrvaneTableModel::tableIsPresent() const
{
    return asked(d->own, false, &QDbptr::tableIsPresent);
}

bool OrvaneTableModel::tableIsWritable() const
{
    return asked(d->own, false, &QDbptr::tableIsWritable);
}

bool OrvaneTableModel::tableIsView() const
{
    return asked(d->own, false, &QDbptr::tableIsView);
}

bool OrvaneTableModel::tableIsStdinView() const
{
    return tableIsView();
}

bool OrvaneTableModel::tableIsFacade() const
{
    return !d->facadeOf.isNull();
}

void OrvaneTableModel::setIsFacadeOf(OrvaneTableModel *table)
{
    d->facadeOf = table;
}

Dbptr OrvaneTableModel::getFacadeDbptr() const
{
    return d->display ? d->display->getDbptr() : dbinvalid();
}

QString OrvaneTableModel::getFacadeTableName() const
{
    return d->facade ? d->facade->getTableName() : getTableName();
}

QList<QString> OrvaneTableModel::getTableFields() const
{
    return d->columns().names();
}

QList<QString> OrvaneTableModel::getPrimaryKey() const
{
    return asked(d->display, QList<QString>(), &QDbptr::getPrimaryKey);
}

QList<QString> OrvaneTableModel::getAlternateKey() const
{
    return asked(d->display, QList<QString>(), &QDbptr::getAlternateKey);
}

QList<QString> OrvaneTableModel::getForeignKeys() const
{
    return asked(d->display, QList<QString>(), &QDbptr::getForeignKeys);
}

QList<QString> OrvaneTableModel::getNonNullTableFields() const
{
    QList<QString> names;
    for (int number = 1; number <= d->columns().count(); ++number) {
        // A field that can't be sampled is not said to be null.
        if (!answered(false, [&] { return d->sample(number).probablyNull; }))
            names.append(d->columns().names().at(number - 1));
    }
    return names;
}

QList<QString> OrvaneTableModel::findJoinTables() const
{
    return asked(d->own, QList<QString>(), &QDbptr::findJoinTables);
}

QMap<QString, QList<QStringList>> OrvaneTableModel::findJoinTablesPresent() const
{
    return asked(d->own, QMap<QString, QList<QStringList>>(), &QDbptr::findJoinTablesPresent);
}

QList<QString> OrvaneTableModel::getViewTables() const
{
    return tableIsView() ? asked(d->own, QList<QString>(), &QDbptr::getViewTables) : QList<QString>();
}

int OrvaneTableModel::getColumnType(int column) const
{
    const TableColumn *field = d->column(column);
    return field ? field->type : 0;
}

QString OrvaneTableModel::fieldNameForColumnIndex(int column) const
{
    return column == 0 ? QStringLiteral("recno") : d->columns().names().value(column - 1);
}

int OrvaneTableModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() || !d->display->isValid())
        return 0;
    static const QMetaMethod inserted = QMetaMethod::fromSignal(&QAbstractItemModel::rowsInserted);
    if (!isSignalConnected(inserted))
        return d->rows = d->askRowCount();
    if (!d->rowsAnnouncementQueued && std::chrono::steady_clock::now() - d->rowsAskedAt > rowCountInterval &&
        (d->askRowCount() != d->rows || !isCurrent())) {
        d->rowsAnnouncementQueued = true;
        QMetaObject::invokeMethod(const_cast<OrvaneTableModel *>(this), "announceRowCount",
                                  Qt::QueuedConnection);
    }
    return d->rows;
}

void OrvaneTableModel::announceRowCount()
{
    d->rowsAnnouncementQueued = false;
    if (d->sorting) // asked for again when it is done
        return;
    const int known = d->rows;
    const int rows = d->askRowCount();
    if (rows < known || !isCurrent()) {
        emit modelReset();
    } else if (rows > known) {
        if (known < sampledRecords)
            d->columns().dropSamples();
        beginInsertRows({}, known, rows - 1);
        d->rows = rows;
        endInsertRows();
    }
}

int OrvaneTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !d->display->isValid() ? 0 : d->columns().count() + 1;
}

Qt::ItemFlags OrvaneTableModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags base = QAbstractTableModel::flags(index);
    return d->settings().allowEdits ? base | Qt::ItemIsEditable : base;
}

const DisplaySettings &OrvaneTableModel::Private::settings()
{
    if (!keptSettings)
        keptSettings.emplace(config);
    return *keptSettings;
}

TableColumns &OrvaneTableModel::Private::columns()
{
    if (!keptColumns) {
        keptColumns.emplace();
        if (display->isValid()) {
            *keptColumns = answered(TableColumns(), [&] { return TableColumns(*display); });
            reader.setTable(*display);
        }
    }
    return *keptColumns;
}

const TableColumn *OrvaneTableModel::Private::column(int number)
{
    const TableColumn *field = display->isValid() ? columns().at(number - 1) : nullptr;
    return field && field->known() ? field : nullptr;
}

int OrvaneTableModel::Private::askRowCount()
{
    rowsAskedAt = std::chrono::steady_clock::now();
    return std::max(0, asked(display, 0, &QDbptr::getRecordCount));
}

void OrvaneTableModel::Private::forgetTable()
{
    keptColumns.reset();
    reader.forget();
}

const ColumnSample &OrvaneTableModel::Private::sample(int number)
{
    if (!column(number))
        throw std::runtime_error("OrvaneTableModel: no such column");
    return columns().sample(number - 1, *reader.handle());
}
