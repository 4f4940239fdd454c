#ifndef OVQT_EXPORT_H
#define OVQT_EXPORT_H

#include <QtGlobal>

// Marks the classes and functions that libovqt_x11 offers.
#ifdef OVQT_BUILD
#define OVQT_EXPORT Q_DECL_EXPORT
#else
#define OVQT_EXPORT Q_DECL_IMPORT
#endif

#endif
