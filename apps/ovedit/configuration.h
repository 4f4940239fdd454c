// The configuration of the program: every key that the user may set, with the type and value it has to begin
// with.
#ifndef OVEDIT_CONFIGURATION_H
#define OVEDIT_CONFIGURATION_H

#include <span>

#include <QString>
#include <QVariant>

class OvConfig;

struct KnownKey {
    const char *key;
    QVariant value; // its type is the type of the key
};

// The keys of the widget library, with its defaults but for two: the program looks for changes every few
// seconds, and the local zone is the machine's.
std::span<const KnownKey> knownKeys();

// Stores the known keys. Done before anything else is stored: the first value under a key fixes its type, and
// a parameter file has only texts, so that "no" would stay the text "no" in a store that knew nothing of the
// key.
void registerKnownKeys(OvConfig &config);

// Adds what a parameter file says. Returns an empty text, or why the file can't be read: then nothing is
// stored.
QString loadParameterFile(OvConfig &config, const QString &path);

// A key that is flipped by a menu entry.
struct Switch {
    const char *key;
    const char *text;
    const char *tip;
};
std::span<const Switch> viewSwitches();
std::span<const Switch> saveSwitches();

constexpr int smallestFontSize = 4; // points
constexpr int largestFontSize = 72;
constexpr int defaultFontSize = 10;

// Sets the size of the table font, brought into the range above, for windows that are open and those to come.
void setFontSize(OvConfig &config, int points);

#endif
