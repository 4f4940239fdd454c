#include "piped_view.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <orvane/db.h>
#include <orvane/tr.h>

#include <orvanedatabasemodel.h>
#include <orvanedatabaseview.h>

#include "main_window.h"

namespace {

std::runtime_error failure()
{
    const std::unique_ptr<char, decltype(&std::free)> log(elog_string(0), &std::free);
    const QString reason = log == nullptr ? QString() : QString::fromUtf8(log.get());
    elog_clear();
    return std::runtime_error(OvTranslation::tr("Standard input: %1").arg(reason).toStdString());
}

QString textAnswer(Dbptr about, int code)
{
    const char *text = nullptr;
    return dbquery(about, code, &text) < 0 ? QString() : QString::fromUtf8(text);
}

} // namespace

// The library reads the text twice: to learn what database it is of, and as a view of that database as the
// window has it open.
PipedView::PipedView(std::FILE *stream) : m_text(std::tmpfile())
{
    char piece[1 << 16];
    bool isWritten = m_text != nullptr;
    while (isWritten) {
        const std::size_t got = std::fread(piece, 1, sizeof piece, stream);
        if (got == 0) {
            break;
        }
        isWritten = std::fwrite(piece, 1, got, m_text.get()) == got;
    }
    if (!isWritten || std::ferror(stream) != 0 || std::fflush(m_text.get()) != 0) {
        throw std::runtime_error(OvTranslation::tr("Standard input: cannot be kept: %1")
                                     .arg(QString::fromLocal8Bit(std::strerror(errno)))
                                     .toStdString());
    }
    std::rewind(m_text.get());
    const Dbptr view = dbread_view(dbinvalid(), m_text.get(), nullptr);
    if (view.table < 0) {
        throw failure();
    }
    m_database = textAnswer(view, dbDATABASE_NAME);
    OVdbclose(view);
}

void PipedView::showIn(MainWindow &window)
{
    std::rewind(m_text.get());
    Dbptr database = window.model()->getDbptr();
    database.table = dbALL;
    const Dbptr view = dbread_view(database, m_text.get(), nullptr);
    if (view.table < 0) {
        throw failure();
    }
    const QString name = textAnswer(view, dbTABLE_NAME);
    window.view()->addTable(window.model()->getTableModel(name));
    window.bringToFront(name);
}
