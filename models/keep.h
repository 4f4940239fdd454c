#ifndef OVQT_MODELS_KEEP_H
#define OVQT_MODELS_KEEP_H

class QObject;

// Keeps an object until the process ends, without ever destroying it. For what a database model leaves
// behind: windows may still point to its table models and handles, and a connection without an open database
// must not be destroyed. Null is ignored.
void keepForever(QObject *object);

#endif
