#include "new_file.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <orvane/tr.h>

namespace {

[[noreturn]] void failed(const QByteArray &path, int error)
{
    throw std::runtime_error(OvTranslation::tr("%1: cannot be written: %2")
                                 .arg(QFile::decodeName(path), QString::fromLocal8Bit(std::strerror(error)))
                                 .toStdString());
}

} // namespace

NewFile::NewFile(const QString &path)
{
    const QString target = QFileInfo(path).canonicalFilePath(); // behind symbolic links
    m_path = QFile::encodeName(target.isEmpty() ? path : target);
    struct stat there {
    };
    const bool isThere = ::stat(m_path.constData(), &there) == 0;
    if (isThere && !S_ISREG(there.st_mode)) {
        m_stream = std::fopen(m_path.constData(), "we");
        m_error = m_stream == nullptr ? errno : 0;
    } else if (isThere && ::access(m_path.constData(), W_OK) != 0) {
        m_error = errno;
    } else {
        openBeside();
    }
}

// The folder may be one that other programs look through: the name says that it is none of theirs.
void NewFile::openBeside()
{
    const int slash = m_path.lastIndexOf('/') + 1;
    for (int number = 0;; ++number) {
        m_temporary = m_path.left(slash) + '.' + m_path.mid(slash) + '.' + QByteArray::number(::getpid()) +
                      '-' + QByteArray::number(number);
        const int file = ::open(m_temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        m_error = file < 0 ? errno : 0;
        if (file >= 0) {
            m_stream = ::fdopen(file, "w");
            m_error = m_stream == nullptr ? errno : 0;
        }
        if (m_error != EEXIST) {
            break;
        }
    }
    if (m_error != 0) {
        m_temporary.clear();
    }
}

NewFile::~NewFile()
{
    if (m_stream != nullptr) {
        std::fclose(m_stream);
    }
    if (!m_temporary.isEmpty()) {
        ::unlink(m_temporary.constData());
    }
}

std::FILE *NewFile::stream() const
{
    errno = m_error;
    return m_stream;
}

void NewFile::write(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (m_stream != nullptr && std::fwrite(bytes.constData(), 1, size, m_stream) != size) {
        m_error = errno;
    }
}

void NewFile::close()
{
    if (m_stream != nullptr && std::fclose(std::exchange(m_stream, nullptr)) != 0) {
        m_error = errno;
    }
}

QString NewFile::writtenPath()
{
    close();
    return m_error != 0 ? QString() : QFile::decodeName(m_temporary.isEmpty() ? m_path : m_temporary);
}

void NewFile::putInPlace()
{
    close();
    if (m_error != 0) {
        failed(m_path, m_error);
    }
    if (m_temporary.isEmpty()) {
        return;
    }
    // The users of a file that is replaced keep their rights.
    struct stat replaced {
    };
    if (::stat(m_path.constData(), &replaced) == 0 &&
        ::chmod(m_temporary.constData(), replaced.st_mode & 07777) != 0) {
        failed(m_path, errno);
    }
    const int file = ::open(m_temporary.constData(), O_RDONLY | O_CLOEXEC);
    const bool isStored = file >= 0 && ::fsync(file) == 0;
    const int error = errno;
    if (file >= 0) {
        ::close(file);
    }
    if (!isStored) {
        failed(m_path, error);
    }
    if (std::rename(m_temporary.constData(), m_path.constData()) != 0) {
        failed(m_path, errno);
    }
    m_temporary.clear();
}
