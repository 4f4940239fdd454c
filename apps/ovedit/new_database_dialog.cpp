#include "new_database_dialog.h"

#include <cstdlib>
#include <memory>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <orvane/db_create.h>
#include <qovutil.h>

#include "settings.h"

namespace {

constexpr int pathWidth = 420;
constexpr int tablesHeight = 220;

// What a call of the database library left in its error log, one line a reason.
QString takenReasons()
{
    const std::unique_ptr<char, void (*)(void *)> text(elog_string(0), std::free);
    elog_clear();
    return QString::fromUtf8(text ? text.get() : "").trimmed();
}

QString textOf(const Tbl *list, qint64 index)
{
    return QString::fromUtf8(static_cast<const char *>(gettbl(list, index)));
}

QLabel *labelOf(const QString &text, QWidget *buddy)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

} // namespace

NewDatabaseDialog::NewDatabaseDialog(Settings &settings, QWidget *parent)
    : QDialog(parent), m_settings(settings), m_name(new QLineEdit), m_folder(new QLineEdit),
      m_schema(new QComboBox), m_about(new QLabel), m_tables(new QTreeWidget), m_description(new QLineEdit),
      m_hindrance(new QLabel)
{
    setWindowTitle(tr("New Database"));
    m_name->setObjectName("newName");
    m_name->setPlaceholderText(tr("What the names of its files begin with"));
    m_name->setMinimumWidth(pathWidth);
    m_folder->setObjectName("newFolder");
    const QString last = m_settings.lastFolder();
    m_folder->setText(QDir::toNativeSeparators(last.isEmpty() ? QDir::currentPath() : last));
    m_schema->setObjectName("newSchema");
    m_description->setObjectName("newDescription");
    m_description->setPlaceholderText(tr("One line that tells what it holds"));
    m_about->setWordWrap(true);
    m_about->setTextFormat(Qt::PlainText);
    m_tables->setObjectName("newTables");
    m_tables->setColumnCount(2);
    m_tables->setHeaderLabels({tr("Table"), tr("Description")});
    m_tables->setRootIsDecorated(false);
    m_tables->setMinimumHeight(tablesHeight);
    m_hindrance->setObjectName("newHindrance");
    m_hindrance->setTextFormat(Qt::PlainText);
    m_hindrance->setWordWrap(true);

    auto *browseFolderButton = new QPushButton(tr("&Browse..."));
    connect(browseFolderButton, &QPushButton::clicked, this, &NewDatabaseDialog::browseFolder);
    auto *browseSchemaButton = new QPushButton(tr("From a &File..."));
    connect(browseSchemaButton, &QPushButton::clicked, this, &NewDatabaseDialog::browseSchema);
    for (QPushButton *button : {browseFolderButton, browseSchemaButton})
        button->setAutoDefault(false); // Return creates
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    m_create = buttons->addButton(tr("&Create"), QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &NewDatabaseDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *grid = new QGridLayout(this);
    grid->addWidget(labelOf(tr("&Name:"), m_name), 0, 0);
    grid->addWidget(m_name, 0, 1, 1, 2);
    grid->addWidget(labelOf(tr("F&older:"), m_folder), 1, 0);
    grid->addWidget(m_folder, 1, 1);
    grid->addWidget(browseFolderButton, 1, 2);
    grid->addWidget(labelOf(tr("&Description:"), m_description), 2, 0);
    grid->addWidget(m_description, 2, 1, 1, 2);
    grid->addWidget(labelOf(tr("&Schema:"), m_schema), 3, 0);
    grid->addWidget(m_schema, 3, 1);
    grid->addWidget(browseSchemaButton, 3, 2);
    grid->addWidget(m_about, 4, 1, 1, 2);
    grid->addWidget(m_tables, 5, 0, 1, 3);
    grid->addWidget(m_hindrance, 6, 0, 1, 3);
    grid->addWidget(buttons, 7, 0, 1, 3);
    m_create->setDefault(true); // now that it is in the dialog
    grid->setRowStretch(5, 1);
    grid->setColumnStretch(1, 1);

    fillSchemas();
    connect(m_name, &QLineEdit::textChanged, this, &NewDatabaseDialog::showHindrance);
    connect(m_folder, &QLineEdit::textChanged, this, &NewDatabaseDialog::showHindrance);
    connect(m_folder, &QLineEdit::editingFinished, this, &NewDatabaseDialog::fillSchemas);
    connect(m_schema, qOverload<int>(&QComboBox::currentIndexChanged), this, &NewDatabaseDialog::showSchema);
    showSchema();
    m_name->setFocus();
}

QString NewDatabaseDialog::folder() const
{
    return QDir::cleanPath(QDir::fromNativeSeparators(m_folder->text().trimmed()));
}

QString NewDatabaseDialog::database() const
{
    return QDir::cleanPath(QDir(folder()).absoluteFilePath(m_name->text().trimmed()));
}

// A name, or the path of a file.
QString NewDatabaseDialog::schema() const
{
    return m_schema->currentData().toString();
}

void NewDatabaseDialog::browseFolder()
{
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("Folder of the New Database"), folder());
    if (!chosen.isEmpty()) {
        m_folder->setText(QDir::toNativeSeparators(chosen));
        fillSchemas();
    }
}

