// A temporary folder for spreadsheets, and what stands in it.
#ifndef ORVANE_TESTS_XLSX_SCRATCH_FOLDER_H
#define ORVANE_TESTS_XLSX_SCRATCH_FOLDER_H

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

class ScratchFolder
{
public:
    QString path(const QString &name = QStringLiteral("sheet.xlsx")) const { return m_folder.filePath(name); }

    QStringList names() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QByteArray contents(const QString &name = QStringLiteral("sheet.xlsx")) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void put(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("cannot write %s", qPrintable(path(name)));
        }
    }

private:
    QTemporaryDir m_folder;
};

#endif
