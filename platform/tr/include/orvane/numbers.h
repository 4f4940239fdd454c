// Numbers in texts for the user.
#ifndef ORVANE_NUMBERS_H
#define ORVANE_NUMBERS_H

#include <QLocale>
#include <QString>

#include <orvane/tr.h>

// Made of OvTranslation::tr alone, so that it speaks the language of whichever class a program brings for it.
class OvNumbers
{
public:
    // A count with its thousands apart as in the language of the texts around it: "2,980", in German "2.980".
    static QString counted(qint64 count) { return language().toString(count); }

private:
    //: The code of the language that is translated into, such as "de": numbers are written as in that.
    static QLocale language() { return QLocale(OvTranslation::tr("en")); }
};

#endif
