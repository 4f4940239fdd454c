#ifndef OVCONFIG_H
#define OVCONFIG_H

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

#include <ovqt_export.h>

struct Pf;

/* The settings of the library: values by key. The first value stored under a key fixes its type, and
 * later ones are converted to it. Colours are strings. Nothing is ever removed and nothing throws; what is
 * refused is told on standard error. One store lives as long as the windows that read it. GUI thread only. */
class OVQT_EXPORT OvConfig : public QObject
{
    Q_OBJECT

public:
    OvConfig();
    ~OvConfig() override;

    /* The value, or an invalid variant when there is none. */
    QVariant operator[](const QString &key) const;
    bool hasKey(QString key) const;

    /* Sets a value, converted to the type that the key has already; a value that doesn't convert is reported
     * and ignored. Where the type is bool, the texts "no", "off", "false", "n", "f", "0" (in any case) and
     * the empty one mean false, every other text true. Announces a value that equals the old one, too. */
    void configure(QString key, QVariant value);

    /* Stores every top-level entry of a parameter file: strings, lists of strings and maps of strings. Nested
     * lists and arrays are reported and left out. Null: nothing. */
    void configure(Pf *pf);

    /* Stores a default as it is when the key is absent; else does, and announces, nothing. */
    void configureIfUnset(QString key, QVariant value);

    /* Flips a boolean and returns its new value; false, with nothing changed, for anything else. */
    bool toggle(QString key);

    /* Prints every entry to standard output, in the order of the keys. */
    void dump();

signals:
    /* Delivered before the call that made the change returns. */
    void configurationChanged();

private:
    void store(const QString &key, const QVariant &value);

    QMap<QString, QVariant> m_values;
};

#endif
