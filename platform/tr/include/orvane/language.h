// The language in which an application speaks to its user.
//
// The source texts are English; every other language is a catalogue, orvane_CODE.qm in the folder
// share/orvane/translations of the tree in which this library lies.
#ifndef ORVANE_LANGUAGE_H
#define ORVANE_LANGUAGE_H

#include <QString>
#include <QStringList>

#include <orvane/tr_export.h>

class ORVANE_TR_EXPORT OvLanguage
{
public:
    // The codes of the languages that there are: "en", then those of the catalogues in alphabetical order.
    static QStringList known();

    // The language that a wish such as "de", "de_AT" or "de-AT" comes to, by its code; empty when there is
    // none.
    static QString forWish(const QString &wish);

    // The first language that there is of those that the environment asks for (LANGUAGE, LC_ALL, LC_MESSAGES,
    // LANG), "en" when there is none.
    static QString ofEnvironment();

    // Loads the catalogues of a known language for the application object, which must exist: ours, and the
    // toolkit's for its standard buttons and dialogs. Texts that were translated before stay as they are, so
    // this comes before the first window. What was loaded before is dropped; of "en" only the toolkit has
    // one. False when our catalogue can't be loaded: then the texts are English.
    static bool use(const QString &code);
};

#endif
