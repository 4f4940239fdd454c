// Translation of user-visible texts through the toolkit's catalogues, in one context for the whole system.
#ifndef ORVANE_TR_H
#define ORVANE_TR_H

#include <QString>

#include <orvane/tr_export.h>

class ORVANE_TR_EXPORT OvTranslation
{
public:
    // The text in the language of the application's installed translators, or the source text (UTF-8,
    // English) where no catalogue has it. A null text gives an empty one.
    static QString tr(const char *text);

    // Marks a text that stands in a table and is translated later, so that it gets into the catalogues. The
    // text itself.
    static constexpr const char *noop(const char *text) { return text; }
};

#endif
