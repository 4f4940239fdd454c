// What texts for the user are made of.
#ifndef OVEDIT_SENTENCES_H
#define OVEDIT_SENTENCES_H

#include <stdexcept>

#include <QString>

#include <orvane/numbers.h>

// A number with its thousands apart, as in the texts around it: "2,980".
inline QString counted(qint64 number)
{
    return OvNumbers::counted(number);
}

// Ends a command; the sentence is shown to the user.
[[noreturn]] inline void fail(const QString &sentence)
{
    throw std::runtime_error(sentence.toStdString());
}

#endif
