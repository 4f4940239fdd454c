// How a cell of a spreadsheet is shown: a value, copied freely.
#ifndef ORVANE_XLSX_FORMAT_H
#define ORVANE_XLSX_FORMAT_H

#include <QString>

#include <xlsx_export.h>

namespace QXlsx {

class ORVANE_XLSX_EXPORT Format
{
public:
    bool fontBold() const;
    void setFontBold(bool bold);

    // A number format as spreadsheet programs write it, such as "m/d/yy h:mm:ss.00"; empty: the general one.
    QString numberFormat() const;
    void setNumberFormat(const QString &format);

    bool operator==(const Format &other) const;
    bool operator!=(const Format &other) const;

private:
    bool m_bold = false;
    QString m_numberFormat;
};

} // namespace QXlsx

#endif
