#include "commands.h"

#include "failure.h"
#include "record_values.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <unistd.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QVariant>

#include <xlsxdocument.h>
#include <xlsxformat.h>

namespace ovdb_qt {

namespace {

using ovdb::Column;
using ovdb::FieldDecoder;

constexpr int widest_column = 60;        // characters
constexpr int time_width = 22;           // of m/d/yy h:mm:ss.00
constexpr double furthest_time = 9.2e15; // seconds, which a clock in milliseconds can count

[[noreturn]] void fail(const std::string &message)
{
    throw ovdb::Failure(ovdb::ExitCode::Failed, message);
}

// Standard input up to its end, in pieces that are as long as they come.
class Input
{
public:
    // Without its line feed.
    std::string line()
    {
        for (;;) {
            const auto end = pending_.find('\n');
            if (end != std::string::npos) {
                std::string found = pending_.substr(0, end);
                pending_.erase(0, end + 1);
                return found;
            }
            if (!more())
                fail("the columns of the rows are missing");
        }
    }

    // What is there next; empty at the end.
    std::string piece()
    {
        if (pending_.empty())
            more();
        return std::exchange(pending_, {});
    }

private:
    bool more()
    {
        char bytes[1 << 16];
        ssize_t got = 0;
        do {
            got = read(STDIN_FILENO, bytes, sizeof bytes);
        } while (got < 0 && errno == EINTR);
        if (got < 0)
            fail(std::string("the rows cannot be read: ") + std::strerror(errno));
        pending_.append(bytes, static_cast<std::size_t>(got));
        return got > 0;
    }

    std::string pending_;
};

std::vector<Column> read_columns(Input &input)
{
    std::vector<Column> columns;
    for (std::string line = input.line(); !line.empty(); line = input.line()) {
        const QJsonArray parts = QJsonDocument::fromJson(QByteArray::fromStdString(line)).array();
        Column column;
        column.name = parts[0].toString().toStdString();
        column.type = parts[1].toString().toLongLong();
        column.width = parts[2].toString().toULong();
        column.null = parts[3].toString().toStdString();
        columns.push_back(column);
    }
    return columns;
}

class Sheet
{
public:
    explicit Sheet(std::vector<Column> columns) : fields_(ovdb::decoders_of(std::move(columns)))
    {
        header_.setFontBold(true);
        time_.setNumberFormat(QStringLiteral("m/d/yy h:mm:ss.00"));
        for (std::size_t i = 0; i < fields_.size(); ++i)
            document_.setColumnWidth(place(i), width_of(fields_[i]));
    }

    void write_header()
    {
        for (std::size_t i = 0; i < fields_.size(); ++i)
            put(i, QString::fromStdString(fields_[i].column().name), header_);
        ++row_;
    }

    // Whole records.
    bool take(std::string_view records)
    {
        while (!records.empty()) {
            for (std::size_t i = 0; i < fields_.size(); ++i) {
                const std::size_t width = fields_[i].column().width;
                put_value(i, fields_[i].decode(records.substr(0, width)));
                records.remove_prefix(width);
            }
            records.remove_prefix(1); // the line feed
            ++row_;
        }
        return true;
    }

    void save(const QString &path)
    {
        if (!document_.saveAs(path))
            fail(reason(document_));
        for (const FieldDecoder &field : fields_)
            field.tell_unreadable("empty cells");
    }

private:
    static int place(std::size_t column) { return static_cast<int>(column) + 1; }

    static int width_of(const FieldDecoder &field)
    {
        const int value =
            field.kind() == FieldDecoder::Kind::Time ? time_width : static_cast<int>(field.column().width);
        return std::min(std::max(value, static_cast<int>(field.column().name.size())) + 1, widest_column);
    }

    // Only the stand-in for the writer's library tells why.
    template <typename Document>
    static std::string reason(const Document &document)
    {
        if constexpr (requires { document.errorText(); })
            return document.errorText().toStdString();
        else
            return "the file or a cell cannot be written";
    }

    void put_value(std::size_t column, const FieldDecoder::Value &value)
    {
        if (value.state != FieldDecoder::State::Value)
            return; // an empty cell
        switch (fields_[column].kind()) {
        case FieldDecoder::Kind::Integer:
            return put(column, static_cast<qint64>(value.integer), plain_);
        case FieldDecoder::Kind::Real:
            return put(column, value.real, plain_);
        case FieldDecoder::Kind::Time:
            if (std::abs(value.real) > furthest_time)
                return put(column, value.real, plain_);
            return put(
                column,
                QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(1000 * value.real)), Qt::UTC),
                time_);
        case FieldDecoder::Kind::Text:
            return put(column, QString::fromUtf8(value.text.data(), static_cast<int>(value.text.size())),
                       plain_);
        }
    }

    void put(std::size_t column, const QVariant &value, const QXlsx::Format &format)
    {
        if (!document_.write(row_, place(column), value, format))
            fail("row " + std::to_string(row_) + ", column " + fields_[column].column().name + ": " +
                 reason(document_));
    }

    std::vector<FieldDecoder> fields_;
    QXlsx::Document document_;
    QXlsx::Format header_, time_, plain_;
    int row_ = 1;
};

} // namespace

void write_sheet(const QStringList &arguments)
{
    Input input;
    const std::vector<Column> columns = read_columns(input);
    Sheet sheet(columns);
    if (arguments[1] == QLatin1String("header"))
        sheet.write_header();
    ovdb::RecordStream records(ovdb::decoders_of(columns),
                               [&sheet](std::string_view whole) { return sheet.take(whole); });
    for (std::string piece = input.piece(); !piece.empty(); piece = input.piece())
        records.receive(piece);
    sheet.save(arguments[0]);
}

} // namespace ovdb_qt
