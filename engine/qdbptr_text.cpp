#include <qdbptr.h>

#include <initializer_list>
#include <stdexcept>

#include "null_handle.h"

namespace {

struct TextForm {
    const char *start;
    const char *separator;
    const char *end;
    bool labelled;
};

const TextForm &textForm(QDbptrToStringMode mode)
{
    static const TextForm multiline{"QDbptr: [\n\t", ",\n\t", "\n]", true};
    static const TextForm singleLine{"QDbptr: [", ", ", "]", true};
    static const TextForm indexesOnly{"[", ", ", "]", false};
    switch (mode) {
    case QDbptrToStringSingleLine:
        return singleLine;
    case QDbptrToStringIndexesOnly:
        return indexesOnly;
    default:
        return multiline;
    }
}

struct Marker {
    int64_t index;
    const char *label;
};

// How one of the four indexes is shown: which special values it knows, and who tells its name.
struct IndexText {
    int64_t Dbptr::*index;
    std::initializer_list<Marker> markers;
    QString (QDbptr::*name)();
};

const Marker invalidMarker{dbINVALID, " = <dbINVALID>"};
const Marker allMarker{dbALL, " = <dbALL>"};
const Marker scratchMarker{dbSCRATCH, " = <dbSCRATCH>"};
const Marker nullMarker{dbNULL, " = <dbNULL>"};

const IndexText indexTexts[] = {
    {&Dbptr::database, {invalidMarker}, &QDbptr::getDatabaseName},
    {&Dbptr::table, {invalidMarker, allMarker}, &QDbptr::getTableName},
    {&Dbptr::field, {invalidMarker, allMarker}, &QDbptr::getFieldName},
    {&Dbptr::record, {invalidMarker, scratchMarker, nullMarker, allMarker}, nullptr},
};

// Set while a name is being asked for. A request that fails describes its handle in the error text, which
// would ask for the same name again, and so on for ever.
thread_local bool askingForName = false;

QString nameLabel(QDbptr *handle, QString (QDbptr::*name)())
{
    if (!name || askingForName)
        return {};
    struct Asking {
        Asking() { askingForName = true; }
        ~Asking() { askingForName = false; }
    } asking;
    try {
        const QString found = (handle->*name)();
        return found.isEmpty() ? QString() : QStringLiteral(" = '%1'").arg(found);
    } catch (const std::exception &) {
        return {}; // a text that tells of an error must be to be had in any state
    }
}

QString markerLabel(int64_t index, const std::initializer_list<Marker> &markers)
{
    for (const Marker &marker : markers)
        if (marker.index == index)
            return QLatin1String(marker.label);
    return QStringLiteral(" = <Unknown>");
}

} // namespace

QString QDbptr::toString(QDbptrToStringMode mode)
{
    requireHandle(this, "toString");
    const TextForm &form = textForm(mode);
    const Dbptr shown = m_dbptr;
    QString text = QLatin1String(form.start);
    for (const IndexText &item : indexTexts) {
        const int64_t index = shown.*item.index;
        if (&item != indexTexts)
            text += QLatin1String(form.separator);
        text += QString::number(index);
        if (form.labelled)
            text += index >= 0 ? nameLabel(this, item.name) : markerLabel(index, item.markers);
    }
    return text + QLatin1String(form.end);
}
