// A file that comes to stand under the name that the user chose whole or not at all.
#ifndef OVQT_VIEWS_NEW_FILE_H
#define OVQT_VIEWS_NEW_FILE_H

#include <cstdio>

#include <QByteArray>
#include <QString>

// It is written beside the path under another name and goes with the object unless it was put in its place.
// What is no regular file, such as a device or a pipe, is written to as it is.
class NewFile
{
public:
    explicit NewFile(const QString &path);
    ~NewFile();
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    // Null where the file can't be made; the system's error number then says why.
    std::FILE *stream() const;

    // Writes bytes; what goes wrong is told when the file is put in its place.
    void write(const QByteArray &bytes);

    // Where it is written, for those who open it by themselves; its stream is closed first. Empty where it
    // can't be made.
    QString writtenPath();

    // Puts what was written under the path. Throws std::runtime_error with the reason where that fails.
    void putInPlace();

private:
    void openBeside();
    void close();

    QByteArray m_path;
    QByteArray m_temporary; // empty: the path itself is written to
    std::FILE *m_stream = nullptr;
    int m_error = 0;
};

#endif
