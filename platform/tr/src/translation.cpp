#include <orvane/tr.h>

#include <QCoreApplication>

QString OvTranslation::tr(const char *text)
{
    return QCoreApplication::translate("OvTranslation", text);
}
