#ifndef OVQT_MODELS_TOOLTIP_ROWS_H
#define OVQT_MODELS_TOOLTIP_ROWS_H

#include <QString>
#include <initializer_list>

class QDbptr;
class OvConfig;

// The pieces that tooltips are put together from. Their HTML is what people's style sheets and scripts have
// met for years: a row whose bold tag is not closed stays so.
namespace tooltip {

QString label(const char *text); // translated, and the translated colon

QString headRow(const char *labelText, const QString &value); // sets the widths of the columns
QString plainRow(const char *labelText, const QString &value);
QString fieldRow(const char *labelText,
                 const QString &value); // of the field tooltip: its bold tag stays open
QString spacer();

// A row whose value is what a handle answers to one question.
struct Question {
    const char *labelText;
    QString (QDbptr::*ask)();
};
QString plainRows(QDbptr &dbptr, std::initializer_list<Question> questions);
QString fieldRows(QDbptr &dbptr, std::initializer_list<Question> questions);

// A number that a handle answers, in 64 bits: byte counts do not fit the handle's own getters.
qint64 number(QDbptr &dbptr, const char *request);

// "1 record", "7 records".
QString recordCount(QDbptr &dbptr);

QString ofDatabase(QDbptr &dbptr);
QString ofTable(QDbptr &dbptr);
QString ofField(QDbptr &dbptr);
QString ofRecord(QDbptr &dbptr, const OvConfig *config); // `config` may be null

} // namespace tooltip

#endif
