#include "replacement_file.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QXlsx {

namespace {

[[noreturn]] void failed(const char *what, const QByteArray &path, int error)
{
    throw std::runtime_error(std::string(what) + " '" + path.toStdString() + "': " + std::strerror(error));
}

// The name of a new, empty file of the default mode beside the path.
QByteArray createBeside(const QByteArray &path)
{
    for (;;) {
        const QByteArray name = path + '.' + QByteArray::number(QRandomGenerator::global()->generate(), 36);
        const int file = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0) {
            ::close(file);
            return name;
        }
        if (errno != EEXIST) {
            failed("cannot write beside", path, errno);
        }
    }
}

} // namespace

ReplacementFile::ReplacementFile(const QString &path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    m_path = QFile::encodeName(target.isEmpty() ? path : target);
    struct stat status {
    };
    if (::stat(m_path.constData(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            failed("cannot write", m_path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
        }
        if (::access(m_path.constData(), W_OK) != 0) {
            failed("cannot write", m_path, errno);
        }
    }
    m_temporary = createBeside(m_path);
}

ReplacementFile::~ReplacementFile()
{
    if (!m_temporary.isEmpty()) {
        ::unlink(m_temporary.constData());
    }
}

void ReplacementFile::commit()
{
    struct stat status {
    };
    if (::stat(m_path.constData(), &status) == 0 &&
        ::chmod(m_temporary.constData(), status.st_mode & 07777) != 0) {
        failed("cannot set the mode of", m_temporary, errno);
    }
    const int file = ::open(m_temporary.constData(), O_RDONLY | O_CLOEXEC);
    const bool stored = file >= 0 && ::fsync(file) == 0;
    const int error = errno;
    if (file >= 0) {
        ::close(file);
    }
    if (!stored) {
        failed("cannot store", m_temporary, error);
    }
    if (std::rename(m_temporary.constData(), m_path.constData()) != 0) {
        failed("cannot replace", m_path, errno);
    }
    m_temporary.clear();
}

} // namespace QXlsx
