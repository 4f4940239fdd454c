#ifndef ANSWER_CONVERSION_H
#define ANSWER_CONVERSION_H

#include <algorithm>
#include <limits>

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <qdbptr.h>
#include <qovresponse.h>

#include "null_handle.h"

/* From the value of a response to the result of a typed method; a value of another type gives the type's
 * default. One specialisation per result type. */
template <class Result>
Result converted(const QVariant &value) = delete;

template <>
inline QString converted<QString>(const QVariant &value)
{
    return value.toString();
}

template <>
inline bool converted<bool>(const QVariant &value)
{
    return value.toBool();
}

template <>
inline double converted<double>(const QVariant &value)
{
    return value.toDouble();
}

/* Saturates: sizes and counts travel as 64 bits. */
template <>
inline int converted<int>(const QVariant &value)
{
    constexpr qlonglong least = std::numeric_limits<int>::min();
    constexpr qlonglong greatest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value.toLongLong(), least, greatest));
}

template <>
inline QList<QString> converted<QList<QString>>(const QVariant &value)
{
    return QDbptr::QVariantListToQStringList(value.toList());
}

template <>
inline QHash<QString, QString> converted<QHash<QString, QString>>(const QVariant &value)
{
    QHash<QString, QString> result;
    const QVariantMap map = value.toMap();
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        result.insert(entry.key(), entry.value().toString());
    return result;
}

template <>
inline QHash<QString, double> converted<QHash<QString, double>>(const QVariant &value)
{
    QHash<QString, double> result;
    const QVariantHash hash = value.toHash();
    for (auto entry = hash.begin(); entry != hash.end(); ++entry)
        result.insert(entry.key(), entry.value().toDouble());
    return result;
}

template <>
inline QVariantList converted<QVariantList>(const QVariant &value)
{
    return value.toList();
}

template <>
inline QHash<QString, QVariant> converted<QHash<QString, QVariant>>(const QVariant &value)
{
    return value.toHash();
}

/* Sends a request for a method that may be called on a null handle, and converts the answer. */
template <class Result>
Result answerTo(QDbptr *handle, const char *method, QString request, QList<QVariant> args = {})
{
    requireHandle(handle, method);
    return converted<Result>(*handle->request(std::move(request), std::move(args)));
}

/* The same for a request that answers a pointer: a new handle, the caller's. */
inline QDbptr *handleFrom(QDbptr *handle, const char *method, QString request, QList<QVariant> args)
{
    requireHandle(handle, method);
    return handle->request(std::move(request), std::move(args))->getQDbptr();
}

#endif
