// A saved view that comes by standard input.
#ifndef OVEDIT_PIPED_VIEW_H
#define OVEDIT_PIPED_VIEW_H

#include <cstdio>
#include <memory>

#include <QString>

class MainWindow;

class PipedView
{
public:
    // Reads a stream to its end. Throws std::runtime_error with the reason where it isn't a view of a
    // database that can be opened.
    explicit PipedView(std::FILE *stream);

    // The path of the database.
    QString database() const { return m_database; }

    // Adds the view to those of its database, shown in this window, and brings it to the front. Throws as
    // above.
    void showIn(MainWindow &window);

private:
    struct Close {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Close> m_text;
    QString m_database;
};

#endif
