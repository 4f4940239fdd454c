#include <xlsxformat.h>

namespace QXlsx {

bool Format::fontBold() const
{
    return m_bold;
}

void Format::setFontBold(bool bold)
{
    m_bold = bold;
}

QString Format::numberFormat() const
{
    return m_numberFormat;
}

void Format::setNumberFormat(const QString &format)
{
    m_numberFormat = format;
}

bool Format::operator==(const Format &other) const
{
    return m_bold == other.m_bold && m_numberFormat == other.m_numberFormat;
}

bool Format::operator!=(const Format &other) const
{
    return !(*this == other);
}

} // namespace QXlsx
