// How far the saving of a document is, asked by another thread than the one that saves.
#ifndef ORVANE_XLSX_SAVING_WATCH_H
#define ORVANE_XLSX_SAVING_WATCH_H

#include <QByteArray>

#include <atomic>

namespace QXlsx {

class SavingWatch
{
public:
    // For the thread that saves. --------------------------------------------------------------------

    void begin();
    // So many of the cells are in their rows. Throws std::runtime_error where somebody wants no more of it.
    void gathered(double part);
    // The rows are packed from here on, to a file of about so many bytes.
    void packing(const QByteArray &path, qint64 expectedBytes);

    // For others. -----------------------------------------------------------------------------------

    double fraction() const;
    void stop() { m_isStopped = true; }

private:
    double packed() const;

    std::atomic<double> m_gathered = 0;
    std::atomic<qint64> m_expectedBytes = 0; // 0: it is not packed yet, and nobody looks at the path
    QByteArray m_path;
    std::atomic<bool> m_isStopped = false;
};

} // namespace QXlsx

#endif
