#ifndef ORVANE_TESTS_SMALL_DISK_H
#define ORVANE_TESTS_SMALL_DISK_H

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "temporary_database.h"

/* A real disk of a few hundred KiB, in memory, which can be full and can be read-only:
 *
 *     SmallDisk disk;
 *     if (!disk.isThere())
 *         GTEST_SKIP() << disk.whyNot();
 *     const auto files = disk.database();
 *
 * Only this process sees it. Mounting takes the rights of the administrator. */
class SmallDisk
{
public:
    explicit SmallDisk(int kibibytes = 256)
    {
        std::string path = (std::filesystem::temp_directory_path() / "orvane-disk-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = path;
        const std::string size = "size=" + std::to_string(kibibytes) + "k";
        // The disks of a namespace of our own; private, so that what is mounted in it is in no other.
        m_isThere = ::unshare(CLONE_NEWNS) == 0 &&
                    ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    ::mount("orvane-test", m_path.c_str(), "tmpfs", 0, size.c_str()) == 0;
        if (!m_isThere) {
            m_whyNot = std::string("a disk can't be mounted here, which takes the administrator: ") +
                       std::strerror(errno);
        }
    }

    ~SmallDisk()
    {
        if (m_isThere) {
            ::umount2(m_path.c_str(), MNT_DETACH);
        }
        ::rmdir(m_path.c_str());
    }

    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isThere() const { return m_isThere; }
    const std::string &whyNot() const { return m_whyNot; }
    const std::string &path() const { return m_path; }

    /* A database on it, which is to go first. */
    std::unique_ptr<TemporaryDatabase> database() const
    {
        const char *before = std::getenv("TMPDIR");
        const std::string kept = before == nullptr ? "" : before;
        ::setenv("TMPDIR", m_path.c_str(), 1);
        auto made = std::make_unique<TemporaryDatabase>();
        kept.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", kept.c_str(), 1);
        return made;
    }

    /* Until nothing more can be written. A file's last page may have room all the same: 4096 bytes at most.
     */
    void fill() const
    {
        const int file = ::open(filler().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        const std::string page(4096, 'x');
        while (::write(file, page.data(), page.size()) > 0) {
        }
        const bool isFull = errno == ENOSPC;
        ::close(file);
        if (!isFull) {
            throw std::runtime_error("the disk was not filled");
        }
    }

    void makeRoom() const { std::filesystem::remove(filler()); }

    /* Not while a file of it is open to be written. */
    void setReadOnly(bool readOnly) const
    {
        const auto flags = static_cast<unsigned long>(readOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT);
        if (::mount("orvane-test", m_path.c_str(), "tmpfs", flags, nullptr) != 0) {
            throw std::runtime_error(std::string("the disk was not mounted anew: ") + std::strerror(errno));
        }
    }

private:
    std::string filler() const { return m_path + "/filler"; }

    std::string m_path;
    std::string m_whyNot;
    bool m_isThere = false;
};

#endif
