#include "keep.h"

#include <vector>

void keepForever(QObject *object)
{
    // Never destroyed either: at exit the objects may depend on others that are gone.
    static auto &kept = *new std::vector<QObject *>;
    if (object)
        kept.push_back(object);
}