void NewDatabaseDialog::browseSchema()
{
    const QString chosen =
        QFileDialog::getOpenFileName(this, tr("Choose a Schema"), folder(), tr("Schemas (*.yaml)"));
    if (chosen.isEmpty()) {
        return;
    }
    m_schema->addItem(QFileInfo(chosen).fileName(), chosen);
    m_schema->setItemData(m_schema->count() - 1, QDir::toNativeSeparators(chosen), Qt::ToolTipRole);
    m_schema->setCurrentIndex(m_schema->count() - 1);
}

// Those that a database in the folder could have: the list depends on what lies there. Files that were chosen
// stay.
void NewDatabaseDialog::fillSchemas()
{
    if (!m_listedFolder.isNull() && m_listedFolder == folder()) {
        return;
    }
    m_listedFolder = folder();
    const QString before = schema();
    const QSignalBlocker quiet(m_schema);
    for (int index = m_schema->count() - 1; index >= 0; --index) {
        if (!m_schema->itemData(index).toString().contains('/')) {
            m_schema->removeItem(index);
        }
    }
    Tbl *names = nullptr;
    if (dbfind_schemas(QFile::encodeName(folder()).constData(), &names) == 0) {
        for (qint64 i = 0; i < maxtbl(names); ++i) {
            m_schema->insertItem(static_cast<int>(i), textOf(names, i), textOf(names, i));
        }
        freetbl(names, std::free);
    }
    takenReasons(); // of schemas that are none
    m_schema->setCurrentIndex(qMax(0, m_schema->findData(before)));
    showSchema();
}

void NewDatabaseDialog::showSchema()
{
    m_tables->clear();
    m_schemaIsGood = false;
    m_about->clear();
    DbSchema found;
    if (m_schema->count() > 0) {
        if (dbread_schema(QFile::encodeName(folder()).constData(), schema().toUtf8().constData(), &found) <
            0) {
            m_about->setText(takenReasons());
        } else {
            m_schemaIsGood = true;
            m_about->setText(QString::fromUtf8(found.description));
            for (qint64 i = 0; i < maxtbl(found.tables); ++i) {
                auto *item =
                    new QTreeWidgetItem(m_tables, {textOf(found.tables, i), textOf(found.descriptions, i)});
                item->setToolTip(0, tr("Fields: %1").arg(textOf(found.fields, i)));
                item->setToolTip(1, item->toolTip(0));
            }
            dbfree_schema(&found);
        }
    }
    m_tables->resizeColumnToContents(0);
    showHindrance();
}

// Why nothing can be created yet; empty when it can.
QString NewDatabaseDialog::hindrance() const
{
    const QString name = m_name->text().trimmed();
    if (name.isEmpty()) {
        return tr("Give the database a name.");
    }
    if (name.contains('/') || name == QLatin1String(".") || name == QLatin1String("..")) {
        return tr("A name has no slash in it; the folder stands below.");
    }
    const QFileInfo place(folder());
    if (m_folder->text().trimmed().isEmpty() || !place.isDir()) {
        return tr("There is no such folder.");
    }
    if (!place.isWritable()) {
        return tr("The folder cannot be written.");
    }
    if (QFileInfo::exists(database())) {
        return tr("There is a file of that name already.");
    }
    if (m_schema->count() == 0) {
        return tr("No schema is installed; choose a file.");
    }
    return m_schemaIsGood ? QString() : tr("The schema cannot be used.");
}

void NewDatabaseDialog::showHindrance()
{
    const QString why = hindrance();
    m_hindrance->setText(why);
    m_create->setEnabled(why.isEmpty());
}

void NewDatabaseDialog::accept()
{
    showHindrance();
    if (!m_create->isEnabled()) {
        return;
    }
    if (dbcreate_database(QFile::encodeName(database()).constData(), schema().toUtf8().constData(),
                          m_description->text().trimmed().toUtf8().constData(), nullptr) < 0) {
        qovutil_showError(takenReasons(), this);
        showHindrance();
        return;
    }
    m_settings.setLastFolder(folder());
    QDialog::accept();
}
