#include "record_keys.h"

#include <orvane/tr.h>

#include <orvanetablemodel.h>

QStringList RecordKeys::note(const OrvaneTableModel &model, int column, bool isAll)
{
    const QStringList key = model.baseKey(column);
    if (key.isEmpty()) {
        return {};
    }
    if (!m_counts.contains(key)) {
        m_counts.insert(key, {column, model.differentBaseKeys(column, OrvaneTableModel::Keys::AsTheyAre)});
    }
    const bool becomeFewer =
        isAll && model.differentBaseKeys(column, OrvaneTableModel::Keys::WithOneValue) < m_counts[key].second;
    return becomeFewer ? key : QStringList();
}

QStringList RecordKeys::met(const OrvaneTableModel &model) const
{
    for (auto noted = m_counts.begin(); noted != m_counts.end(); ++noted) {
        if (model.differentBaseKeys(noted->first, OrvaneTableModel::Keys::AsTheyAre) < noted->second) {
            return noted.key();
        }
    }
    return {};
}

QString RecordKeys::sentence(const QStringList &key)
{
    return OvTranslation::tr("records would have the same key (%1)").arg(key.join(", "));
}
