#include <ovconfig.h>

#include <iostream>
#include <memory>
#include <string>

#include <orvane/util.h>

namespace {

struct FreeKeys {
    void operator()(Tbl *keys) const { freetbl(keys, nullptr); }
};
using Keys = std::unique_ptr<Tbl, FreeKeys>;

QVariant listFrom(const Pf *list, const char *key)
{
    QVariantList values;
    for (int64_t i = 0; i < pfmaxtbl(list); ++i) {
        const std::string element = std::to_string(i);
        PfValue value{};
        if (pfget(list, element.c_str(), &value) == PFSTRING)
            values.append(QString::fromUtf8(value.text));
        else
            std::cerr << "Lists not allowed to nest other lists/arrays in OvConfig (parameter '" << key
                      << "', element '" << element << "')" << std::endl;
    }
    return values;
}

QVariant mapFrom(const Pf *array, const char *key)
{
    QVariantMap values;
    const Keys subkeys(pfkeys(array));
    for (int64_t i = 0; i < maxtbl(subkeys.get()); ++i) {
        const char *subkey = static_cast<const char *>(gettbl(subkeys.get(), i));
        PfValue value{};
        if (pfget(array, subkey, &value) == PFSTRING)
            values.insert(QString::fromUtf8(subkey), QString::fromUtf8(value.text));
        else
            std::cerr << "Arrays not allowed to nest other lists/arrays in OvConfig (parameter '" << key
                      << "', subparameter '" << subkey << "')" << std::endl;
    }
    return values;
}

QVariant valueFrom(const Pf *pf, const char *key)
{
    PfValue value{};
    switch (pfget(pf, key, &value)) {
    case PFLIST:
        return listFrom(value.pf, key);
    case PFARRAY:
        return mapFrom(value.pf, key);
    default:
        return QString::fromUtf8(value.text);
    }
}

} // namespace

void OvConfig::configure(Pf *pf)
{
    if (!pf)
        return;
    const Keys keys(pfkeys(pf));
    for (int64_t i = 0; i < maxtbl(keys.get()); ++i) {
        const char *key = static_cast<const char *>(gettbl(keys.get(), i));
        configure(QString::fromUtf8(key), valueFrom(pf, key));
    }
}
