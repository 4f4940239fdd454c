// A file that comes to stand under its name whole or not at all.
#ifndef ORVANE_XLSX_REPLACEMENT_FILE_H
#define ORVANE_XLSX_REPLACEMENT_FILE_H

#include <QByteArray>
#include <QString>

namespace QXlsx {

// An empty file beside the path, removed again unless committed. Failures are std::runtime_error with
// reasons.
class ReplacementFile
{
public:
    // Refused where the path is no regular file, or one that may not be written. A symbolic link is followed.
    explicit ReplacementFile(const QString &path);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile &) = delete;
    ReplacementFile &operator=(const ReplacementFile &) = delete;

    // Where to write what shall stand under the path.
    const QByteArray &temporaryPath() const { return m_temporary; }

    // Puts what was written on the disk and under the path, with the mode of the file it replaces.
    void commit();

private:
    QByteArray m_path;
    QByteArray m_temporary;
};

} // namespace QXlsx

#endif
