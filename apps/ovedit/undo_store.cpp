#include "undo_store.h"

#include <QTemporaryFile>

UndoStore::UndoStore(const QString &folder) : m_folder(folder) {}
UndoStore::~UndoStore() = default;

bool UndoStore::moveToFile()
{
    m_file = std::make_unique<QTemporaryFile>(QDir(m_folder).filePath("ovedit-undo-XXXXXX"));
    if (m_file->open() && m_file->write(m_memory) == m_memory.size()) {
        m_memory = QByteArray();
        return true;
    }
    m_error = m_file->errorString();
    m_file.reset();
    return false;
}

qint64 UndoStore::append(const char *bytes, qint64 length)
{
    if (!m_error.isEmpty() || (m_file == nullptr && m_size + length > bytesInMemory && !moveToFile())) {
        return -1;
    }
    const qint64 offset = m_size;
    if (m_file == nullptr) {
        m_memory.append(bytes, static_cast<int>(length));
    } else if (!m_file->seek(m_size) || m_file->write(bytes, length) != length || !m_file->flush()) {
        m_error = m_file->errorString();
        return -1;
    }
    m_size += length;
    return offset;
}

QByteArray UndoStore::read(qint64 offset, qint64 length)
{
    if (m_file == nullptr) {
        return m_memory.mid(static_cast<int>(offset), static_cast<int>(length));
    }
    if (!m_file->seek(offset)) {
        return {};
    }
    const QByteArray bytes = m_file->read(length);
    return bytes.size() == length ? bytes : QByteArray();
}
