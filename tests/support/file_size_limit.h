#ifndef ORVANE_TESTS_FILE_SIZE_LIMIT_H
#define ORVANE_TESTS_FILE_SIZE_LIMIT_H

#include <csignal>

#include <sys/resource.h>

/* While it lives no file of this process can grow beyond a size, as on a disk that gets full half way. */
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before{};
};

#endif
