#include <ovconfig.h>

#include <algorithm>
#include <iostream>
#include <iterator>

namespace {

// More texts than the toolkit's own conversion takes for false, as people write them into parameter files.
bool meansFalse(const QString &text)
{
    static const QString falseTexts[] = {"", "0", "f", "n", "no", "off", "false"};
    return std::find(std::begin(falseTexts), std::end(falseTexts), text.toLower()) != std::end(falseTexts);
}

bool convertTo(int type, QVariant &value)
{
    if (type == QMetaType::Bool && value.userType() == QMetaType::QString) {
        value = !meansFalse(value.toString());
        return true;
    }
    return value.convert(type);
}

} // namespace

OvConfig::OvConfig() = default;

OvConfig::~OvConfig() = default;

QVariant OvConfig::operator[](const QString &key) const
{
    return m_values.value(key);
}

bool OvConfig::hasKey(QString key) const
{
    return m_values.contains(key);
}

void OvConfig::store(const QString &key, const QVariant &value)
{
    m_values.insert(key, value);
    emit configurationChanged();
}

void OvConfig::configure(QString key, QVariant value)
{
    const QVariant existing = m_values.value(key);
    // An invalid variant under a key has no type that it could give to later values.
    if (existing.isValid() && !convertTo(existing.userType(), value)) {
        std::cerr << "OvConfig::configure: Failed to convert parameter '" << key.toStdString()
                  << "' to pre-existing type '" << existing.typeName() << "', ignoring parameter\n"
                  << std::endl;
        return;
    }
    store(key, value);
}

void OvConfig::configureIfUnset(QString key, QVariant value)
{
    if (!hasKey(key))
        store(key, value);
}

bool OvConfig::toggle(QString key)
{
    const QVariant existing = m_values.value(key);
    if (existing.userType() != QMetaType::Bool)
        return false;
    const bool flipped = !existing.toBool();
    store(key, flipped);
    return flipped;
}

void OvConfig::dump()
{
    const auto printEntry = [](const QString &text) {
        std::cout << "\tEntry:\t\t\t" << text.toStdString() << std::endl;
    };
    for (auto entry = m_values.cbegin(); entry != m_values.cend(); ++entry) {
        const QVariant &value = entry.value();
        const char *type = value.typeName();
        std::cout << "Parameter: (" << (type ? type : "") << ")\t\t'" << entry.key().toStdString() << "'\t\t"
                  << value.toString().toStdString() << std::endl;
        if (value.userType() == QMetaType::QVariantMap) {
            const QVariantMap map = value.toMap();
            for (auto item = map.cbegin(); item != map.cend(); ++item)
                printEntry(item.key() + '\t' + item.value().toString());
        } else if (value.userType() == QMetaType::QVariantList) {
            const QVariantList list = value.toList();
            for (const QVariant &item : list)
                printEntry(item.toString());
        }
    }
}
