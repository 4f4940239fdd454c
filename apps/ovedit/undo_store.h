// Bytes of one undo step, kept in memory as long as they are few and in a temporary file from then on.
#ifndef OVEDIT_UNDO_STORE_H
#define OVEDIT_UNDO_STORE_H

#include <memory>

#include <QByteArray>
#include <QDir>
#include <QString>

class QTemporaryFile;

class UndoStore
{
public:
    static constexpr qint64 bytesInMemory = 1 << 20;

    // The file is made in this folder.
    explicit UndoStore(const QString &folder = QDir::tempPath());
    ~UndoStore();

    // Appends bytes and answers where they begin; -1 when there is no room for them, see error().
    qint64 append(const char *bytes, qint64 length);
    // Bytes from there on; an empty array when they can't be read back.
    QByteArray read(qint64 offset, qint64 length);

    qint64 size() const { return m_size; }
    bool isInFile() const { return m_file != nullptr; }
    QString error() const { return m_error; }

private:
    bool moveToFile();

    const QString m_folder;
    QByteArray m_memory;
    std::unique_ptr<QTemporaryFile> m_file; // gone with the object
    qint64 m_size = 0;
    QString m_error;
};

#endif
